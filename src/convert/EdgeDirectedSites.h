// The site rules of the edge-directed demosaic that both its renditions share (the
// whole-image one to 32-bit pixels and the fused road to grey): where the mosaic's colours
// sit, and the colour of a pixel on the image's border, taken from its own 2 x 2 cell.
#pragma once

#include "convert/EdgeDirectedDemosaic.h"

namespace talonvireo {
namespace convert {
namespace edge_directed {

struct SiteColour {
    int blue;
    int green;
    int red;
};

inline bool isRedRow(MosaicPhase phase, int row) {
    return ((row + phase.rowShift) & 1) == 0;
}

inline bool isRedColumn(MosaicPhase phase, int col) {
    return ((col + phase.colShift) & 1) == 0;
}

// Index of the cell partner of index i along an axis of the given extent: i + 1 for even i,
// i - 1 for odd i; past the end, the same-colour sample on the other side; alone, i itself.
inline int cellPartner(int i, int extent) {
    int partner = (i & 1) == 0 ? i + 1 : i - 1;
    if (partner >= extent) {
        partner = i - 1;
    }
    return partner < 0 ? i : partner;
}

// A border pixel from its own cell; `View` has at(row, col), width and height. alongColumn
// selects the green partner of a red or blue site: the vertical one for the first and last
// column, the horizontal one for the first and last row.
template <class View>
SiteColour borderSite(const View& m, MosaicPhase phase, int row, int col, bool alongColumn) {
    const int partnerRow = cellPartner(row, m.height);
    const int partnerCol = cellPartner(col, m.width);
    const int own = m.at(row, col);
    const int vertical = m.at(partnerRow, col);
    const int horizontal = m.at(row, partnerCol);
    const int diagonal = m.at(partnerRow, partnerCol);
    const bool redRow = isRedRow(phase, row);
    const bool redCol = isRedColumn(phase, col);
    if (redRow == redCol) {
        // Red (red row, red column) or blue (blue row, blue column) site.
        return {redRow ? diagonal : own, alongColumn ? vertical : horizontal,
                redRow ? own : diagonal};
    }
    return {redRow ? vertical : horizontal, own, redRow ? horizontal : vertical};
}

}  // namespace edge_directed
}  // namespace convert
}  // namespace talonvireo
