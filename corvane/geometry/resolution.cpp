#include "corvane/geometry/resolution.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "corvane/core/interpolation.h"
#include "corvane/core/truncate.h"
#include "corvane/geometry/canvas.h"
#include "corvane/geometry/rows.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// How far apart neighbouring samples of the result lie in the source [pixels].
struct Steps {
    double x;
    double y;

    Steps(const CImage& image, int newWidth, int newHeight)
        : x(static_cast<double>(image.GetWidth()) / newWidth), y(static_cast<double>(image.GetHeight()) / newHeight)
    {}
};

/// A position along one axis: the samples that it lies between, and how far.
struct Place {
    int index;
    int next; ///< at the edge the same sample
    double fraction;

    Place(int i, double step, int size)
    {
        double position = i * step;
        position = Truncate(position) > size - 1 ? size - 1 : position;
        index = Truncate(position);
        next = std::min(index + 1, size - 1);
        fraction = position - index;
    }
};

/// A stretch of columns that is made together, so that what its rows have in common stays in the nearest cache.
struct Strip {
    static constexpr int kMost = 1024;

    int first;
    int count;
};

/// The positions of all columns.
class Columns {
public:
    Columns(int count, double step, int size)
    {
        for (int i = 0; i < count; ++i) {
            const Place place(i, step, size);
            index_.push_back(place.index);
            inner_ += place.next > place.index ? 1 : 0;
            fraction_.push_back(place.fraction);
            if (place.fraction == 0.0) {
                whole_.push_back(i);
            }
        }
    }

    int Count() const { return static_cast<int>(index_.size()); }

    /// Interpolates along a row.
    void Blend(const float* row, const Strip& strip, double* out) const
    {
        const int end = strip.first + strip.count;
        const int inner = std::clamp(inner_, strip.first, end);
        for (int first = strip.first; first < inner; first += kLength) {
            BlendPairs(row, first, std::min(kLength, inner - first), out + (first - strip.first));
        }
        for (int i = inner; i < end; ++i) {
            const auto column = static_cast<std::size_t>(i);
            const double last = row[index_[column]];
            out[i - strip.first] = Mix(last, last, fraction_[column]);
        }
    }

    /// Puts the samples themselves where a position is whole.
    void PickWhole(const float* row, const Strip& strip, float* out) const
    {
        const auto begin = std::lower_bound(whole_.begin(), whole_.end(), strip.first);
        const auto end = std::lower_bound(begin, whole_.end(), strip.first + strip.count);
        std::for_each(begin, end, [&](int column) { out[column] = row[index_[static_cast<std::size_t>(column)]]; });
    }

    bool AreWhole() const { return whole_.size() == index_.size(); }

private:
    static constexpr int kLength = 256;

    /// Two samples that follow each other, read at once.
    struct Pair {
        float first;
        float second;
    };

    void BlendPairs(const float* row, int first, int count, double* out) const
    {
        const int* const index = index_.data() + first;
        const double* const fraction = fraction_.data() + first;
        Pair pairs[kLength];
        for (int i = 0; i < count; ++i) {
            std::memcpy(&pairs[i], row + index[i], sizeof(Pair));
        }
        for (int i = 0; i < count; ++i) {
            out[i] = Mix(pairs[i].first, pairs[i].second, fraction[i]);
        }
    }

    std::vector<int> index_;
    int inner_ = 0; ///< columns that have a right-hand neighbour; they come first
    std::vector<double> fraction_;
    std::vector<int> whole_; ///< columns whose position is whole
};

/// Source rows interpolated along x. Two neighbouring ones are kept, since rows of the result that follow each other
/// lie between the same rows.
class BlendedRows {
public:
    BlendedRows(const SourceRows& source, int plane, const Columns& columns, const Strip& strip)
        : source_(source), plane_(plane), columns_(columns), strip_(strip)
    {}

    /// Writes the strip of a row at a place of the source; `out` is the row from column 0.
    void Write(const Place& place, float* out)
    {
        if (place.fraction != 0.0 || !columns_.AreWhole()) {
            const double* const above = Row(place.index);
            const double* const below = Row(place.next);
            for (int i = 0; i < strip_.count; ++i) {
                out[strip_.first + i] = static_cast<float>(Mix(above[i], below[i], place.fraction));
            }
        }
        if (place.fraction == 0.0) {
            columns_.PickWhole(source_.Row(place.index, plane_), strip_, out);
        }
    }

private:
    const double* Row(int y)
    {
        double* const values = values_[y % 2];
        if (std::exchange(kept_[y % 2], y) != y) {
            columns_.Blend(source_.Row(y, plane_), strip_, values);
        }
        return values;
    }

    const SourceRows& source_;
    int plane_;
    const Columns& columns_;
    Strip strip_;
    int kept_[2] = {-1, -1};
    double values_[2][Strip::kMost];
};

/// Resamples the source into the image's new canvas.
void Resample(CStlImage& image, const CStlImage& source, const Steps& steps, const Run& run)
{
    constexpr int kRows = 32; // of which each strip interpolates one source row more than it would go on with
    const SourceRows rows(source);
    const Columns columns(image.GetWidth(), steps.x, rows.Width());
    FillBands(image, source, run, IDS_RESOLUTION, kRows, [&](int plane, int y, int count) {
        for (int x = 0; x < columns.Count(); x += Strip::kMost) {
            BlendedRows blended(rows, plane, columns, {x, std::min(Strip::kMost, columns.Count() - x)});
            for (int row = y; row < y + count; ++row) {
                blended.Write(Place(row, steps.y, rows.Height()), image.GetImageAdr(0, row, plane));
            }
        }
    });
}

} // namespace

int CImgResolution::Do(CStlImage* source, int newWidth, int newHeight, int showProgress)
{
    return Do(*source, newWidth, newHeight, WindowRun(*this, showProgress));
}

int CImgResolution::Do(const CStlImage& source, int newWidth, int newHeight, const Run& run)
{
    return ByLiner(source, newWidth, newHeight, run);
}

int CImgResolution::ByLiner(CStlImage* source, int newWidth, int newHeight, int showProgress)
{
    return ByLiner(*source, newWidth, newHeight, WindowRun(*this, showProgress));
}

int CImgResolution::ByLiner(const CStlImage& source, int newWidth, int newHeight, const Run& run)
{
    const Steps steps(*this, newWidth, newHeight);
    const int done = ByCubic(source, newWidth, newHeight, run);
    if (done != 0) {
        ScalePhysicalCoords(1.0 / steps.x, 1.0 / steps.y);
    }
    return done;
}

int CImgResolution::ByCubic(CStlImage* source, int newWidth, int newHeight, int showProgress)
{
    return ByCubic(*source, newWidth, newHeight, WindowRun(*this, showProgress));
}

int CImgResolution::ByCubic(const CStlImage& source, int newWidth, int newHeight, const Run& run)
{
    InitStdPt();
    return OrNothing([&] {
        CStlImage made = Shared(); // takes this image's place when all is done, for which it needs memory on the way
        if (MakeCanvas(made, source, newWidth, newHeight, run) == 0) {
            return 0;
        }
        Resample(made, source, Steps(*this, newWidth, newHeight), run);
        CImage::Swap(&made);
        return 1;
    });
}
