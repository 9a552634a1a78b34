#pragma once

#include "corvane/core/mapping.h"

namespace corvane {

/// What a pixel becomes before it is dropped onto a finer grid.
enum class DropKernel {
    kSquare, ///< a smaller square about its middle
    kPoint,  ///< its middle
};

/// How much of the pixels of a frame, shrunk about their middles, falls into the pixels of a grid.
///
/// It is told in the frame, where drops are squares along its axes and a pixel of the grid is a square that is turned:
/// the part of the drop's area that both have in common. That is the sum, over the four edges of the grid's pixel, of
/// the area between each edge and the drop's lower side, taken within the drop and by the direction of the edge.
class Drop {
public:
    /// The frame lies on the grid by a mapping, which is taken as even about a pixel of the grid; a drop is `size` wide
    /// [pixels of the frame, 0..1].
    Drop(const Mapping& mapping, const Position& about, double size, DropKernel kernel);

    /// Drops whose middles lie farther than this from that of a grid's pixel, along either axis of the frame, miss it.
    double Reach() const { return reach_; }
    /// The parts of drops that fall into pixels of the grid; each middle of a pixel lies at (a[i], b[i]) of the drop's.
    void Parts(const double* a, const double* b, int count, double* parts) const;

private:
    /// An edge from left to right, as seen from the middle of the pixel; one that falls is mirrored, so that all rise.
    struct Edge {
        double x;
        double y;
        double toX;
        double slope;
        double inverse;
        double mirror;    ///< -1 when y counts the other way
        double direction; ///< what its area counts
    };

    void AddEdge(int i, const Position& from, const Position& to);

    double half_;
    double reach_;
    double scale_; ///< 1 / area of a drop
    bool isPoint_;
    bool isAlongAxes_;
    Position across_; ///< half an edge of the grid's pixel, along its row
    Position down_;   ///< and along its column
    Edge edges_[4];
};

} // namespace corvane
