#pragma once

#include <vector>

#include "corvane/core/display_scale.h"
#include "corvane/tone/curve.h"

namespace corvane {

/// Sends rows of one plane through curves, one after the other.
///
/// Between the levels the result depends on the first curve's entry alone: a table holds it in raw units for each
/// entry, and a sample costs one look-up. Beyond them it lies on a line, or else the curves are followed one by one.
class CurveRow {
public:
    CurveRow(const DisplayScale& scale, const std::vector<Curve>& curves);

    void operator()(const float* in, float* out, int count) const;

private:
    static constexpr int kBlock = Curve::kBlock;

    /// The places of the samples of a block in the table.
    struct Places {
        alignas(64) int index[kBlock];
        bool areInside; ///< whether all samples lie between the levels; one outside has the place of the nearest
    };

    /// How many entries a sample lies above the first, in the order of operations that tells on which side of a step.
    double ExactPlace(double v) const { return last_ * scale_.To256(v) * kPer255; }
    /// The same without a division.
    double QuickPlace(double v) const { return (v - scale_.min) * perIndex_; }

    bool FindInside();
    void FillTable();
    void FindLines();
    void MapWhole(const float* in, float* out, int count) const;
    template <class PlaceOf>
    void MapBlocks(const float* in, float* out, int blocks, PlaceOf placeOf) const;
    template <class PlaceOf>
    void Find(const float* in, PlaceOf placeOf, Places& places) const;
    void MapBlock(const float* in, const Places& places, float* out) const;
    void AddLines(const float* in, const float* inside, float* out) const;
    void FollowCurves(const float* in, float* out) const;

    DisplayScale scale_;
    std::vector<Curve> curves_;
    double last_;       ///< index of the last entry
    double perIndex_;   ///< entries for one raw unit
    float low_ = 0.0F;  ///< the smallest sample between the levels
    float high_ = 0.0F; ///< the largest one
    bool hasTable_;
    bool isQuick_; ///< both ways to a place lead to one entry
    std::vector<float> table_;
    bool hasLines_ = false;
    Curve::End below_{}; ///< of the samples below the levels, in raw units
    Curve::End above_{}; ///< of the samples above them, in raw units
};

} // namespace corvane
