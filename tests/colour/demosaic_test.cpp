#include "corvane/colour/demosaic.h"

#include <algorithm>
#include <cmath>

#include "examples/night/draw.h"
#include "tests/support/plain.h"

using namespace corvane;
using namespace corvane::test;

namespace {

/// The definition, pixel by pixel.
struct Mosaic {
    Mosaic(const CStlImage& image, const char* filters) : source(image), filled(source), pattern(filters)
    {
        source.ForEach([&](int x, int y, int p) { filled.At(x, y, p) = Filling(x, y); });
        for (int i = 0; i < (source.width + 6) * (source.height + 6); ++i) {
            greens.push_back(MakeGreen(i % (source.width + 6) - 3, i / (source.width + 6) - 3));
        }
    }

    bool IsInside(int x) const { return x >= 0 && x < source.width; }
    bool IsGap(int x, int y) const { return !std::isfinite(source.At(x, y, 0)) || source.IsBlank(source.At(x, y, 0)); }
    /// A sample, or the mean of the nearest of its colour in the row.
    float Filling(int x, int y) const
    {
        std::vector<double> ends;
        for (const int step : {-2, 2}) {
            int i = x;
            for (; IsInside(i) && IsGap(i, y); i += step) {
            }
            ends.insert(ends.end(), IsInside(i) ? 1U : 0U, source.At(i, y, 0));
        }
        return ends.empty() ? std::nanf("") : static_cast<float>((ends.front() + ends.back()) / 2.0);
    }
    static int Mirror(int i, int n)
    {
        for (; n > 1 && (i < 0 || i >= n); i = i < 0 ? -i : 2 * (n - 1) - i) {
        }
        return n > 1 ? i : 0;
    }
    double At(int x, int y) const { return filled.At(Mirror(x, source.width), Mirror(y, source.height), 0); }
    double Green(int x, int y) const { return greens[static_cast<std::size_t>((y + 3) * (source.width + 6) + x + 3)]; }
    char Filter(int x, int y) const { return pattern[2 * (y & 1) + (x & 1)]; }

    /// Means of guide and target over the pixels of a filter at most `reach` away both ways, and the slope.
    struct Line {
        double guide;
        double target;
        double slope;
        std::vector<double> guides;
        std::vector<double> targets;
    };
    template <class Guide, class Target>
    Line Fit(int x, int y, char filter, int reach, Guide guide, Target target) const
    {
        Line line{};
        double squares = 0.0;
        double products = 0.0;
        for (int i = 0; i < (2 * reach + 1) * (2 * reach + 1); ++i) {
            const int u = x - reach + i % (2 * reach + 1);
            const int v = y - reach + i / (2 * reach + 1);
            if (Filter(u, v) == filter) {
                line.guides.push_back(guide(u, v));
                line.targets.push_back(target(u, v));
                line.guide += line.guides.back();
                line.target += line.targets.back();
                squares += line.guides.back() * line.guides.back();
                products += line.guides.back() * line.targets.back();
            }
        }
        const auto n = static_cast<double>(line.guides.size());
        const double variance = squares - line.guide * line.guide / n;
        const double covariance = products - line.guide * line.target / n;
        line.slope = variance > 1e-12 * squares && covariance > 0.0 ? covariance / variance : 0.0;
        line.guide /= n;
        line.target /= n;
        return line;
    }

    float MakeGreen(int x, int y) const
    {
        double estimate[2];
        double change[2];
        for (const int down : {0, 1}) {
            const int right = 1 - down;
            const auto mean = [&](int i, int j) { return (At(i - right, j - down) + At(i + right, j + down)) / 2.0; };
            const double detail = At(x, y) - (At(x - 2 * right, y - 2 * down) + At(x + 2 * right, y + 2 * down)) / 2.0;
            const auto own = [&](int i, int j) { return At(i, j); };
            estimate[down] = mean(x, y) + 0.5 * Fit(x, y, Filter(x, y), 2, own, mean).slope * detail;
            change[down] = std::abs(At(x - right, y - down) - At(x + right, y + down)) + 2.0 * std::abs(detail);
        }
        const double sum = change[0] + change[1];
        const double made =
            sum > 0.0 ? (estimate[0] * change[1] + estimate[1] * change[0]) / sum : (estimate[0] + estimate[1]) / 2.0;
        return static_cast<float>(Filter(x, y) == 'G' ? At(x, y) : made);
    }

