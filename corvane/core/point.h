#pragma once

#include "corvane/core/truncate.h"
#include "corvane/platform/export.h"

/// A point kept in two precisions: double coordinates and their integer parts. (-1, -1) means unset.
class CORVANE_API CfPoint {
public:
    CfPoint() {} // NOLINT(modernize-use-equals-default): the fields stay unset
    /// Sets both precisions to the same whole coordinates.
    CfPoint(int px, int py) { Set(px, py); }
    /// Sets the double coordinates and their integer parts, truncated towards zero.
    CfPoint(double px, double py) { Set(px, py); }
    CfPoint(const CfPoint&) = default;
    CfPoint& operator=(const CfPoint&) = default;
    virtual ~CfPoint() = default;

    /// Sets both precisions to the same whole coordinates.
    void Set(int px, int py)
    {
        ix = px;
        iy = py;
        x = px;
        y = py;
    }
    /// Sets the double coordinates and their integer parts, truncated towards zero.
    void Set(double px, double py)
    {
        x = px;
        y = py;
        ix = corvane::Truncate(px);
        iy = corvane::Truncate(py);
    }

    int ix;   ///< integer part of x
    int iy;   ///< integer part of y
    double x; ///< x
    double y; ///< y
};
