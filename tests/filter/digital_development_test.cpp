#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

/// The blurred display value that a pixel is divided by.
double PlainBlur(const Spot& at, int selector, double weight)
{
    const auto blurred = [&](int p) {
        return at.image.To256(static_cast<float>(PlainMean(at.InPlane(p).Around(1), weight)), p);
    };
    if (selector >= 3 && at.image.Colour()) {
        return (blurred(0) + blurred(1) + blurred(2)) * 0.3333333333333333;
    }
    return static_cast<float>(blurred(std::clamp(selector, 0, at.image.planes - 1)));
}

} // namespace

TEST(DigitalDevelopment, AgreesWithThePlainForm)
{
    const std::tuple<double, double, int> cases[] = {{10.0, 1.0, 0},   {60.0, 0.5, 1},  {-50.0, 1.0, 2},
                                                     {100.0, 0.25, 3}, {100.0, 1.0, 9}, {30.0, 0.0, -4}};
    for (const auto& [offset, weight, selector] : cases) {
        SCOPED_TRACE(testing::Message() << "selector " << selector);
        float average = 0.0F;
        ExpectFilter(
            [&, o = offset, w = weight, code = selector](CImgFilter& f, CStlImage* source, CRect* rect, int show) {
                int planes[] = {code, 7};
                f.DigitalDvlp(o, w, source, code == 0 ? nullptr : planes, rect, show);
            },
            [&, o = offset, w = weight, code = selector](const Spot& at) {
                average = at.x == 0 && at.y == 0 && at.p == 0 ? static_cast<float>(at.image.Average(0)) : average;
                const double a = at.target.To256(o, 0);
                const double s = at.image.To256(at.Value(), at.p);
                const double developed = s / (PlainBlur(at, code, w) + a) * (at.target.To256(average, 0) + a);
                return at.target.ToRaw(s > 0.0 ? developed : s, at.p);
            },
            1, 1e-11, true);
    }
}
