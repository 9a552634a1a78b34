#include "corvane/colour/cmy_composite.h"

#include "corvane/colour/aligned_plane.h"
#include "corvane/colour/composite_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// Gives a plane the level between those of two frames.
void SetMeanLevel(CStlImage& result, int plane, const CImage& first, const CImage& second)
{
    result.SetLevel(plane, (first.GetLevelMin(0) + second.GetLevelMin(0)) * 0.5,
                    (first.GetLevelMax(0) + second.GetLevelMax(0)) * 0.5);
}

} // namespace

void CImgCmyComposit::Do(CStlImage* c, double dxC, double dyC, double angleC, CStlImage* m, double dxM, double dyM,
                         double angleM, CStlImage* y, double dxY, double dyY, double angleY, CRect* rect, int outside,
                         int showProgress)
{
    Do(*c, dxC, dyC, angleC, *m, dxM, dyM, angleM, *y, dxY, dyY, angleY, rect, outside, WindowRun(*this, showProgress));
}

void CImgCmyComposit::Do(const CStlImage& c, double dxC, double dyC, double angleC, const CStlImage& m, double dxM,
                         double dyM, double angleM, const CStlImage& y, double dxY, double dyY, double angleY,
                         const CRect* rect, int outside, const Run& run)
{
    CompositeRows rows(*this, rect);
    AlignedPlane ofC(c, 0, Alignment::Turned(dxC, dyC, angleC, c.GetStdCtr()), rows.Columns());
    AlignedPlane ofM(m, 0, Alignment::Turned(dxM, dyM, angleM, m.GetStdCtr()), rows.Columns());
    AlignedPlane ofY(y, 0, Alignment::Turned(dxY, dyY, angleY, y.GetStdCtr()), rows.Columns());
    SetMeanLevel(*this, 0, y, m);
    SetMeanLevel(*this, 1, c, y);
    SetMeanLevel(*this, 2, c, m);
    rows.Walk({&c, &m, &y}, run, IDS_CMY_COMPOSITE, [&, ofC, ofM, ofY](int row) mutable {
        for (AlignedPlane* plane : {&ofC, &ofM, &ofY}) {
            plane->Sample(row, outside);
        }
        const double* const cyan = ofC.From(rows.Left());
        const double* const magenta = ofM.From(rows.Left());
        const double* const yellow = ofY.From(rows.Left());
        const auto red = [=](int i) { return yellow[i] + magenta[i] - cyan[i]; };
        rows.Store(0, row, red);
        rows.Store(1, row, [=](int i) { return 2.0 * (yellow[i] - red(i) * 0.5); });
        rows.Store(2, row, [=](int i) { return 2.0 * (magenta[i] - red(i) * 0.5); });
    });
}
