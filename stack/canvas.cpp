#include "stack/canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "corvane/core/error.h"
#include "stack/names.h"

namespace corvane::stack {

namespace {

constexpr int kSteps = 32;         // along an edge, which may be bent
constexpr double kRounding = 1e-6; // pixels
constexpr double kMostSide = 1e6;  // pixels
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A rectangle, or the rectangle about some places.
struct Bounds {
    double left = kInfinity;
    double top = kInfinity;
    double right = -kInfinity;
    double bottom = -kInfinity;

    void Include(const Position& at)
    {
        left = std::min(left, at.x);
        top = std::min(top, at.y);
        right = std::max(right, at.x);
        bottom = std::max(bottom, at.y);
    }
    Position Middle() const { return {0.5 * (left + right), 0.5 * (top + bottom)}; }
};

using Edges = std::array<Bounds, 4>;

/// Where the edges of a light lie on the reference.
Edges EdgesOf(const Mapping& mapping, int width, int height)
{
    const double right = width - 1.0;
    const double bottom = height - 1.0;
    Edges edges;
    for (int i = 0; i <= kSteps; ++i) {
        const double part = static_cast<double>(i) / kSteps;
        edges[0].Include(mapping.Inverse({part * right, 0.0}));
        edges[1].Include(mapping.Inverse({part * right, bottom}));
        edges[2].Include(mapping.Inverse({0.0, part * bottom}));
        edges[3].Include(mapping.Inverse({right, part * bottom}));
    }
    return edges;
}

Bounds Around(const Edges& edges)
{
    Bounds all;
    for (const Bounds& edge : edges) {
        all.Include({edge.left, edge.top});
        all.Include({edge.right, edge.bottom});
    }
    return all;
}

/// Takes off what lies beyond an edge of a light, on the side where it is.
void KeepWithin(const Bounds& edge, const Position& middle, Bounds& common)
{
    const Position at = edge.Middle();
    if (std::fabs(at.x - middle.x) >= std::fabs(at.y - middle.y)) {
        (at.x < middle.x ? common.left : common.right) =
            at.x < middle.x ? std::max(common.left, edge.right) : std::min(common.right, edge.left);
    } else {
        (at.y < middle.y ? common.top : common.bottom) =
            at.y < middle.y ? std::max(common.top, edge.bottom) : std::min(common.bottom, edge.top);
    }
}

} // namespace

Grid CanvasOf(Canvas canvas, const Grid& reference, const std::vector<Placement>& lights, int width, int height)
{
    if (canvas == Canvas::kReference) {
        return reference;
    }
    Bounds all;
    Bounds common{-kInfinity, -kInfinity, kInfinity, kInfinity};
    for (const Placement& light : lights) {
        const Edges edges = EdgesOf(light.mapping, width, height);
        const Bounds around = Around(edges);
        all.Include({around.left, around.top});
        all.Include({around.right, around.bottom});
        for (const Bounds& edge : edges) {
            KeepWithin(edge, around.Middle(), common);
        }
    }
    const Bounds& wanted = canvas == Canvas::kUnion ? all : common;
    const double left = std::ceil(wanted.left - kRounding);
    const double top = std::ceil(wanted.top - kRounding);
    const double columns = std::floor(wanted.right + kRounding) - left + 1.0;
    const double rows = std::floor(wanted.bottom + kRounding) - top + 1.0;
    const bool isImage = columns >= 1.0 && rows >= 1.0 && std::max(columns, rows) < kMostSide;
    if (!isImage) {
        throw ParameterError("canvas", NameOf(kCanvasNames, canvas),
                             canvas == Canvas::kUnion ? "it would be wider or higher than any image may be"
                                                      : "the lights have no part in common");
    }
    return {static_cast<int>(columns), static_cast<int>(rows), reference.scale, static_cast<int>(left),
            static_cast<int>(top)};
}

io::PixelMap MapOnto(const Grid& grid)
{
    return {
        {grid.scale, 0.0, 0.0, grid.scale}, (0.5 - grid.left) * grid.scale - 0.5, (0.5 - grid.top) * grid.scale - 0.5};
}

} // namespace corvane::stack
