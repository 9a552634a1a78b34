#include "corvane/combine/row_combiner.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "tests/support/plain.h"

namespace corvane {

namespace {

constexpr double kBlank = -77.0;
constexpr int kWidth = 53;

/// What a pixel should show: value, coverage, rejected low and high, noise.
using Shown = std::array<double, 5>;

/// The noise of a mean or median of values with their weights, by its definition.
double PlainNoise(const std::vector<std::pair<double, double>>& kept, CombineMethod method)
{
    const bool isMean = method == CombineMethod::kClippedMean;
    double sum = 0.0;
    double weights = 0.0;
    double squares = 0.0;
    double scatter = 0.0;
    for (const auto& [v, weight] : kept) {
        const double w = isMean ? weight : 1.0;
        sum += w * v;
        weights += w;
        squares += w * w;
    }
    for (const auto& [v, weight] : kept) {
        scatter += std::pow((isMean ? weight : 1.0) * (v - sum / weights), 2);
    }
    const double noise = std::sqrt(scatter / (weights * weights - squares) * (isMean ? 1.0 : std::acos(-1.0) / 2.0));
    return kept.size() > 1 ? noise : std::nan("");
}

/// The definition for values with their weights, and what a mean gives of which nothing is kept.
Shown PlainPixel(std::vector<std::pair<double, double>> values, CombineMethod method, std::optional<double> ofNothing)
{
    if (values.empty()) {
        return {kBlank, 0.0, 0.0, 0.0, std::nan("")};
    }
    const auto n = static_cast<double>(values.size());
    std::sort(values.begin(), values.end());
    const double median = values[values.size() / 2].first;
    double mean = 0.0;
    double squares = 0.0;
    std::for_each(values.begin(), values.end(), [&](const auto& value) { mean += value.first; });
    mean /= n;
    std::for_each(values.begin(), values.end(), [&](const auto& value) { squares += std::pow(value.first - mean, 2); });
    auto kept = values;
    std::erase_if(kept, [&](const auto& u) { return !(std::fabs(u.first - median) < 3.0 * std::sqrt(squares / n)); });
    if (method == CombineMethod::kMedian || kept.empty()) {
        const double least =
            method == CombineMethod::kClippedMean ? ofNothing.value_or(values[0].first) : values[0].first;
        const bool isMedian = method == CombineMethod::kMedian;
        return {isMedian ? median : least, n, 0.0, 0.0, isMedian ? PlainNoise(values, method) : std::nan("")};
    }
    double sum = 0.0;
    double weights = 0.0;
    for (const auto& [v, weight] : kept) {
        sum += weight * v;
        weights += weight;
    }
    const auto low = std::find(values.begin(), values.end(), kept[0]) - values.begin();
    return {method == CombineMethod::kClippedMean ? sum / weights : kept[kept.size() / 2].first, n,
            static_cast<double>(low), n - static_cast<double>(low) - static_cast<double>(kept.size()),
            PlainNoise(kept, method)};
}

/// Rows of frames with gaps, NaN, equal values, outliers and an infinity; a column that no frame has, and one with
/// values exactly 3 sigma away.
struct Rows {
    Rows(int frames, int gaps, bool isWeighted) : values(frames), valid(frames)
    {
        test::Random random(static_cast<std::uint64_t>(frames * 7 + gaps));
        for (int i = 0; i < frames; ++i) {
            for (int x = 0; x < kWidth; ++x) {
                const double v = x % 5 == 1 ? 5.5 : random.Between(-20.0, 300.0) * (random.Whole(0, 15) == 0 ? 40 : 1);
                const bool isMissing = random.Whole(0, 9) < gaps || (gaps > 0 && x == 33);
                values[i].push_back(isMissing && x % 2 == 0 ? std::nan("") : x == 34 && i == 2 ? HUGE_VAL : v);
                valid[i].push_back(isMissing && x % 2 == 1 ? 0 : 1);
            }
            if (frames == 18) { // a sigma of 1.5 about -1 and 1, and -3.5 on the lower bound
                values[i][35] = i == 0 ? -3.5 : i == 17 ? 3.5 : i % 2 == 0 ? -1.0 : 1.0;
            }
            weights.push_back(!isWeighted ? 1.0 : i % 4 == 3 ? 0.0 : random.Between(0.1, 1.0));
            lines.push_back({values[i].data(), valid[i].data()});
        }
    }

    Shown Expected(int x, CombineMethod method, Coverage coverage) const
    {
        std::vector<std::pair<double, double>> there;
        std::optional<double> gap; // what a pixel shows that all frames should have
        for (std::size_t i = 0; i < values.size(); ++i) {
            const bool counts = method != CombineMethod::kClippedMean || weights[i] > 0.0;
            if (counts && valid[i][x] != 0 && !std::isnan(values[i][x])) {
                there.emplace_back(values[i][x], weights[i]);
            } else if (counts) {
                gap = values[i][x];
            }
        }
        const bool isPlain = std::all_of(weights.begin(), weights.end(), [](double w) { return w == 1.0; });
        const bool isUnknown = coverage == Coverage::kAll && isPlain && there.size() > 1;
        Shown shown = PlainPixel(there, method, isUnknown ? std::optional(std::nan("")) : std::nullopt);
        if (coverage == Coverage::kAll && gap) {
            shown[0] = *gap;
            shown[4] = std::nan("");
        }
        return shown;
    }

    std::vector<std::vector<double>> values;
    std::vector<std::vector<int>> valid;
    std::vector<double> weights;
    std::vector<CombineLine> lines;
};

void CheckRows(const Rows& rows, CombineMethod method, Coverage coverage)
{
    std::vector<std::vector<float>> got(5, std::vector<float>(kWidth, 99.0F));
    RowCombiner combiner(method, coverage, rows.weights, kBlank);
    const int least =
        combiner.Combine(rows.lines.data(), kWidth,
                         {got[0].data(), got[1].data(), got[2].data(), got[3].data(), nullptr, nullptr, got[4].data()});
    for (int i = 0; i < 4 * kWidth; ++i) {
        const auto expected = static_cast<float>(rows.Expected(i / 4, method, coverage)[i % 4]);
        ASSERT_TRUE(test::Near(got[i % 4][i / 4], expected, 1)) << "x " << i / 4 << ", " << i % 4;
    }
    for (int x = 0; x < kWidth; ++x) { // of floats for the median: 1e-6 of values up to 12000
        const double expected = rows.Expected(x, method, coverage)[4];
        ASSERT_TRUE(std::isfinite(expected) ? std::fabs(got[4][x] - expected) < 1e-3 + 1e-6 * expected
                                            : !std::isfinite(got[4][x]))
            << "x " << x << ", noise " << got[4][x] << ", not " << expected;
    }
    EXPECT_EQ(static_cast<float>(least), *std::min_element(got[1].begin(), got[1].end()));
}

} // namespace

TEST(RowCombiner, TakeTheStatisticOfWhatIsThere)
{
    for (int n = 0; n <= 42; ++n) {
        for (const int gaps : {0, 1, 8}) {
            const Rows rows(n > 40 ? 200 : n, gaps, n % 2 == 1);
            for (const auto method :
                 {CombineMethod::kMedian, CombineMethod::kClippedMedian, CombineMethod::kClippedMean}) {
                SCOPED_TRACE(testing::Message() << n << " frames, gaps " << gaps << ", " << static_cast<int>(method));
                CheckRows(rows, method, Coverage::kAny);
                CheckRows(rows, method, Coverage::kAll);
            }
        }
    }
}

} // namespace corvane
