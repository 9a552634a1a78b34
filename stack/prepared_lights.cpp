#include "stack/prepared_lights.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <set>
#include <utility>

#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "corvane/platform/workers.h"
#include "io/metadata.h"
#include "stack/calibrate/cosmetic.h"
#include "stack/calibrate/cosmic_hits.h"
#include "stack/calibrate/masters.h"
#include "stack/combine/local_sky.h"
#include "stack/register/align_shift.h"
#include "stack/register/align_stars.h"
#include "stars/robust.h"

namespace corvane::stack {

namespace {

constexpr int kMosaicStep = 2; // from a pixel to the next of its colour

/// "flat_001.fits and 9 more"
std::string FirstOf(const FrameSet& frames)
{
    const int more = frames.Count() - 1;
    return frames.Path(0) + (more > 0 ? " and " + std::to_string(more) + " more" : "");
}

} // namespace

PreparedLights::PreparedLights(const Options& options, Registration& result, Stopwatch& stopwatch, const Run& run)
    : options_(options), result_(result), stopwatch_(stopwatch), run_(run), plan_(MakePlan(options, run)),
      seen_(options.lights.size()), hits_(options.lights.size())
{
    std::for_each(plan_.notes.begin(), plan_.notes.end(), [this](const auto& note) { AddNote(note); });
    for (const std::string& light : options_.lights) {
        result_.frames.push_back({light});
    }
    stopwatch_.End("check");
}

void PreparedLights::Calibrate()
{
    if (frames_) {
        return;
    }
    const MasterSets masters{MakeMasters(plan_, MasterStore(options_.mastersFolder, run_), run_), plan_.setOf};
    NoteFlatGaps(masters.sets);
    calibrated_.emplace(plan_.lights, masters, options_.pedestal, plan_.darkScales);
    if (options_.cosmetic) {
        MendHotPixels(masters.sets);
    }
    if (options_.cosmic) {
        calibrated_->MendCosmicHits(hits_);
    }
    frames_.emplace(*calibrated_, plan_.patterns, options_.demosaic);
    raw_.emplace(plan_.lights);
    stopwatch_.End("masters");
}

void PreparedLights::AddNote(const std::string& text)
{
    result_.notes.push_back(text);
    run_.TellNote(text);
}

void PreparedLights::NoteFlatGaps(const std::vector<Masters>& sets)
{
    std::set<const CStlImage*> told;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        if (sets[i].flatGaps > 0 && told.insert(sets[i].flat.get()).second) {
            AddNote(FirstOf(*plan_.sets[i].flats) + ": undefined samples: " + std::to_string(sets[i].flatGaps) +
                    "; each light is undefined there");
        }
    }
}

void PreparedLights::MendHotPixels(const std::vector<Masters>& sets)
{
    std::map<const CStlImage*, HotPixels> found{{nullptr, {}}};
    std::vector<HotPixels> pixels;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const CStlImage* const dark = sets[i].dark.get();
        if (found.count(dark) == 0) {
            const HotPixels& hot = found.try_emplace(dark, *dark, plan_.isMosaic ? kMosaicStep : 1).first->second;
            if (!hot.Fault().empty()) {
                throw FileError(plan_.sets[i].darks->Path(0), hot.Fault());
            }
            AddNote("hot pixels that were mended: " + std::to_string(hot.Count()));
        }
        pixels.push_back(found[dark]);
    }
    calibrated_->MendHotPixels(std::move(pixels));
}

void PreparedLights::FindHits(const std::vector<int>& lights)
{
    constexpr int kLightsHeld = 5; // a light and, of its size, what finding takes
    const int count = static_cast<int>(lights.size());
    const auto find = [&](int i) {
        const int light = lights[static_cast<std::size_t>(i)];
        LightHits found = FindCosmicHits(*calibrated_, light, plan_.isMosaic, run_);
        result_.frames[static_cast<std::size_t>(light)].cosmicHits = static_cast<int>(CountOf(found));
        if (!AreTooMany(found, calibrated_->Facts(light))) {
            hits_[static_cast<std::size_t>(light)] = std::move(found);
        }
    };
    const int atOnce = LightFrames(*calibrated_, {}, options_.demosaic).AtOnce(run_, kLightsHeld);
    Stage stage(run_, "Finding cosmic rays...", count);
    platform::ForBlocks(count, atOnce, find, [&](int) { stage.Step(); });
    stopwatch_.End("cosmic rays");
}

