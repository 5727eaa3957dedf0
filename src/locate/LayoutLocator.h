// What every layout locator shares: its corner search size (slot 0), no options (slot 1),
// support for every image (slot 2), and a locate (slot 3) that hands the layout table to the
// base and starts the chart-to-image mapping at the identity.
#pragma once

#include <cstddef>
#include <vector>

#include "locate/LayoutTables.h"
#include "locate/RegularSFRLocate.h"

namespace RegularSFR {

template <int SearchSize>
class LayoutLocator : public RegularSFRLocate {
public:
    using RegularSFRLocate::RegularSFRLocate;

    void initParams() override { cornerSearchSize = SearchSize; }
    void initOptions() override {}
    virtual bool isSupported() { return true; }
    virtual void locate() = 0;

protected:
    ~LayoutLocator() = default;
    LayoutLocator(const LayoutLocator&) = default;
    LayoutLocator& operator=(const LayoutLocator&) = default;
};

// The locate steps of every layout: the rows by columns, slots 0 and 1 through the virtual
// table, the chart model, and the identity mapping of the reference quadrilateral.
template <std::size_t N>
void locateLayout(RegularSFRLocate& locator,
                  const std::array<talonvireo::locate::LayoutRow, N>& rows,
                  const talonvireo::locate::ReferenceQuad& reference) {
    std::vector<int> x(N), y(N), edge(N), kind(N), code(N);
    for (std::size_t i = 0; i < N; ++i) {
        x[i] = rows[i].x;
        y[i] = rows[i].y;
        edge[i] = rows[i].edge;
        kind[i] = rows[i].kind;
        code[i] = rows[i].code;
    }
    ChartLayoutTable table;
    table.count = static_cast<int>(N);
    table.cornerX = x.data();
    table.cornerY = y.data();
    table.cornerEdge = edge.data();
    table.edgeCode = code.data();
    table.cornerKind = kind.data();

    locator.initParams();
    locator.initOptions();
    locator.initEdgeAndcorner(table);
    locator.computePerspective(4, reference.x.data(), reference.y.data(), reference.x.data(),
                               reference.y.data());
}

}  // namespace RegularSFR
