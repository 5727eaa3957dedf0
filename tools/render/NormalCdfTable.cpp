#include "render/NormalCdfTable.h"

#include <cmath>

namespace talonvireo {
namespace render {

NormalCdfTable NormalCdfTable::make() {
    const int nodes = static_cast<int>(2.0 * kEnd * kPerUnit) + 2;
    NormalCdfTable table;
    table.value.resize(nodes);
    table.slope.resize(nodes);
    for (int i = 0; i < nodes; ++i) {
        const double t = -kEnd + i / kPerUnit;
        table.value[i] = 0.5 * std::erfc(-t * 0.7071067811865476);
        table.slope[i] = std::exp(-0.5 * t * t) * 0.3989422804014327 / kPerUnit;
    }
    return table;
}

}  // namespace render
}  // namespace talonvireo
