#include "corvane/filter/cosmic_rays.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>

#include "tests/support/images.h"

namespace corvane {
namespace {

using test::Make;
using test::Random;
using Value = std::function<double(int x, int y)>;

constexpr double kNone = NAN;

/// The definition, sample by sample, for every step-th sample of a mosaic; the whole frame anew in each round.
class Plain {
public:
    Plain(const CStlImage& image, const CosmicRayLimits& limits, const std::vector<SampleNoise>& noises)
        : limits_(limits), noises_(noises), step_(noises.size() == 1 ? 1 : 2), width_(image.GetWidth()),
          height_(image.GetHeight()), samples_(test::Samples(image)), hits_(samples_.size())
    {
        for (float& v : samples_) {
            v = std::isinf(v) || std::trunc(v) == -7.0F ? NAN : v;
        }
        for (int round = 0; round < limits.iterations; ++round) {
            Round();
        }
    }

    bool IsHit(int x, int y) const { return hits_[y * width_ + x]; }
    float Mended(int x, int y) const { return samples_[y * width_ + x]; }

private:
    double At(int x, int y) const
    {
        return x >= 0 && y >= 0 && x < width_ && y < height_ ? samples_[y * width_ + x] : kNone;
    }

    /// The median about a place of values `step` apart.
    double Median(int x, int y, int reach, int step, const Value& value) const
    {
        std::vector<double> v;
        for (int i = -reach; i <= reach; ++i) {
            for (int k = -reach; k <= reach; ++k) {
                const bool isInside =
                    x + k * step >= 0 && y + i * step >= 0 && x + k * step < width_ && y + i * step < height_;
                v.push_back(isInside ? value(x + k * step, y + i * step) : kNone);
            }
        }
        v.erase(std::remove_if(v.begin(), v.end(), [](double a) { return std::isnan(a); }), v.end());
        std::sort(v.begin(), v.end());
        return v.empty() ? kNone : static_cast<float>((v[(v.size() - 1) / 2] + v[v.size() / 2]) / 2.0);
    }

    const SampleNoise& NoiseOf(int x, int y) const { return noises_[y % step_ * step_ + x % step_]; }
    double Beneath(int x, int y) const
    {
        return Median(x, y, 2, step_, [&](int i, int k) { return At(i, k); });
    }
    double Noise(int x, int y) const
    {
        const SampleNoise& noise = NoiseOf(x, y);
        return std::sqrt(noise.variance + noise.perCount * std::max(Beneath(x, y) - noise.sky, 0.0));
    }

    /// By the Laplacian of quarters: two of a quarter's neighbours belong to the same sample.
    double Significance(int x, int y) const
    {
        const double v = At(x, y);
        const auto other = [&](int dx, int dy) {
            const double n = At(x + dx * step_, y + dy * step_);
            return std::isnan(n) ? v : n;
        };
        double sum = 0.0;
        for (const int dx : {-1, 1}) {
            for (const int dy : {-1, 1}) {
                sum += std::max(4.0 * v - v - v - other(dx, 0) - other(0, dy), 0.0);
            }
        }
        return std::isnan(v) ? kNone : static_cast<float>(sum / 4.0 / (2.0 * Noise(x, y)));
    }

    double FineStructure(int x, int y, int step, const Value& value) const
    {
        const Value small = [&](int i, int k) { return Median(i, k, 1, step, value); };
        return small(x, y) - std::min(Median(x, y, 3, step, small), Median(x, y, 2, step, value));
    }

    bool IsSeed(int x, int y, double sharp) const
    {
        if (!(sharp > limits_.sigma)) {
            return false; // and what follows takes long
        }
        const auto own = [&](int i, int k) { return At(i, k); };
        const auto above = [&](int i, int k) { return static_cast<float>(At(i, k) - NoiseOf(i, k).sky); };
        const double mosaic = step_ > 1 ? FineStructure(x, y, 1, above) : kNone;
        const double fine = std::fmax(FineStructure(x, y, step_, own), mosaic) / Noise(x, y);
        return At(x, y) - Beneath(x, y) > limits_.sigma * Noise(x, y) && sharp > limits_.limit * std::max(fine, 0.01);
    }

    void Round()
    {
        std::vector<double> significance;
        Each([&](int x, int y) { significance.push_back(Significance(x, y)); });
        const auto at = [&](int x, int y) { return significance[y * width_ + x]; };
        std::vector<double> sharp;
        Each([&](int x, int y) { sharp.push_back(at(x, y) - Median(x, y, 2, step_, at)); });
        std::vector<bool> found;
        Each([&](int x, int y) { found.push_back(IsSeed(x, y, sharp[y * width_ + x])); });
        for (const double least : {limits_.sigma, limits_.fraction * limits_.sigma}) {
            const std::vector<bool> from = found;
            const auto isFrom = [&](int x, int y) { return from[y * width_ + x] ? 1.0 : kNone; };
            Each([&](int x, int y) {
                found[y * width_ + x] = sharp[y * width_ + x] > least && Median(x, y, 1, step_, isFrom) == 1.0;
            });
        }
        Each([&](int x, int y) { hits_[y * width_ + x] = hits_[y * width_ + x] || found[y * width_ + x]; });
        const auto unhit = [&](int x, int y) { return IsHit(x, y) ? kNone : At(x, y); };
        Each([&](int x, int y) {
            const double median = IsHit(x, y) ? Median(x, y, 2, step_, unhit) : kNone;
            samples_[y * width_ + x] = static_cast<float>(std::isnan(median) ? At(x, y) : median);
        });
    }

