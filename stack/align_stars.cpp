#include "stack/align_stars.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "io/error.h"
#include "stack/match_fields.h"
#include "stack/progress.h"
#include "stack/robust.h"
#include "stack/text.h"

namespace corvane::stack {

namespace {

constexpr double kGoodShare = 0.75;       // of the most stars, for a reference
constexpr double kPairDistance = 2.0;     // pixels between a star and its place in the reference
constexpr double kLeastLight = 1.0 / 3.0; // of the reference's, for the same exposure

using Stars = std::vector<FieldStar>;

/// The sharpest of the lights that show most of the stars; -1 when none shows any.
int BestLight(const std::vector<FrameReport>& reports)
{
    int most = 0;
    for (const FrameReport& report : reports) {
        most = report.used ? std::max(most, report.stars) : most;
    }
    int best = -1;
    for (int i = 0; i < static_cast<int>(reports.size()) && most > 0; ++i) {
        const FrameReport& report = reports[static_cast<std::size_t>(i)];
        const bool isGood = report.used && report.stars >= kGoodShare * most;
        best = isGood && (best < 0 || report.fwhm < reports[static_cast<std::size_t>(best)].fwhm) ? i : best;
    }
    return best;
}

/// The light of stars in common over that in the reference; empty when there are none.
std::optional<double> FluxRatio(const Stars& reference, const Stars& stars, const Alignment& alignment)
{
    std::vector<double> ratios;
    for (const FieldStar& star : reference) {
        const Position at = alignment.Map(star.x, star.y);
        const auto isSame = [&](const FieldStar& other) {
            return other.IsUsable() && std::hypot(other.x - at.x, other.y - at.y) < kPairDistance;
        };
        const auto found = std::find_if(stars.begin(), stars.end(), isSame);
        if (star.IsUsable() && found != stars.end() && star.flux > 0.0) {
            ratios.push_back(found->flux / star.flux);
        }
    }
    return ratios.empty() ? std::nullopt : std::optional(MedianOf(ratios));
}

/// Clouds: to bring such a light to the brightness of the others would bring up its noise as much.
void LeaveOutFaint(double exposureRatio, FrameReport& report)
{
    const double ratio = report.fluxRatio.value_or(1.0) / exposureRatio;
    if (ratio < kLeastLight) {
        report.LeaveOut("its stars have " + NumberText(ratio, 2) + " times the light of the reference's");
    }
}

void Place(const Options& options, const CfPoint& centre, const Stars& reference, const Stars& stars,
           FrameReport& report)
{
    const FieldMatch match = MatchFields(reference, stars, centre, {options.alignsScale, true});
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
    report.fluxRatio = FluxRatio(reference, stars, report.PlacedAbout(centre));
}

} // namespace

int ChooseReferenceLight(const Options& options, const std::vector<FrameReport>& reports)
{
    const int chosen = options.referenceFile.empty() ? BestLight(reports) : ReferenceIndex(options);
    if (chosen < 0 || reports[static_cast<std::size_t>(chosen)].stars == 0) {
        throw io::Error(reports[static_cast<std::size_t>(std::max(chosen, 0))].file,
                        std::string(chosen < 0 ? "neither this light nor another" : "the reference does not") +
                            " show stars to align by; lights that fit as they lie are stacked with --align none");
    }
    return chosen;
}

void AlignByStars(const Options& options, const CfPoint& centre, int reference,
                  const std::vector<double>& exposureRatios, const std::vector<SeenLight>& seen,
                  std::vector<FrameReport>& reports)
{
    const Stars& stars = seen[static_cast<std::size_t>(reference)].stars;
    Progress progress(options.progressWindow, "Matching stars...", static_cast<int>(reports.size()));
    for (std::size_t i = 0; i < reports.size(); ++i) {
        if (static_cast<int>(i) == reference) {
            reports[i].matched = static_cast<int>(stars.size());
            reports[i].fluxRatio = 1.0;
        } else if (reports[i].used) {
            Place(options, centre, stars, seen[i].stars, reports[i]);
            LeaveOutFaint(exposureRatios[i], reports[i]);
        }
        progress.Step();
    }
}

} // namespace corvane::stack
