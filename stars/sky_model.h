#pragma once

#include <optional>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "stars/lattice.h"
#include "stars/sky_polynomial.h"

namespace corvane::stars {

/// What a model of the sky is made of.
enum class SkyForm {
    kMesh,       ///< the cells of `MeasureSkyMesh`, a cubic between them: follows nebulae, too
    kPolynomial, ///< that of `FitSkyCells`
    kSpline,     ///< the same, and a thin plate on at most 400 cells of the sky for what is left
};

/// The sky of a plane, as it changes over the frame.
class CORVANE_VISIBLE SkyModel {
public:
    SkyModel(int width, int height, const SkyPolynomial& polynomial, std::optional<Lattice> rest);

    /// The values along a row of samples, as many as the frame is wide.
    void FillRow(int y, double* values) const;
    /// @name Of values at places all over the frame, its corners among them, up to some hundred each way
    /// @{
    double Median() const { return median_; }
    double Least() const { return least_; }
    /// @}

private:
    int width_;
    SkyPolynomial polynomial_;
    std::optional<Lattice> rest_;
    double median_ = 0.0;
    double least_ = 0.0;
};

/// Measures the sky of a plane; nothing when too little of it is defined. The degree of the polynomial is 1 to 4, or
/// the lowest of those that the sky needs. All in double precision and in fixed order. Throws Cancelled.
///
/// J. Duchon, Splines minimizing rotation-invariant semi-norms in Sobolev spaces, Lecture Notes in Mathematics 571,
/// 1977.
CORVANE_VISIBLE std::optional<SkyModel> FitSkyModel(const CStlImage& image, int plane, SkyForm form,
                                                    std::optional<int> degree, const Run& run = {});

} // namespace corvane::stars
