#pragma once

#include <array>
#include <string>
#include <vector>

#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "corvane/platform/rect.h"
#include "stars/find_stars.h"

namespace corvane::stars {

/// A star whose width was asked for. Positions count as those of FieldStar.
struct MeasuredStar {
    CPoint top{};        ///< its brightest sample
    double x = 0.0;      ///< centroid, weighted by the square of what rises above the sky; without a width, the top
    double y = 0.0;      ///< likewise
    double peak = 0.0;   ///< value of its brightest sample [raw units]
    double sky = 0.0;    ///< median of a ring about it [raw units]
    double noise = 0.0;  ///< standard deviation in that ring, by the median deviation [raw units]
    double flux = 0.0;   ///< sum above the sky within 1.5 widths [raw units]; 0 without a width
    double fwhm = 0.0;   ///< width as PSF takes it, along the row and the column of the top [pixels]; 0 without one
    std::string fault{}; ///< why it does not count; empty when it does

    bool IsUsed() const { return fault.empty(); }
};

/// The stars of one part of the field.
struct FieldPart {
    int stars = 0;     ///< those that count
    double fwhm = 0.0; ///< their mean width [pixels]; 0 without any
};

inline constexpr int kFieldParts = 3; ///< parts of the field along either axis

/// The widths of a field's stars.
struct FieldWidths {
    std::vector<MeasuredStar> stars; ///< in the order in which they were asked for
    int used = 0;                    ///< those that count
    double meanFwhm = 0.0;           ///< PSF's mean over them [pixels]; 0 without any
    double medianFwhm = 0.0;         ///< PSF's median over them [pixels]; 0 without any
    std::array<std::array<FieldPart, kFieldParts>, kFieldParts> parts{}; ///< [row][column], rows in the file's order
};

/// Measures stars of one plane, each at the peak to which the samples rise from its place; places outside are moved to
/// the edge. A star counts when it has a width below 20 pixels, rises `sigmas` standard deviations above the sky about
/// it and does not share its peak with one before. The plane must be one of the image; an empty image has no stars.
/// Throws Cancelled.
CORVANE_VISIBLE FieldWidths MeasureStars(const CStlImage& image, int plane, const std::vector<CPoint>& places,
                                         double sigmas, const Run& run = {});

/// The same for stars that the finder saw. Those that are not usable are measured too, but do not count.
CORVANE_VISIBLE FieldWidths MeasureStars(const CStlImage& image, int plane, const std::vector<FieldStar>& found,
                                         double sigmas, const Run& run = {});

/// What speaks against measuring with a star, in words: "saturated", "hot", "elongated", "edge", "crowded".
CORVANE_VISIBLE std::vector<std::string> FlagWords(const FieldStar& star);

} // namespace corvane::stars
