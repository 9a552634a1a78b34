#pragma once

#include <array>

namespace corvane {

/// A quadratic model in the space that three directions span: of the entropy S and of chi-square C, from where the
/// image is. Directions have length 1 by the metric of the entropy.
struct Subspace {
    static constexpr int kDirections = 3;
    using Vector = std::array<double, kDirections>;
    using Matrix = std::array<Vector, kDirections>;

    Matrix metric{};    ///< products of the directions, the negative curvature of S
    Matrix curvature{}; ///< of C
    Vector entropySlope{};
    Vector chiSlope{};
    double chi = 0.0; ///< C where the image is
};

/// A step in such a space.
struct SubspaceStep {
    Subspace::Vector amounts{}; ///< of each direction
    double multiplier = 0.0;    ///< of the entropy, against that of chi-square
    int directions = 0;         ///< that are independent of each other
};

/// The step of greatest entropy with C as near to `target` as a step of length squared `reach` at most allows.
SubspaceStep FindStep(const Subspace& space, double target, double reach);

} // namespace corvane
