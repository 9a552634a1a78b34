#include "stack/calibrate/masters.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "corvane/core/error.h"
#include "corvane/core/gaps.h"
#include "corvane/platform/workers.h"
#include "stack/calibrate/calibrated_frames.h"
#include "stack/combine/combine.h"

namespace corvane::stack {

namespace {

constexpr int kMasterRowsAtOnce = 64;

/// Frames of one kind on their way to a master.
class MasterSource : public FrameSource {
public:
    /// `dark` is taken off each frame; none when it holds nothing.
    MasterSource(FrameSet& frames, const Masters& dark)
        : set_(frames), frames_(frames, {{dark}}, 0.0, std::vector<double>(frames.Count(), 1.0)),
          gains_(frames.Count(), 1.0)
    {}

    /// Brings every frame to the mean of the first one.
    void LevelToFirst(const Run& run);
    std::shared_ptr<CStlImage> Combine(Coverage coverage, const char* text, const Run& run);

    FrameFacts Facts(int frame) const override { return frames_.Facts(frame); }
    void Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) override
    {
        ReadPart(frame, firstRow, rowCount, samples, planeStride);
        frames_.Release(frame);
    }

private:
    void ReadPart(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);
    double Mean(int frame);

    FrameSet& set_;
    CalibratedFrames frames_;
    std::vector<double> gains_;
};

void MasterSource::ReadPart(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    frames_.ReadPart(frame, firstRow, rowCount, samples, planeStride);
    const double gain = gains_[frame];
    if (gain == 1.0) {
        return;
    }
    const FrameFacts facts = Facts(frame);
    const BlankTest isBlank = facts.IsBlank();
    const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(rowCount) * facts.width;
    for (int plane = 0; plane < facts.planes; ++plane) {
        float* rows = samples + plane * planeStride;
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const double s = rows[i];
            rows[i] = static_cast<float>(isBlank(s) ? s : s * gain);
        }
    }
}

/// Mean of plane 0, by which a flat works. Blanks and NaN are passed over.
double MasterSource::Mean(int frame)
{
    const FrameFacts info = Facts(frame);
    const BlankTest isBlank = info.IsBlank();
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(kMasterRowsAtOnce) * info.width;
    std::vector<float> samples(static_cast<std::size_t>(stride) * info.planes);
    double sum = 0.0;
    long long count = 0;
    for (int row = 0; row < info.height; row += kMasterRowsAtOnce) {
        const int rows = std::min(kMasterRowsAtOnce, info.height - row);
        ReadPart(frame, row, rows, samples.data(), stride);
        for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(rows) * info.width; ++i) {
            const double s = samples[i];
            const bool counts = std::isfinite(s) && !isBlank(s);
            sum += counts ? s : 0.0;
            count += counts ? 1 : 0;
        }
    }
    frames_.Release(frame);
    return sum / static_cast<double>(count);
}

void MasterSource::LevelToFirst(const Run& run)
{
    Stage stage(run, "Measuring flats...", set_.Count());
    std::vector<double> means(gains_.size());
    const auto measure = [&](int i) {
        means[i] = Mean(i);
        if (!(means[i] > 0.0)) {
            throw FileError(set_.Path(i), "the flat holds no light: its mean is not above 0");
        }
    };
    platform::ForBlocks(set_.Count(), run.Threads(), measure, [&](int) { stage.Step(); });
    std::transform(means.begin(), means.end(), gains_.begin(), [&](double mean) { return means[0] / mean; });
}

std::shared_ptr<CStlImage> MasterSource::Combine(Coverage coverage, const char* text, const Run& run)
{
    const FrameFacts info = Facts(0);
    auto master = std::make_shared<CStlImage>(-32, info.width, info.height, info.planes, 1.0, 0.0, 1);
    CombinePlan plan{.grid = {info.width, info.height},
                     .coverage = coverage,
                     .blank = CommonBlank(set_),
                     .memory = set_.BandMemory(),
                     .areBandsLong = !set_.StaysOpen()};
    for (int i = 0; i < set_.Count(); ++i) {
        plan.frames.push_back({.frame = i});
    }
    CombineFrames(plan, *this, {*master}, run, text);
    master->UnlockAll();
    set_.Close();
    return master;
}

/// Refuses a master that would leave nothing of any light.
void RequireSamples(const CStlImage& master, const FrameSet& frames, const std::string& kind)
{
    for (int y = 0; y < master.GetHeight(); ++y) {
        if (HoldsDefined(master.GetImageAdr(0, y, 0, 1), master.GetWidth(), BlankTest(master))) {
            return;
        }
    }
    throw FileError(frames.Path(0), "the " + kind + " has no sample that is defined");
}

