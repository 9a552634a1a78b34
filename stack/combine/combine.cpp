#include "stack/combine/combine.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <string>

#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "corvane/core/text.h"
#include "stack/combine/row_window.h"

namespace corvane::stack {

namespace {

bool IsMoved(const Alignment& alignment)
{
    return !alignment.IsShift() || alignment.dx != 0.0 || alignment.dy != 0.0;
}

/// The alignment onto a grid of another scale. Positions are those of the middles of pixels; the first one's corner is
/// what both have in common.
Alignment OnGrid(Alignment alignment, double scale)
{
    if (scale != 1.0) {
        const double corner = 0.5 - 0.5 / scale;
        alignment.dx = (alignment.centreX + alignment.dx + corner) * scale - alignment.centreX;
        alignment.dy = (alignment.centreY + alignment.dy + corner) * scale - alignment.centreY;
        alignment.scale /= scale;
    }
    return alignment;
}

std::vector<double> Weights(const std::vector<Placement>& frames)
{
    std::vector<double> weights;
    std::transform(frames.begin(), frames.end(), std::back_inserter(weights), [](const auto& f) { return f.weight; });
    return weights;
}

/// What the plan may take of the memory that the budget leaves.
std::uint64_t MemoryFor(const CombinePlan& plan)
{
    return std::min(plan.memory, MemoryBudget() - std::min(MemoryInUse(), MemoryBudget()));
}

constexpr int kFewestColumns = 16;

/// A frame at work.
struct PlacedFrame {
    const Placement& placement;
    Alignment alignment; ///< onto the grid
    FrameFacts facts;
    RowWindow window;
    bool usesBlank;             ///< it declares one, or leaves a part of the target free
    std::vector<double> values; ///< of one row of the target
    std::vector<int> valid;

    /// Bytes of a row of all planes.
    std::uint64_t RowBytes() const { return sizeof(float) * facts.width * static_cast<std::uint64_t>(facts.planes); }
};

/// Combines into one target: a band of rows at a time, and in strips of columns when turned frames would not fit.
class BandCombiner {
public:
    BandCombiner(const CombinePlan& plan, FrameSource& source, const CombineTarget& target);
    void Combine(const Run& run, const char* text);

private:
    std::uint64_t Margins(int columns) const;
    int ColumnsOfStrip() const;
    std::uint64_t FixedBytes(int columns) const;
    double BytesOfRow() const;
    int RowsOfBand(int columns) const;
    void OpenStrip(int left, int right);
    void CombineBand(int firstRow, int lastRow, Stage& stage);
    void Read(const PlacedFrame& frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) const;
    void CombineRow(int row, int plane);
    void SampleRow(PlacedFrame& frame, int row, int plane) const;
    float* RowOf(CStlImage* image, int row, int plane) const;
    bool HasBlanks() const;

