#include "corvane/tone/curve_row.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "corvane/tone/steps.h"

namespace corvane {

CurveRow::CurveRow(const DisplayScale& scale, const std::vector<Curve>& curves)
    : scale_(scale), curves_(curves), last_(curves.front().Size() - 1.0), perIndex_(last_ / scale.range * kStepLift),
      hasTable_(FindInside())
{
    const auto exact = [this](double v) { return std::trunc(ExactPlace(v)); };
    const auto quick = [this](double v) { return std::trunc(QuickPlace(v)); };
    isQuick_ = hasTable_ && AgreeOnSteps(scale, scale.range / last_, static_cast<int>(last_), exact, quick);
    if (hasTable_) {
        FillTable();
        FindLines();
    }
}

/// Finds the samples between the levels; false when there are none, or when the levels are not in order.
bool CurveRow::FindInside()
{
    constexpr float kAbove = std::numeric_limits<float>::infinity();
    low_ = static_cast<float>(scale_.min);
    if (scale_.To256(low_) < 0.0) {
        low_ = std::nextafter(low_, kAbove);
    }
    high_ = static_cast<float>(scale_.min + scale_.range);
    if (scale_.To256(high_) > 255.0) {
        high_ = std::nextafter(high_, -kAbove);
    }
    return scale_.range > 0.0 && low_ <= high_ && scale_.To256(low_) >= 0.0 && scale_.To256(high_) <= 255.0;
}

void CurveRow::FillTable()
{
    const Curve& first = curves_.front();
    table_.resize(static_cast<std::size_t>(first.Size()));
    for (int i = 0; i < first.Size(); ++i) {
        double shown = first.Entry(i);
        for (std::size_t next = 1; next < curves_.size(); ++next) {
            curves_[next].Apply(&shown, 1);
        }
        table_[static_cast<std::size_t>(i)] = static_cast<float>(scale_.ToRaw(shown));
    }
}

void CurveRow::FindLines()
{
    std::optional<Curve::End> below = curves_.front().Below();
    std::optional<Curve::End> above = curves_.front().Above();
    for (std::size_t next = 1; next < curves_.size(); ++next) {
        below = below ? curves_[next].Then(*below) : below;
        above = above ? curves_[next].Then(*above) : above;
    }
    const auto raw = [this](const Curve::End& end) {
        return Curve::End{end.slope * scale_.RoundTrip(), scale_.ToRaw(end.start), scale_.ToRaw(end.value),
                          scale_.ToRaw(end.bound)};
    };
    hasLines_ = below && above;
    if (hasLines_) {
        below_ = raw(*below);
        above_ = raw(*above);
    }
}

void CurveRow::operator()(const float* in, float* out, int count) const
{
    const int rest = count % kBlock;
    const int whole = count - rest;
    MapWhole(in, out, whole);
    if (rest > 0) { // in a block too: what becomes of a sample does not depend on where in the row it lies
        alignas(64) float last[kBlock];
        std::fill(std::copy(in + whole, in + count, last), last + kBlock, low_);
        MapWhole(last, last, kBlock);
        std::copy(last, last + rest, out + whole);
    }
}

void CurveRow::MapWhole(const float* in, float* out, int count) const
{
    if (isQuick_) {
        MapBlocks(in, out, count / kBlock, [this](double v) { return QuickPlace(v); });
    } else if (hasTable_) {
        MapBlocks(in, out, count / kBlock, [this](double v) { return ExactPlace(v); });
    } else {
        for (int x = 0; x < count; x += kBlock) {
            FollowCurves(in + x, out + x);
        }
    }
}

/// Finds the places of a block before it looks up those of the block before: the processor does both at once.
template <class PlaceOf>
void CurveRow::MapBlocks(const float* in, float* out, int blocks, PlaceOf placeOf) const
{
    Places places[2];
    for (int b = 0; b <= blocks; ++b) {
        if (b < blocks) {
            Find(in + b * kBlock, placeOf, places[b % 2]);
        }
        if (b > 0) {
            MapBlock(in + (b - 1) * kBlock, places[(b - 1) % 2], out + (b - 1) * kBlock);
        }
    }
}

template <class PlaceOf>
void CurveRow::Find(const float* in, PlaceOf placeOf, Places& places) const
{
    const float low = low_;
    const float high = high_;
    int outside = 0;
    for (int x = 0; x < kBlock; ++x) {
        const float inside = std::min(high, std::max(low, in[x]));
        outside |= std::bit_cast<int>(inside) ^ std::bit_cast<int>(in[x]);
        places.index[x] = static_cast<int>(placeOf(inside));
    }
    places.areInside = outside == 0;
}

void CurveRow::MapBlock(const float* in, const Places& places, float* out) const
{
    if (places.areInside) {
        LookUp(places.index, table_.data(), out, kBlock);
    } else if (hasLines_) {
        alignas(64) float inside[kBlock];
        LookUp(places.index, table_.data(), inside, kBlock);
        AddLines(in, inside, out);
    } else {
        FollowCurves(in, out);
    }
}

void CurveRow::AddLines(const float* in, const float* __restrict inside, float* out) const
{
    const double low = low_;
    const double high = high_;
    const Curve::End below = below_;
    const Curve::End above = above_;
    for (int x = 0; x < kBlock; ++x) {
        const double v = in[x];
        const double entry = inside[x];
        const double left = below(std::max(v, below.bound));
        const double right = above(std::min(v, above.bound));
        const double outside = v < low ? left : right; // NaN goes right and stays
        const bool isInside = (v >= low) & (v <= high);
        out[x] = static_cast<float>(isInside ? entry : outside);
    }
}

void CurveRow::FollowCurves(const float* in, float* out) const
{
    double shown[kBlock];
    for (int x = 0; x < kBlock; ++x) {
        shown[x] = scale_.To256(in[x]);
    }
    for (const Curve& curve : curves_) {
        curve.Apply(shown, kBlock);
    }
    for (int x = 0; x < kBlock; ++x) {
        out[x] = static_cast<float>(scale_.ToRaw(shown[x]));
    }
}

} // namespace corvane
