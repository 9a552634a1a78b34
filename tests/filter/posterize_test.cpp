#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

double PlainBright(const Plain& image, double x, double y)
{
    const auto shown = [&](int p) { return image.To256(image.Between(x, y, p), p); };
    return image.Colour() ? 0.299 * shown(0) + 0.587 * shown(1) + 0.114 * shown(2) : shown(0);
}

/// The mean of nine steps.
double PlainPosterized(const Spot& at, int levels)
{
    double sum = 0.0;
    double y = at.y - 0.333333;
    for (int j = 0; j < 3; ++j, y += 0.333333) {
        double x = at.x - 0.333333;
        for (int i = 0; i < 3; ++i, x += 0.333333) {
            sum += std::trunc(PlainBright(at.image, x, y) * (levels * static_cast<double>(0.003921569F)));
        }
    }
    const double shown = sum * (255.0 / levels * static_cast<double>(0.11111111F));
    return at.target.ToRaw(at.image.Colour() && at.p != 1 ? static_cast<float>(shown) : shown, at.p);
}

} // namespace

TEST(Posterize, AgreesWithTheReaderBetweenSamples)
{
    for (const int levels : {1, 5, 1000, -3}) {
        SCOPED_TRACE(testing::Message() << "levels " << levels);
        ExpectFilter([=](auto& f, auto... to) { f.AAPosterizationFilter(levels, to...); },
                     [=](const Spot& at) { return PlainPosterized(at, std::max(levels, 1)); }, 0, 0.0);
    }
}
