// Each rejection against its definition, on one pixel after the other.

#include "corvane/combine/rejection.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <vector>

#include "tests/support/plain.h"

namespace corvane {
namespace {

using Values = std::vector<double>;
using Judge = std::function<bool(const Values&, std::size_t, double low, double high)>;

double Median(Values values)
{
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
}

double Mean(const Values& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

double Deviation(const Values& values)
{
    const double mean = Mean(values);
    double squares = 0.0;
    std::for_each(values.begin(), values.end(), [&](double v) { squares += (v - mean) * (v - mean); });
    return std::sqrt(squares / static_cast<double>(values.size() - 1));
}

double MedianDeviation(Values values)
{
    const double median = Median(values);
    std::for_each(values.begin(), values.end(), [&](double& v) { v = std::fabs(v - median); });
    return 1.4826 * Median(values);
}

double WinsorizedDeviation(const Values& values)
{
    const double median = Median(values);
    double scale = Deviation(values);
    for (double change = 1.0; scale > 0.0 && change >= 5e-4;) {
        Values bounded = values;
        std::for_each(bounded.begin(), bounded.end(),
                      [&](double& v) { v = std::clamp(v, median - 1.5 * scale, median + 1.5 * scale); });
        const double next = 1.134 * Deviation(bounded);
        change = std::fabs(next - scale) / scale;
        scale = next;
    }
    return scale;
}

Judge AboutMedian(double (*scaleOf)(Values))
{
    return [=](const Values& values, std::size_t i, double low, double high) {
        const double off = values[i] - Median(values);
        return off >= -low * scaleOf(values) && off <= high * scaleOf(values);
    };
}

bool IsNearLine(const Values& values, std::size_t i, double low, double high)
{
    const auto n = static_cast<double>(values.size());
    double xx = 0.0;
    double xy = 0.0;
    for (std::size_t k = 0; k < values.size(); ++k) {
        const double x = static_cast<double>(k) - (n - 1.0) / 2.0;
        xx += x * x;
        xy += x * values[k];
    }
    const auto offOf = [&](std::size_t k) {
        return values[k] - Mean(values) - xy / xx * (static_cast<double>(k) - (n - 1.0) / 2.0);
    };
    double scale = 0.0;
    for (std::size_t k = 0; k < values.size(); ++k) {
        scale += std::fabs(offOf(k)) / n;
    }
    return offOf(i) >= -low * scale && offOf(i) <= high * scale;
}

Values InRounds(Values values, const Judge& isKept, const ClipLimits& limits)
{
    for (int round = 0; values.size() >= 3 && (limits.rounds == 0 || round < limits.rounds); ++round) {
        Values kept;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (isKept(values, i, limits.low, limits.high)) {
                kept.push_back(values[i]);
            }
        }
        if (kept.size() == values.size()) {
            break;
        }
        values = kept;
    }
    return values;
}

/// A block of sorted pixels: some of few values, with outliers, of equal values, in two groups.
class Pixels {
public:
    Pixels(int frames, std::uint64_t seed) : values_(static_cast<std::size_t>(frames) * kColumns)
    {
        test::Random random(seed);
        for (int k = 0; k < kColumns; ++k) {
            columns_[k].resize(static_cast<std::size_t>(k < 8 ? frames : random.Whole(0, frames)));
            for (double& v : columns_[k]) {
                const double bell = random.Between(-1.0, 1.0) + random.Between(-1.0, 1.0) + random.Between(-1.0, 1.0);
                const bool isOut = random.Whole(0, 7) == 0;
                v = k == 3 ? 7.5 : 100.0 + bell * (isOut ? 12.0 : 1.0) + (k == 5 ? 30.0 * random.Whole(0, 1) : 0.0);
            }
            std::sort(columns_[k].begin(), columns_[k].end());
            count_[k] = static_cast<int>(columns_[k].size());
            for (int i = 0; i < frames; ++i) {
                const auto at = static_cast<std::size_t>(i);
                values_[at * kColumns + static_cast<std::size_t>(k)] = i < count_[k] ? columns_[k][at] : HUGE_VAL;
            }
        }
        block_ = {{values_.data(), frames}, nullptr, count_, false};
    }

