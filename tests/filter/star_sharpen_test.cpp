#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

struct Star {
    int type;
    double rank;
    double threshold;
    int keepPeaks;
};

double Sharpened(std::vector<double> values, const Star& star)
{
    const double centre = values[values.size() / 2];
    std::sort(values.begin(), values.end());
    const auto last = static_cast<double>(values.size() - 1);
    const double rank = std::isnan(star.rank) ? 0.0 : std::clamp(star.rank, 0.0, last);
    const auto below = static_cast<std::size_t>(rank);
    const double next = values[std::min(below + 1, values.size() - 1)];
    const double value = values[below] + (next - values[below]) * (rank - std::floor(rank));
    const bool isPeak = star.keepPeaks != 0 && values.back() == centre;
    const bool stands = star.threshold == 0.0 || std::fabs(value / values.back() - 1.0) >= star.threshold;
    return stands && !isPeak ? value : centre;
}

} // namespace

TEST(StarSharpen, AgreesWithThePlainForm)
{
    const Star stars[] = {{0, 3.75, 0.4, 1}, {1, 4.0, 0.0, 0}, {1, 7.5, 0.0, 1},    {1, 99.0, 0.0, 1},
                          {1, -3.0, 0.9, 1}, {1, 1.5, NAN, 0}, {2, 11.125, 0.0, 0}, {2, 4.875, 0.25, 1},
                          {2, NAN, 0.0, 1},  {5, 1.0, 0.2, 1}};
    for (const Star& star : stars) {
        SCOPED_TRACE(testing::Message() << "type " << star.type << ", rank " << star.rank);
        const auto value = [=](const Spot& at) { return Sharpened(at.Around(star.type), star); };
        ExpectFilter(
            [=](auto& f, auto... to) {
                f.StarSharpFilter(star.type, star.rank, star.threshold, star.keepPeaks, to...);
            },
            value, 1, 1e-11, true);
        ExpectKernel(CImgFilter::GetStarSharpR(star.type), value, [=](auto& f, auto rows, auto& at) {
            return f.GetStarSharpRaw(rows, at.x, star.type, star.rank, star.threshold, star.keepPeaks);
        });
    }
}

TEST(StarSharpen, MaximaOfZeroAndInfinityHaveNoRatio)
{
    std::vector<float> row(20);
    row[5] = -5.0F;
    row[12] = INFINITY;
    const auto sharpened = [&](double rank, double threshold) {
        return FilteredRow(row, [=](auto& f, auto... to) { f.StarSharpFilter(1, rank, threshold, 0, to...); });
    };
    EXPECT_EQ(sharpened(4.0, 0.1)[5], -5.0F);
    EXPECT_EQ(sharpened(8.0, 0.0)[5], 0.0F);
    EXPECT_EQ(sharpened(8.0, 0.0)[11], INFINITY);
}
