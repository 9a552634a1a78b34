// The frame of the filters: radii, rectangle, rows about a row, work images.

#include "corvane/filter/filter.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "corvane/filter/filter_rows.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// The row or column that stands in a work image for one outside: mirrored at the near edge by the rule for rows, and
/// what then lies beyond the far edge mirrored there too.
int MirrorTwice(long long i, int size)
{
    return filter::MirrorRow(i < 0 ? -i : i, size);
}

/// Copies the columns of a row that lie outside of it, from `begin` to before `end`.
void FillColumns(const float* row, int width, int margin, int begin, int end, float* work)
{
    for (int x = begin; x < end; ++x) {
        work[x] = row[MirrorTwice(x - margin, width)];
    }
}

/// An image larger than `image` by a margin on each side, without samples yet. Null when there is no room for it.
std::unique_ptr<CStlImage> MakeLarger(const CStlImage& image, long long margin, const Run& run)
{
    const long long width = image.GetWidth() + 2 * margin;
    const long long height = image.GetHeight() + 2 * margin;
    if (std::max(width, height) > std::numeric_limits<int>::max()) {
        return nullptr;
    }
    const Stage stage(run, IDS_INITIALIZING, 0);
    return OrNothing([&] {
        return std::make_unique<CStlImage>(-32, static_cast<int>(width), static_cast<int>(height), image.GetPlanes(),
                                           1.0, 0.0, 1);
    });
}

/// Copies the samples and levels of `image` into the middle of a larger one, one step of progress a row.
void CopyInterior(const CStlImage& image, int margin, CStlImage& work, Stage& stage)
{
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        work.SetLevel(plane, image.GetLevelMin(plane), image.GetLevelMax(plane));
        for (int y = 0; y < image.GetHeight(); ++y) {
            std::copy_n(image.GetImageAdr(0, y, plane, 1), image.GetWidth(),
                        work.GetImageAdr(margin, y + margin, plane));
            stage.Step();
        }
    }
}

/// Fills what lies about the interior, one step of progress a row.
void FillBorder(const CStlImage& image, int margin, CStlImage& work, Stage& stage)
{
    const int width = image.GetWidth();
    for (int plane = 0; plane < work.GetPlanes(); ++plane) {
        for (int y = 0; y < work.GetHeight(); ++y) {
            const int from = MirrorTwice(y - margin, image.GetHeight());
            const int middle = from == y - margin ? margin : margin + width;
            const float* const row = image.GetImageAdr(0, from, plane, 1);
            float* const workRow = work.GetImageAdr(0, y, plane);
            FillColumns(row, width, margin, 0, middle, workRow);
            FillColumns(row, width, margin, margin + width, work.GetWidth(), workRow);
            stage.Step();
        }
    }
}

/// Fills a band of pointers to the samples of column x, to read them or, as `Row` tells, to write them too.
template <class Row>
void PointAtRows(const CStlImage& image, int x, int y, int plane, int radius, Row* rows, unsigned flags)
{
    for (long long i = -static_cast<long long>(radius); i <= radius; ++i) {
        rows[i + radius] =
            image.GetImageAdr(x, filter::MirrorRow(y + i, image.GetHeight()), plane, static_cast<int>(flags & 2U) | 1);
    }
}

/// The padded copy that both work images are.
CStlImage* MakeWork(const CStlImage& image, int margin, const Run& run, int textId)
{
    auto work = MakeLarger(image, margin, run);
    if (work != nullptr && image.GetPixelCount() > 0) {
        Stage stage(run, textId, work->GetHeight() * work->GetPlanes() * 2);
        CopyInterior(image, margin, *work, stage);
        FillBorder(image, margin, *work, stage);
    }
    return work.release();
}

} // namespace

int CImgFilter::GetMeanR(int type)
{
    return filter::Radius(type);
}

int CImgFilter::GetMedianR(int type)
{
    return filter::Radius(type);
}

int CImgFilter::GetMinMaxR(int type)
{
    return filter::Radius(type);
}

int CImgFilter::GetSharpR(int type)
{
    return filter::Radius(type);
}

int CImgFilter::GetStarSharpR(int type)
{
    return filter::Radius(type);
}

void CImgFilter::CalcRect(int& left, int& top, int& right, int& bottom, const CRect* rect) const
{
    const CRect area = WorkingArea(*this, rect);
    left = static_cast<int>(area.left);
    top = static_cast<int>(area.top);
    right = static_cast<int>(area.right);
    bottom = static_cast<int>(area.bottom);
}

void CImgFilter::SetFilterAdr(int x, int y, int plane, int r, const float** rows, unsigned flags) const
{
    PointAtRows(*this, x, y, plane, r, rows, flags);
}

void CImgFilter::SetFilterAdr(int x, int y, int plane, int r, float** rows, unsigned flags) const
{
    PointAtRows(*this, x, y, plane, r, rows, flags);
}

void CImgFilter::CalcShift(int& dx, int& dy, int /*unused*/, const CStlImage* other) const
{
    if (GetWidth() >= other->GetWidth() && GetHeight() >= other->GetHeight()) {
        return;
    }
    dx = (other->GetWidth() - GetWidth()) / 2;
    dy = (other->GetHeight() - GetHeight()) / 2;
}

CStlImage* CImgFilter::MakeFilterWork(int margin, int showProgress)
{
    return MakeFilterWork(margin, WindowRun(*this, showProgress));
}

CStlImage* CImgFilter::MakeFilterWork(int margin, const Run& run) const
{
    return MakeWork(*this, margin > 0 ? margin : 2, run, IDS_FILTER_INIT);
}

CStlImage* CImgFilter::MakeDDWork(int margin, int showProgress)
{
    return MakeDDWork(margin, WindowRun(*this, showProgress));
}

CStlImage* CImgFilter::MakeDDWork(int margin, const Run& run) const
{
    return MakeWork(*this, margin > 0 ? margin : 1, run, IDS_DEVELOPMENT_INIT);
}
