#include "corvane/geometry/resolution.h"

#include <algorithm>
#include <array>
#include <cstring>
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
    void Blend(const float* row, double* out) const
    {
        for (int first = 0; first < inner_; first += kLength) {
            BlendPairs(row, first, std::min(kLength, inner_ - first), out + first);
        }
        for (int i = inner_; i < Count(); ++i) {
            const auto column = static_cast<std::size_t>(i);
            const double last = row[index_[column]];
            out[i] = Mix(last, last, fraction_[column]);
        }
    }

    /// Puts the samples themselves where a position is whole.
    void PickWhole(const float* row, float* out) const
    {
        for (const int column : whole_) {
            out[column] = row[index_[static_cast<std::size_t>(column)]];
        }
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
    BlendedRows(const SourceRows& source, const Columns& columns) : source_(source), columns_(columns)
    {
        for (Kept& kept : kept_) {
            kept.values.resize(static_cast<std::size_t>(columns.Count()));
        }
    }

    const double* Row(int y, int plane)
    {
        Kept& kept = kept_[static_cast<std::size_t>(y % 2)];
        if (kept.y != y || kept.plane != plane) {
            columns_.Blend(source_.Row(y, plane), kept.values.data());
            kept.y = y;
            kept.plane = plane;
        }
        return kept.values.data();
    }

private:
    struct Kept {
        int y = -1;
        int plane = -1;
        std::vector<double> values;
    };

    const SourceRows& source_;
    const Columns& columns_;
    std::array<Kept, 2> kept_;
};

void BlendRows(const double* above, const double* below, double fraction, int count, float* out)
{
    for (int i = 0; i < count; ++i) {
        out[i] = static_cast<float>(Mix(above[i], below[i], fraction));
    }
}

/// Resamples the source into the image's new canvas.
void Resample(CStlImage& image, const CStlImage& source, const Steps& steps, const Run& run)
{
    const SourceRows rows(source);
    const Columns columns(image.GetWidth(), steps.x, rows.Width());
    const auto fill = [&, blended = BlendedRows(rows, columns)](int plane, int y, float* out) mutable {
        const Place place(y, steps.y, rows.Height());
        if (place.fraction != 0.0 || !columns.AreWhole()) {
            BlendRows(blended.Row(place.index, plane), blended.Row(place.next, plane), place.fraction, columns.Count(),
                      out);
        }
        if (place.fraction == 0.0) {
            columns.PickWhole(rows.Row(place.index, plane), out);
        }
    };
    FillRows(image, source, run, IDS_RESOLUTION, fill);
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
