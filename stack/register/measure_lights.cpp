#include "stack/register/measure_lights.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "corvane/core/text.h"
#include "corvane/platform/workers.h"
#include "stack/register/thumbnail.h"
#include "stars/full_well.h"
#include "stars/robust.h"
#include "stars/sky_blocks.h"

namespace corvane::stack {

namespace {

constexpr std::size_t kStarsKept = 400; // of each light: more do not make a match more exact, and lights are many
constexpr double kLeastSpread = 0.01;   // of the median
constexpr std::size_t kManyLights = 200;
constexpr int kThumbnailSize = 96; // longer side [pixels]; half of it of many lights, so that a page loads at once

/// What the options need to know of lights.
struct Wanted {
    bool stars;
    bool levels;
    bool sky;
    int thumbnailSize; ///< 0: none

    explicit Wanted(const Options& options)
    {
        const WeightMethod weight = WeightOf(options);
        const bool weighsSharpness = weight == WeightMethod::kFwhm || weight == WeightMethod::kSnr;
        const bool weighsNoise = weight == WeightMethod::kNoise || weight == WeightMethod::kSnr;
        stars = options.align == AlignMethod::kStars || weighsSharpness || weight == WeightMethod::kStars ||
                options.rejectFwhm || options.rejectStars || options.rejectBackground;
        levels = NormaliseOf(options) != NormaliseMethod::kNone || weighsNoise || options.wantsReport;
        sky = NormaliseOf(options) == NormaliseMethod::kLocal;
        thumbnailSize = !options.wantsReport                  ? 0
                        : options.lights.size() > kManyLights ? kThumbnailSize / 2
                                                              : kThumbnailSize;
    }

    bool Anything() const { return stars || levels; }
};

/// Enters what was seen in the report, and keeps the best stars.
void Report(stars::StarField field, FrameReport& report, std::vector<stars::FieldStar>& stars)
{
    const auto isUsable = [](const stars::FieldStar& star) { return star.IsUsable(); };
    const auto unusable = std::stable_partition(field.stars.begin(), field.stars.end(), isUsable);
    report.stars = static_cast<int>(unusable - field.stars.begin());
    report.fwhm = field.fwhm;
    report.background = field.sky;
    report.noise = field.noise;
    stars.assign(field.stars.begin(),
                 field.stars.begin() + static_cast<std::ptrdiff_t>(std::min(field.stars.size(), kStarsKept)));
}

SeenLight Measure(LightFrames& frames, RawLights& raw, int light, const Wanted& wanted, FrameReport& report,
                  const Run& run)
{
    CStlImage image(frames.ReadImage(light, run));
    SeenLight seen;
    if (wanted.thumbnailSize > 0) {
        seen.thumbnail = Thumbnail(image, stars::StarPlane(image), wanted.thumbnailSize);
    }
    for (int plane = 0; plane < image.GetPlanes() && wanted.levels; ++plane) {
        seen.levels.push_back(MeasureFrame(image, plane));
    }
    for (int plane = 0; plane < image.GetPlanes() && wanted.sky; ++plane) {
        seen.sky.push_back(stars::MeasureSkyBlocks(image, plane, run));
    }
    if (wanted.stars) {
        const CStlImage before = frames.AreRaw() ? raw.WithRecord(light, image) : raw.Read(light, run);
        Report(FindLightStars(before, std::move(image), run), report, seen.stars);
    } else {
        const FrameLevel& level = seen.levels[static_cast<std::size_t>(stars::StarPlane(image))];
        report.background = level.background;
        report.noise = level.noise;
    }
    return seen;
}

/// A limit: what is measured, how far it may lie from the median, and on which side.
struct Limit {
    const char* what;
    const std::optional<double>& sigmas;
    double side; ///< 1: too much is bad; -1: too little
    int digits;  ///< of the value, behind the point
    double (*value)(const FrameReport&);
};

void Apply(const Limit& limit, std::vector<FrameReport>& reports)
{
    std::vector<double> values;
    for (const FrameReport& report : reports) {
        values.push_back(limit.value(report));
    }
    const stars::RobustLevel set = stars::MeasureLevel(values);
    const double sigma = std::max(set.deviation, kLeastSpread * std::fabs(set.median));
    for (std::size_t i = 0; i < reports.size(); ++i) {
        const double sigmas = limit.side * (values[i] - set.median) / sigma;
        if (reports[i].used && sigmas > *limit.sigmas) {
            reports[i].LeaveOut(std::string(limit.what) + " is " + NumberText(values[i], limit.digits) + ", " +
                                NumberText(sigmas, 1) + " sigmas off the median of all lights, " +
                                NumberText(set.median, limit.digits));
        }
    }
}

} // namespace

std::vector<SeenLight> MeasureLights(const Options& options, const std::vector<int>& lights, LightFrames& frames,
                                     RawLights& raw, std::vector<FrameReport>& reports, const Run& run)
{
    const Wanted wanted(options);
    std::vector<SeenLight> seen(lights.size());
    if (!wanted.Anything()) {
        return seen;
    }
    const int count = static_cast<int>(lights.size());
    Stage stage(run, "Measuring lights...", count);
    const Run silent{.threads = run.threads}; // the stage asks whether to go on, light by light
    const auto measure = [&](int i) {
        const int light = lights[static_cast<std::size_t>(i)];
        FrameReport& report = reports[static_cast<std::size_t>(light)];
        seen[static_cast<std::size_t>(i)] = Measure(frames, raw, light, wanted, report, silent);
    };
    platform::ForBlocks(count, frames.AtOnce(run), measure, [&](int) { stage.Step(); });
    return seen;
}

stars::StarField FindLightStars(const CStlImage& raw, CStlImage calibrated, const Run& run)
{
    const int plane = stars::StarPlane(calibrated);
    const int rawPlane = std::min(plane, raw.GetPlanes() - 1); // a filter mosaic has one
    const FrameLevel level = MeasureFrame(raw, rawPlane);
    const double ceiling = stars::FullWellLevel(raw, rawPlane, level.background, level.spread, run);
    const double sky = MeasureFrame(calibrated, plane).background;
    const auto fullWell = stars::LevelSaturated(raw, rawPlane, ceiling, calibrated, plane, sky);
    return stars::FindFieldStars(calibrated, plane, {.fullWell = fullWell}, run);
}

std::vector<stars::FieldStar> FindFrameStars(const CStlImage& image, const Run& run)
{
    FrameReport ignored;
    std::vector<stars::FieldStar> stars;
    Report(stars::FindFieldStars(image, stars::StarPlane(image), {}, run), ignored, stars);
    return stars;
}

void ApplyLimits(const Options& options, std::vector<FrameReport>& reports)
{
    const Limit limits[] = {
        {"the width of its stars", options.rejectFwhm, 1.0, 2, [](const FrameReport& report) { return report.fwhm; }},
        {"the number of its stars", options.rejectStars, -1.0, 0,
         [](const FrameReport& report) { return static_cast<double>(report.stars); }},
        {"its background", options.rejectBackground, 1.0, 2,
         [](const FrameReport& report) { return report.background; }},
    };
    for (const Limit& limit : limits) {
        if (limit.sigmas) {
            Apply(limit, reports);
        }
    }
}

} // namespace corvane::stack
