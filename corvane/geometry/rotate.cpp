#include "corvane/geometry/rotate.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/aligned_row.h"
#include "corvane/core/alignment.h"
#include "corvane/core/truncate.h"
#include "corvane/geometry/canvas.h"
#include "corvane/geometry/rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// Takes numbers in, 0 among them, and tells how many whole ones they span.
class Span {
public:
    void Include(double v)
    {
        const int whole = Truncate(std::ceil(v));
        low_ = std::min(low_, whole);
        high_ = std::max(high_, whole);
    }
    long long Length() const { return static_cast<long long>(high_) - low_ + 1; }

private:
    int low_ = 0;
    int high_ = 0;
};

/// Gives the image a canvas that takes its turned corners in.
int ExpandCanvas(CStlImage& image, const CStlImage& source, const Alignment& turn, const Run& run)
{
    const int halfWidth = image.GetWidth() / 2;
    const int halfHeight = image.GetHeight() / 2;
    Span columns;
    Span rows;
    for (const double x : {-halfWidth, image.GetWidth() - halfWidth - 1}) {
        for (const double y : {halfHeight, halfHeight - image.GetHeight() + 1}) { // upwards
            columns.Include(x * turn.cosine - y * turn.sine);
            rows.Include(x * turn.sine + y * turn.cosine);
        }
    }
    return MakeCanvas(image, source, columns.Length(), rows.Length(), run);
}

/// Walks an image as `FillBands` does, each band in tiles from the left: calls fill(plane, x, y, rows) with the corner
/// of each tile and the rows of its band.
template <class Fill>
void FillTiles(CStlImage& image, const CStlImage& source, const Run& run, int bandRows, int tileColumns, Fill fill)
{
    FillBands(image, source, run, IDS_ROTATE, bandRows, [&](int plane, int y, int rows) {
        for (int x = 0; x < image.GetWidth(); x += tileColumns) {
            fill(plane, x, y, rows);
        }
    });
}

/// Samples the turned source into the image. Rows go together, since neighbouring ones read the same samples.
void FillTurned(CStlImage& image, const CStlImage& source, const Alignment& turn, const double* background,
                const Run& run)
{
    constexpr int kRows = 32;
    constexpr int kColumns = 256;
    const SourceRows from(source);
    FillTiles(image, source, run, kRows, kColumns, [&](int plane, int x, int y, int rows) {
        const int columns = std::min(kColumns, image.GetWidth() - x);
        const double outside = background == nullptr ? 0.0 : background[plane];
        double values[kColumns];
        int inside[kColumns];
        for (int row = y; row < y + rows; ++row) {
            SampleAlignedStretch(source, from.Plane(plane), turn, x, row, columns, outside, values, inside);
            std::transform(values, values + columns, image.GetImageAdr(x, row, plane),
                           [](double v) { return static_cast<float>(v); });
        }
    });
}

/// Turns the world coordinates about the middle of the source. For sides that do not fit the turn the shift is not 0:
/// applications that correct for it rely on it.
void TurnCoordinates(CStlImage& image, const CStlImage& source, double angle)
{
    const CfPoint centre = image.GetStdCtr();
    image.SetStdCtr((source.GetWidth() - 1) * 0.5, (source.GetHeight() - 1) * 0.5);
    image.RotatePhysicalCoords(angle, (source.GetHeight() - image.GetWidth()) * 0.5,
                               (source.GetWidth() - image.GetHeight()) * 0.5);
    image.SetStdCtr(centre);
}

constexpr int kLine = 64 / sizeof(float); // of the cache
constexpr int kLines = 8;                 // of a row of the source at a time: those that follow each other come sooner
constexpr int kTileRows = kLines * kLine;
constexpr int kTileColumns = 512;

using Quads = float[4 * kTileRows]; // samples of four rows in turn

void Interleave(const float* const* rows, int count, Quads& __restrict out)
{
    const float* const a = rows[0];
    const float* const b = rows[1];
    const float* const c = rows[2];
    const float* const d = rows[3];
    for (int i = 0; i < count; ++i) {
        out[4 * i] = a[i];
        out[4 * i + 1] = b[i];
        out[4 * i + 2] = c[i];
        out[4 * i + 3] = d[i];
    }
}

/// Writes the samples i of rows, as many as make a line at most.
void WriteLine(const Quads* quads, int i, int columns, float* out)
{
    if (columns < kLine) {
        for (int x = 0; x < columns; ++x) {
            out[x] = quads[x / 4][4 * i + x % 4];
        }
        return;
    }
    for (int quad = 0; quad < kLine / 4; ++quad) {
        std::copy_n(quads[quad] + 4 * i, 4, out + 4 * quad);
    }
}

