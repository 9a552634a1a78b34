#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

/// A line is where a level lies above one neighbour's brightness and not above the pixel's.
double PlainContour(const Spot& at, int levels, bool overlay)
{
    const double bright = at.Brightness();
    double darkest = bright;
    for (const Spot& neighbour : {at.At(0, -1), at.At(-1, 0), at.At(1, 0), at.At(0, 1)}) {
        darkest = std::min(darkest, neighbour.Brightness());
    }
    bool isLine = false;
    for (int k = 1; k <= levels; ++k) {
        isLine |= bright >= k * 255.0 / (levels + 1) && darkest < k * 255.0 / (levels + 1);
    }
    const double line = overlay && bright >= 127.5 ? at.target.min[at.p] : at.target.max[at.p];
    return isLine ? line : (overlay ? at.Value() : at.target.min[at.p]);
}

} // namespace

TEST(Contour, AgreesWithThePlainForm)
{
    for (const int levels : {-2, 1, 6, 40}) {
        SCOPED_TRACE(testing::Message() << "levels " << levels);
        const bool overlay = levels % 4 != 0;
        ExpectFilter([=](auto& f, auto... to) { f.ContourFilter(levels, overlay ? 1 : 0, to...); },
                     [=](const Spot& at) { return PlainContour(at, std::max(levels, 1), overlay); }, 0, 0.0, true);
    }
}

TEST(Contour, TakesNaNForDark)
{
    const auto run = [](auto& f, auto... to) { f.ContourFilter(3, 0, to...); };
    EXPECT_EQ(FilteredRow({255.0F, 255.0F, 255.0F, NAN, 0.0F}, run), std::vector({0.0F, 0.0F, 255.0F, 0.0F, 0.0F}));
}
