// talonvireo-chartgen: writes the built-in chart description files (charts/*.toml) from the
// renderer's chart designs and the library's slot designs, so that the files, the synthetic
// charts and the members agree by construction. Run it after either design changes:
//
//   talonvireo-chartgen charts
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "render/ChartDesign.h"
#include "render/Pi.h"
#include "talonvireo/MemberTable.h"

namespace {
using namespace talonvireo;

// The command line's defaults (--roi, --mark): the files hold the regions and edge places a
// measurement with those options gets.
constexpr int kDefaultRoiSize = 80;
constexpr double kDefaultMarkSearchSize = 100.0;
// A slot design farther than this from every square side means the designs disagree.
constexpr double kOnSide = 0.01;
// `along` is written with the fewest decimals that keep the point this close to the design.
constexpr double kAlongTolerance = 0.001;

// Fixed decimals without trailing zeros ("1781.0", "0.568182").
std::string decimal(double v, int decimals) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, v);
    std::string s = buffer;
    while (s.size() > 2 && s.back() == '0' && s[s.size() - 2] != '.') {
        s.pop_back();
    }
    return s == "-0.0" ? "0.0" : s;
}

std::string pointText(cv::Point2d p) {
    return "[" + decimal(p.x, 9) + ", " + decimal(p.y, 9) + "]";
}

std::string shapeId(int index) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "S%02d", index);
    return buffer;
}

// The first member measuring the chart: the regions it cuts stand for the chart's.
const MemberInfo* firstMember(const char* chartName) {
    const MemberTable table = memberTable();
    for (int i = 0; i < table.count; ++i) {
        if (std::string(table.rows[i].chartName) == chartName) {
            return &table.rows[i];
        }
    }
    return nullptr;
}

// `along` of a side `length` long, with as few decimals as kAlongTolerance allows: the
// designs' rounding would otherwise show as 0.499998 for a midpoint.
std::string alongText(double along, double length) {
    for (int decimals = 1; decimals < 9; ++decimals) {
        const double scale = std::pow(10.0, decimals);
        if (std::abs(std::round(along * scale) / scale - along) * length <= kAlongTolerance) {
            return decimal(std::round(along * scale) / scale, decimals);
        }
    }
    return decimal(along, 9);
}

struct SidePlace {
    int square = -1;
    int side = 0;
    double along = 0.0;
    double distance = std::numeric_limits<double>::infinity();
};

// The square side nearest p, and where along it p falls.
SidePlace nearestSide(const render::ChartDesign& design, cv::Point2d p) {
    SidePlace best;
    for (std::size_t s = 0; s < design.squares.size(); ++s) {
        const auto corners = design.squares[s].outline();
        for (int i = 0; i < 4; ++i) {
            const cv::Point2d a = corners[i], d = corners[(i + 1) % 4] - a;
            const double t = std::clamp((p - a).dot(d) / d.dot(d), 0.0, 1.0);
            const cv::Point2d off = p - (a + t * d);
            const double distance = std::hypot(off.x, off.y);
            if (distance < best.distance) {
                best = {static_cast<int>(s), i, t, distance};
            }
        }
    }
    return best;
}

bool writeChart(render::ChartProject project, const std::string& folder) {
    const char* name = render::projectName(project);
    const render::ChartDesign design = render::designChart(project);
    const MemberInfo* member = firstMember(name);
    if (member == nullptr) {
        std::cerr << "no member measures " << name << "\n";
        return false;
    }
    std::vector<EdgeCentre> nominal(member->slots);
    const int slots =
        chartDesign(member->chart, kDefaultMarkSearchSize, nominal.data(), member->slots);
    if (slots != member->slots) {
        std::cerr << "no slot design for " << name << "\n";
        return false;
    }
    std::ostringstream out;
    out << "# " << name << ": the dark squares of both layouts as `talonvireo-sfr render --project "
        << name << "`\n"
        << "# draws them, in pixels of the 4000 x 3000 chart seen square-on; one slot per record "
        << "entry (" << slots << "):\n"
        << "# L1-nn is the first layout's nn-th entry, L2-nn the second's. A slot's point is where "
           "the\n"
        << "# member's edge centre lies for --mark " << kDefaultMarkSearchSize
        << "; its region is the side " << member->name << " cuts\n"
        << "# for --roi " << kDefaultRoiSize << " (90 where that member forces 90).\n"
        << "# Written by talonvireo-chartgen (tools/chartgen): regenerate, do not edit.\n"
        << "name = \"" << name << "\"\nunits = \"px\"\n";
    for (std::size_t s = 0; s < design.squares.size(); ++s) {
        const render::ChartSquare& q = design.squares[s];
        out << "\n[[shape]]\nid = \"" << shapeId(static_cast<int>(s)) << "\"\n"
            << "centre = " << pointText({q.cx, q.cy}) << "\n"
            << "side = " << decimal(q.side, 9) << "\n"
            << "angle_deg = " << decimal(q.angleRad * 180.0 / render::kPi, 9) << "\n"
            << "polarity = \"dark\"\n";
    }
    const int half = slots / 2;
    for (int k = 0; k < slots; ++k) {
        const cv::Point2d p(nominal[k].x, nominal[k].y);
        const SidePlace place = nearestSide(design, p);
        if (!(place.distance <= kOnSide)) {
            std::cerr << name << " slot " << k << " at (" << p.x << ", " << p.y
                      << ") lies on no square side (nearest " << place.distance << " px)\n";
            return false;
        }
        char slotName[16];
        std::snprintf(slotName, sizeof slotName, "L%d-%02d", k < half ? 1 : 2, k % half + 1);
        out << "\n[[slot]]\nname = \"" << slotName << "\"\nslot = " << k << "\n"
            << "shape = \"" << shapeId(place.square) << "\"\nside = " << place.side << "\n"
            << "along = " << alongText(place.along, design.squares[place.square].side) << "\n"
            << "region = " << member->regionSide(k, kDefaultRoiSize) << "\n";
    }
    const std::string path = folder + "/" + name + ".toml";
    std::ofstream file(path, std::ios::binary);
    file << out.str();
    file.close();
    if (!file) {
        std::cerr << "cannot write " << path << "\n";
        return false;
    }
    std::cout << path << ": " << design.squares.size() << " shapes, " << slots << " slots\n";
    return true;
}
}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: talonvireo-chartgen FOLDER (writes FOLDER/<chart>.toml)\n";
        return 2;
    }
    for (const render::ChartProject project :
         {render::ChartProject::K74T16BX, render::ChartProject::K83P09BQ,
          render::ChartProject::HLX6C, render::ChartProject::K31R22BX}) {
        if (!writeChart(project, argv[1])) {
            return 1;
        }
    }
    return 0;
}
