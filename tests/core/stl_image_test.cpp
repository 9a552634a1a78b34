#include "corvane/core/stl_image.h"

#include "corvane/filter/filter.h"
#include "corvane/tone/false_color.h"
#include "corvane/tone/invert.h"
#include "tests/support/images.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

/// What the working image adds to the record: which window it reports to, its points, and how many samples it has.
std::string Look(CStlImage& image, ProgressWindow& first, ProgressWindow& second)
{
    image.ShowProgressMsg("hello");
    const std::size_t toFirst = first.Take().size();
    testing::Message out;
    out << toFirst << second.Take().size() << ' ' << image.GetStdPt(0).x << ' ' << image.GetStdPt(1).y << ' '
        << image.GetStdPt(1).iy << ' ' << image.GetStdCtr().x << ' ' << image.GetPixelCount() << ' '
        << image.GetBscale() << ' ' << image.GetLevelMax(1);
    return out.GetString();
}

} // namespace

TEST(StlImage, PointsAndWindowTravelWithTheImage)
{
    ProgressWindow first;
    ProgressWindow second;
    CStlImage source = RandomImage({4, 3}, 1, 1);
    source.SetProgressHandle(first.Handle());
    source.SetStdPt(0, CfPoint(1.25, 2.5));
    source.SetStdPt(1, CfPoint(3.75, 4.5));
    source.SetStdCtr(5.5, 6.5);
    source.SetBscale(0.5);
    source.SetLevel(1, 7.0, 77.0);
    corvane::platform::SetMainWindow(second.Handle());
    CStlImage images[4]; // each reports to the main window
    corvane::platform::SetMainWindow(nullptr);
    EXPECT_EQ(Look(images[0], first, second), "01 -1 -1 -1 -1 0 1 255");
    images[0] = source;
    EXPECT_EQ(images[1].Create(source), 1);
    CStlImage copy(source);
    images[2].Swap(&copy);
    for (CStlImage* image : {&source, &images[0], &images[1], &images[2]}) {
        EXPECT_EQ(Look(*image, first, second), "10 1.25 4.5 4 5.5 12 0.5 77");
    }
    EXPECT_EQ(Look(copy, first, second), "01 -1 -1 -1 -1 0 1 255");
    EXPECT_EQ(Samples(images[0]), Samples(source));
    EXPECT_EQ(Samples(images[1]), std::vector<float>(12, 0.0F));
    source.CalcMinMax();
    source.Init();
    EXPECT_EQ(Look(source, first, second), "00 -1 -1 -1 -1 12 0.5 77");
    EXPECT_EQ(source.GetMaxPixel(0), 0.0);
}

TEST(StlImage, IsNotReadWithoutSamples)
{
    CStlImage made(-32, 90, 0, 3, 1.0, 0.0, 1);
    CStlImage cut = RandomImage({90, 4}, 3, 1);
    cut.SetHeight(0); // of the record alone
    const CStlImage before = RandomImage({90, 4}, 3, 2);
    for (CStlImage* empty : {&made, &cut}) {
        CImgInvert inverted(before);
        inverted.Do(empty, nullptr, 0);
        CImgFilter smoothed(before);
        smoothed.MeanFilter(1, 1.0, empty, nullptr, 0);
        CImgFilter posterized(before);
        posterized.AAPosterizationFilter(5, empty, nullptr, 0);
        CImgFalseColor coloured(before);
        coloured.Do(0.0, 1.0, 0, 1, empty, nullptr, 0);
        for (const CStlImage* image : std::initializer_list<CStlImage*>{&inverted, &smoothed, &posterized, &coloured}) {
            EXPECT_EQ(Samples(*image), Samples(before));
        }
    }
}
