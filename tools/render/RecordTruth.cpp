#include "render/RecordTruth.h"

#include "render/ChartTruth.h"
#include "render/SfrTruth.h"

namespace talonvireo {
namespace render {

namespace {
// Result slots of the K31R22BX layouts' edges, 1-based, as the chart's documentation lists
// them: located edge i lands in slot order[i] - 1.
const int kFirstOrder[34] = {1,  2,  3,  4,  8,  7,  5,  6,  10, 9,  14, 13, 18, 17, 15, 16, 20,
                             19, 28, 27, 32, 31, 29, 30, 34, 33, 24, 23, 11, 12, 26, 25, 22, 21};
const int kSecondOrder[34] = {2,  1,  3,  4,  5,  6,  10, 9,  8,  7,  13, 14, 15, 16, 20, 19, 18,
                              17, 26, 25, 11, 12, 23, 24, 22, 21, 27, 28, 29, 30, 34, 33, 32, 31};
}  // namespace

std::vector<EntryTruth> recordTruth(ChartProject project, const ChartTransform& transform,
                                    double sigma, double ringRadius) {
    const ChartDesign design = designChart(project);
    const bool reordered = project == ChartProject::K31R22BX;
    std::vector<EntryTruth> out;
    for (int layout = 0; layout < 2; ++layout) {
        const LayoutTruth truth = layoutTruth(design, layout, transform);
        std::vector<EntryTruth> set(truth.edges.size());
        for (std::size_t i = 0; i < truth.edges.size(); ++i) {
            const EdgeTruth& e = truth.edges[i];
            const std::size_t slot =
                reordered && i < 34
                    ? static_cast<std::size_t>((layout == 0 ? kFirstOrder : kSecondOrder)[i] - 1)
                    : i;
            const double angle = edgeAngleDeg(design, truth, e, transform, ringRadius);
            set.at(slot) = {edgeCentre(design, truth, e, transform, ringRadius), angle,
                            trueSfr(0.125, sigma, angle), trueSfr(0.25, sigma, angle)};
        }
        out.insert(out.end(), set.begin(), set.end());
    }
    return out;
}

}  // namespace render
}  // namespace talonvireo
