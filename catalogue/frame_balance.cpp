#include "catalogue/frame_balance.h"

#include <algorithm>
#include <cmath>

#include "catalogue/own_samples.h"
#include "catalogue/registration.h"
#include "corvane/colour/plane_mix.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "stars/light_ratio.h"
#include "stars/sky_blocks.h"
#include "stars/sky_mesh.h"
#include "stars/sky_model.h"

namespace corvane::catalogue {
namespace {

constexpr std::size_t kBrightPart = 200; // one of so many blocks is brighter
constexpr double kFaintestLight = 2.0;   // deviations of a sample
constexpr const char* kBySkies = "; balance = sky compares skies alone";

/// A frame that is compared, and the plane of it.
struct Compared {
    const io::Frame& frame;
    int plane;

    const char* Name() const { return frame.image.GetOrgFileName(); }
};

/// What makes the samples of a frame those of the first one's brightness.
struct BrightnessChange {
    double factor;
    double offset;
    std::string by; ///< what the factor is known by
};

stars::SkyModel SkyOf(const Compared& of, const Run& run)
{
    const auto sky = stars::FitSkyModel(of.frame.image, of.plane, stars::SkyForm::kPolynomial, std::nullopt, run);
    if (!sky) {
        throw FileError(of.Name(), "shows no sky to balance by; balance = none leaves it as it is");
    }
    return *sky;
}

/// How far blocks of the frame rise above the sky.
std::vector<double> RisesOf(const Compared& of, const stars::SkyModel& sky, const Run& run)
{
    const stars::CellGrid blocks = stars::MeasureSkyBlocks(of.frame.image, of.plane, run);
    std::vector<double> skyRow(static_cast<std::size_t>(of.frame.image.GetWidth()));
    std::vector<double> rises;
    for (int row = 0; row < blocks.Rows(); ++row) {
        sky.FillRow(static_cast<int>(std::lround(blocks.YOf(row))), skyRow.data());
        for (int column = 0; column < blocks.Columns(); ++column) {
            const double value = blocks.Value(column, row);
            if (std::isfinite(value)) {
                rises.push_back(value - skyRow[static_cast<std::size_t>(std::lround(blocks.XOf(column)))]);
            }
        }
    }
    return rises;
}

/// How far the brightest parts, stars apart, rise above the sky; at least two deviations of a sample, so that the noise
/// of a frame without such light does not take its place.
double BrightLightOf(const Compared& of, const stars::SkyModel& sky, const Run& run)
{
    std::vector<double> rises = RisesOf(of, sky, run);
    const double noise = stars::MeasureSkyMesh(of.frame.image, of.plane, run).noise.Median();
    if (rises.empty() || !std::isfinite(noise)) {
        return 0.0;
    }
    const auto bright = rises.end() - 1 - static_cast<std::ptrdiff_t>(rises.size() / kBrightPart);
    std::nth_element(rises.begin(), bright, rises.end());
    return std::max(*bright, kFaintestLight * noise);
}

BrightnessChange ByStars(const Compared& first, const Compared& other, const Fit& fit, const Run& run)
{
    const stars::LightRatio ratio = stars::MeasureLightRatio(
        {first.frame.image, first.plane}, {other.frame.image, other.plane}, MappingOf(fit, other.frame), run);
    if (ratio.stars == 0) {
        throw FileError(other.Name(), std::string("has no bright star in common with ") + first.Name() + kBySkies);
    }
    return {ratio.ratio, 0.0, " by " + std::to_string(ratio.stars) + (ratio.stars == 1 ? " star" : " stars")};
}

BrightnessChange ByLight(const Compared& of, double firstLight, const stars::SkyModel& sky, const Run& run)
{
    const double light = BrightLightOf(of, sky, run);
    if (!(light > 0.0) || !(firstLight > 0.0)) {
        throw FileError(of.Name(), std::string("cannot be balanced by light, there is none above the sky") + kBySkies);
    }
    return {firstLight / light, 0.0, " by the brightest parts"};
}

void Change(io::Frame& frame, const BrightnessChange& change, const Run& run)
{
    CStlImage& image = frame.image;
    OwnSamples(image);
    Stage stage(run, "Balancing frames...", image.GetHeight() * image.GetPlanes());
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        MixPlanes({{&image, plane, change.factor}}, change.offset, image, plane, stage);
        image.SetLevel(plane, change.factor * image.GetLevelMin(plane) + change.offset,
                       change.factor * image.GetLevelMax(plane) + change.offset);
    }
}

std::string TextOf(const Compared& of, const BrightnessChange& change)
{
    const bool isFactor = !change.by.empty();
    return std::string("balance: ") + of.Name() +
           (isFactor ? " times " + NumberText(change.factor, 5) + change.by + "," : "") + " plus " +
           NumberText(change.offset, 3);
}

} // namespace

Parameter BalanceParameter(const std::string& usual)
{
    return ChoiceParameter("balance", "what is made equal in all frames", {"none", "sky", "stars", "light"}, usual);
}

void Balance(std::vector<io::Frame>& frames, const std::vector<int>& planes, const std::vector<Fit>& fits,
             const std::string& how, const Run& run)
{
    if (how == "none") {
        return;
    }
    const Compared first{frames[0], planes[0]};
    const stars::SkyModel firstSky = SkyOf(first, run);
    const double firstLight = how == "light" ? BrightLightOf(first, firstSky, run) : 0.0;
    for (std::size_t i = 1; i < frames.size(); ++i) {
        const Compared other{frames[i], planes[i]};
        const stars::SkyModel sky = SkyOf(other, run);
        BrightnessChange change = how == "stars"   ? ByStars(first, other, fits[i], run)
                                  : how == "light" ? ByLight(other, firstLight, sky, run)
                                                   : BrightnessChange{1.0, 0.0, ""};
        change.offset = firstSky.Median() - change.factor * sky.Median();
        Change(frames[i], change, run);
        const std::string text = TextOf(other, change);
        run.TellNote(text);
        frames[0].header.AddHistory(text);
    }
}

} // namespace corvane::catalogue