    const CombinePlan& plan_;
    FrameSource& source_;
    const CombineTarget& target_;
    int width_;
    int firstRow_; ///< of the grid, that the target has
    int endRow_;
    int left_ = 0; ///< first column of the strip
    int columns_ = 0;
    std::uint64_t memory_;
    std::vector<PlacedFrame> frames_;
    std::vector<CombineLine> lines_;
    RowCombiner combiner_;
    int fewest_; ///< frames that have some pixel
};

BandCombiner::BandCombiner(const CombinePlan& plan, FrameSource& source, const CombineTarget& target)
    : plan_(plan), source_(source), target_(target), width_(target.image.GetWidth()), firstRow_(target.firstRow),
      endRow_(firstRow_ + target.image.GetHeight()), memory_(MemoryFor(plan)),
      combiner_(plan.method, plan.coverage, Weights(plan.frames), plan.blank),
      fewest_(static_cast<int>(plan.frames.size()))
{
    for (const Placement& placement : plan.frames) {
        const FrameFacts facts = source.Facts(placement.frame);
        const Alignment alignment = OnGrid(placement.alignment, plan.grid.scale);
        const bool isSmaller = facts.width < width_ || facts.height < plan.grid.height;
        frames_.push_back({placement, alignment, facts, RowWindow(alignment, facts, 0, width_),
                           facts.blank || isSmaller || IsMoved(alignment), std::vector<double>(width_),
                           std::vector<int>(width_)});
        lines_.push_back({frames_.back().values.data(), frames_.back().valid.data()});
    }
}

void BandCombiner::Combine(const Run& run, const char* text)
{
    const int height = endRow_ - firstRow_;
    const int columns = ColumnsOfStrip();
    const int rows = RowsOfBand(columns);
    const Reservation reservation(FixedBytes(columns) + static_cast<std::uint64_t>(rows * BytesOfRow()));
    const int strips = (width_ + columns - 1) / columns;
    const int count = static_cast<int>(frames_.size());
    Stage stage(run, text, strips * ((height + rows - 1) / rows * count + height));
    for (int left = 0; left < width_; left += columns) {
        OpenStrip(left, std::min(left + columns, width_));
        for (int first = firstRow_; first < endRow_; first += rows) {
            CombineBand(first, std::min(first + rows, endRow_) - 1, stage);
        }
    }
    if (HasBlanks()) {
        target_.image.SetBlankUsed(1);
        target_.image.SetBlank(plan_.blank);
    }
}

void BandCombiner::OpenStrip(int left, int right)
{
    left_ = left;
    columns_ = right - left;
    for (PlacedFrame& frame : frames_) {
        frame.window = RowWindow(frame.alignment, frame.facts, left, right);
    }
}

void BandCombiner::CombineBand(int firstRow, int lastRow, Stage& stage)
{
    for (PlacedFrame& frame : frames_) {
        frame.window.MoveTo(firstRow, lastRow, [&](int first, int rows, float* samples, std::ptrdiff_t planeStride) {
            Read(frame, first, rows, samples, planeStride);
        });
        stage.Step();
    }
    for (int row = firstRow; row <= lastRow; ++row) {
        for (int plane = 0; plane < target_.image.GetPlanes(); ++plane) {
            CombineRow(row, plane);
        }
        stage.Step();
    }
}

bool BandCombiner::HasBlanks() const
{
    const bool someUse = std::any_of(frames_.begin(), frames_.end(), [](const auto& frame) { return frame.usesBlank; });
    return plan_.coverage == Coverage::kAll ? someUse : fewest_ == 0;
}

/// Bytes of what rows of the target touch beyond themselves, counted once for each frame.
std::uint64_t BandCombiner::Margins(int columns) const
{
    const int row = plan_.grid.height / 2;
    const int left = (width_ - columns) / 2;
    std::uint64_t bytes = 0;
    for (const PlacedFrame& frame : frames_) {
        const RowSpan touched = RowWindow(frame.alignment, frame.facts, left, left + columns).Touched(row, row);
        bytes += static_cast<std::uint64_t>(std::max(touched.end - touched.first - 1, 0)) * frame.RowBytes();
    }
    return bytes;
}

/// Columns of which the rows take no more than half the memory, as far as fewer columns touch fewer rows.
int BandCombiner::ColumnsOfStrip() const
{
    int columns = width_;
    while (columns / 2 >= kFewestColumns && Margins(columns) > memory_ / 2 && Margins(columns / 2) < Margins(columns)) {
        columns /= 2;
    }
    return columns;
}

/// Bytes that do not depend on how many rows a band has.
std::uint64_t BandCombiner::FixedBytes(int columns) const
{
    return Margins(columns) + frames_.size() * static_cast<std::uint64_t>(width_) * (sizeof(double) + sizeof(int));
}

/// Bytes of what one more row of the target takes of all frames.
double BandCombiner::BytesOfRow() const
{
    return std::accumulate(frames_.begin(), frames_.end(), 0.0, [](double sum, const PlacedFrame& frame) {
        return sum + static_cast<double>(frame.RowBytes()) * std::max(frame.alignment.scale, 1.0);
    });
}

/// Rows of the target whose frames fit the memory.
int BandCombiner::RowsOfBand(int columns) const
{
    const std::uint64_t left = memory_ - std::min(memory_, FixedBytes(columns));
    return static_cast<int>(std::clamp(static_cast<double>(left) / std::max(BytesOfRow(), 1.0), 1.0,
                                       static_cast<double>(std::max(endRow_ - firstRow_, 1))));
}

/// Reads rows, with the frame's own blanks turned into the plan's, or into NaN, which passes on to all that is
/// interpolated from it, where frames may lack pixels.
void BandCombiner::Read(const PlacedFrame& frame, int firstRow, int rowCount, float* samples,
                        std::ptrdiff_t planeStride) const
{
    source_.Read(frame.placement.frame, firstRow, rowCount, samples, planeStride);
    const std::optional<int> own = frame.facts.blank;
    const bool staysBlank = plan_.coverage == Coverage::kAll;
    if (!own || (staysBlank && *own == plan_.blank)) {
        return;
    }
    const float blank = staysBlank ? static_cast<float>(plan_.blank) : std::numeric_limits<float>::quiet_NaN();
    for (int plane = 0; plane < frame.facts.planes; ++plane) {
        float* begin = samples + plane * planeStride;
        std::replace_if(begin, begin + static_cast<std::ptrdiff_t>(rowCount) * frame.facts.width, frame.facts.IsBlank(),
                        blank);
    }
}

float* BandCombiner::RowOf(CStlImage* image, int row, int plane) const
{
    return image != nullptr ? image->GetImageAdr(left_, row - firstRow_, plane) : nullptr;
}

void BandCombiner::CombineRow(int row, int plane)
{
    for (PlacedFrame& frame : frames_) {
        SampleRow(frame, row, plane);
    }
    const CombinedRow result{RowOf(&target_.image, row, plane), RowOf(target_.coverage, row, plane),
                             RowOf(target_.rejectedLow, row, plane), RowOf(target_.rejectedHigh, row, plane)};
    fewest_ = std::min(fewest_, combiner_.Combine(lines_.data(), columns_, result));
}

void BandCombiner::SampleRow(PlacedFrame& frame, int row, int plane) const
{
    double* const values = frame.values.data();
    int* const valid = frame.valid.data();
    frame.window.Sample(plane, row, plan_.blank, values, valid);
    if (plan_.coverage == Coverage::kAny) {
        frame.window.LeaveOutWrapped(row, valid);
    } else if (frame.usesBlank) {
        const BlankTest isBlank(plan_.blank);
        for (int x = 0; x < columns_; ++x) {
            valid[x] &= isBlank(values[x]) ? 0 : 1;
        }
    }
    const std::vector<Normalisation>& planes = frame.placement.normalisation;
    if (!planes.empty() && !planes[plane].ChangesNothing()) {
        const auto [factor, offset] = planes[plane];
        for (int x = 0; x < columns_; ++x) {
            const double v = values[x];
            values[x] = valid[x] != 0 ? v * factor + offset : v;
        }
    }
}

void Check(const CombinePlan& plan, const FrameSource& source, const CombineTarget& target)
{
    const auto& [width, height, scale] = plan.grid;
    const CStlImage& image = target.image;
    if (!(scale > 0.0)) {
        throw ParameterError("scale", NumberText(scale), "must be above 0");
    }
    if (image.GetWidth() != width || target.firstRow < 0 || target.firstRow + image.GetHeight() > height) {
        throw InputError("target", "is no band of the grid, " + SizeText(width, height));
    }
    for (const Placement& placement : plan.frames) {
        if (source.Facts(placement.frame).planes != image.GetPlanes()) {
            throw InputError("frame " + std::to_string(placement.frame), "has other planes than the target");
        }
    }
}

} // namespace

void CombineFrames(const CombinePlan& plan, FrameSource& source, const CombineTarget& target, const Run& run,
                   const char* text)
{
    Check(plan, source, target);
    BandCombiner(plan, source, target).Combine(run, text);
}

} // namespace corvane::stack
