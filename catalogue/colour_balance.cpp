#include "catalogue/colour_balance.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <vector>

#include "catalogue/background.h"
#include "catalogue/names.h"
#include "corvane/core/blank.h"
#include "corvane/core/defined.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "corvane/core/walk.h"
#include "stars/star_colours.h"

namespace corvane::catalogue {
namespace {

/// Makes function(plane, sample) of every sample that is not blank, as one stage.
template <class Function>
void MapDefined(CStlImage& image, const char* text, const Run& run, Function function)
{
    const BlankTest isBlank(image);
    Stage stage(run, text, image.GetHeight() * image.GetPlanes());
    WalkArea(image, image, WorkingArea(image, nullptr), stage, [&](int plane) {
        return [=](const float* from, float* row, int count) {
            for (int x = 0; x < count; ++x) {
                row[x] = isBlank(from[x]) ? from[x] : static_cast<float>(function(plane, from[x]));
            }
        };
    });
}

void RunNeutralSky(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    std::vector<double> skies;
    for (const stars::SkyModel& sky : MeasureSkies(frame.image, stars::SkyForm::kPolynomial, std::nullopt, run)) {
        skies.push_back(sky.Median());
    }
    const double mean = std::accumulate(skies.begin(), skies.end(), 0.0) / static_cast<double>(skies.size());
    const double value = arguments.Has("value") ? arguments.Number("value") : mean;
    std::transform(skies.begin(), skies.end(), skies.begin(), [=](double sky) { return value - sky; });
    const std::array<double, 3> offsets{skies[0], skies[1], skies[2]};
    MapDefined(frame.image, "Bringing skies to one value...", run,
               [=](int plane, double v) { return v + offsets[static_cast<std::size_t>(plane)]; });
}

bool AreFactorsGiven(const Arguments& arguments)
{
    return std::any_of(kChannels.begin(), kChannels.end(), [&](const char* name) { return arguments.Has(name); });
}

std::array<double, 3> FactorsFor(const CStlImage& image, const Arguments& arguments, const Run& run)
{
    std::array<double, 3> factors{1.0, 1.0, 1.0};
    if (AreFactorsGiven(arguments)) {
        std::transform(kChannels.begin(), kChannels.end(), factors.begin(),
                       [&](const char* name) { return arguments.Has(name) ? arguments.Number(name) : 1.0; });
        return factors;
    }
    const stars::StarColours colours = stars::MeasureStarColours(image, run);
    if (colours.stars == 0) {
        throw InputError("image", "has no star to tell its colour by; give red, green and blue");
    }
    factors = {1.0 / colours.red, 1.0, 1.0 / colours.blue};
    run.TellNote("red=" + NumberText(factors[0]) + ",blue=" + NumberText(factors[2]) + " by " +
                 std::to_string(colours.stars) + " stars");
    return factors;
}

void RunWhiteBalance(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const std::array<double, 3> factors = FactorsFor(frame.image, arguments, run);
    MapDefined(frame.image, "Balancing white...", run,
               [=](int plane, double v) { return v * factors[static_cast<std::size_t>(plane)]; });
}

/// Takes off green what there is more of than of red and blue.
template <class Neutral>
void TakeOffRow(const float* red, float* green, const float* blue, int count, double strength,
                const DefinedTest& isDefined, Neutral neutral)
{
    for (int x = 0; x < count; ++x) {
        const double most = neutral(red[x], blue[x]);
        const double lower = green[x] - strength * (green[x] - most);
        const bool isGreen = isDefined(red[x]) & isDefined(green[x]) & isDefined(blue[x]) & (green[x] > most);
        green[x] = isGreen ? static_cast<float>(lower) : green[x];
    }
}

void RunTakeOffGreen(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const bool isMaximum = arguments.Text("mode") == "maximum";
    const double strength = arguments.Number("strength");
    CStlImage& image = frame.image;
    const DefinedTest isDefined(image);
    const int count = image.GetWidth();
    Stage stage(run, "Taking off green...", image.GetHeight());
    WalkBlocks(RowBlocks(WorkingArea(image, nullptr)), image, {}, stage, 1, [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            const float* const red = image.GetImageAdr(0, y, 0, 1);
            float* const green = image.GetImageAdr(0, y, 1);
            const float* const blue = image.GetImageAdr(0, y, 2, 1);
            if (isMaximum) {
                TakeOffRow(red, green, blue, count, strength, isDefined,
                           [](double r, double b) { return std::max(r, b); });
            } else {
                TakeOffRow(red, green, blue, count, strength, isDefined,
                           [](double r, double b) { return 0.5 * (r + b); });
            }
        }
    });
}

Parameter FactorParameter(const char* name)
{
    return NumberParameter(name, std::string("factor of the ") + name + " plane", "", {1e-6, 1e6},
                           "1 if another factor is given, else by the stars");
}

} // namespace

Operation NeutralSky()
{
    return {.name = "neutral-sky",
            .summary = "bring the skies of the planes to one value",
            .help =
                "Adds a number to each plane. The sky is the median of the model of the step background, so stars and "
                "nebulae do not count. Noise and stars stay as they are.",
            .inputs = {{.planes = Planes::Colour}},
            .parameters = {NumberParameter("value", "what the skies get", "counts", kAnyNumber, "the mean of them")},
            .footprint = Always(kWholeImage),
            .skies = Skies::Joined,
            .run = RunNeutralSky};
}

Operation WhiteBalance()
{
    return {.name = "white-balance",
            .summary = "make the stars white as a whole",
            .help =
                "Multiplies each plane by a factor. Without any, red and blue get those that make the median colour "
                "of the stars white: of those that are saturated in no plane, by their light above the sky about "
                "them. A note tells the factors. The skies are multiplied, too: neutral-sky comes after.",
            .inputs = {{.planes = Planes::Colour}},
            .parameters = {FactorParameter("red"), FactorParameter("green"), FactorParameter("blue")},
            .footprint = [](const Arguments& given) { return AreFactorsGiven(given) ? Footprint{} : kWholeImage; },
            .skies = Skies::Parted,
            .run = RunWhiteBalance};
}

Operation TakeOffGreen()
{
    return {
        .name = "scnr",
        .summary = "take off green what neither red nor blue has",
        .help =
            "Nothing in the sky but a few nebulae is green. Where green is above the mean of red and blue, or above "
            "the larger of them, it is lowered to that. Samples are compared as they are: bring the skies to one "
            "value before. Pixels with an undefined sample stay.",
        .inputs = {{.planes = Planes::Colour}},
        .parameters = {ChoiceParameter("mode", "what green is lowered to: the mean of red and blue or the larger one",
                                       {"average", "maximum"}, "average"),
                       NumberParameter("strength", "which part of the excess is taken off", "", {0.0, 1.0}, 1.0)},
        .footprint = Always({}),
        .run = RunTakeOffGreen};
}

} // namespace corvane::catalogue
