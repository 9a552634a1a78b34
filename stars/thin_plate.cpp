#include "stars/thin_plate.h"

#include <utility>

#include "corvane/core/power.h"
#include "stars/least_squares.h"

namespace corvane::stars {

namespace {

constexpr double kSoftness = 2e-3; // what kernels on a grid of 20 x 20 come to in its highest waves

/// How a plate bends about a place; its scale does not matter.
double Kernel(double dx, double dy)
{
    const double square = dx * dx + dy * dy;
    const BinaryLogarithm log = Log2(square);
    return square > 0.0 ? square * (log.whole + log.fraction) : 0.0;
}

} // namespace

ThinPlate::ThinPlate(std::vector<PlateSite> sites) : sites_(std::move(sites))
{
    const std::size_t count = sites_.size();
    LeastSquares system(count + plane_.size());
    std::vector<double> row(count + plane_.size());
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = 0; j < count; ++j) {
            row[j] = Kernel(sites_[i].x - sites_[j].x, sites_[i].y - sites_[j].y) + (i == j ? kSoftness : 0.0);
        }
        row[count] = 1.0;
        row[count + 1] = sites_[i].x;
        row[count + 2] = sites_[i].y;
        system.Add(row, sites_[i].value);
    }
    for (std::size_t k = 0; k < plane_.size(); ++k) { // far away it is a plane
        for (std::size_t j = 0; j < count; ++j) {
            row[j] = k == 0 ? 1.0 : (k == 1 ? sites_[j].x : sites_[j].y);
        }
        row[count] = row[count + 1] = row[count + 2] = 0.0;
        system.Add(row, 0.0);
    }
    const auto unknowns = system.Solve();
    for (std::size_t i = 0; i < count; ++i) {
        sites_[i].value = unknowns ? (*unknowns)[i] : 0.0;
    }
    for (std::size_t k = 0; k < plane_.size(); ++k) {
        plane_[k] = unknowns ? (*unknowns)[count + k] : 0.0;
    }
}

double ThinPlate::At(double x, double y) const
{
    double sum = plane_[0] + plane_[1] * x + plane_[2] * y;
    for (const PlateSite& site : sites_) {
        sum += site.value * Kernel(x - site.x, y - site.y);
    }
    return sum;
}

} // namespace corvane::stars
