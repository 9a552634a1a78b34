#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

double PlainSharp(std::vector<double> values, double strength)
{
    const double centre = std::exchange(values[values.size() / 2], 0.0);
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size() - 1);
    return values.size() == 1 ? centre : (2.0 * centre - strength * mean) / (2.0 - strength);
}

} // namespace

TEST(Sharpen, AgreesWithThePlainForm)
{
    for (const int type : {0, 1, 2, 5, -1}) {
        for (const double strength : {1.9, -0.7}) {
            SCOPED_TRACE(testing::Message() << "type " << type << ", strength " << strength);
            const auto sharp = [=](const Spot& at) { return PlainSharp(at.Around(type), strength); };
            ExpectFilter([=](auto& f, auto... to) { f.SharpFilter(type, strength, to...); }, sharp);
            ExpectKernel(CImgFilter::GetSharpR(type), sharp,
                         [=](auto& f, auto rows, auto& at) { return f.GetSharpRaw(rows, at.x, type, strength); });
            const auto edge = [=](const Spot& at) {
                return PlainSharp(at.Around(type), strength * at.Edge(at.p) * at.Edge(at.p));
            };
            ExpectFilter([=](auto& f, auto... to) { f.SharpEdgeFilter(type, strength, to...); }, edge);
            ExpectKernel(CImgFilter::GetSharpR(type), edge, [=](auto& f, auto rows, auto& at) {
                return f.GetSharpEdgeRaw(rows, at.x, type, strength, at.p);
            });
        }
    }
}
