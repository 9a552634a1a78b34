#include "corvane/combine/matching.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "corvane/core/blank.h"
#include "corvane/core/truncate.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

constexpr double kNoScore = 3.402823466e38;

/// Which pairs of samples are passed over. A reference that alone uses blanks is tested against the searched image's
/// blank value.
struct PairBlanks {
    BlankTest searched;
    BlankTest reference;

    PairBlanks(const CImage& image, const CImage& cutOut)
    {
        const BlankTest value(image.GetBlank());
        searched = image.IsBlankUsed() != 0 ? value : BlankTest();
        reference = cutOut.IsBlankUsed() != 0 ? value : BlankTest();
    }

    bool operator()(double s, double r) const { return searched(s) | reference(r); }
};

/// The columns or rows in which image and reference overlap, end exclusive.
struct Overlap {
    int begin;
    int end;
};

Overlap WholeOverlap(int offset, int size, int imageSize)
{
    return {std::max(offset, 0),
            static_cast<int>(std::min<long long>(imageSize, static_cast<long long>(offset) + size))};
}

Overlap FractionalOverlap(double offset, int size, int imageSize)
{
    const double begin = std::ceil(std::max(offset, 0.0));
    const double end = std::floor(std::min(offset + size, static_cast<double>(imageSize)));
    return begin < end ? Overlap{Truncate(begin), Truncate(end)} : Overlap{0, 0};
}

/// Sums the squared differences of the pairs in an overlap; `rowOf(plane, y)` gives r as a function of x.
template <class RowOf>
double MeanSquare(const CStlImage& image, const CStlImage& reference, const double* gains, Overlap columns,
                  Overlap rows, RowOf rowOf)
{
    if (columns.begin >= columns.end || rows.begin >= rows.end) {
        return kNoScore;
    }
    const PairBlanks isBlank(image, reference);
    double sum = 0.0;
    long long used = 0;
    for (int plane = 0; plane < std::min(image.GetPlanes(), reference.GetPlanes()); ++plane) {
        for (int y = rows.begin; y < rows.end; ++y) {
            const float* const s = image.GetImageAdr(0, y, plane, 1);
            const auto r = rowOf(plane, y);
            for (int x = columns.begin; x < columns.end; ++x) {
                const double other = r(x);
                if (!isBlank(s[x], other)) {
                    const double difference = s[x] - other * gains[plane];
                    sum += difference * difference;
                    ++used;
                }
            }
        }
    }
    return sum / static_cast<double>(used);
}

/// The best offset so far. Only a lower score replaces it, so of equal ones the first stays.
struct Best {
    double score = kNoScore;
    double x = 0.0;
    double y = 0.0;
    bool found = false;

    void Offer(double offered, double atX, double atY)
    {
        if (offered < score) {
            *this = {offered, atX, atY, true};
        }
    }
};

/// One search: where it stands, and how it scores and reports. Offsets are scored a row at a time, and the rows on the
/// workers of the stage's run.
class Search {
public:
    Search(const CImgMatching& image, const CStlImage& reference, Stage& stage)
        : image_(image), reference_(reference), stage_(stage), gains_{Gain(0), 1.0, 1.0}
    {
        for (int plane = 1; image.IsColor() && reference.IsColor() && plane < 3; ++plane) {
            gains_[static_cast<std::size_t>(plane)] = Gain(plane);
        }
    }

    /// Every second whole offset within half the range.
    void Coarse(double x, double y, int half)
    {
        const auto along = [half](double centre) {
            std::vector<int> offsets;
            for (std::int64_t offset = Truncate(centre - half); offset <= Truncate(centre + half); offset += 2) {
                offsets.push_back(static_cast<int>(offset));
            }
            return offsets;
        };
        Try(along(x), along(y), 1, [](int, int) { return false; });
    }

    /// The eight whole offsets around the best of the coarse pass.
    void Fine()
    {
        const int cx = Truncate(best_.x);
        const int cy = Truncate(best_.y);
        Try(std::vector{cx - 1, cx, cx + 1}, std::vector{cy - 1, cy, cy + 1}, 1,
            [=](int x, int y) { return x == cx && y == cy; });
    }

