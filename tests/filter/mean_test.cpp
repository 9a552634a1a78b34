#include "tests/filter/plain_filter.h"

using namespace corvane::test;

TEST(Mean, AgreesWithThePlainForm)
{
    for (const int type : {0, 1, 2, 5, -1}) {
        SCOPED_TRACE(testing::Message() << "type " << type);
        const int r = CImgFilter::GetMeanR(type);
        for (const double weight : {1.0, 0.3, 0.0, -0.7}) {
            const auto value = [=](const Spot& at) { return PlainMean(at.Around(type), weight); };
            ExpectFilter([=](auto& f, auto... to) { f.MeanFilter(type, weight, to...); }, value);
            ExpectKernel(r, value, [=](auto& f, auto rows, auto& at) {
                double mean = 0.0;
                const float weighted = f.GetMeanRaw(rows, at.x, type, weight, &mean);
                EXPECT_TRUE(r == 0 || Same(mean, PlainMean(at.Around(type), 1.0), 1e-12));
                return weighted;
            });
            ExpectKernel(r, value,
                         [=](auto& f, auto, auto& at) { return f.GetMeanRaw(at.x, at.y, type, weight, at.p); });
        }
        const auto value = [=](const Spot& at, int levels) {
            return PlainMean(at.Around(type), (1.0 - at.Edge(levels)) * (1.0 - at.Edge(levels)) * 0.9);
        };
        ExpectFilter([=](auto& f, auto... to) { f.MeanWithoutEdgeFilter(type, 0.9, to...); },
                     [=](const Spot& at) { return value(at, 0); });
        ExpectKernel(
            r, [=](const Spot& at) { return value(at, at.p); },
            [=](auto& f, auto rows, auto& at) { return f.GetMeanWithoutEdgeRaw(rows, at.x, type, 0.9, at.p); });
    }
}
