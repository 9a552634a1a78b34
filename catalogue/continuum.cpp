// The light of a line alone: a narrow band without what shines in all colours.

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/colour_header.h"
#include "catalogue/operations.h"
#include "catalogue/own_samples.h"
#include "catalogue/registration.h"
#include "catalogue/restoration.h"
#include "catalogue/undefined.h"
#include "corvane/colour/plane_mix.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "corvane/core/widen.h"
#include "stars/light_ratio.h"
#include "stars/psf.h"
#include "stars/sky_model.h"

namespace corvane::catalogue {
namespace {

constexpr int kLeastRatioStars = 3; // fewer do not tell how far they scatter
constexpr const char* kStarWidths = "width";
constexpr double kSureOfWidth = 3.0; // standard errors
constexpr int kBlurRounds = 4;
constexpr double kWidest = 20.0; // pixels: a blur of this width, and no more

/// What the broad band is multiplied by, with words for how it is known.
struct ContinuumFactor {
    double value;
    std::string text;
};

/// The width of a frame's stars [pixels, as the FWHM of a Gaussian]; nothing where it shows none.
std::optional<stars::Measured> StarWidthOf(const CStlImage& image, const Run& run)
{
    const Run silent{.cancelled = run.cancelled, .threads = run.threads};
    const stars::FieldPsf psf = stars::MeasurePsf(image, 0, {.model = stars::PsfModel::kGaussian}, silent);
    if (psf.zones.empty() || psf.zones.front().stars == 0) {
        return std::nullopt;
    }
    const auto& [major, minor, angle, beta] = psf.zones.front().widths;
    return stars::Measured{std::sqrt(major.value * minor.value), 0.5 * std::hypot(major.error, minor.error)};
}

/// Blurs an image until its stars, of one width, have another. That of a Gaussian would grow by the kernel's in their
/// squares; those of stars with wings grow faster, and show it.
void BlurTo(const stars::Measured& wider, const stars::Measured& sharper, CStlImage& image, const Run& run)
{
    const double growth = std::min(wider.value * wider.value - sharper.value * sharper.value, kWidest * kWidest);
    double square = growth;
    bool isSure = false;
    CStlImage blurred(image);
    for (int round = 0; round < kBlurRounds; ++round) {
        Widen(blurred, image, square / (kFwhmOfSigma * kFwhmOfSigma), run);
        const std::optional<stars::Measured> now = isSure ? std::nullopt : StarWidthOf(blurred, run);
        if (!now || now->value <= sharper.value || std::fabs(now->value - wider.value) < wider.error) {
            break;
        }
        const double grown = now->value * now->value - sharper.value * sharper.value;
        const double change = growth / grown - 1.0;
        square = std::min(square * growth / grown, kWidest * kWidest);
        isSure = change * change * growth < 2.0 * wider.value * wider.error; // what such a change leaves to another
    }
    image.Swap(&blurred);
}

/// Blurs the sharper of two frames of one grid until its stars are as wide as those of the other, and says so; nothing
/// where they are, or where a frame has no star to tell.
std::string MatchWidths(CStlImage& narrow, CStlImage& broad, const Run& run)
{
    const std::optional<stars::Measured> ofNarrow = StarWidthOf(narrow, run);
    const std::optional<stars::Measured> ofBroad = StarWidthOf(broad, run);
    if (!ofNarrow || !ofBroad ||
        std::fabs(ofNarrow->value - ofBroad->value) < kSureOfWidth * std::hypot(ofNarrow->error, ofBroad->error)) {
        return {};
    }
    const bool isNarrowSharper = ofNarrow->value < ofBroad->value;
    const stars::Measured& sharper = isNarrowSharper ? *ofNarrow : *ofBroad;
    const stars::Measured& wider = isNarrowSharper ? *ofBroad : *ofNarrow;
    BlurTo(wider, sharper, isNarrowSharper ? narrow : broad, run);
    return std::string(", ") + (isNarrowSharper ? "narrow" : "broad") + " band blurred from a FWHM of " +
           NumberText(sharper.value, 2) + " to " + NumberText(wider.value, 2) + " pixels";
}

/// By frames of one grid.
ContinuumFactor ContinuumFactorOf(const std::vector<io::Frame>& frames, const Arguments& arguments, const Run& run)
{
    if (arguments.Has("factor")) {
        const double factor = arguments.Number("factor");
        return {factor, "factor " + NumberText(factor) + ", as given"};
    }
    const stars::LightRatio ratio =
        stars::MeasureLightRatio({frames[0].image, 0}, {frames[1].image, 0}, Mapping(), run);
    if (ratio.stars < kLeastRatioStars) {
        throw InputError("broad", "has " + std::to_string(ratio.stars) +
                                      " bright stars in common with the narrow band, and it takes 3 to tell the factor "
                                      "by; give factor");
    }
    return {ratio.ratio, "factor " + NumberText(ratio.ratio, 6) + " +- " + NumberText(ratio.error, 6) + " by " +
                             std::to_string(ratio.stars) + " stars"};
}

double BroadSky(const io::Frame& broad, const Run& run)
{
    const auto sky = stars::FitSkyModel(broad.image, 0, stars::SkyForm::kPolynomial, std::nullopt, run);
    if (!sky) {
        throw InputError("broad", "shows no sky");
    }
    return sky->Median();
}

/// Takes the broad band, which lies on one grid with it, off the narrow one.
void TakeOff(const CStlImage& broad, double factor, double sky, CStlImage& narrow, const Run& run)
{
    OwnSamples(narrow);
    Stage stage(run, "Taking off the continuum...", narrow.GetHeight());
    MixPlanes({{&narrow, 0, 1.0}, {&broad, 0, -factor}}, factor * sky, narrow, 0, stage);
}

Outputs RunContinuum(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    std::vector<io::Frame> frames;
    frames.push_back(std::move(inputs["narrow"].front()));
    frames.push_back(std::move(inputs["broad"].front()));
    const Registration registration = RegistrationBy(arguments.Text("align"), frames.size());
    std::vector<Fit> fits = FitFrames(frames, {0, 0}, registration, run);
    std::for_each(frames.begin(), frames.end(), MarkUndefined);
    const double sky = BroadSky(frames[1], run);
    Fit& fit = fits[1];
    fit.map = MappingOf(fit, frames[1]); // so that a frame of another size is brought onto the grid, too
    BringOnto(frames[0], frames[1], fit, {}, {std::numeric_limits<double>::quiet_NaN()}, run);
    const std::string matched =
        arguments.Text("match") == kStarWidths ? MatchWidths(frames[0].image, frames[1].image, run) : std::string();
    const ContinuumFactor factor = ContinuumFactorOf(frames, arguments, run);
    TakeOff(frames[1].image, factor.value, sky, frames[0].image, run);
    const std::string text = "continuum: " + factor.text + ", sky of the broad band " + NumberText(sky, 3) + matched;
    run.TellNote(text);
    DropExtremes(frames[0].header);
    frames[0].header.AddHistory(text);
    return PairOutputs(frames[0], fit);
}

} // namespace

std::vector<Operation> ContinuumOperations()
{
    return {{.name = "continuum",
             .summary = "take a broad band off a narrow one",
             .help =
                 "What is left shines in the line of the narrow band: stars go, nebulae stay. The broad band is "
                 "brought onto the narrow one by its stars. The sharper of the two is blurred until its stars are as "
                 "wide as those of the other, by a kernel like a Gaussian; otherwise stars would leave rings. The sky "
                 "of the broad band, the median of the model of the step background, is taken off, so that the narrow "
                 "band keeps its own; and it is multiplied by the factor: the light of stars in the narrow band over "
                 "that in the broad one, the median over those that are bright in both and saturated in neither. A "
                 "note and HISTORY tell it, with its standard error. Stars of other colours and saturated ones leave "
                 "traces. A broad band that holds the line, too, takes about the factor of the nebula's light with it. "
                 "What either frame lacks is undefined. Take gradients of the sky out of both first, with the step "
                 "background.",
             .inputs = {{.name = "narrow", .summary = "the frame through the narrow filter", .planes = Planes::Mono},
                        {.name = "broad", .summary = "the frame through the broad filter", .planes = Planes::Mono}},
             .parameters = {StarsOrNone("NARROW"),
                            NumberParameter("factor", "what the broad band is multiplied by", "", {0.0, 1e6},
                                            "by the light of stars in both"),
                            ChoiceParameter("match", "what of the sharper frame is blurred to that of the other",
                                            {kStarWidths, "none"}, kStarWidths)},
             .outputs = PairOutputs(),
             .run = RunContinuum}};
}

} // namespace corvane::catalogue