/// Makes masters, those that several sets share once.
class MasterMaker {
public:
    MasterMaker(const MasterStore& store, const Run& run) : store_(store), run_(run) {}

    /// A master of frames that are used as they are; `kind` is what a user calls them.
    std::shared_ptr<const CStlImage> Plain(FrameSet& frames, const std::string& kind);
    /// Sets the master flat of frames from which those of the kind `takenOff` are taken off; null for none.
    void SetFlat(FrameSet& flats, FrameSet* takenOff, const std::string& kind, Masters& masters);

private:
    using Origin = std::pair<const FrameSet*, const FrameSet*>;

    Masters MakeFlat(FrameSet& flats, FrameSet* takenOff, const std::string& kind);

    const MasterStore& store_;
    const Run& run_;
    std::map<const FrameSet*, std::shared_ptr<const CStlImage>> plain_;
    std::map<Origin, Masters> flats_; ///< each with nothing but its flat
};

std::shared_ptr<const CStlImage> MasterMaker::Plain(FrameSet& frames, const std::string& kind)
{
    std::shared_ptr<const CStlImage>& master = plain_[&frames];
    if (master == nullptr && !frames.IsEmpty()) {
        const MasterRecipe recipe{kind, frames};
        master = store_.Find(recipe);
        if (master == nullptr) {
            const std::string text = "Combining " + kind + (kind == "bias" ? " frames..." : "s...");
            master = MasterSource(frames, Masters()).Combine(Coverage::kAll, text.c_str(), run_);
            RequireSamples(*master, frames, kind);
            store_.Keep(recipe, *master);
        }
    }
    return master;
}

void MasterMaker::SetFlat(FrameSet& flats, FrameSet* takenOff, const std::string& kind, Masters& masters)
{
    const auto [made, isNew] = flats_.try_emplace({&flats, takenOff});
    if (isNew) {
        made->second = MakeFlat(flats, takenOff, kind);
    }
    masters.flat = made->second.flat;
    masters.flatMean = made->second.flatMean;
    masters.flatGaps = made->second.flatGaps;
}

Masters MasterMaker::MakeFlat(FrameSet& flats, FrameSet* takenOff, const std::string& kind)
{
    const MasterRecipe recipe{"flat", flats, takenOff, kind};
    std::shared_ptr<CStlImage> flat = store_.Find(recipe);
    if (flat == nullptr) {
        Masters forFlats;
        forFlats.dark = takenOff == nullptr ? nullptr : Plain(*takenOff, kind);
        MasterSource source(flats, forFlats);
        if (flats.Count() > 1) {
            source.LevelToFirst(run_);
        }
        flat = source.Combine(Coverage::kAny, "Combining flats...", run_);
        RequireSamples(*flat, flats, "flat");
        store_.Keep(recipe, *flat);
    }
    Masters masters;
    masters.flatGaps = MarkGaps(*flat);
    masters.flatMean = masters.flatGaps == 0 ? flat->GetAvrGrayRaw(0) : MeanBesideGaps(*flat, 0);
    masters.flat = flat;
    const bool isUsable = masters.flatMean > 0.0 && std::isfinite(masters.flatMean);
    if (!isUsable) {
        throw FileError(flats.Path(0), "the flat cannot be used: its mean is not a number above 0");
    }
    return masters;
}

} // namespace

int CommonBlank(const FrameSet& frames)
{
    for (int i = 0; i < frames.Count(); ++i) {
        if (frames.Info(i).blank) {
            return *frames.Info(i).blank;
        }
    }
    CImage record;
    frames.Describe(0, record);
    const int blank = static_cast<int>(UndefinedValue(record));
    return blank != 0 ? blank : std::numeric_limits<int>::min();
}

std::vector<Masters> MakeMasters(Plan& plan, const MasterStore& store, const Run& run)
{
    MasterMaker maker(store, run);
    std::vector<Masters> sets;
    for (const CalibrationFrames& frames : plan.sets) {
        Masters& masters = sets.emplace_back();
        masters.bias = maker.Plain(*frames.bias, "bias");
        masters.dark = maker.Plain(*frames.darks, "dark");
        if (!frames.flats->IsEmpty()) {
            const bool hasOwnDark = !frames.flatDarks->IsEmpty();
            FrameSet* const bias = frames.flatsAreCalibrated || frames.bias->IsEmpty() ? nullptr : frames.bias.get();
            maker.SetFlat(*frames.flats, hasOwnDark ? frames.flatDarks.get() : bias, hasOwnDark ? "flat-dark" : "bias",
                          masters);
        }
    }
    return sets;
}

} // namespace corvane::stack
