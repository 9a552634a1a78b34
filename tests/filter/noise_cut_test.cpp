#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

double PlainCut(const Spot& at, int type, double threshold, int cool, int hot)
{
    std::vector<double> values = at.Around(type);
    std::sort(values.begin(), values.end());
    const double median = values[values.size() / 2];
    const bool isFixed = at.Value() < median ? cool != 0 : at.Value() > median && hot != 0;
    return isFixed && std::fabs(median / at.Value() - 1.0) > threshold ? median : at.Value();
}

} // namespace

TEST(NoiseCut, AgreesWithThePlainForm)
{
    for (const int type : {0, 1, 2, 7}) {
        for (const double threshold : {0.3, -1.0, double{NAN}}) {
            for (const int cool : {0, 1}) {
                SCOPED_TRACE(testing::Message() << "type " << type << ", threshold " << threshold);
                ExpectFilter([=](auto& f, auto... to) { f.NoiseCut(type, threshold, cool, 2 - 2 * cool, to...); },
                             [=](const Spot& at) { return PlainCut(at, type, threshold, cool, 1 - cool); }, 0, 0.0,
                             true);
            }
        }
    }
}

TEST(NoiseCut, TakesTheMedianWhereTheContrastIsAboveTheThreshold)
{
    const std::tuple<float, float, float> cases[] = {{300.0F, 100.0F, 100.0F}, {200.0F, 100.0F, 200.0F},
                                                     {60.0F, 100.0F, 100.0F},  {0.0F, 100.0F, 100.0F},
                                                     {0.0F, -100.0F, -100.0F}, {0.0F, 0.0F, 0.0F}};
    for (const auto& [centre, others, expected] : cases) {
        const auto sample = [c = centre, o = others](int x, int y, int) { return x == 1 && y == 1 ? c : o; };
        CStlImage image = Make(3, 3, 1, sample);
        EXPECT_EQ(Filtered(image, [](auto& f, auto... to) { f.NoiseCut(1, 0.5, 1, 1, to...); })[4], expected);
    }
}
