#include "corvane/filter/fill.h"

#include <algorithm>
#include <cmath>

#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

/// The image after one more ring.
Plain WithRing(const Plain& plain)
{
    return plain.Map([&](double v, int x, int y, int p) {
        double sum = 0.0;
        double weights = 0.0;
        for (int row = std::max(y - 1, 0); row <= std::min(y + 1, plain.height - 1) && std::isnan(v); ++row) {
            for (int column = std::max(x - 1, 0); column <= std::min(x + 1, plain.width - 1); ++column) {
                if (const double s = plain.At(column, row, p); !std::isnan(s)) {
                    const double weight = 1.0 / (std::pow(column - x, 2) + std::pow(row - y, 2));
                    sum += weight * s;
                    weights += weight;
                }
            }
        }
        return weights > 0.0 ? sum / weights : v;
    });
}

} // namespace

TEST(Fill, AgreesWithThePlainForm)
{
    ForEachImage([](CStlImage& image) {
        for (int kind = 0; kind < 2; ++kind) { // small holes, and one of many rings
            for (int x = 2; x < std::min(image.GetWidth() - 3, 60 * kind); ++x) {
                for (int y = 0; y < image.GetHeight(); ++y) {
                    image.SetPixelGrayRaw(x, y, NAN, 0);
                }
            }
            const Plain before(image);
            Plain expected = before.Map([&](double v, int, int, int) {
                return std::isfinite(v) && !before.IsBlank(v) ? v : static_cast<double>(NAN);
            });
            const auto gaps =
                std::count_if(expected.samples.begin(), expected.samples.end(), [](float v) { return std::isnan(v); });
            for (int ring = 0; ring < 60; ++ring) {
                expected = WithRing(expected);
            }
            CStlImage filled(image);
            EXPECT_EQ(corvane::FillFromNeighbours(filled, {}), gaps);
            EXPECT_TRUE(Agree(filled, expected, 1));
            EXPECT_EQ(filled.IsBlankUsed() != 0, before.blankUsed && gaps == 0);
        }
    });
}