void PreparedLights::NoteHits()
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < hits_.size(); ++i) {
        FrameReport& report = result_.frames[i];
        count += CountOf(hits_[i]);
        if (*report.cosmicHits > 0 && hits_[i].empty()) {
            AddNote(report.file + ": more than 1 % of its samples are as sharp as hits of cosmic rays; they stay");
            report.cosmicHits = 0;
        }
    }
    AddNote("samples that cosmic rays had hit, which were mended: " + std::to_string(count));
}

void PreparedLights::Measure(const std::vector<int>& lights)
{
    if (options_.cosmic) {
        FindHits(lights);
    }
    std::vector<SeenLight> seen = MeasureLights(options_, lights, *frames_, *raw_, result_.frames, run_);
    for (std::size_t i = 0; i < lights.size(); ++i) {
        seen_[static_cast<std::size_t>(lights[i])] = std::move(seen[i]);
    }
}

LightRecord PreparedLights::RecordOf(int light) const
{
    const auto i = static_cast<std::size_t>(light);
    return {result_.frames[i], seen_[i], hits_[i]};
}

void PreparedLights::Take(int light, LightRecord record)
{
    const auto i = static_cast<std::size_t>(light);
    result_.frames[i] = std::move(record.report);
    seen_[i] = std::move(record.seen);
    hits_[i] = std::move(record.hits);
}

void PreparedLights::Place()
{
    if (options_.cosmic) {
        NoteHits();
    }
    TakeThumbnails();
    ApplyLimits(options_, result_.frames);
    result_.referenceLight = ReferenceIndex(options_);
    const bool isAlone = plan_.lights.Count() == 1 && options_.onto.empty();
    if (options_.align == AlignMethod::kStars && !isAlone) {
        AlignByTheirStars();
    } else if (options_.align == AlignMethod::kShift && !isAlone) {
        result_.reference = AlignByShift(options_, *frames_, *raw_, result_.frames, run_);
    }
    FollowTheirMotion();
    SetWeights();
    stopwatch_.End("align");
}

void PreparedLights::Register()
{
    std::vector<int> all(seen_.size());
    std::iota(all.begin(), all.end(), 0);
    Calibrate();
    Measure(all);
    Place();
}

void PreparedLights::TakePlaces(int referenceLight, const std::optional<PixelPlace>& reference,
                                std::vector<std::string> notes)
{
    result_.referenceLight = referenceLight;
    result_.reference = reference;
    TakeThumbnails();
    FollowTheirMotion();
    result_.notes = std::move(notes);
}

void PreparedLights::TakeThumbnails()
{
    result_.isBottomUp = io::IsBottomUp(plan_.lights.Info(0).header);
    for (const SeenLight& light : seen_) {
        result_.thumbnails.push_back(light.thumbnail);
    }
}

void PreparedLights::AlignByTheirStars()
{
    constexpr double kAnywhere = std::numeric_limits<double>::infinity();
    const stars::Area area{0.0, 0.0, plan_.width - 1.0, plan_.height - 1.0};
    const stars::Area base{0.0, 0.0, plan_.Base().Width() - 1.0, plan_.Base().Height() - 1.0};
    const stars::Area all{-kAnywhere, -kAnywhere, kAnywhere, kAnywhere};
    MeasuredLights lights{seen_, plan_.exposures, plan_.Centre(), area, options_.canvas == Canvas::kUnion ? all : base};
    if (!plan_.onto.IsEmpty()) {
        lights.onto = FindFrameStars(RawLights(plan_.onto).Read(0, run_), run_);
    }
    result_.referenceLight = AlignByStars(options_, lights, result_.frames, run_);
}

void PreparedLights::FollowTheirMotion()
{
    if (!options_.follow.empty()) {
        constexpr double kHour = 3600.0;
        motion_ = FollowMotion(options_, plan_, result_.referenceLight, plan_.Centre(), result_.frames);
        AddNote("what the stack follows moves by " + NumberText(motion_.perSecond.x * kHour, 2) +
                " pixels an hour to the right and " + NumberText(motion_.perSecond.y * kHour, 2) + " down");
    }
}

