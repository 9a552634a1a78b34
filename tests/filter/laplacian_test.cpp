#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

double PlainLaplacian(const Spot& at, int type)
{
    constexpr double kWeights[][9] = {{0, -1, 0, -1, 4, -1, 0, -1, 0},
                                      {-1, -1, -1, -1, 8, -1, -1, -1, -1},
                                      {1, -2, 1, -2, 4, -2, 1, -2, 1},
                                      {0, 1, 0, 0, 0, 0, 0, 0, 0}};
    const std::vector<double> values = at.Around(1);
    double sum = 0.0;
    for (std::size_t i = 0; i < 9; ++i) {
        const double weight = kWeights[type < 0 || type > 2 ? 3 : type][i];
        sum += weight == 0.0 ? 0.0 : weight * values[i];
    }
    return std::fabs(sum);
}

} // namespace

TEST(Laplacian, AgreesWithThePlainFormAbovePlaneZerosLevelMin)
{
    for (const int type : {0, 1, 2, 3, -1}) {
        SCOPED_TRACE(testing::Message() << "type " << type);
        ExpectFilter([=](auto& f, auto... to) { f.LaplacianFilter(type, to...); },
                     [=](const Spot& at) { return PlainLaplacian(at, type) + at.image.min[0]; }, 1, 0.0);
        ExpectKernel(
            1, [=](const Spot& at) { return PlainLaplacian(at, type) + at.image.min[at.p]; },
            [=](auto& f, auto rows, auto& at) { return f.GetLaplacianRaw(rows, at.x, type, at.p); });
    }
}
