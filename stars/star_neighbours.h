#pragma once

#include <vector>

#include "stars/find_stars.h"

namespace corvane::stars {

/// Marks stars as crowded that have another one within two widths [pixels] of them, at least 0.15 times as bright. What
/// is hot does not count.
void MarkCrowded(std::vector<FieldStar>& stars, double fwhm);

/// Keeps one, the brightest, of the stars closer to each other than 0.75 widths [pixels], where two cannot be told from
/// one with noise.
void RemoveDuplicates(std::vector<FieldStar>& stars, double fwhm);

/// Keeps one, the brightest, of the elongated objects that follow each other within four widths [pixels], when they are
/// four or more: a trail has a maximum every few pixels.
void JoinTrails(std::vector<FieldStar>& stars, double fwhm);

} // namespace corvane::stars
