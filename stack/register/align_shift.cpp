#include "stack/register/align_shift.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "corvane/platform/workers.h"
#include "stack/register/measure_lights.h"
#include "stars/find_stars.h"
#include "stars/patch.h"
#include "stars/stamp.h"

namespace corvane::stack {

namespace {

using stars::FieldStar;
using stars::PatchPlace;

constexpr double kRival = 0.6; // of a star's brightness: enough to be taken for it
constexpr double kEdge = 0.3;  // as bad as a star of this brightness that could be taken for it
constexpr double kFaint = 0.5; // of the brightest: its place is measured far worse
constexpr double kLeastCorrelation = 0.7;
constexpr double kLoneCorrelation = 0.9; // where the reference has hardly another star
constexpr double kLoneGain = 1.5;        // there, too
constexpr double kLeastPeak = 8.0;       // sigmas above the sky; the shift then is off by 0.14 pixels (1 sigma) at most
constexpr double kMostGain = 3.0;        // brighter or fainter than the reference
constexpr double kStarReach = 6.0;       // pixels, beyond which a smoothed star hardly goes
constexpr double kMostDrift = 0.25;      // pixels; farther off the centroid, something lies on the star
constexpr std::size_t kWitnesses = 24;
constexpr double kWitnessReach = 256.0;    // pixels; farther away a turn of the field shows
constexpr double kWitnessTolerance = 2.0;  // pixels
constexpr double kWitnessTurn = 0.01;      // more of them for each pixel of distance from the star
constexpr double kWitnessExcess = 10.0;    // sigmas that its own peak has in the reference
constexpr double kWitnessDetection = 6.0;  // sigmas that it should have in the light
constexpr double kWitnessBrightness = 0.4; // of what it should have, and the inverse
constexpr std::size_t kFewWitnesses = 2;   // as many as chance may put into their places
constexpr int kEnoughWitnesses = 3;        // in their places; chance does not put so many there
constexpr int kAttempts = 5;

/// Neither a hot pixel, a particle's track nor a satellite's trail.
bool IsPoint(const FieldStar& star)
{
    return !star.isHot && !star.isElongated;
}

PixelPlace PlaceOf(const FieldStar& star)
{
    return {static_cast<int>(std::lround(star.x)), static_cast<int>(std::lround(star.y))};
}

/// True when a place lies in an image, so far from its edges or farther.
bool LiesInside(double x, double y, const CStlImage& image, double margin)
{
    return x >= margin && y >= margin && x < image.GetWidth() - margin && y < image.GetHeight() - margin;
}

/// True when a star lies no farther than so many pixels from a place, along either axis.
bool LiesAt(const FieldStar& star, double x, double y, double distance)
{
    return std::max(std::fabs(star.x - x), std::fabs(star.y - y)) <= distance;
}

bool IsAlike(double gain, double most)
{
    return gain * most >= 1.0 && gain <= most;
}

/// Brightness of the brightest other star within reach, as a fraction of the star's own.
double RivalBrightness(const std::vector<FieldStar>& stars, const FieldStar& star, int reach)
{
    double rival = 0.0;
    for (const FieldStar& other : stars) {
        if (&other != &star && LiesAt(other, star.x, star.y, reach) && (IsPoint(other) || other.isSaturated)) {
            rival = std::max(rival, other.Excess() / star.Excess());
        }
    }
    return rival;
}

/// True when the stamp of a star holds something brighter.
bool IsOutshone(const FieldStar& star, stars::Stamp& stamp)
{
    const PixelPlace place = PlaceOf(star);
    stamp.MoveTo(place.x, place.y, star.sky);
    const float* const samples = stamp.Row(-stamp.Reach());
    return *std::max_element(samples, samples + stamp.Side() * stamp.Side()) > star.Excess();
}

/// The best star to look for; none without usable ones.
std::optional<PixelPlace> ChooseStar(const CStlImage& image, const std::vector<FieldStar>& stars, int size, int search)
{
    stars::Stamp stamp(image, stars::StarPlane(image), size / 2);
    std::optional<PixelPlace> best;
    std::pair<bool, double> least; // what speaks against it, the gravest first
    double brightest = 0.0;
    const int half = size / 2;
    for (const FieldStar& star : stars) {
        const auto [x, y] = PlaceOf(star);
        if (!star.IsUsable() || !LiesInside(x, y, image, half) || star.Excess() < kFaint * brightest) {
            continue;
        }
        brightest = std::max(brightest, star.Excess());
        const double rival = RivalBrightness(stars, star, search + half);
        const double edge = LiesInside(x, y, image, half + search) ? 0.0 : kEdge;
        const std::pair fault(IsOutshone(star, stamp), rival < kRival ? edge : rival);
        if (!best || fault < least) {
            best = PlaceOf(star);
            least = fault;
        }
    }
    return best;
}

/// Finds the patch about a place of the reference in other lights, and judges what is found.
class PatchAligner {
public:
    PatchAligner(const CStlImage& reference, PixelPlace centre, const std::vector<FieldStar>& stars,
                 const Options& options)
        : search_(options.search),
          patch_(reference, CPoint(centre.x, centre.y), options.size, options.search, stars::PatchLight::kSame)
    {
        for (const FieldStar& star : stars) {
            const double distance = Distance(star);
            const bool isOther = distance > kStarReach && distance < kWitnessReach && IsPoint(star);
            if (isOther && star.Excess() > kWitnessExcess * star.noise && witnesses_.size() < kWitnesses) {
                witnesses_.push_back(star);
            }
        }
    }