    /// By the published 5 x 5 coefficients, in sixteenths.
    double Linear(int x, int y, char filter) const
    {
        constexpr int kGreen[] = {0, 0, -2, 0, 0, 0, 0, 4, 0, 0, -2, 4, 8, 4, -2, 0, 0, 4, 0, 0, 0, 0, -2, 0, 0};
        constexpr int kOther[] = {0, 0, -3, 0, 0, 0, 4, 0, 4, 0, -3, 0, 12, 0, -3, 0, 4, 0, 4, 0, 0, 0, -3, 0, 0};
        constexpr int kInRow[] = {0, 0, 1, 0, 0, 0, -2, 0, -2, 0, -2, 8, 10, 8, -2, 0, -2, 0, -2, 0, 0, 0, 1, 0, 0};
        const bool isInColumn = Filter(x, y) == 'G' && Filter(x, y + 1) == filter;
        const int* const gains = filter == 'G' ? kGreen : Filter(x, y) == 'G' ? kInRow : kOther;
        double sum = 0.0;
        for (int i = 0; i < 25; ++i) {
            const int along = i % 5 - 2;
            const int across = i / 5 - 2;
            sum += gains[i] * (isInColumn ? At(x + across, y + along) : At(x + along, y + across));
        }
        return sum / 16.0;
    }

    double Colour(int x, int y, char filter, DemosaicMethod method) const
    {
        const auto sample = [&](int i, int j) { return At(i, j); };
        const auto green = [&](int i, int j) { return Green(i, j); };
        if (IsGap(x, y) || Filter(x, y) == filter) {
            return source.At(x, y, 0);
        }
        if (method == DemosaicMethod::kLinear) {
            return Linear(x, y, filter);
        }
        const Line around = Fit(x, y, filter, 1, green, sample);
        if (method == DemosaicMethod::kBilinear) {
            return around.target;
        }
        const double slope = Fit(x, y, filter, 3, green, sample).slope;
        const auto [least, most] = std::minmax_element(around.targets.begin(), around.targets.end());
        const auto [dark, bright] = std::minmax_element(around.guides.begin(), around.guides.end());
        const double made = around.target + slope * (Green(x, y) - around.guide);
        const double low = *least - slope * std::max(*dark - Green(x, y), 0.0);
        const double high = *most + slope * std::max(Green(x, y) - *bright, 0.0);
        return filter == 'G' ? Green(x, y) : std::min(std::max(made, low), high);
    }

    Plain source;
    Plain filled;
    const char* pattern;
    std::vector<float> greens; ///< three pixels beyond the edges too
};

/// The image row by row, each from no more than the rows that must be in memory.
CStlImage ByRows(const CStlImage& image, BayerPattern pattern, DemosaicMethod method)
{
    const int width = image.GetWidth();
    const int height = image.GetHeight();
    const std::vector<float> all = Samples(image);
    CStlImage colour(-32, width, height, 3, 1.0, 0.0, 1);
    for (int y = 0; y < height; ++y) {
        const int top = std::max(y - kDemosaicMargin, 0);
        const int bottom = std::min(y + kDemosaicMargin + 1, height);
        const std::vector<float> rows(all.begin() + top * width, all.begin() + bottom * width);
        DemosaicRows({rows.data(), width, height, top, bottom - top}, pattern, method, y, 1,
                     colour.GetImageAdr(0, y, 0), colour.GetImageAdr(0, y, 1), colour.GetImageAdr(0, y, 2));
    }
    return colour;
}

} // namespace

