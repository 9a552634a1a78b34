#include "corvane/combine/cut_out_search.h"

#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

#include "tests/support/images.h"

namespace corvane {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

CStlImage Cut(const CStlImage& image, int left, int top, int width, int height)
{
    return test::Make(width, height, image.GetPlanes(),
                      [&](int x, int y, int p) { return image.GetPixelGrayRaw(left + x, top + y, p); });
}

CRect AllPlaces(const CStlImage& cutOut, const CStlImage& image)
{
    return {0, 0, image.GetWidth() - cutOut.GetWidth() + 1, image.GetHeight() - cutOut.GetHeight() + 1};
}

/// Pearson's coefficient by its definition, each plane less its own mean; -2 without enough pairs.
double Plain(const CStlImage& cutOut, const CStlImage& image, int ox, int oy)
{
    long double rr = 0.0;
    long double ss = 0.0;
    long double rs = 0.0;
    std::size_t all = 0;
    for (int p = 0; p < image.GetPlanes(); ++p) {
        std::vector<std::pair<long double, long double>> pairs;
        long double r = 0.0;
        long double s = 0.0;
        for (int i = 0; i < cutOut.GetWidth() * cutOut.GetHeight(); ++i) {
            const int x = i % cutOut.GetWidth();
            const int y = i / cutOut.GetWidth();
            pairs.emplace_back(cutOut.GetPixelGrayRaw(x, y, p), image.GetPixelGrayRaw(ox + x, oy + y, p));
            const bool isBlank = image.IsBlankUsed() != 0 && std::trunc(pairs.back().second) == -7.0;
            if (std::isnan(pairs.back().first + pairs.back().second) || isBlank) {
                pairs.pop_back();
                continue;
            }
            r += pairs.back().first;
            s += pairs.back().second;
        }
        const auto count = static_cast<long double>(pairs.size());
        for (const auto& [a, b] : pairs) {
            rr += (a - r / count) * (a - r / count);
            ss += (b - s / count) * (b - s / count);
            rs += (a - r / count) * (b - s / count);
        }
        all += pairs.size();
    }
    return 2 * static_cast<long long>(all) < cutOut.GetPixelCount() ? -2.0
                                                                    : static_cast<double>(rs / std::sqrt(rr * ss));
}

TEST(CutOutSearch, FindsTheBestPlaceOfThePlainForm)
{
    // Size, planes, cut-out and how far the image lies above 0. The wide one takes several tiles.
    const std::tuple<test::Size, int, CRect, double> cases[] = {{{40, 31}, 1, CRect(20, 11, 27, 17), 0.0},
                                                                {{23, 50}, 3, CRect(0, 41, 9, 50), 1e5},
                                                                {{1300, 9}, 1, CRect(1289, 0, 1300, 8), -3e4},
                                                                {{9, 1100}, 1, CRect(1, 600, 9, 613), 0.0}};
    for (const auto& [size, planes, rect, pedestal] : cases) {
        for (const bool odd : {false, true}) {
            SCOPED_TRACE(testing::Message() << size.width << ' ' << odd);
            const CStlImage noise = test::RandomImage(size, planes, 5);
            // A steep slope and a star a thousand times as bright as the noise.
            CStlImage image = test::Make(size.width, size.height, planes, [&, up = pedestal](int x, int y, int p) {
                return noise.GetPixelGrayRaw(x, y, p) + up + (odd ? 3.0 : 90.0) * x + (x == 3 && y == 5 ? 3e5 : 0.0);
            });
            const CStlImage other = test::RandomImage({rect.Width(), rect.Height()}, planes, 6);
            const CStlImage part =
                Cut(image, static_cast<int>(rect.left), static_cast<int>(rect.top), rect.Width(), rect.Height());
            CStlImage cutOut = test::Make(rect.Width(), rect.Height(), planes, [&](int x, int y, int p) {
                return 0.25 * part.GetPixelGrayRaw(x, y, p) + 0.02 * other.GetPixelGrayRaw(x, y, p) - 800.0;
            });
            if (odd) {
                image.SetBlank(-7);
                image.SetBlankUsed(1);
                test::Sprinkle(image, {kNan, -7.0F}, 8);
                test::Sprinkle(cutOut, {kNan}, 9);
            }
            double best = -2.0;
            const CRect places = AllPlaces(cutOut, image);
            for (int i = 0; i < places.Width() * places.Height(); ++i) {
                best = std::max(best, Plain(cutOut, image, i % places.Width(), i / places.Width()));
            }
            const auto found = FindCutOut(cutOut, image, places, {});
            ASSERT_TRUE(found);
            EXPECT_NEAR(found->correlation, best, 1e-10);
            EXPECT_NEAR(found->x, rect.left, 0.3); // noise has no slope to refine by
            EXPECT_NEAR(found->y, rect.top, 0.3);
        }
    }
}

/// Stars of a width on a sloping sky with noise, seen from a corner.
CStlImage Stars(int width, int height, double sigma, double left, double top, double noise, std::uint64_t seed)
{
    test::Random random(seed);
    test::Random places(7);
    CStlImage image = test::Make(width, height, 1, [&](int x, int, int) {
        return 300.0 + 0.5 * (x + left) + noise * random.Between(-1.7, 1.7);
    });
    for (int star = 0; star < 40; ++star) {
        const double cx = places.Between(0.0, 200.0) - left;
        const double cy = places.Between(0.0, 150.0) - top;
        const double peak = places.Between(500.0, 4000.0);
        for (int i = 0; i < 31 * 31; ++i) {
            const int x = static_cast<int>(cx) - 15 + i % 31;
            const int y = static_cast<int>(cy) - 15 + i / 31;
            if (x < 0 || y < 0 || x >= width || y >= height) {
                continue;
            }
            const double squares = (x - cx) * (x - cx) + (y - cy) * (y - cy);
            const double v = image.GetPixelGrayRaw(x, y, 0) + peak * std::exp(-squares / (2.0 * sigma * sigma));
            image.SetPixelGrayRaw(x, y, static_cast<float>(v), 0);
        }
    }
    return image;
}

TEST(CutOutSearch, FindsShiftsToATenthOfAPixelWhateverPedestalAndGain)
{
    for (const double sigma : {0.85, 1.3, 2.5}) {
        for (int i = 0; i < 12; ++i) {
            const double x = 60.0 + 0.09 * i;
            const double y = i % 3 == 0 ? -0.3 : 40.0 - 0.17 * i; // to a row above the first one, too
            CStlImage image = Stars(200, 150, sigma, 0.0, 0.0, 20.0, 1);
            const CStlImage seen = Stars(48, 40, sigma, x, y, 20.0, 2);
            const CStlImage cutOut =
                test::Make(48, 40, 1, [&](int u, int v, int) { return seen.GetPixelGrayRaw(u, v, 0) / 30.0 - 9.0; });
            const auto found = FindCutOut(cutOut, image, AllPlaces(cutOut, image), {});
            ASSERT_TRUE(found);
            EXPECT_NEAR(found->x, x, 0.1) << sigma << ' ' << i;
            EXPECT_NEAR(found->y, y, 0.1) << sigma << ' ' << i;
        }
    }
    // As large as the image, there is one place, refined by what lies inside both.
    CStlImage image = Stars(200, 150, 1.3, 0.0, 0.0, 20.0, 1);
    const auto found = FindCutOut(Stars(200, 150, 1.3, 0.4, -0.2, 20.0, 2), image, CRect(0, 0, 1, 1), {});
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->x, 0.4, 0.1);
    EXPECT_NEAR(found->y, -0.2, 0.1);
}

TEST(CutOutSearch, FindsNothingWhereNothingCanBeCompared)
{
    CStlImage image = test::RandomImage({30, 20}, 1, 1);
    const auto flat = [](double v) { return [=](int, int, int) { return v; }; };
    CStlImage flatImage = test::Make(30, 20, 1, flat(1e6));
    const CStlImage cutOut = Cut(image, 3, 4, 5, 6);
    EXPECT_FALSE(FindCutOut(test::Make(5, 6, 1, flat(0.1)), image, CRect(0, 0, 26, 15), {}));
    EXPECT_FALSE(FindCutOut(test::Make(5, 6, 1, flat(kNan)), image, CRect(0, 0, 26, 15), {}));
    EXPECT_FALSE(FindCutOut(Cut(image, 3, 4, 1, 1), image, CRect(0, 0, 30, 20), {}));
    EXPECT_FALSE(FindCutOut(cutOut, flatImage, CRect(0, 0, 26, 15), {}));
    EXPECT_FALSE(FindCutOut(cutOut, image, CRect(0, 0, 0, 15), {}));
    EXPECT_NEAR(FindCutOut(cutOut, image, CRect(3, 4, 4, 5), {})->correlation, 1.0, 1e-12);
}

} // namespace
} // namespace corvane
