#include "stack/register/align_stars.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "corvane/platform/workers.h"
#include "stars/choose_map.h"
#include "stars/match_fields.h"
#include "stars/robust.h"
#include "stars/star_partner.h"

namespace corvane::stack {

namespace {

constexpr double kGoodShare = 0.75;       // of the most stars, for a reference
constexpr std::size_t kMostTries = 5;     // of references that most other lights do not fit
constexpr double kLeastLight = 1.0 / 3.0; // of the reference's, for the same exposure

using Stars = std::vector<stars::FieldStar>;

/// The lights that may be the reference, best first: those that show most of the stars, the sharpest before the others;
/// or the one that the options name.
std::vector<std::size_t> Candidates(const Options& options, const std::vector<FrameReport>& reports)
{
    if (!options.referenceFile.empty()) {
        return {static_cast<std::size_t>(ReferenceIndex(options))};
    }
    int most = 0;
    for (const FrameReport& report : reports) {
        most = report.used ? std::max(most, report.stars) : most;
    }
    std::vector<std::size_t> candidates;
    for (std::size_t i = 0; i < reports.size() && most > 0; ++i) {
        if (reports[i].used && reports[i].stars >= kGoodShare * most) {
            candidates.push_back(i);
        }
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [&](std::size_t a, std::size_t b) { return reports[a].fwhm < reports[b].fwhm; });
    return candidates;
}

/// A light's exposure over that of the reference; 1 where one of both is not known.
double ExposureRatio(const std::optional<double>& light, const std::optional<double>& reference)
{
    const double ratio = light && reference ? *light / *reference : 1.0;
    return ratio > 0.0 && std::isfinite(ratio) ? ratio : 1.0;
}

/// The light of stars in common over that in the reference; empty when there are none.
std::optional<double> FluxRatio(const Stars& reference, const Stars& stars, const Mapping& mapping)
{
    std::vector<double> ratios;
    for (const stars::FieldStar& star : reference) {
        const stars::FieldStar* const found = stars::PartnerOf(star, stars, mapping);
        if (star.IsUsable() && found != nullptr && star.flux > 0.0) {
            ratios.push_back(found->flux / star.flux);
        }
    }
    return ratios.empty() ? std::nullopt : std::optional(stars::MedianOf(ratios));
}

/// Clouds: to bring such a light to the brightness of the others would bring up its noise as much.
void LeaveOutFaint(double exposureRatio, FrameReport& report)
{
    const double ratio = report.fluxRatio ? *report.fluxRatio / exposureRatio : 1.0;
    if (ratio < kLeastLight) {
        report.LeaveOut("its stars have " + NumberText(ratio, 2) + " times the light of the reference's");
    }
}

/// Enters a richer map than the alignment that the report has, where one is wanted and holds.
void Bend(const Options& options, const MeasuredLights& lights, const Stars& reference, const Stars& stars,
          FrameReport& report)
{
    const Alignment match = report.PlacedAbout(lights.centre);
    const stars::ChosenMap chosen = stars::ChooseMap(
        reference, stars, match,
        {options.transform, options.alignsScale, stars::CommonArea(lights.area, lights.reference, match)});
    if (chosen.map) {
        report.model = chosen.model;
        report.map = chosen.map;
        report.residual = chosen.residual;
        report.matched = chosen.stars;
    }
}

void Place(const Options& options, const MeasuredLights& lights, const Stars& reference, const Stars& stars,
           FrameReport& report)
{
    const stars::FieldMatch match = stars::MatchFields(reference, stars, lights.centre, {options.alignsScale, true});
    report.residual = match.residual;
    report.matched = match.stars;
    if (!match.reason.empty() || match.isMirrored) {
        report.LeaveOut(match.isMirrored ? "it shows the reference in a mirror; flip it first" : match.reason);
        return;
    }
    report.dx = match.dx;
    report.dy = match.dy;
    report.angle = match.angle;
    report.scale = match.scale;
    Bend(options, lights, reference, stars, report);
    report.fluxRatio = FluxRatio(reference, stars, report.MappingAbout(lights.centre));
}

constexpr std::size_t kNone = ~std::size_t{0};

/// Matches every light with one of them, or with the stars of the frame from outside.
void PlaceOn(std::size_t reference, const Options& options, const MeasuredLights& lights,
             std::vector<FrameReport>& reports, const Run& run)
{
    const Stars& stars = reference == kNone ? lights.onto : lights.seen[reference].stars;
    const int count = static_cast<int>(reports.size());
    Stage stage(run, "Matching stars...", count);
    const auto place = [&](int light) {
        const auto i = static_cast<std::size_t>(light);
        if (i == reference) {
            reports[i].matched = std::min(reports[i].stars, static_cast<int>(stars.size()));
            reports[i].fluxRatio = 1.0;
        } else if (reports[i].used) {
            Place(options, lights, stars, lights.seen[i].stars, reports[i]);
            if (reference != kNone) {
                LeaveOutFaint(ExposureRatio(lights.exposures[i], lights.exposures[reference]), reports[i]);
            }
        }
    };
    platform::ForBlocks(count, run.Threads(), place, [&](int) { stage.Step(); });
}

std::ptrdiff_t CountUsed(const std::vector<FrameReport>& reports)
{
    return std::count_if(reports.begin(), reports.end(), [](const FrameReport& report) { return report.used; });
}

/// Stars of a field with the light that they have in another one, which is placed on it.
Stars WithLightOf(const Stars& others, const Stars& field, const Mapping& mapping)
{
    Stars seen;
    for (stars::FieldStar star : field) {
        if (const stars::FieldStar* const found = stars::PartnerOf(star, others, mapping)) {
            star.flux = found->flux;
            seen.push_back(star);
        }
    }
    return seen;
}

/// Places all lights on the frame from outside. Returns the first candidate that fits, or the first light that does:
/// the candidates may all show another field.
int AlignOnto(const Options& options, const MeasuredLights& lights, const std::vector<std::size_t>& candidates,
              std::vector<FrameReport>& reports, const Run& run)
{
    PlaceOn(kNone, options, lights, reports, run);
    const auto isUsed = [](const FrameReport& report) { return report.used; };
    const auto fits =
        std::find_if(candidates.begin(), candidates.end(), [&](std::size_t i) { return reports[i].used; });
    const auto any = std::find_if(reports.begin(), reports.end(), isUsed);
    const bool isNamed = !options.referenceFile.empty();
    if (fits == candidates.end() && (isNamed || any == reports.end())) {
        const FrameReport& first = reports[candidates.front()];
        throw FileError(options.onto,
                        (isNamed ? "the reference cannot be placed on it: " : "no light can be placed on it: ") +
                            first.file + ": " + first.reason);
    }
    const std::size_t reference = fits != candidates.end() ? *fits : static_cast<std::size_t>(any - reports.begin());
    const Stars seen =
        WithLightOf(lights.seen[reference].stars, lights.onto, reports[reference].MappingAbout(lights.centre));
    for (std::size_t i = 0; i < reports.size(); ++i) {
        if (reports[i].used) {
            reports[i].fluxRatio = FluxRatio(seen, lights.seen[i].stars, reports[i].MappingAbout(lights.centre));
            LeaveOutFaint(ExposureRatio(lights.exposures[i], lights.exposures[reference]), reports[i]);
        }
    }
    return static_cast<int>(reference);
}

} // namespace

int AlignByStars(const Options& options, const MeasuredLights& lights, std::vector<FrameReport>& reports,
                 const Run& run)
{
    const std::vector<std::size_t> candidates = Candidates(options, reports);
    if (candidates.empty() || reports[candidates.front()].stars == 0) {
        const bool isNamed = !candidates.empty();
        throw FileError(reports[isNamed ? candidates.front() : 0].file,
                        std::string(isNamed ? "the reference does not" : "neither this light nor another") +
                            " show stars to align by; lights that fit as they lie are stacked with align = none");
    }
    if (!options.onto.empty()) {
        return AlignOnto(options, lights, candidates, reports, run);
    }
    std::size_t reference = candidates.front();
    std::vector<FrameReport> best;
    for (std::size_t i = 0; i < std::min(candidates.size(), kMostTries); ++i) {
        std::vector<FrameReport> placed = reports;
        PlaceOn(candidates[i], options, lights, placed, run);
        if (best.empty() || CountUsed(placed) > CountUsed(best)) {
            best = std::move(placed);
            reference = candidates[i];
        }
        if (2 * CountUsed(best) > CountUsed(reports)) { // it is no stray light
            break;
        }
    }
    reports = std::move(best);
    return static_cast<int>(reference);
}

} // namespace corvane::stack
