#include "station/Overlay.h"
#include "station/PlotColours.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace station {

namespace {
// Both light enough to read over the chart's dark squares behind a black outline.
const cv::Scalar kPass = palette::kSkyBlue;
const cv::Scalar kFail = palette::kVermilion;
const cv::Scalar kUngraded(0, 220, 255);
const cv::Scalar kNotMeasured(255, 0, 255);
// On the white band the darker blue reads better than the sky blue.
const cv::Scalar kPassInk = palette::kBlue;
const cv::Scalar kInk(30, 30, 30);
constexpr int kFont = cv::FONT_HERSHEY_SIMPLEX;

bool located(const EdgeRow& row) {
    return row.state != EdgeState::kNotLocated;
}

// The figure's short name, as the labels have room for.
std::string shortFigure(const std::string& figure) {
    if (figure == "sfr_quarter_nyquist") {
        return "N/4";
    }
    if (figure == "sfr_half_nyquist") {
        return "N/2";
    }
    if (figure == "sfr_custom") {
        return "custom";
    }
    if (figure == "mtf50") {
        return "MTF50";
    }
    if (figure == "mtf50_lp_per_mm") {
        return "MTF50 lp/mm";
    }
    if (figure == "mtf50_lw_per_ph") {
        return "MTF50 LW/PH";
    }
    return figure;
}

// What failed a measured edge, short enough to follow its SFR in the label.
std::string failingFigure(const FrameReport& report, const EdgeRow& row) {
    if (!row.flags.empty()) {
        return row.flags.front();
    }
    if (!row.failedFigure.empty()) {
        return shortFigure(row.failedFigure);
    }
    if (!row.failedLimit.empty()) {
        return row.failedLimit.substr(0, row.failedLimit.find(" ("));
    }
    if (report.limitsPath.empty()) {
        char text[32];
        std::snprintf(text, sizeof text, "< %.3g", report.minSfr);
        return text;
    }
    return "";
}

// One line of the header band, in pieces of their own colour.
struct Piece {
    std::string text;
    cv::Scalar colour;
};
using Line = std::vector<Piece>;

std::string plain(const Line& line) {
    std::string s;
    for (const Piece& p : line) {
        s += p.text;
    }
    return s;
}

std::vector<Line> headerLines(const FrameReport& report) {
    std::vector<Line> lines;
    if (report.partial()) {
        int count[4] = {};
        for (const EdgeRow& row : report.rows) {
            ++count[static_cast<int>(row.state)];
        }
        lines.push_back(
            {{"PARTIAL: not measured by " + report.member + ": " + report.memberFailure, kFail}});
        lines.push_back(
            {{std::to_string(count[0]) + " of " + std::to_string(report.rows.size()) +
                  " edges measured region by region (not the member's verdict); " +
                  std::to_string(count[1]) + " not located, " + std::to_string(count[2]) +
                  " off the frame, " + std::to_string(count[3]) + " refused by the SFR",
              kInk}});
    }
    char size[48];
    std::snprintf(size, sizeof size, "   %d x %d", report.width, report.height);
    lines.push_back({{(report.input.empty() ? std::string("(rendered frame)") : report.input) +
                          "   " + report.member + size,
                      kInk}});
    const int edges = static_cast<int>(report.rows.size());
    if (!report.hasLimit) {
        lines.push_back({{"no limits: " + std::to_string(edges) +
                              " edges, each labelled with its SFR at Nyquist/4",
                          kInk}});
        return lines;
    }
    char limit[64];
    std::snprintf(limit, sizeof limit, "min SFR at Nyquist/4 %.3g", report.minSfr);
    const int failures = report.failures();
    lines.push_back(
        {{(report.limitsPath.empty() ? std::string(limit) : "limits " + report.limitsPath) +
              "   yield " + std::to_string(edges - failures) + " of " + std::to_string(edges) +
              " edges pass   ",
          kInk},
         {failures == 0 ? "frame PASS" : "frame FAIL", failures == 0 ? kPassInk : kFail}});
    Line legend = {
        {"pass", kPassInk}, {"   ", kInk}, {"fail: the figure that failed follows the SFR", kFail}};
    if (report.partial()) {
        legend.push_back({"   ", kInk});
        legend.push_back({"not measured", kNotMeasured});
    }
    lines.push_back(legend);
    return lines;
}

// A one-piece line too wide for the picture, broken at spaces into lines that fit: a long
// failure reads better wrapped than shrunk.
std::vector<Line> wrapped(const Line& line, int width, double size, int weight) {
    const auto fits = [&](const std::string& text) {
        int baseline = 0;
        return cv::getTextSize(text, kFont, size, weight, &baseline).width <= width;
    };
    if (line.size() != 1 || fits(line[0].text)) {
        return {line};
    }
    std::vector<Line> out;
    std::string current;
    std::size_t from = 0;
    const std::string& text = line[0].text;
    while (from < text.size()) {
        const std::size_t space = text.find(' ', from);
        const std::size_t end = space == std::string::npos ? text.size() : space;
        const std::string word = text.substr(from, end - from);
        const std::string longer = current.empty() ? word : current + " " + word;
        if (!current.empty() && !fits(longer)) {
            out.push_back({{current, line[0].colour}});
            current = word;
        } else {
            current = longer;
        }
        from = end + 1;
    }
    if (!current.empty()) {
        out.push_back({{current, line[0].colour}});
    }
    return out;
}

// A label with a dark outline, which keeps it readable over the chart's dark squares.
void outlinedText(cv::Mat& img, const std::string& text, cv::Point at, double size, int weight,
                  const cv::Scalar& colour) {
    cv::putText(img, text, at, kFont, size, cv::Scalar(0, 0, 0), 3 * weight, cv::LINE_AA);
    cv::putText(img, text, at, kFont, size, colour, weight, cv::LINE_AA);
}
}  // namespace

