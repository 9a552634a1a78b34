#include "corvane/tone/calculation.h"

#include <cmath>

#include "tests/tone/mapped.h"

using namespace corvane::test;

namespace {

double Calculated(double v, double value, int mode, int clip, const Plain& image)
{
    switch (image.IsBlank(v) ? -1 : mode) {
    case 0:
        return v + value;
    case 1:
        return clip != 0 && v - value < 0.0 ? 0.0 : v - value;
    case 2:
        return v * value;
    case 3:
        return value == 0.0 ? image.blank : v / value;
    default:
        return v;
    }
}

} // namespace

TEST(Calculation, EqualsThePlainFormInEveryMode)
{
    for (const int mode : {-1, 0, 1, 2, 3, 4}) {
        for (const double value : {0.0, 17.3, -2.5, 1e300}) {
            for (const int clip : {0, 1}) {
                SCOPED_TRACE(testing::Message() << "mode " << mode << ", value " << value << ", clip " << clip);
                ExpectMapped<CImgCalculation>(
                    "Calculating...",
                    [&](CImgCalculation& operation, CStlImage* source, CRect* rect) {
                        operation.Do(value, mode, clip, source, rect, 1);
                    },
                    [&](double v, int, const Plain& image) { return Calculated(v, value, mode, clip, image); });
            }
        }
    }
}

// The blanks are those of the result, and dividing by 0 uses a blank value that is not in use.
TEST(Calculation, TakesTheBlankValueOfTheResult)
{
    CStlImage source = Row({-32768.4F, -32767.5F, 0.0F, -0.5F});
    CImgCalculation operation(source);
    operation.SetBlank(-32768);
    operation.Do(0.0, 3, 0, &source, nullptr, 0);
    EXPECT_EQ(Samples(operation), std::vector<float>(4, -32768.0F));
    operation.SetBlankUsed(1);
    operation.Do(0.25, 1, 1, &source, nullptr, 0);
    EXPECT_EQ(Samples(operation), (std::vector<float>{-32768.4F, 0.0F, 0.0F, 0.0F}));
    operation.Do(5e-324, 3, 0, &source, nullptr, 0); // its reciprocal is beyond all numbers
    EXPECT_EQ(Samples(operation), (std::vector<float>{-32768.4F, -INFINITY, 0.0F, -INFINITY}));
}
