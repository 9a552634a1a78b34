#pragma once

#include "corvane/filter/filter_rows.h"
#include "corvane/filter/neighbourhood.h"

namespace corvane::filter {

/// Puts the values of a neighbourhood into ascending order. NaN ends up anywhere.
void Sort(Neighbours& points);

/// Writes the value of rank `rank` [clamped] in the neighbourhood of each column from `left` to before `right` to out.
/// Centres of no neighbourhood are copied.
void RankRow(const Band& band, int type, int rank, int left, int right, float* out);

inline void MedianRow(const Band& band, int type, int left, int right, float* out)
{
    RankRow(band, type, Points(type) / 2, left, right, out);
}

} // namespace corvane::filter