    const SortedBlock& GetBlock() const { return block_; }
    const Values& Column(int k) const { return columns_[k]; }
    Values Part(int k, int first, int end) const
    {
        Values part;
        for (int i = first; i < end; ++i) {
            part.push_back(block_.values.Row(i)[k]);
        }
        return part;
    }

private:
    Values values_;
    Values columns_[kColumns];
    int count_[kColumns] = {};
    SortedBlock block_{};
};

/// What counts is what the definition keeps, and what is below and above lies there.
void ExpectKept(const Rejection& rejection, int frames, const std::function<Values(const Values&)>& plain)
{
    for (std::uint64_t seed = 1; seed < 12; ++seed) {
        const Pixels pixels(frames, seed);
        Kept kept;
        rejection.Choose(pixels.GetBlock(), kept);
        for (int k = 0; k < kColumns; ++k) {
            SCOPED_TRACE(testing::Message() << frames << " frames, pixel " << k << ", seed " << seed);
            const int end = kept.first[k] + kept.count[k];
            EXPECT_EQ(pixels.Part(k, kept.first[k], end), plain(pixels.Column(k)));
            Values all = pixels.Part(k, 0, static_cast<int>(pixels.Column(k).size()));
            std::sort(all.begin(), all.end());
            EXPECT_EQ(all, pixels.Column(k));
        }
    }
}

TEST(Rejection, KeepsInRoundsWhatIsNearTheMiddle)
{
    const struct {
        std::unique_ptr<const Rejection> (*make)(const ClipLimits&);
        Judge isKept;
    } ways[] = {{&ClipByDeviation, AboutMedian([](Values v) { return Deviation(v); })},
                {&ClipByMedianDeviation, AboutMedian(&MedianDeviation)},
                {&ClipByWinsorizedDeviation, AboutMedian([](Values v) { return WinsorizedDeviation(v); })},
                {&ClipByLine, &IsNearLine}};
    for (const auto& way : ways) {
        for (const ClipLimits& limits : {ClipLimits{}, ClipLimits{2.1, 1.4, 0}, ClipLimits{1.3, 2.6, 2}}) {
            for (const int frames : {1, 2, 3, 8, 21, 40}) {
                ExpectKept(*way.make(limits), frames,
                           [&](const Values& values) { return InRounds(values, way.isKept, limits); });
            }
        }
    }
}

TEST(Rejection, DropsEndsByTheirNumber)
{
    for (const int frames : {1, 4, 5, 12}) {
        ExpectKept(*DropEnds(1, 3), frames, [](const Values& values) {
            const auto n = static_cast<std::ptrdiff_t>(values.size());
            const std::ptrdiff_t middle = std::max<std::ptrdiff_t>(n - 1, 0) / 2;
            return n > 4 ? Values(values.begin() + 1, values.end() - 3)
                         : Values(values.begin() + middle, values.begin() + std::min<std::ptrdiff_t>(middle + 1, n));
        });
    }
}

TEST(Rejection, DropsAsManyDeviatesAsRosnerFound)
{
    const Values values{-0.25, 0.68, 0.94, 1.15, 1.20, 1.26, 1.26, 1.34, 1.38, 1.43, 1.49, 1.49, 1.55, 1.56,
                        1.58,  1.65, 1.69, 1.70, 1.76, 1.77, 1.81, 1.91, 1.94, 1.96, 1.99, 2.06, 2.09, 2.10,
                        2.14,  2.15, 2.23, 2.24, 2.26, 2.35, 2.37, 2.40, 2.47, 2.54, 2.62, 2.64, 2.90, 2.92,
                        2.92,  2.93, 3.21, 3.26, 3.30, 3.59, 3.68, 4.30, 4.64, 5.34, 5.42, 6.01};
    const int frames = static_cast<int>(values.size());
    Values block(values.size() * kColumns);
    for (std::size_t i = 0; i < block.size(); ++i) { // and the same below 0, the other way round
        block[i] = i % 2 == 0 ? values[i / kColumns] : -values[values.size() - 1 - i / kColumns];
    }
    const std::vector<int> count(kColumns, frames);
    Kept kept;
    DropDeviates(frames)->Choose({{block.data(), frames}, nullptr, count.data(), true}, kept);
    for (int k = 0; k < kColumns; ++k) {
        EXPECT_EQ(kept.first[k], k % 2 == 0 ? 0 : 3);
        EXPECT_EQ(kept.count[k], frames - 3);
    }
}

} // namespace
} // namespace corvane
