#include "stack/combine/combine.h"

#include <algorithm>
#include <limits>

#include "corvane/core/blank.h"
#include "stack/combine/row_window.h"

namespace corvane::stack {

namespace {

bool IsMoved(const Alignment& alignment)
{
    return !alignment.IsShift() || alignment.dx != 0.0 || alignment.dy != 0.0;
}

std::vector<double> Weights(const std::vector<Placement>& frames)
{
    std::vector<double> weights;
    std::transform(frames.begin(), frames.end(), std::back_inserter(weights), [](const auto& f) { return f.weight; });
    return weights;
}

float* RowOf(CStlImage* image, int column, int row, int plane)
{
    return image != nullptr ? image->GetImageAdr(column, row, plane) : nullptr;
}

constexpr int kFewestColumns = 16;

/// Combines into one target: a band of rows at a time, and in strips of columns when turned frames would not fit.
class BandCombiner {
public:
    BandCombiner(const std::vector<Placement>& frames, const RowReader& read, const CombineJob& job, CStlImage& target);
    void Combine(const Run& run);

private:
    std::uint64_t Margins(int columns) const;
    int ColumnsOfStrip() const;
    int RowsOfBand(int columns) const;
    void OpenStrip(int left, int right);
    void ReadBand(int firstRow, int lastRow, Stage& stage);
    void ReadFrame(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) const;
    void CombineBand(int firstRow, int lastRow, Stage& stage);
    void CombineRow(int row, int plane);
    void SampleRow(int frame, int row, int plane, double* values, int* valid) const;
    bool HasBlanks() const;

