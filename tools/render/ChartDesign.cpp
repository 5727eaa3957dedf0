#include "render/ChartDesign.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <utility>

#include "locate/LayoutTables.h"

#include "render/Pi.h"

namespace talonvireo {
namespace render {

namespace {
constexpr double kNominalSide = 200.0;
constexpr double kSmallestSide = 150.0;
constexpr double kSideStep = 2.0;
constexpr double kMinTurnDeg = 3.0;

double radians(double deg) {
    return deg * kPi / 180.0;
}

template <std::size_t N>
ChartLayout layoutFrom(const char* name, const std::array<locate::LayoutRow, N>& table) {
    ChartLayout layout{name, {}, {}};
    for (const locate::LayoutRow& r : table) {
        layout.rows.push_back({r.x, r.y, r.edge, r.kind, r.code});
    }
    layout.squareOfRow.assign(layout.rows.size(), -1);
    return layout;
}

// Turn of the n-th lone square: between 3 and 12 degrees, the sign alternating, spread so
// that neighbours differ.
double loneTurn(int n) {
    static constexpr double kMagnitudes[] = {4.0, 7.5, 10.5, 5.5, 9.0, 3.5, 11.5, 6.5, 8.0};
    const double magnitude = kMagnitudes[n % 9];
    return radians(n % 2 == 0 ? magnitude : -magnitude);
}

double pointSegmentDistance(cv::Point2d p, cv::Point2d a, cv::Point2d b) {
    const cv::Point2d ab = b - a;
    const double t = std::clamp((p - a).dot(ab) / ab.dot(ab), 0.0, 1.0);
    const cv::Point2d d = p - (a + t * ab);
    return std::hypot(d.x, d.y);
}

bool insideSquare(cv::Point2d p, const ChartSquare& s) {
    const cv::Point2d d = p - cv::Point2d(s.cx, s.cy);
    const double h = 0.5 * s.side;
    return std::abs(d.dot(s.axisU())) <= h && std::abs(d.dot(s.axisV())) <= h;
}

double clearance(const ChartSquare& s, const std::vector<ChartSquare>& others) {
    double best = std::numeric_limits<double>::infinity();
    for (const ChartSquare& o : others) {
        best = std::min(best, squareDistance(s, o));
    }
    return best;
}

// The largest square up to the nominal side, with its corner of `role` at p, that keeps the
// clearance from every square placed so far: the preferred turn first, then other turns
// between 3 and 12 degrees of either sign when the preferred one needs a smaller square. The
// smallest size if none fits.
ChartSquare placeLoneSquare(cv::Point2d p, int role, double turn,
                            const std::vector<ChartSquare>& placed) {
    std::vector<double> turns = {turn, -turn};
    for (const double deg : {3.5, 6.0, 9.0, 12.0}) {
        turns.push_back(radians(deg));
        turns.push_back(-radians(deg));
    }
    ChartSquare best = ChartSquare::withCorner(p, role, kSmallestSide, turn);
    for (const double t : turns) {
        for (double side = kNominalSide; side > best.side; side -= kSideStep) {
            const ChartSquare s = ChartSquare::withCorner(p, role, side, t);
            if (clearance(s, placed) >= kSquareClearance) {
                best = s;
                break;
            }
        }
        if (best.side >= kNominalSide) {
            break;
        }
    }
    return best;
}

// Least-squares square through corners of known roles: each corner is
// c + signU h u + signV h v, linear in (cx, cy, a = h cos t, b = h sin t). A fitted turn
// below 3 degrees is raised to 3 degrees (same sign) and centre and size refitted.
ChartSquare fitSquare(const std::vector<std::pair<cv::Point2d, int>>& corners) {
    cv::Mat A(static_cast<int>(2 * corners.size()), 4, CV_64F, cv::Scalar(0));
    cv::Mat y(A.rows, 1, CV_64F);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const double su = ChartSquare::signU(corners[i].second);
        const double sv = ChartSquare::signV(corners[i].second);
        const int rx = static_cast<int>(2 * i), ry = rx + 1;
        A.at<double>(rx, 0) = 1.0;
        A.at<double>(rx, 2) = su;
        A.at<double>(rx, 3) = -sv;
        A.at<double>(ry, 1) = 1.0;
        A.at<double>(ry, 2) = sv;
        A.at<double>(ry, 3) = su;
        y.at<double>(rx) = corners[i].first.x;
        y.at<double>(ry) = corners[i].first.y;
    }
    cv::Mat sol;
    cv::solve(A, y, sol, cv::DECOMP_SVD);
    double turn = std::atan2(sol.at<double>(3), sol.at<double>(2));
    ChartSquare s{sol.at<double>(0), sol.at<double>(1),
                  2.0 * std::hypot(sol.at<double>(2), sol.at<double>(3)), turn};
    if (std::abs(turn) >= radians(kMinTurnDeg)) {
        return s;
    }
    turn = turn < 0.0 ? -radians(kMinTurnDeg) : radians(kMinTurnDeg);
    const cv::Point2d u(std::cos(turn), std::sin(turn)), v(-std::sin(turn), std::cos(turn));
    cv::Mat B(A.rows, 3, CV_64F, cv::Scalar(0));
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const cv::Point2d k =
            ChartSquare::signU(corners[i].second) * u + ChartSquare::signV(corners[i].second) * v;
        const int rx = static_cast<int>(2 * i), ry = rx + 1;
        B.at<double>(rx, 0) = 1.0;
        B.at<double>(rx, 2) = k.x;
        B.at<double>(ry, 1) = 1.0;
        B.at<double>(ry, 2) = k.y;
    }
    cv::solve(B, y, sol, cv::DECOMP_SVD);
    return ChartSquare{sol.at<double>(0), sol.at<double>(1), 2.0 * sol.at<double>(2), turn};
}

// 26-row layouts: a square per listed point (rows 2i and 2i + 1).
void addLoneSquares(ChartDesign& design, ChartLayout& layout) {
    for (std::size_t i = 0; i < layout.rows.size(); i += 2) {
        const ChartRow& r = layout.rows[i];
        const int n = static_cast<int>(design.squares.size());
        design.squares.push_back(
            placeLoneSquare({double(r.x), double(r.y)}, r.kind, loneTurn(n), design.squares));
        layout.squareOfRow[i] = n;
        layout.squareOfRow[i + 1] = n;
    }
}

int findRoot(std::vector<int>& parent, int i) {
    while (parent[i] != i) {
        i = parent[i] = parent[parent[i]];
    }
    return i;
}

// 56-row layouts: rows joined by a shared edge or position form one square.
void addFittedSquares(ChartDesign& design, ChartLayout& layout) {
    const int n = static_cast<int>(layout.rows.size());
    std::vector<int> parent(n);
    std::iota(parent.begin(), parent.end(), 0);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < i; ++j) {
            const ChartRow &a = layout.rows[i], &b = layout.rows[j];
            if (a.edge == b.edge || (a.x == b.x && a.y == b.y)) {
                parent[findRoot(parent, i)] = findRoot(parent, j);
            }
        }
    }
    std::map<int, std::vector<int>> groups;  // by root, in row order
    for (int i = 0; i < n; ++i) {
        groups[findRoot(parent, i)].push_back(i);
    }
    for (const auto& [root, members] : groups) {
        std::vector<std::pair<cv::Point2d, int>> corners;
        for (const int i : members) {
            const ChartRow& r = layout.rows[i];
            const std::pair<cv::Point2d, int> c{{double(r.x), double(r.y)}, r.kind};
            if (std::find(corners.begin(), corners.end(), c) == corners.end()) {
                corners.push_back(c);
            }
        }
        const int index = static_cast<int>(design.squares.size());
        design.squares.push_back(corners.size() == 1
                                     ? placeLoneSquare(corners[0].first, corners[0].second,
                                                       loneTurn(index), design.squares)
                                     : fitSquare(corners));
        for (const int i : members) {
            layout.squareOfRow[i] = index;
        }
    }
}

