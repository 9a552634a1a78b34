#include "corvane/measure/overscan.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "corvane/combine/median_composit.h"
#include "corvane/platform/registry.h"
#include "corvane/tone/auto_level.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

double Mean(const std::vector<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

void Clip(std::vector<double>& values)
{
    auto count = static_cast<int>(values.size());
    int other = count;
    std::vector<double> sorted(values);
    CImgOverScan().SigmaClipping(count, values.data());
    CImgMedianComposit::SigmaClipping(other, sorted.data()); // the same, and without any left it leaves them sorted
    EXPECT_EQ(other, count);
    EXPECT_TRUE(count > 0 ? std::equal(values.begin(), values.begin() + count, sorted.begin())
                          : std::is_sorted(sorted.begin(), std::find_if(sorted.begin(), sorted.end(),
                                                                        [](double v) { return std::isnan(v); })));
    values.resize(static_cast<std::size_t>(count));
}

/// Calls visit(sample) in plane 0 of an area, edges included; a blank ends its row.
template <class Visit>
void ForEach(Plain& image, const CRect& area, Visit visit)
{
    for (int y = std::min(area.top, area.bottom); y <= std::max(area.top, area.bottom); ++y) {
        int x = std::min(area.left, area.right);
        for (; x <= std::max(area.left, area.right) && !image.IsBlank(image.At(x, y, 0)); ++x) {
            visit(image.At(x, y, 0));
        }
    }
}

} // namespace

TEST(Overscan, EqualsThePlainFormAndLevelsBySettings)
{
    CRegistry::Write("PrcAutoLevel", "Plane", 1);
    const auto check = [](CStlImage& image) {
        float* const row = image.GetImageAdr(0, 0, 0);
        std::transform(row, row + image.GetWidth(), row, [](float v) { return 1.0F - v; }); // mostly below 0
        const CRect whole(0, 0, image.GetWidth() - 1, image.GetHeight() - 1);
        for (const CRect& strip :
             {whole, CRect(whole.right, whole.bottom, 1, 0), CRect(-4, -3, 1, 0),
              CRect(1, 2, whole.right + 5, whole.bottom + 2), CRect(whole.right + 9, 9, whole.right + 7, 8)}) {
            for (const int clip : {0, 1}) {
                CImgOverScan operation(image);
                operation.Do(strip.left, strip.right, strip.top, strip.bottom, clip);
                Plain expected(image);
                std::vector<double> values;
                ForEach(expected, strip, [&](float v) { values.push_back(v); });
                clip != 0 ? Clip(values) : void();
                CImgAutoLevel levelled(image);
                if (!values.empty()) {
                    const double bias = std::fabs(Mean(values));
                    ForEach(expected, whole, [=](float& v) { v = static_cast<float>(v - bias); });
                    levelled = CImgAutoLevel(operation);
                    levelled.Do(0.2, 1.0, 1, nullptr);
                }
                EXPECT_TRUE(Agree(operation, expected, 1, 1e-13 * 300.0));
                EXPECT_EQ(operation.GetLevelMax(0), levelled.GetLevelMax(0));
                EXPECT_EQ(operation.GetLevelMin(2), levelled.GetLevelMin(2));
            }
        }
    };
    ForEachImage(check);
    ForEachImage(check, true);
    CRegistry::Write("PrcAutoLevel", "Plane", 0);
}

TEST(Overscan, ClipsStrictlyInOnePass)
{
    using Values = std::vector<double>;
    for (auto& [values, kept] : std::vector<std::pair<Values, Values>>{
             {{8, 8, 8, 8, 8, 8, 9, 8, 8, 7, 8, 99}, {7, 8, 8, 8, 8, 8, 8, 8, 8, 8, 9}},
             {{3, 1, 4, 2}, {1, 2, 3, 4}},
             {{3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -3, 0}, Values(16, 0.0)}, // 3 deviations from the median
             {{0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 3.5},
              {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 3.5}},
             {{5, 5}, {}},
             {{3, NAN, 1, 2, NAN, 0}, {}},
             {{}, {}}}) {
        Clip(values);
        EXPECT_EQ(values, kept);
    }
}