    /// Enters in the report how a light is placed, or why it is not.
    void Align(const CStlImage& light, const Run& run, FrameReport& report) const
    {
        const stars::StarField seen = stars::FindFieldStars(light, stars::StarPlane(light), {}, run);
        PatchPlace found;
        std::string reason = "nothing in it can be compared with the reference";
        int attempts = 0;
        const auto visit = [&](const PatchPlace& place) {
            const std::string itself = Judge(place, light, seen);
            const std::string fault = itself.empty() ? JudgeWitnesses(place, light, seen) : itself;
            const bool isCertain = fault.empty() && !IsLone();
            if (++attempts == 1 || isCertain) {
                found = place;
                reason = fault;
            } else if (fault.empty() && reason.empty()) {
                reason = "several stars match the reference equally well";
            }
            return itself.empty() && !isCertain && attempts < kAttempts;
        };
        patch_.Find(light, visit, run);
        report.correlation = found.correlation;
        if (reason.empty()) {
            report.dx = found.dx;
            report.dy = found.dy;
        } else {
            report.LeaveOut(reason);
        }
    }

private:
    /// Of another star from the patch's.
    double Distance(const FieldStar& other) const
    {
        const CPoint top = patch_.Top();
        return std::max(std::fabs(other.x - top.x), std::fabs(other.y - top.y));
    }

    /// True when the reference has too few other stars for them to prove a match.
    bool IsLone() const { return witnesses_.size() <= kFewWitnesses; }

    /// Why a match is not to be believed, by itself; empty if it is.
    std::string Judge(const PatchPlace& place, const CStlImage& light, const stars::StarField& seen) const
    {
        if (std::max(std::fabs(place.dx), std::fabs(place.dy)) >= std::max(search_, 1)) {
            return "the best match lies at the edge of the search range of " + std::to_string(search_) + " pixels";
        }
        if (!(place.correlation >= kLeastCorrelation)) {
            return "the best match has a correlation of " + NumberText(place.correlation, 2) + " with the reference, " +
                   NumberText(kLeastCorrelation, 1) + " is needed";
        }
        const CPoint top = patch_.Top();
        if (!LiesInside(top.x - place.dx, top.y - place.dy, light, kStarReach)) {
            return "the best match lies at the edge of the frame";
        }
        if (!IsAlike(place.gain, kMostGain)) {
            return "the best match has " + NumberText(place.gain, 2) + " times the brightness of the reference";
        }
        if (!(place.gain * patch_.Peak() >= kLeastPeak * seen.noise)) {
            return "the best match does not stand above the noise";
        }
        if (!(place.drift <= kMostDrift)) {
            return "something lies on the star of the best match";
        }
        return "";
    }

    /// Why a match is not to be believed as far as other stars tell; empty if it is.
    std::string JudgeWitnesses(const PatchPlace& place, const CStlImage& light, const stars::StarField& seen) const
    {
        int expected = 0;
        int present = 0;
        for (const FieldStar& star : witnesses_) {
            const double reach = kWitnessTolerance + kWitnessTurn * Distance(star);
            const double x = star.x - place.dx;
            const double y = star.y - place.dy;
            const double excess = place.gain * star.Excess();
            if (LiesInside(x, y, light, reach) && excess > kWitnessDetection * seen.noise) {
                ++expected;
                present += std::any_of(seen.stars.begin(), seen.stars.end(), [&](const FieldStar& other) {
                    return LiesAt(other, x, y, reach) && IsAlike(other.Excess() / excess, 1.0 / kWitnessBrightness);
                });
            }
        }
        const int enough = IsLone() ? 0 : std::min(kEnoughWitnesses, static_cast<int>(witnesses_.size() + 1) / 2);
        if (present < enough || 2 * present < expected) {
            return "only " + std::to_string(present) + " of " + std::to_string(expected) +
                   " other stars are where the best match would have them";
        }
        const bool isLike = IsAlike(place.gain, kLoneGain) && place.correlation >= kLoneCorrelation;
        if (IsLone() && !isLike) {
            return "the best match is not like enough to the reference, which has hardly another star to confirm it";
        }
        return "";
    }

    int search_;
    stars::Patch patch_;
    std::vector<FieldStar> witnesses_; ///< the only ones that chance hardly puts into each other's places
};

} // namespace

PixelPlace AlignByShift(const Options& options, LightFrames& frames, RawLights raw, std::vector<FrameReport>& reports,
                        const Run& run)
{
    Stage stage(run, "Aligning frames...", static_cast<int>(reports.size()));
    const Run silent{.cancelled = run.cancelled, .threads = run.threads}; // this stage tells how far the work is
    const int chosen = ReferenceIndex(options);
    const CStlImage reference(frames.ReadImage(chosen, run));
    const std::vector<FieldStar> stars = FindLightStars(raw.Read(chosen, run), reference, silent).stars;
    const std::optional<PixelPlace> centre =
        options.reference ? options.reference : ChooseStar(reference, stars, options.size, options.search);
    if (!centre) {
        throw FileError(options.lights[static_cast<std::size_t>(chosen)],
                        "shows no star that frames can be aligned on; choose a place with star = X,Y");
    }
    const PatchAligner aligner(reference, *centre, stars, options);
    const auto align = [&](int i) {
        FrameReport& report = reports[static_cast<std::size_t>(i)];
        if (i != chosen && report.used) {
            aligner.Align(frames.ReadImage(i, run), {.threads = run.threads}, report);
        }
    };
    platform::ForBlocks(static_cast<int>(reports.size()), frames.AtOnce(run), align, [&](int) { stage.Step(); });
    return *centre;
}

} // namespace corvane::stack