/// What brings the planes of a light to the level of the reference; nothing when that was not asked for.
std::vector<Normalisation> PreparedLights::NormalisationsOf(std::size_t light) const
{
    const NormaliseMethod method = NormaliseOf(options_);
    std::vector<Normalisation> normalisations;
    const auto reference = static_cast<std::size_t>(result_.referenceLight);
    if (method == NormaliseMethod::kNone || light == reference) {
        return normalisations;
    }
    const std::optional<double> ratio = result_.frames[light].fluxRatio;
    const std::optional<double> toReference = ratio ? std::optional(1.0 / *ratio) : std::nullopt;
    for (std::size_t p = 0; p < seen_[light].levels.size(); ++p) {
        normalisations.push_back(
            NormalisationOf(seen_[reference].levels[p], seen_[light].levels[p], method, toReference));
    }
    return normalisations;
}

/// The noise of a plane of a light that was measured, once it is brought to the brightness of the reference.
double PreparedLights::NoiseOf(std::size_t light, std::size_t plane) const
{
    const std::vector<Normalisation> normalisations = NormalisationsOf(light);
    return seen_[light].levels[plane].noise * (normalisations.empty() ? 1.0 : normalisations[plane].factor);
}

std::optional<Depth> PreparedLights::DepthOf(const CStlImage& stack) const
{
    const CombineBy by = CombineOf(options_);
    const bool isOfKind = options_.method || by == CombineBy::kMean || by == CombineBy::kMedian;
    if (!options_.wantsReport || !isOfKind || options_.drizzle) {
        return std::nullopt;
    }
    const int plane = stars::StarPlane(stack);
    std::vector<double> noises;
    double worth = 0.0;
    for (const int light : UsedFrames(result_.frames)) {
        noises.push_back(NoiseOf(static_cast<std::size_t>(light), static_cast<std::size_t>(plane)));
        worth += 1.0 / (noises.back() * noises.back());
    }
    return Depth{stars::MeasureLevel(noises).median, 1.0 / std::sqrt(worth), MeasureFrame(stack, plane).noise};
}

void PreparedLights::SetWeights()
{
    std::vector<FrameQuality> qualities;
    for (std::size_t i = 0; i < result_.frames.size(); ++i) {
        const FrameReport& report = result_.frames[i];
        const double noise = seen_[i].levels.empty() ? 0.0 : NoiseOf(i, 0);
        const double stars = options_.align == AlignMethod::kStars ? report.matched : report.stars;
        qualities.push_back(report.used ? FrameQuality{noise, report.fwhm, stars} : FrameQuality{});
    }
    const std::vector<double> weights = WeightsOf(qualities, WeightOf(options_));
    for (std::size_t i = 0; i < weights.size(); ++i) {
        result_.frames[i].weight = result_.frames[i].used ? weights[i] : 0.0;
    }
}

std::vector<Placement> PreparedLights::Placements(bool followsMotion) const
{
    std::vector<Placement> placements;
    const Mapping reference = MappingOf(static_cast<std::size_t>(result_.referenceLight), followsMotion);
    for (const int i : UsedFrames(result_.frames)) {
        const auto light = static_cast<std::size_t>(i);
        placements.push_back({.frame = i,
                              .mapping = MappingOf(light, followsMotion),
                              .normalisation = NormalisationsOf(light),
                              .weight = result_.frames[light].weight});
        AddFields(placements.back(), reference);
    }
    return placements;
}

Mapping PreparedLights::MappingOf(std::size_t light, bool followsMotion) const
{
    const Position moved = followsMotion ? motion_.since[light] : Position{0.0, 0.0};
    return result_.frames[light].MappingAbout(plan_.Centre()).From(moved.x, moved.y);
}

/// Has the offsets of a light change over the reference, when that was asked for.
void PreparedLights::AddFields(Placement& placement, const Mapping& reference) const
{
    const io::FrameReader& base = plan_.Base();
    for (std::size_t p = 0; p < placement.normalisation.size() && NormaliseOf(options_) == NormaliseMethod::kLocal;
         ++p) {
        Normalisation& normalisation = placement.normalisation[p];
        const stars::CellGrid& target = seen_[static_cast<std::size_t>(result_.referenceLight)].sky[p];
        const stars::CellGrid& sky = seen_[static_cast<std::size_t>(placement.frame)].sky[p];
        normalisation.field = OffsetsBetween({target, reference}, {sky, placement.mapping}, normalisation.factor,
                                             base.Width(), base.Height());
    }
}

std::vector<int> UsedFrames(const std::vector<FrameReport>& frames)
{
    std::vector<int> used;
    for (int i = 0; i < static_cast<int>(frames.size()); ++i) {
        if (frames[static_cast<std::size_t>(i)].used) {
            used.push_back(i);
        }
    }
    return used;
}

} // namespace corvane::stack