/// A turn by 90 degrees, in either sense.
class QuarterTurn {
public:
    QuarterTurn(CStlImage& image, const CStlImage& source, bool clockwise)
        : image_(image), source_(source), clockwise_(clockwise)
    {}

    /// Makes a tile of the image, a line of the cache of each row after the other.
    void FillTile(int plane, int left, int top, int rows) const
    {
        float* lines[kTileRows];
        for (int i = 0; i < rows; ++i) {
            lines[i] = image_.GetImageAdr(0, clockwise_ ? top + i : top + rows - 1 - i, plane);
        }
        const int right = std::min(left + kTileColumns, image_.GetWidth());
        for (int x = left; x < right; x += kLine) {
            FillLines(plane, top, x, std::min(kLine, right - x), rows, lines);
        }
    }

private:
    /// Samples of the source would come too late unless they are asked for while those before are written.
    void FillLines(int plane, int top, int x, int columns, int rows, float* const* lines) const
    {
        const int first = clockwise_ ? top : source_.Width() - top - rows;
        float copies[kLine][kTileRows];
        const float* samples[kLine];
        for (int i = 0; i < kLine; ++i) {
            samples[i] = source_.Stretch(first, SourceRow(x + std::min(i, columns - 1)), plane, rows, copies[i]);
        }
        Quads quads[kLine / 4];
        for (int i = 0; i < kLine; i += 4) {
            Interleave(samples + i, rows, quads[i / 4]);
        }
        const std::ptrdiff_t toNext = static_cast<std::ptrdiff_t>(SourceRow(kLine) - SourceRow(0)) * source_.Width();
        for (int i = 0; i < rows; ++i) {
            __builtin_prefetch(samples[i / kLines] + toNext + i % kLines * kLine);
            WriteLine(quads, i, columns, lines[i] + x);
        }
    }

    /// The row that becomes a column of the image.
    int SourceRow(int x) const { return clockwise_ ? source_.Height() - 1 - x : x; }

    CStlImage& image_;
    SourceRows source_;
    bool clockwise_;
};

} // namespace

int CImgRotate::Do(double angle, double* background, CStlImage* source, int expand, int showProgress)
{
    return Do(angle, background, *source, expand, WindowRun(*this, showProgress));
}

int CImgRotate::Do(double angle, const double* background, const CStlImage& source, int expand, const Run& run)
{
    if (angle == 0.0) {
        return 1;
    }
    InitStdPt();
    SetDefaultCenter();
    const CfPoint centre(source.GetWidth() / 2, source.GetHeight() / 2);
    Alignment turn = Alignment::Turned(0.0, 0.0, angle, centre);
    if (expand != 0 && ExpandCanvas(*this, source, turn, run) == 0) {
        return 0;
    }
    turn.dx = (GetWidth() - source.GetWidth()) * 0.5;
    turn.dy = (GetHeight() - source.GetHeight()) * 0.5;
    FillTurned(*this, source, turn, background, run);
    RotatePhysicalCoords(angle, turn.dx, turn.dy);
    return 1;
}

int CImgRotate::Do90(int direction, CStlImage* source, int showProgress)
{
    return Do90(direction, *source, WindowRun(*this, showProgress));
}

int CImgRotate::Do90(int direction, const CStlImage& source, const Run& run)
{
    InitStdPt();
    if (MakeCanvas(*this, source, GetHeight(), GetWidth(), run) == 0) {
        return 0;
    }
    const SourceRows from(source);
    for (int plane = 0; plane < GetPlanes(); ++plane) {
        SetLevel(plane, source.GetLevelMin(from.Plane(plane)), source.GetLevelMax(from.Plane(plane)));
    }
    const QuarterTurn turn(*this, source, direction != 0);
    FillTiles(*this, source, run, kTileRows, kTileColumns,
              [&](int plane, int x, int y, int rows) { turn.FillTile(plane, x, y, rows); });
    TurnCoordinates(*this, source, 90.0);
    return 1;
}

void CImgRotate::Do180(CStlImage* source, int showProgress)
{
    Do180(*source, WindowRun(*this, showProgress));
}

void CImgRotate::Do180(const CStlImage& source, const Run& run)
{
    InitStdPt();
    const SourceRows rows(source);
    FillRows(*this, source, run, IDS_ROTATE, [&](int plane, int y, float* row) {
        rows.CopyMirrored(GetWidth() - 1, GetHeight() - y - 1, plane, GetWidth(), row);
    });
    TurnCoordinates(*this, source, 180.0);
}