// Moves the two squares nearest the reference point so that their centres' midpoint is it.
void centreMarks(ChartDesign& design) {
    std::vector<int> order(design.squares.size());
    std::iota(order.begin(), order.end(), 0);
    auto distance = [&](int i) {
        return std::hypot(design.squares[i].cx - kMarkReferenceX,
                          design.squares[i].cy - kMarkReferenceY);
    };
    std::sort(order.begin(), order.end(), [&](int a, int b) { return distance(a) < distance(b); });
    ChartSquare& first = design.squares[order[0]];
    ChartSquare& second = design.squares[order[1]];
    const double dx = kMarkReferenceX - 0.5 * (first.cx + second.cx);
    const double dy = kMarkReferenceY - 0.5 * (first.cy + second.cy);
    for (ChartSquare* s : {&first, &second}) {
        s->cx += dx;
        s->cy += dy;
    }
    design.markSquares = {order[0], order[1]};
}
}  // namespace

double squareDistance(const ChartSquare& a, const ChartSquare& b) {
    const auto pa = a.outline();
    const auto pb = b.outline();
    for (const cv::Point2d& p : pa) {
        if (insideSquare(p, b)) {
            return 0.0;
        }
    }
    for (const cv::Point2d& p : pb) {
        if (insideSquare(p, a)) {
            return 0.0;
        }
    }
    double best = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            best = std::min(best, pointSegmentDistance(pa[i], pb[j], pb[(j + 1) % 4]));
            best = std::min(best, pointSegmentDistance(pb[i], pa[j], pa[(j + 1) % 4]));
        }
    }
    // Crossing sides without a corner inside each other (a cross shape).
    if (insideSquare(cv::Point2d(a.cx, a.cy), b) || insideSquare(cv::Point2d(b.cx, b.cy), a)) {
        return 0.0;
    }
    return best;
}

