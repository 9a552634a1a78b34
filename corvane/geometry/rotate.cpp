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

constexpr int kTile = 64;

/// Turns a tile of the image. It goes through a buffer, so that source and image are both walked along their rows.
void TurnTile(CStlImage& image, const SourceRows& source, bool clockwise, int plane, int x, int y, int rows)
{
    const int columns = std::min(kTile, image.GetWidth() - x);
    float tile[kTile][kTile + 1]; // one more, or all samples of a column would share a few lines of the cache
    for (int i = 0; i < columns; ++i) {
        const int row = clockwise ? source.Height() - 1 - (x + i) : x + i;
        const int first = clockwise ? y : source.Width() - y - rows;
        source.Copy(first, row, plane, rows, tile[i]);
    }
    for (int j = 0; j < rows; ++j) {
        float* const out = image.GetImageAdr(x, clockwise ? y + j : y + rows - 1 - j, plane);
        for (int i = 0; i < columns; ++i) {
            out[i] = tile[i][j];
        }
    }
}

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
    FillTiles(*this, source, run, kTile, kTile,
              [&](int plane, int x, int y, int rows) { TurnTile(*this, from, direction != 0, plane, x, y, rows); });
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
