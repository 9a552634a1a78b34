#include "corvane/colour/rgb_composite.h"

#include "corvane/colour/aligned_plane.h"
#include "corvane/colour/composite_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

struct PlacedFrame {
    const CStlImage& image;
    double dx;
    double dy;
    double angle;
};

bool IsWritten(const int* planes, int plane)
{
    return planes == nullptr || planes[0] != 0 || planes[plane] != 0;
}

} // namespace

void CImgRgbCmpst::Do(CStlImage* r, double dxR, double dyR, double angleR, CStlImage* g, double dxG, double dyG,
                      double angleG, CStlImage* b, double dxB, double dyB, double angleB, CRect* rect, int outside,
                      int* const planes, int showProgress)
{
    Do(*r, dxR, dyR, angleR, *g, dxG, dyG, angleG, *b, dxB, dyB, angleB, rect, outside, planes,
       WindowRun(*this, showProgress));
}

void CImgRgbCmpst::Do(const CStlImage& r, double dxR, double dyR, double angleR, const CStlImage& g, double dxG,
                      double dyG, double angleG, const CStlImage& b, double dxB, double dyB, double angleB,
                      const CRect* rect, int outside, const int* planes, const Run& run)
{
    const PlacedFrame frames[] = {{r, dxR, dyR, angleR}, {g, dxG, dyG, angleG}, {b, dxB, dyB, angleB}};
    CompositeRows rows(*this, rect);
    std::vector<AlignedPlane> channels;
    for (int p = 0; p < 3; ++p) {
        const auto& [image, dx, dy, angle] = frames[p];
        const int from = image.GetPlanes() >= 3 ? p : 0;
        channels.emplace_back(image, from, Alignment::Turned(dx, dy, angle, image.GetStdCtr()), rows.Columns());
        SetLevel(p, image.GetLevelMin(from), image.GetLevelMax(from));
    }
    rows.Walk({&r, &g, &b}, run, IDS_RGB_COMPOSITE, [&, channels](int y) mutable {
        for (int p = 0; p < 3; ++p) {
            if (IsWritten(planes, p)) {
                channels[p].Sample(y, outside);
                rows.Store(p, y, [v = channels[p].From(rows.Left())](int i) { return v[i]; });
            }
        }
    });
}
