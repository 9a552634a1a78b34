#include "corvane/filter/filter.h"

#include <climits>
#include <memory>

#include "tests/filter/plain_filter.h"
#include "tests/support/progress_window.h"
#include "tests/support/storage.h"

using namespace corvane::test;

namespace {

void Develop(CImgFilter& f, CStlImage* source, CRect* rect, int show)
{
    int selector = 3;
    f.DigitalDvlp(50.0, 1.0, source, &selector, rect, show);
}

/// Every filter, with the text of its progress and whether that counts the rows of each plane.
const struct {
    const char* text;
    bool ofPlanes;
    void (*run)(CImgFilter&, CStlImage*, CRect*, int show);
} kFilters[] = {
    {"Applying mean filter...", true, [](auto& f, auto... to) { f.MeanFilter(2, 1.0, to...); }},
    {"Applying mean filter...", true, [](auto& f, auto... to) { f.MeanWithoutEdgeFilter(2, 1.0, to...); }},
    {"Applying median filter", true, [](auto& f, auto... to) { f.MedianFilter(2, to...); }},
    {"Applying minimum/maximum filtering...", true, [](auto& f, auto... to) { f.MinMaxFilter(2, 3, to...); }},
    {"Applying Gaussian filter...", true, [](auto& f, auto... to) { f.GaussianFilter(5.0, to...); }},
    {"Applying sharpening filter", true, [](auto& f, auto... to) { f.SharpFilter(2, 1.0, to...); }},
    {"Applying edge enhancement...", true, [](auto& f, auto... to) { f.SharpEdgeFilter(2, 1.0, to...); }},
    {"Defining edges...", true, [](auto& f, auto... to) { f.LaplacianFilter(1, to...); }},
    {"Applying unsharp mask...", true, [](auto& f, auto... to) { f.UnSharpMask(1.0, 2, 1.0, 0.0, to...); }},
    {"Sharpening stars...", true, [](auto& f, auto... to) { f.StarSharpFilter(2, 3.5, 0.1, 0, to...); }},
    {"Removing hot/cool pixels...", true, [](auto& f, auto... to) { f.NoiseCut(2, 0.1, 1, 1, to...); }},
    {"Applying digital development (DDP)...", true, Develop},
    {"Applying background smoothing...", false, [](auto& f, auto... to) { f.BkgSmooth(150.0, 2, 1.0, to...); }},
    {"Compressing grayscale...", false, [](auto& f, auto... to) { f.AAPosterizationFilter(4, to...); }},
    {"Defining edges...", false, [](auto& f, auto... to) { f.ContourFilter(4, 1, to...); }},
};

} // namespace

TEST(Filter, CodesTellTheRadius)
{
    for (const auto radiusOf : {CImgFilter::GetMeanR, CImgFilter::GetMedianR, CImgFilter::GetMinMaxR,
                                CImgFilter::GetSharpR, CImgFilter::GetStarSharpR}) {
        const std::vector radii{radiusOf(0), radiusOf(1), radiusOf(2), radiusOf(3), radiusOf(-1), radiusOf(INT_MIN)};
        EXPECT_EQ(radii, (std::vector{1, 1, 2, 0, 0, 0}));
    }
}

TEST(Filter, ReportsRowsOrTheRowsOfEachPlane)
{
    ProgressWindow window;
    for (const int planes : {1, 3}) {
        CStlImage source = RandomImage({9, 70}, planes, 1);
        source.SetProgressHandle(window.Handle());
        for (const auto& filter : kFilters) {
            CImgFilter result(source);
            CRect area(-10, 10, 5, 99);
            filter.run(result, &source, &area, 1);
            const int total = filter.ofPlanes ? 60 * planes : 60;
            EXPECT_EQ(window.Take(), Counted(filter.text, total, std::vector(static_cast<std::size_t>(total), 1)));
        }
    }
}

TEST(Filter, GivesTheSameWhenTheImageDoesNotFitIntoMemory)
{
    CStlImage image = RandomImage({700, 90}, 3, 5);
    for (const auto& filter : kFilters) {
        SCOPED_TRACE(filter.text);
        CImgFilter expected(image);
        filter.run(expected, &image, nullptr, 0);
        const TightMemory tight(100000);
        CStlImage paged(image);
        CImgFilter result(paged);
        filter.run(result, &paged, nullptr, 0);
        EXPECT_TRUE(Agree(result, Plain(expected)));
    }
}

TEST(Filter, KeepsWithinASourceOfAnotherSize)
{
    const CStlImage image = RandomImage({20, 18}, 3, 5);
    for (const Size size : {Size{7, 5}, {2, 3}, {30, 25}, {1, 40}, {0, 0}}) {
        for (const int planes : {1, 3}) {
            CStlImage source = RandomImage(size, size.width > 0 ? planes : 0, 6);
            for (const auto& filter : kFilters) {
                SCOPED_TRACE(testing::Message() << filter.text << ' ' << size.width << " x " << size.height);
                CImgFilter result(image);
                filter.run(result, &source, nullptr, 0);
                const Plain kept = Plain(image).Map([&](double v, int x, int y, int p) {
                    return x < size.width ? static_cast<double>(result.GetPixelGrayRaw(x, y, p)) : v;
                });
                EXPECT_TRUE(Agree(result, kept));
                EXPECT_EQ(Samples(result) != Samples(image), size.width > 0);
            }
        }
    }
}

