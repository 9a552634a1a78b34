#pragma once

#include <array>
#include <vector>

namespace corvane::stars {

/// A place, in units of the frame's side, and the value near which a plate goes by there.
struct PlateSite {
    double x;
    double y;
    double value;
};

/// The surface of least bending near values at places: stiff enough to halve what changes from one to the next of a
/// grid of 20 x 20, and to follow what is twice as wide. It is 0 when the places do not tell it.
class ThinPlate {
public:
    explicit ThinPlate(std::vector<PlateSite> sites);

    double At(double x, double y) const;

private:
    std::vector<PlateSite> sites_; ///< with the weights of their kernels for values
    std::array<double, 3> plane_{};
};

} // namespace corvane::stars