ChartDesign designChart(ChartProject project) {
    ChartDesign design;
    design.project = project;
    switch (project) {
        case ChartProject::K74T16BX:
            design.layouts = {layoutFrom("SFRLocate_LX_MAP", locate::kLxMapRows),
                              layoutFrom("SFRLocate_LX_MAP2", locate::kLxMap2Rows)};
            break;
        case ChartProject::K83P09BQ:
            design.layouts = {layoutFrom("SFRLocate_LX_17QD", locate::kLx17qdRows),
                              layoutFrom("SFRLocate_LX_17QD2", locate::kLx17qd2Rows)};
            break;
        case ChartProject::HLX6C:
            design.layouts = {layoutFrom("SFRLocate_HLX6C", locate::kHlx6cRows),
                              layoutFrom("SFRLocate_HLX6C_2", locate::kHlx6c2Rows)};
            break;
        case ChartProject::K31R22BX:
            design.layouts = {layoutFrom("SFRLocate_LX", locate::kLxRows),
                              layoutFrom("SFRLocate_LX2", locate::kLx2Rows)};
            break;
    }
    for (ChartLayout& layout : design.layouts) {
        if (project == ChartProject::K31R22BX) {
            addFittedSquares(design, layout);
        } else {
            addLoneSquares(design, layout);
        }
    }
    if (project == ChartProject::K31R22BX) {
        centreMarks(design);
    }
    return design;
}

const char* projectName(ChartProject project) {
    switch (project) {
        case ChartProject::K74T16BX:
            return "K74T16BX";
        case ChartProject::K83P09BQ:
            return "K83P09BQ";
        case ChartProject::HLX6C:
            return "HLX6C";
        case ChartProject::K31R22BX:
        default:
            return "K31R22BX";
    }
}

bool parseProject(const std::string& name, ChartProject& project) {
    for (const ChartProject p : {ChartProject::K74T16BX, ChartProject::K83P09BQ,
                                 ChartProject::HLX6C, ChartProject::K31R22BX}) {
        if (name == projectName(p)) {
            project = p;
            return true;
        }
    }
    return false;
}

}  // namespace render
}  // namespace talonvireo