    const std::vector<Placement>& frames_;
    const RowReader& read_;
    const CombineJob& job_;
    CStlImage& target_;
    int count_;
    int width_;
    std::uint64_t rowBytes_; ///< of all planes of a frame
    int left_ = 0;           ///< first column of the strip
    int columns_ = 0;
    std::vector<char> usesBlank_; ///< for each frame
    std::vector<RowWindow> windows_;
    std::vector<double> values_; ///< of one row of each frame
    std::vector<int> valid_;
    std::vector<CombineLine> lines_;
    RowCombiner combiner_;
    int fewest_; ///< frames that have some pixel
};

BandCombiner::BandCombiner(const std::vector<Placement>& frames, const RowReader& read, const CombineJob& job,
                           CStlImage& target)
    : frames_(frames), read_(read), job_(job), target_(target), count_(static_cast<int>(frames.size())),
      width_(target.GetWidth()), rowBytes_(sizeof(float) * width_ * static_cast<std::uint64_t>(target.GetPlanes())),
      values_(frames.size() * width_), valid_(frames.size() * width_),
      combiner_(job.method, job.coverage, Weights(frames), job.blank), fewest_(count_)
{
    for (std::size_t i = 0; i < frames.size(); ++i) {
        usesBlank_.push_back(frames[i].blank.has_value() || IsMoved(frames[i].alignment));
        lines_.push_back({values_.data() + i * width_, valid_.data() + i * width_});
    }
}

void BandCombiner::Combine(const Run& run)
{
    const int height = target_.GetHeight();
    const int columns = ColumnsOfStrip();
    const int rows = RowsOfBand(columns);
    const int strips = (width_ + columns - 1) / columns;
    Stage stage(run, job_.text, strips * ((height + rows - 1) / rows * count_ + height));
    for (int left = 0; left < width_; left += columns) {
        OpenStrip(left, std::min(left + columns, width_));
        for (int first = 0; first < height; first += rows) {
            CombineBand(first, std::min(first + rows, height) - 1, stage);
        }
    }
    if (HasBlanks()) {
        target_.SetBlankUsed(1);
        target_.SetBlank(job_.blank);
    }
}

void BandCombiner::OpenStrip(int left, int right)
{
    left_ = left;
    columns_ = right - left;
    windows_.clear();
    for (const Placement& frame : frames_) {
        windows_.emplace_back(frame.alignment, width_, target_.GetHeight(), target_.GetPlanes(), left, right);
    }
}

void BandCombiner::CombineBand(int firstRow, int lastRow, Stage& stage)
{
    ReadBand(firstRow, lastRow, stage);
    for (int row = firstRow; row <= lastRow; ++row) {
        for (int plane = 0; plane < target_.GetPlanes(); ++plane) {
            CombineRow(row, plane);
        }
        stage.Step();
    }
}

bool BandCombiner::HasBlanks() const
{
    const bool someUse = std::find(usesBlank_.begin(), usesBlank_.end(), 1) != usesBlank_.end();
    return job_.coverage == Coverage::kAll ? someUse : fewest_ == 0;
}

/// Bytes of what rows of the target touch beyond themselves, counted once for each frame.
std::uint64_t BandCombiner::Margins(int columns) const
{
    const int row = target_.GetHeight() / 2;
    const int left = (width_ - columns) / 2;
    std::uint64_t rows = 0;
    for (const Placement& frame : frames_) {
        const RowWindow window(frame.alignment, width_, target_.GetHeight(), 1, left, left + columns);
        const RowSpan touched = window.Touched(row, row);
        rows += static_cast<std::uint64_t>(std::max(touched.end - touched.first - 1, 0));
    }
    return rows * rowBytes_;
}

/// Columns of which the rows take no more than half the memory, as far as fewer columns touch fewer rows.
int BandCombiner::ColumnsOfStrip() const
{
    int columns = width_;
    while (columns / 2 >= kFewestColumns && Margins(columns) > job_.memory / 2 &&
           Margins(columns / 2) < Margins(columns)) {
        columns /= 2;
    }
    return columns;
}

/// Rows of the target whose frames fit the memory.
int BandCombiner::RowsOfBand(int columns) const
{
    const std::uint64_t lines = values_.size() * sizeof(double) + valid_.size() * sizeof(int);
    const std::uint64_t fixed = lines + Margins(columns);
    const std::uint64_t rows = job_.memory > fixed ? (job_.memory - fixed) / (rowBytes_ * std::max(count_, 1)) : 0;
    return static_cast<int>(std::clamp<std::uint64_t>(rows, 1, target_.GetHeight()));
}

void BandCombiner::ReadBand(int firstRow, int lastRow, Stage& stage)
{
    for (int i = 0; i < count_; ++i) {
        windows_[i].MoveTo(firstRow, lastRow,
                           [this, i](int first, int rows, float* samples, std::ptrdiff_t planeStride) {
                               ReadFrame(i, first, rows, samples, planeStride);
                           });
        stage.Step();
    }
}

/// Reads rows, with the frame's own blanks turned into the job's, or into NaN, which passes on to all that is
/// interpolated from it, where frames may lack pixels.
void BandCombiner::ReadFrame(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) const
{
    read_(frame, firstRow, rowCount, samples, planeStride);
    const std::optional<int> own = frames_[frame].blank;
    const bool staysBlank = job_.coverage == Coverage::kAll;
    if (!own || (staysBlank && *own == job_.blank)) {
        return;
    }
    const float blank = staysBlank ? static_cast<float>(job_.blank) : std::numeric_limits<float>::quiet_NaN();
    const BlankTest isBlank(*own);
    for (int plane = 0; plane < target_.GetPlanes(); ++plane) {
        float* begin = samples + plane * planeStride;
        std::replace_if(begin, begin + static_cast<std::ptrdiff_t>(rowCount) * width_, isBlank, blank);
    }
}

void BandCombiner::CombineRow(int row, int plane)
{
    for (int i = 0; i < count_; ++i) {
        const std::ptrdiff_t line = static_cast<std::ptrdiff_t>(i) * width_;
        SampleRow(i, row, plane, values_.data() + line, valid_.data() + line);
    }
    const CombineMaps& maps = job_.maps;
    const CombinedRow result{target_.GetImageAdr(left_, row, plane), RowOf(maps.coverage, left_, row, plane),
                             RowOf(maps.rejectedLow, left_, row, plane), RowOf(maps.rejectedHigh, left_, row, plane)};
    fewest_ = std::min(fewest_, combiner_.Combine(lines_.data(), columns_, result));
}

void BandCombiner::SampleRow(int frame, int row, int plane, double* values, int* valid) const
{
    const BlankTest isBlank(job_.blank);
    windows_[frame].Sample(plane, row, job_.blank, values, valid);
    if (job_.coverage == Coverage::kAny) {
        windows_[frame].LeaveOutWrapped(row, valid);
    } else if (usesBlank_[frame] != 0) {
        for (int x = 0; x < columns_; ++x) {
            valid[x] &= isBlank(values[x]) ? 0 : 1;
        }
    }
    const std::vector<Normalisation>& planes = frames_[frame].normalisation;
    if (!planes.empty() && !planes[plane].ChangesNothing()) {
        const auto [factor, offset] = planes[plane];
        for (int x = 0; x < columns_; ++x) {
            const double v = values[x];
            values[x] = valid[x] != 0 ? v * factor + offset : v;
        }
    }
}

} // namespace

void CombineFrames(const std::vector<Placement>& frames, const RowReader& read, const CombineJob& job,
                   CStlImage& target, const Run& run)
{
    BandCombiner(frames, read, job, target).Combine(run);
}

} // namespace corvane::stack