TEST(Demosaic, AgreesWithThePlainForm)
{
    ForEachImage([](CStlImage& image) {
        for (const int p : {0, 1, 2, 3}) {
            const char* const names[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
            const Mosaic mosaic(image, names[p]);
            for (const auto& [name, method] : kDemosaicNames) {
                CStlImage colour;
                Demosaic(image, static_cast<BayerPattern>(p), method, colour, {});
                ASSERT_EQ(colour.GetPlanes(), 3);
                EXPECT_EQ(colour.GetLevelMax(2), image.GetLevelMax(0));
                const Plain expected = Plain(colour).Map(
                    [&](double, int x, int y, int plane) { return mosaic.Colour(x, y, "RGB"[plane], method); });
                EXPECT_TRUE(Agree(colour, expected, 1, 1e-4)) << name << ' ' << names[p];
                if (!image.IsBlankUsed()) {
                    EXPECT_TRUE(Agree(ByRows(image, static_cast<BayerPattern>(p), method), Plain(colour)));
                }
            }
        }
    });
}

// White, orange, deep red: its colour must not change the shape of a star.
TEST(Demosaic, KeepsStarsRoundAndTheirFluxAndColour)
{
    const struct {
        double fwhm;
        double most[4]; // error of the flux, shift [pixels], ellipticity, difference of colour over the peak
    } cases[] = {{1.5, {0.61, 0.12, 0.11, 0.5}},
                 {2.0, {0.21, 0.075, 0.06, 0.24}},
                 {3.0, {0.031, 0.02, 0.012, 0.08}},
                 {4.0, {0.01, 0.004, 0.001, 0.055}}};
    for (int i = 0; i < 4 * 192; ++i) {
        const auto& c = cases[i / 192];
        const double x = 20.0 + i % 8 * 0.25;
        const double y = 20.0 + i / 8 % 8 * 0.25;
        const double colours[] = {1.0, 0.4 + 0.3 * (i / 64 % 3), 0.15 + 0.425 * (i / 64 % 3)};
        night::Plane plane(41, 41);
        night::AddStar(plane, {x, y, 1.0, c.fwhm}, night::Profile::kMoffat);
        const double peak = *std::max_element(plane.samples.begin(), plane.samples.end());
        CStlImage image(-32, 41, 41, 1, 1.0, 0.0, 1);
        Plain(image).ForEach([&](int u, int v, int) {
            image.SetPixelGrayRaw(u, v, static_cast<float>(plane.Row(v)[u] * colours[u % 2 + v % 2]), 0);
        });
        Demosaic(image, BayerPattern::kRggb, DemosaicMethod::kEdgeAware, image, {});
        double sums[3][6] = {};
        Plain(image).ForEach([&](int u, int v, int p) {
            const double sample = image.GetPixelGrayRaw(u, v, p) / colours[p];
            EXPECT_NEAR(sample, image.GetPixelGrayRaw(u, v, 1) / colours[1], c.most[3] * peak);
            EXPECT_GT(sample, -0.02 * peak) << c.fwhm;
            const double dx = u - x;
            const double dy = v - y;
            const double weight = std::exp(-(dx * dx + dy * dy) / 12.5);
            const double terms[] = {1.0 / weight, 1.0, dx, dy, dx * dx - dy * dy, dx * dx + dy * dy};
            std::transform(terms, terms + 6, sums[p], sums[p],
                           [=](double t, double s) { return s + sample * weight * t; });
        });
        for (const auto& sum : sums) {
            EXPECT_NEAR(sum[0], 1.0, c.most[0]) << c.fwhm;
            EXPECT_LT(std::hypot(sum[2], sum[3]) / sum[1], c.most[1]) << c.fwhm;
            EXPECT_LT(std::abs(sum[4] / sum[5]), c.most[2]) << c.fwhm;
        }
    }
}