    /// Fractional offsets around the best, up to `reach` away. Coordinates grow by repeated addition, so which offsets
    /// are tried at the far end depends on its rounding.
    void Between(double reach, double step)
    {
        const double cx = best_.x;
        const double cy = best_.y;
        const auto along = [=](double centre) {
            std::vector<double> offsets;
            for (double offset = centre - reach; offset <= centre + reach; offset += step) {
                offsets.push_back(offset);
            }
            return offsets;
        };
        Try(along(cx), along(cy), 6, [=](double x, double y) { return x == cx && y == cy; });
    }

    const Best& Result() const { return best_; }

private:
    double Gain(int plane) const
    {
        return static_cast<double>(image_.GetAvrGrayRaw(plane)) / static_cast<double>(reference_.GetAvrGrayRaw(plane));
    }

    /// Offers columns of each row, those aside that isKnown holds for, in order; each counts so many steps.
    template <class Offset, class IsKnown>
    void Try(const std::vector<Offset>& columns, const std::vector<Offset>& rows, int steps, IsKnown isKnown)
    {
        std::vector<std::vector<double>> scores(rows.size());
        const auto scoreRow = [&](int i) {
            for (const Offset x : columns) {
                const bool isWanted = !isKnown(x, rows[i]);
                scores[i].push_back(isWanted ? image_.CalcValue(&reference_, x, rows[i], gains_.data()) : kNoScore);
            }
        };
        const auto offerRow = [&](int i) {
            for (std::size_t k = 0; k < columns.size(); ++k) {
                if (!isKnown(columns[k], rows[i])) {
                    best_.Offer(scores[i][k], columns[k], rows[i]);
                    stage_.Step(steps);
                }
            }
            scores[i] = {};
        };
        const auto offsets = static_cast<double>(columns.size() * rows.size());
        const double samples = offsets * static_cast<double>(reference_.GetPixelCount());
        constexpr double kMany = 1e18; // more than there are, and a whole number
        const int threads = ThreadsFor(static_cast<long long>(std::min(samples, kMany)), stage_.Threads());
        platform::ForBlocks(static_cast<int>(rows.size()), MayShare() ? threads : 1, scoreRow, offerRow);
    }

    bool MayShare() const { return MayShareWork(image_, {}) && MayShareWork(reference_, {}); }

    const CImgMatching& image_;
    const CStlImage& reference_;
    Stage& stage_;
    std::array<double, 3> gains_;
    Best best_;
};

} // namespace

int CImgMatching::Do(CStlImage* reference, double* x, double* y, int searchRange, int subPixel, int showProgress)
{
    return Do(*reference, x, y, searchRange, subPixel, WindowRun(*this, showProgress));
}

int CImgMatching::Do(const CStlImage& reference, double* x, double* y, int searchRange, int subPixel,
                     const Run& run) const
{
    const std::int64_t coarse = std::int64_t{searchRange} * searchRange / 4;
    Stage stage(run, IDS_MATCHING, Truncate(static_cast<double>(coarse + (subPixel != 0 ? 297 : 9))));
    Search search(*this, reference, stage);
    search.Coarse(*x, *y, searchRange / 2);
    if (search.Result().found) {
        search.Fine();
        if (subPixel != 0) {
            search.Between(0.6, 0.3);
            search.Between(0.3 - 0.1, 0.1);
        }
        *x = search.Result().x;
        *y = search.Result().y;
    }
    return search.Result().found ? 1 : 0;
}

double CImgMatching::CalcValue(const CStlImage* reference, int x, int y, const double* gains) const
{
    return MeanSquare(*this, *reference, gains, WholeOverlap(x, reference->GetWidth(), GetWidth()),
                      WholeOverlap(y, reference->GetHeight(), GetHeight()), [&](int plane, int row) {
                          const float* const samples = reference->GetImageAdr(0, row - y, plane, 1);
                          return [=](int column) { return static_cast<double>(samples[column - x]); };
                      });
}

double CImgMatching::CalcValue(const CStlImage* reference, double x, double y, const double* gains) const
{
    return MeanSquare(*this, *reference, gains, FractionalOverlap(x, reference->GetWidth(), GetWidth()),
                      FractionalOverlap(y, reference->GetHeight(), GetHeight()), [&](int plane, int row) {
                          return [=](int column) { return reference->GetPixelGrayRaw(column - x, row - y, plane); };
                      });
}