cv::Mat drawOverlay(const cv::Mat& grey, const FrameReport& report, int outputWidth) {
    const double shrink =
        outputWidth > 0 && outputWidth < grey.cols ? grey.cols / (2.0 * outputWidth) : 0.0;
    const double scale = std::max({1.0, grey.cols / 4000.0, shrink});
    const int thickness = static_cast<int>(std::lround(2 * scale));

    // The header band: each line as large as the labels' one and a half, but never wider than
    // the picture.
    const int margin = static_cast<int>(std::lround(20 * scale));
    std::vector<Line> lines;
    for (const Line& line : headerLines(report)) {
        for (Line& part : wrapped(line, grey.cols - 2 * margin, 1.2 * scale, thickness)) {
            lines.push_back(std::move(part));
        }
    }
    std::vector<double> sizes;
    for (const Line& line : lines) {
        const double size = 1.2 * scale;
        int baseline = 0;
        const int width = cv::getTextSize(plain(line), kFont, size, thickness, &baseline).width;
        sizes.push_back(width > grey.cols - 2 * margin
                            ? size * std::max(1, grey.cols - 2 * margin) / width
                            : size);
    }
    const int lineHeight = static_cast<int>(std::lround(48 * scale));
    const int band = lineHeight * static_cast<int>(lines.size()) + lineHeight / 2;
    cv::Mat canvas(grey.rows + band, grey.cols, CV_8UC3, cv::Scalar(255, 255, 255));
    cv::Mat frame = canvas(cv::Rect(0, band, grey.cols, grey.rows));
    cv::cvtColor(grey, frame, cv::COLOR_GRAY2BGR);
    cv::line(canvas, {0, band - 1}, {canvas.cols, band - 1}, kInk, std::max(1, thickness / 2));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const int weight = std::max(1, static_cast<int>(std::lround(1.6 * sizes[i])));
        cv::Point at(margin, lineHeight * static_cast<int>(i + 1));
        for (const Piece& piece : lines[i]) {
            cv::putText(canvas, piece.text, at, kFont, sizes[i], piece.colour, weight, cv::LINE_AA);
            int baseline = 0;
            at.x += cv::getTextSize(piece.text, kFont, sizes[i], weight, &baseline).width;
        }
    }

    for (const EdgeRow& row : report.rows) {
        if (!located(row)) {
            continue;  // nowhere to draw it; the band counts it
        }
        const bool measured = row.state == EdgeState::kMeasured;
        const bool fails = report.hasLimit && !report.passes(row);
        const cv::Scalar colour = !measured          ? kNotMeasured
                                  : !report.hasLimit ? kUngraded
                                  : fails            ? kFail
                                                     : kPass;
        const cv::Rect box = row.region();
        // A failing box is drawn heavier too: a second cue beside the colour.
        cv::rectangle(frame, box, colour, fails && measured ? 2 * thickness : thickness);
        char figure[48];
        std::string label;
        if (measured) {
            // Failing on --min-sfr, a fourth decimal keeps "0.7549 < 0.755" from reading as
            // "0.755 < 0.755".
            const bool belowMinimum = fails && report.limitsPath.empty() && row.flags.empty();
            std::snprintf(figure, sizeof figure, belowMinimum ? "%d: %.4f" : "%d: %.3f", row.index,
                          static_cast<double>(row.measured.sfrQuarterNyquist));
            label = figure;
            if (fails) {
                label += " " + failingFigure(report, row);
            }
        } else {
            label = std::to_string(row.index) + ": " +
                    (row.state == EdgeState::kOffFrame ? "off frame" : "refused");
        }
        // A label that would run off the picture (an edge at the border) is pulled back inside.
        int baseline = 0;
        const cv::Size text = cv::getTextSize(label, kFont, 0.8 * scale, thickness, &baseline);
        const cv::Point at(std::clamp(box.x, 0, std::max(0, frame.cols - text.width)),
                           std::clamp(box.y - static_cast<int>(6 * scale), text.height,
                                      std::max(text.height, frame.rows - baseline)));
        outlinedText(frame, label, at, 0.8 * scale, thickness, colour);
    }
    return canvas;
}

}  // namespace station
}  // namespace talonvireo
