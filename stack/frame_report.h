#pragma once

#include <optional>
#include <string>
#include <utility>

#include "corvane/core/mapping.h"
#include "stars/fit_map.h"

namespace corvane::stack {

/// What rejection leaves of the values of a light.
struct RejectedValues {
    long long values = 0; ///< on the grid, of all planes
    long long low = 0;    ///< dropped since they were too low
    long long high = 0;   ///< or too high
};

/// What became of one light.
struct FrameReport {
    std::string file;
    bool used = true;
    std::string reason{}; ///< why it was left out; empty when used
    /// @name What places it onto the reference
    /// @{
    double dx = 0.0;          ///< shift to the right [pixels]
    double dy = 0.0;          ///< shift downwards [pixels]
    double angle = 0.0;       ///< turn about its middle, clockwise where the first row is the top [degrees]
    double scale = 1.0;       ///< its distances over those of the reference
    double correlation = 1.0; ///< by shift: of what was found with the reference [-1..1]; 0 when nothing was found
    double residual = 0.0;    ///< by stars: root mean square distance of those in common [pixels]
    int matched = 0;          ///< by stars: how many are in common
    stars::MapModel model = stars::MapModel::kSimilarity; ///< by stars: how it is placed; the residual is that of it
    std::optional<FieldMap> map{}; ///< of a richer model, which then counts: the shift, turn and scale are the nearest
    /// @}
    /// @name What was seen in it, by stars
    /// @{
    int stars = 0;                     ///< fit to be measured
    double fwhm = 0.0;                 ///< their median width [pixels]
    double background = 0.0;           ///< level of the sky [raw units]
    double noise = 0.0;                ///< standard deviation of the sky [raw units]
    std::optional<double> fluxRatio{}; ///< light of the stars in common, over that in the reference
    std::optional<int> cosmicHits{};   ///< samples that cosmic rays had hit and that were mended, when it was asked for
    /// @}
    double weight = 1.0;                      ///< in the clipped mean, the largest being 1; 0 when left out
    std::optional<RejectedValues> rejected{}; ///< unset when that was not counted

    void LeaveOut(std::string why)
    {
        used = false;
        reason = std::move(why);
    }
    /// How it is placed onto the reference, given its standard centre.
    Alignment PlacedAbout(const CfPoint& centre) const
    {
        Alignment placed = Alignment::Turned(dx, dy, angle, centre);
        placed.scale = scale;
        return placed;
    }
    /// The same with what a richer model adds.
    Mapping MappingAbout(const CfPoint& centre) const { return map ? Mapping(*map) : Mapping(PlacedAbout(centre)); }
};

} // namespace corvane::stack
