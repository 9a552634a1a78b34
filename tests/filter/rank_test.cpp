#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

double Rank(std::vector<double> values, int rank)
{
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(std::clamp(rank, 0, static_cast<int>(values.size()) - 1))];
}

} // namespace

TEST(Rank, AgreesWithThePlainFormInEveryRank)
{
    for (const int type : {0, 1, 2, 5, -1}) {
        const int points = type == 0 ? 5 : (type == 1 ? 9 : (type == 2 ? 21 : 1));
        for (int rank = -1; rank <= points; ++rank) {
            SCOPED_TRACE(testing::Message() << "type " << type << ", rank " << rank);
            const auto value = [=](const Spot& at) { return Rank(at.Around(type), rank); };
            ExpectFilter([=](auto& f, auto... to) { f.MinMaxFilter(type, rank, to...); }, value, 0, 0.0, true);
            ExpectKernel(CImgFilter::GetMinMaxR(type), value,
                         [=](auto& f, auto rows, auto& at) { return f.GetMinMaxRaw(rows, at.x, type, rank); });
        }
        SCOPED_TRACE(testing::Message() << "type " << type << ", median");
        const auto median = [=](const Spot& at) { return Rank(at.Around(type), points / 2); };
        ExpectFilter([=](auto& f, auto... to) { f.MedianFilter(type, to...); }, median, 0, 0.0, true);
        ExpectKernel(0, median, [=](auto& f, auto, auto& at) { return f.GetMedianRaw(at.x, at.y, type, at.p); });
    }
}

TEST(Rank, GivesOneOfTheValuesWhereTheyHaveNoOrder)
{
    CStlImage image = RandomImage({300, 9}, 1, 8);
    SprinkleOddities(image, 3);
    const Plain plain(image);
    for (const auto& [type, rank] : {std::pair(0, 2), {0, 4}, {1, 4}, {1, 0}, {2, 7}, {2, 10}, {2, 20}}) {
        CImgFilter result(image);
        result.MinMaxFilter(type, rank, &image, nullptr, 0);
        plain.ForEach([&, shape = type](int x, int y, int p) {
            const auto isIt = [&](double v) { return Same(v, result.GetPixelGrayRaw(x, y, p)); };
            const std::vector<double> values = Spot{plain, plain, x, y, p}.Around(shape);
            EXPECT_TRUE(std::any_of(values.begin(), values.end(), isIt));
        });
    }
}