TEST(Filter, ScaledKernelsGiveTheRawValueOnTheScaleOfAPlane)
{
    using F = CImgFilter;
    const OpenFilter image(RandomImage({9, 7}, 3, 4));
    const std::vector<double> weights(25, 0.04);
    const float* rows[5];
    image.SetFilterAdr(4, 3, 2, 2, rows, 0);
    for (const int p : {0, 2}) {
        const auto check = [&](float raw, auto gray, auto shown, auto... arguments) {
            EXPECT_EQ((image.*gray)(rows, 4, arguments..., p), image.GetPixelGray(&raw, p));
            EXPECT_EQ((image.*shown)(rows, 4, arguments..., p), image.GetPixelGray256f(&raw, p));
        };
        check(image.GetMeanRaw(rows, 4, 2, 0.6, nullptr), &F::GetMeanGray, &F::GetMean256f, 2, 0.6);
        check(image.GetMeanWithoutEdgeRaw(rows, 4, 2, 0.6, p), &F::GetMeanWithoutEdgeGray, &F::GetMeanWithoutEdge256f,
              2, 0.6);
        check(image.GetMedianRaw(rows, 4, 2), &F::GetMedianGray, &F::GetMedian256f, 2);
        check(image.GetGaussianRaw(rows, 4, 2, weights.data()), &F::GetGaussianGray, &F::GetGaussian256f, 2,
              weights.data());
        check(image.GetSharpRaw(rows, 4, 2, 0.6), &F::GetSharpGray, &F::GetSharp256f, 2, 0.6);
        check(image.GetSharpEdgeRaw(rows, 4, 2, 0.6, p), &F::GetSharpEdgeGray, &F::GetSharpEdge256f, 2, 0.6);
        check(image.GetLaplacianRaw(rows, 4, 2, p), &F::GetLaplacianGray, &F::GetLaplacian256f, 2);
    }
}

TEST(Filter, ClipsAndCentres)
{
    const OpenFilter small(RandomImage({5, 4}, 3, 1));
    const OpenFilter large(RandomImage({10, 9}, 1, 1));
    const CRect area(-3, 2, 4, 99);
    int edges[4];
    small.CalcRect(edges[0], edges[1], edges[2], edges[3], &area);
    EXPECT_EQ(std::vector(edges, edges + 4), (std::vector{0, 2, 4, 4}));
    for (const auto& [y, row] : {std::pair(INT_MIN, 3), {INT_MAX, 0}}) { // rows far outside
        float* rows[25];                                                 // more than any filter of the library reads
        small.SetFilterAdr(99, y, 1, 12, rows, 2);
        EXPECT_EQ(std::vector(rows, rows + 25), std::vector(25, small.GetImageAdr(4, row, 1, 1)));
        EXPECT_EQ(small.Unlock(rows[24]), 1);
    }
    int dx = 77;
    int dy = 77;
    large.CalcShift(dx, dy, 0, &small);
    EXPECT_EQ(std::pair(dx, dy), std::pair(77, 77));
    small.CalcShift(dx, dy, 0, &large);
    EXPECT_EQ(std::pair(dx, dy), std::pair(2, 2));
}

TEST(Filter, WorkImagesHaveAMirroredBorder)
{
    for (const Size size : {Size{10, 10}, {7, 4}, {1, 1}, {2, 3}}) {
        CImgFilter image(RandomImage(size, 3, 1));
        const Plain plain(image);
        for (const auto& [given, margin] : {std::pair{0, 2}, {1, 1}, {5, 5}}) {
            const std::unique_ptr<CStlImage> work(image.MakeFilterWork(given, 0));
            const Plain padded(*work);
            ASSERT_EQ(std::pair(padded.width, padded.height),
                      std::pair(size.width + 2 * margin, size.height + 2 * margin));
            EXPECT_EQ(std::pair(padded.min[2], padded.max[1]), std::pair(plain.min[2], plain.max[1]));
            padded.ForEach([&, m = margin](int x, int y, int p) {
                const int column = Mirrored(std::abs(x - m), size.width);
                EXPECT_EQ(padded.At(x, y, p), plain.At(column, Mirrored(std::abs(y - m), size.height), p));
            });
        }
    }
}

TEST(Filter, WorkImagesCountTheirRowsTwice)
{
    ProgressWindow window;
    CImgFilter image(RandomImage({5, 6}, 3, 1));
    image.SetProgressHandle(window.Handle());
    const std::unique_ptr<CStlImage> work(image.MakeFilterWork(0, 1));
    const std::vector<std::string> messages = window.Take();
    auto expected = Counted("Initializing filtering process...", 60, std::vector(48, 1));
    expected.insert(expected.begin(), {"0:Initializing...", "2:null"});
    EXPECT_EQ(messages, expected);
    EXPECT_EQ(std::unique_ptr<CStlImage>(image.MakeDDWork(0, 0))->GetWidth(), 7);
    EXPECT_EQ(image.MakeFilterWork(INT_MAX, 0), nullptr);
}
