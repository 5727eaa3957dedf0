// Where each chart's record slots sit on the chart: the data the chart-fit check compares
// located centres with.
#pragma once

#include "talonvireo/MemberEdgeLocate.h"

namespace talonvireo {
namespace locate {

// The design centre of a slot searched with ring radius r is (x + r alongX, y + r alongY).
struct DesignSlot {
    double x;
    double y;
    double alongX;
    double alongY;
};

struct DesignSlots {
    const DesignSlot* slots;  // null for an unknown chart
    int count;
};

// The chart's slots in record order; the 8K variants share their chart's design.
DesignSlots designSlots(MemberChart chart);

}  // namespace locate
}  // namespace talonvireo
