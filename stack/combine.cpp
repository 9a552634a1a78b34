#include "stack/combine.h"

#include <algorithm>

#include "corvane/core/blank.h"
#include "stack/progress.h"
#include "stack/row_window.h"

namespace corvane::stack {

namespace {

bool IsMoved(const Alignment& alignment)
{
    return !alignment.IsShift() || alignment.dx != 0.0 || alignment.dy != 0.0;
}

/// Combines into one target.
class BandCombiner {
public:
    BandCombiner(const std::vector<Placement>& frames, const RowReader& read, const CombineJob& job, CStlImage& target);
    void Run();

private:
    int RowsOfBand() const;
    void ReadBand(int firstRow, int lastRow, Progress& progress);
    void ReadFrame(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) const;
    void CombineRow(int row, int plane);

    const std::vector<Placement>& frames_;
    const RowReader& read_;
    const CombineJob& job_;
    CStlImage& target_;
    int count_;
    int width_;
    std::vector<char> usesBlank_; ///< for each frame
    std::vector<RowWindow> windows_;
    std::vector<double> values_; ///< of one row of each frame
    std::vector<int> valid_;
    std::vector<CombineLine> lines_;
    RowCombiner combiner_;
};

BandCombiner::BandCombiner(const std::vector<Placement>& frames, const RowReader& read, const CombineJob& job,
                           CStlImage& target)
    : frames_(frames), read_(read), job_(job), target_(target), count_(static_cast<int>(frames.size())),
      width_(target.GetWidth()), values_(frames.size() * width_), valid_(frames.size() * width_),
      combiner_(job.method, count_)
{
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const Placement& frame = frames[i];
        usesBlank_.push_back(frame.blank.has_value() || IsMoved(frame.alignment));
        windows_.emplace_back(frame.alignment, width_, target.GetHeight(), target.GetPlanes());
        lines_.push_back({values_.data() + i * width_, valid_.data() + i * width_});
    }
}

void BandCombiner::Run()
{
    const int height = target_.GetHeight();
    const int rows = RowsOfBand();
    Progress progress(job_.progressWindow, job_.text, (height + rows - 1) / rows * count_ + height);
    for (int first = 0; first < height; first += rows) {
        const int last = std::min(first + rows, height) - 1;
        ReadBand(first, last, progress);
        for (int row = first; row <= last; ++row) {
            for (int plane = 0; plane < target_.GetPlanes(); ++plane) {
                CombineRow(row, plane);
            }
            progress.Step();
        }
    }
    if (std::find(usesBlank_.begin(), usesBlank_.end(), 1) != usesBlank_.end()) {
        target_.SetBlankUsed(1);
        target_.SetBlank(job_.blank);
    }
}

/// Rows of the target whose frames fit the memory. What a row touches beyond itself is counted once for each frame.
int BandCombiner::RowsOfBand() const
{
    const std::uint64_t row = sizeof(float) * width_ * static_cast<std::uint64_t>(target_.GetPlanes());
    const std::uint64_t lines = values_.size() * sizeof(double) + valid_.size() * sizeof(int);
    std::uint64_t margins = 0;
    for (const RowWindow& window : windows_) {
        const RowSpan touched = window.Touched(target_.GetHeight() / 2, target_.GetHeight() / 2);
        margins += row * static_cast<std::uint64_t>(std::max(touched.end - touched.first - 1, 0));
    }
    const std::uint64_t fixed = lines + margins;
    const std::uint64_t rows = job_.memory > fixed ? (job_.memory - fixed) / (row * std::max(count_, 1)) : 0;
    return static_cast<int>(std::clamp<std::uint64_t>(rows, 1, target_.GetHeight()));
}

void BandCombiner::ReadBand(int firstRow, int lastRow, Progress& progress)
{
    for (int i = 0; i < count_; ++i) {
        windows_[i].MoveTo(firstRow, lastRow,
                           [this, i](int first, int rows, float* samples, std::ptrdiff_t planeStride) {
                               ReadFrame(i, first, rows, samples, planeStride);
                           });
        progress.Step();
    }
}

/// Reads rows, with the frame's own blanks turned into the job's.
void BandCombiner::ReadFrame(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) const
{
    read_(frame, firstRow, rowCount, samples, planeStride);
    const std::optional<int> own = frames_[frame].blank;
    if (!own || *own == job_.blank) {
        return;
    }
    const BlankTest isBlank(*own);
    for (int plane = 0; plane < target_.GetPlanes(); ++plane) {
        float* begin = samples + plane * planeStride;
        std::replace_if(begin, begin + static_cast<std::ptrdiff_t>(rowCount) * width_, isBlank,
                        static_cast<float>(job_.blank));
    }
}

void BandCombiner::CombineRow(int row, int plane)
{
    const BlankTest isBlank(job_.blank);
    for (int i = 0; i < count_; ++i) {
        double* values = values_.data() + static_cast<std::ptrdiff_t>(i) * width_;
        int* valid = valid_.data() + static_cast<std::ptrdiff_t>(i) * width_;
        windows_[i].Sample(plane, row, job_.blank, values, valid);
        for (int x = 0; x < width_ && usesBlank_[i]; ++x) {
            valid[x] &= isBlank(values[x]) ? 0 : 1;
        }
    }
    combiner_.Combine(lines_.data(), width_, target_.GetImageAdr(0, row, plane));
}

} // namespace

void CombineFrames(const std::vector<Placement>& frames, const RowReader& read, const CombineJob& job,
                   CStlImage& target)
{
    BandCombiner(frames, read, job, target).Run();
}

} // namespace corvane::stack
