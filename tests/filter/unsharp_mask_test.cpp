#include "tests/filter/plain_filter.h"

using namespace corvane::test;

TEST(UnsharpMask, AgreesWithThePlainForm)
{
    const struct {
        double amount;
        int type;
        double weight;
        double threshold;
    } cases[] = {{1.0, 0, 1.0, 0.0}, {2.5, 1, 0.5, 0.3}, {-0.5, 2, 2.0, 0.05}, {1.0, 4, 1.0, 0.0}, {1.0, 2, 1.0, NAN}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type << ", threshold " << c.threshold);
        ExpectFilter([=](auto& f, auto... to) { f.UnSharpMask(c.amount, c.type, c.weight, c.threshold, to...); },
                     [=](const Spot& at) {
                         const std::vector<double> values = at.Around(c.type);
                         const double v = at.Value();
                         const bool stands = std::fabs(PlainMean(values, 1.0) / v - 1.0) >= c.threshold;
                         return stands ? v + c.amount * (v - static_cast<float>(PlainMean(values, c.weight))) : v;
                     });
    }
}

TEST(UnsharpMask, BeginsAtTheThresholdAndTakesAnInfiniteContrastForOneAbove)
{
    // About 4 the mean is (3 * 4 + 1 + 2) * 0.2: the contrast is 0.25, and the sample becomes 4 + (4 - 3).
    const auto masked = [](double threshold) {
        return FilteredRow({0.0F, 1.0F, 4.0F, 2.0F, 0.0F, 0.0F, 0.0F, 9.0F},
                           [=](auto& f, auto... to) { f.UnSharpMask(1.0, 0, 1.0, threshold, to...); });
    };
    EXPECT_EQ(masked(0.25)[2], 5.0F);
    EXPECT_EQ(masked(0.2500001)[2], 4.0F);
    EXPECT_EQ(masked(1000.0)[6], -1.8F);
    EXPECT_EQ(masked(1000.0)[7], 9.0F);
}