    template <class Visit>
    void Each(Visit visit) const
    {
        for (int i = 0; i < width_ * height_; ++i) {
            visit(i % width_, i / width_);
        }
    }

    CosmicRayLimits limits_;
    std::vector<SampleNoise> noises_;
    int step_;
    int width_;
    int height_;
    std::vector<float> samples_;
    std::vector<bool> hits_;
};

struct Star {
    double x;
    double y;
    double peak;
};

constexpr double kSky = 200.0;

/// Stars of FWHM 2.6 up to a full well, on a sky of noise about 5.
CStlImage Sky(int width, int height, const std::vector<Star>& stars, std::uint64_t seed)
{
    Random random(seed);
    return Make(width, height, 1, [&](int x, int y, int) {
        double v = kSky;
        for (const Star& star : stars) {
            v += star.peak * std::pow(1.0 + (std::pow(x - star.x, 2) + std::pow(y - star.y, 2)) / 5.3, -2.5);
        }
        const double noise = random.Between(-1, 1) + random.Between(-1, 1) + random.Between(-1, 1);
        return std::min(v + noise * std::sqrt(25.0 + (v - kSky) / 1.5), 65535.0);
    });
}

const SampleNoise kNoise{25.0, 1.0 / 1.5, kSky};

TEST(CosmicRays, AreFoundAsThePlainFormFindsThem)
{
    int found = 0;
    for (const auto& [width, height] : {std::pair(1, 1), {2, 2}, {1, 9}, {13, 2}, {95, 33}}) {
        for (const int trial : {0, 1, 2, 3, 4, 5}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height << ", trial " << trial);
            Random random(static_cast<std::uint64_t>(trial) + 9);
            CStlImage image = Sky(width, height, {{20.3, 9.8, 9e5}, {60.0, 20.5, 3e3}, {80.2, 11.0, 300.0}}, 3);
            for (int hit = 0; hit < width * height / 25; ++hit) {
                image.SetPixelGrayRaw(random.Whole(0, width - 1), random.Whole(0, height - 1),
                                      static_cast<float>(random.Between(220, 9000)), 0);
            }
            trial % 2 == 1 ? test::SprinkleOddities(image, 2) : void();
            const bool isMosaic = trial > 2 && std::min(width, height) > 1;
            const std::vector<SampleNoise> noises(isMosaic ? 4 : 1, kNoise);
            const CosmicRayLimits limits =
                trial == 2 ? CosmicRayLimits{1.5, 0.1, 0.5, 4} : CosmicRayLimits{.iterations = 1 + trial % 4};
            const Plain plain(image, limits, isMosaic ? noises : std::vector{kNoise});
            int expected = 0;
            for (int i = 0; i < width * height; ++i) {
                expected += plain.IsHit(i % width, i / width) ? 1 : 0;
            }
            const std::vector<CosmicHit> hits = FindCosmicRays(image, 0, limits, noises);
            EXPECT_EQ(std::ssize(hits), expected);
            for (const CosmicHit& hit : hits) {
                EXPECT_TRUE(plain.IsHit(hit.x, hit.y)) << hit.x << ' ' << hit.y;
                EXPECT_EQ(hit.mended, plain.Mended(hit.x, hit.y)) << hit.x << ' ' << hit.y;
            }
            found += expected;
        }
    }
    EXPECT_GT(found, 500); // or nothing was compared
}

/// Tracks and single hits are known; stars that stand alone, among them saturated ones, must stay.
TEST(CosmicRays, LeaveNoHitAndTakeNoStar)
{
    Random random(5);
    std::vector<Star> stars;
    const auto nearest = [&](double x, double y) {
        double least = 1e9;
        for (const Star& star : stars) {
            least = std::min(least, std::hypot(x - star.x, y - star.y));
        }
        return least;
    };
    for (int i = 0; i < 400; ++i) {
        const Star star{random.Between(8, 248), random.Between(8, 248), std::pow(10.0, random.Between(3, 6))};
        nearest(star.x, star.y) > 20.0 ? stars.push_back(star) : void();
    }
    const CStlImage truth = Sky(256, 256, stars, 4);
    CStlImage image(truth);
    std::set<std::pair<int, int>> missing;
    for (int i = 0; i < 200; ++i) {
        const int x = random.Whole(5, 250);
        const int y = random.Whole(5, 250);
        for (int length = nearest(x, y) > 12.0 ? random.Whole(0, 4) : -1; length >= 0; --length) {
            image.SetPixelGrayRaw(x + length, y + length / 2, static_cast<float>(random.Between(400, 9000)), 0);
            missing.insert({x + length, y + length / 2});
        }
    }
    ASSERT_GT(std::min(missing.size(), stars.size()), 50U);
    for (const std::size_t filters : {1U, 4U}) {
        std::set<std::pair<int, int>> left = missing;
        for (const CosmicHit& hit : FindCosmicRays(image, 0, {}, std::vector(filters, kNoise))) {
            left.erase({hit.x, hit.y});
            EXPECT_NEAR(hit.mended / truth.GetPixelGrayRaw(hit.x, hit.y, 0), 1.0, 0.25) << hit.x << ' ' << hit.y;
            EXPECT_GT(nearest(hit.x, hit.y), 2.0) << hit.x << ' ' << hit.y << ", filters " << filters;
        }
        EXPECT_TRUE(left.empty()) << left.size() << ", filters " << filters;
    }
}

} // namespace
} // namespace corvane
