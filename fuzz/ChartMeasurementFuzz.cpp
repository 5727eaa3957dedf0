// measureChart and findChartQuads on fuzzed sizes, formats, bits and pixels, with or without a
// fuzzed chart description. Bad input returns -1 and leaves the report as it was; a report
// holds every region inside the frame, a state for every edge, and with a description one
// edge per slot in slot order.
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzInput.h"
#include "sfr/RegionPreparation.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using namespace talonvireo::fuzz;

constexpr int kFormats[] = {0x100, 0x200, 0x400, 0x800, 0x011, 0x012, 0x014, 0x018, 0x021, 0x042};

// A description of up to three quadrilaterals and a lone edge, read from the input: often
// valid, sometimes not (the library must check it).
ChartDescription fuzzedDescription(FuzzInput& in) {
    ChartDescription d;
    d.name = "fuzzed";
    const int shapes = in.take<std::uint8_t>() % 4;
    for (int s = 0; s < shapes; ++s) {
        ChartShape shape;
        for (ChartPoint& p : shape.corners) {
            p.x = in.take<std::int16_t>() % 240;
            p.y = in.take<std::int16_t>() % 180;
        }
        shape.polarity = in.take<std::uint8_t>() % 3 - 1;
        d.shapes.push_back(shape);
    }
    if (in.take<std::uint8_t>() % 2 == 0) {
        ChartEdge edge;
        edge.from = {static_cast<double>(in.take<std::int16_t>() % 240), 10.0};
        edge.to = {static_cast<double>(in.take<std::int16_t>() % 240), 170.0};
        d.edges.push_back(edge);
    }
    const int slots = in.take<std::uint8_t>() % 4;
    for (int k = 0; k < slots; ++k) {
        ChartSlot slot;
        slot.name = "S" + std::to_string(k);
        slot.slot = in.take<std::uint8_t>() % 6;
        slot.shape = in.take<std::int8_t>() % 4;
        slot.side = in.take<std::uint8_t>() % 5;
        slot.edge = slot.shape < 0 ? 0 : -1;
        slot.along = in.take<std::uint8_t>() / 200.0;
        slot.regionSize = in.take<std::uint8_t>() % 3 == 0 ? 40 : 0;
        d.slots.push_back(slot);
    }
    return d;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const int width = foldSize(in.take<std::int16_t>(), 240);
    const int height = foldSize(in.take<std::int16_t>(), 180);
    const auto selector = in.take<std::uint16_t>();
    const int format = selector < 0x8000 ? kFormats[selector % std::size(kFormats)]
                                         : static_cast<int>(selector & 0xFFF);
    const auto flags = in.take<std::uint8_t>();
    ChartMeasureOptions options;
    options.bits = in.take<std::uint8_t>() % 20;
    options.method = (flags & 2) != 0 ? SfrMethod::kClassic : SfrMethod::kPrecise;
    options.rawPlanes = (flags & 4) != 0;
    options.nyquistDivisor = (flags & 8) != 0 ? 4.0 : 0.0;
    const ChartDescription description = fuzzedDescription(in);
    const std::size_t pixels =
        width > 0 && height > 0 ? static_cast<std::size_t>(width) * height : 0;
    const int bytes = sfr::bytesPerPixel(format);
    std::vector<std::uint8_t> image = in.payload(pixels * (bytes > 0 ? bytes : 6) + 1);
    const unsigned char* buffer = (flags & 1) ? nullptr : image.data();
    const ChartDescription* described = (flags & 16) != 0 ? &description : nullptr;

    ChartReport report;
    report.chart = "untouched";
    const int status = measureChart(buffer, width, height, format, described, options, report);
    contract(status == 0 || status == -1 || status == -2);
    if (status == -1) {
        contract(report.chart == "untouched" && report.edges.empty());
        return 0;
    }
    contract(report.width == width && report.height == height);
    contract(report.found.size() == 4 * report.quads.size());
    if (described != nullptr) {
        std::string problem;
        contract(checkChartDescription(description, problem));
        const std::size_t slots = description.slots.empty()
                                      ? 4 * description.shapes.size() + description.edges.size()
                                      : description.slots.size();
        contract(report.edges.size() == slots);
    }
    for (const ChartEdgeReport& e : report.edges) {
        contract(static_cast<int>(e.state) >= 0 && static_cast<int>(e.state) <= 6);
        const tagEdgeRoi& r = e.region;
        if (e.state == ChartEdgeState::kMeasured) {
            contract(r.x >= 0 && r.y >= 0 && r.width > 0 && r.height > 0 &&
                     r.x + r.width <= width && r.y + r.height <= height);
        }
    }
    std::vector<FoundQuad> quads(1);
    std::vector<FoundEdge> edges(1);
    const int found = findChartQuads(buffer, width, height, format, options.bits, quads, edges);
    contract(found == 0 || found == -1);
    if (found == 0) {
        contract(quads.size() == report.quads.size() && edges.size() == report.found.size());
    }
    return 0;
}
