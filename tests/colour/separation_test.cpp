#include "corvane/colour/separation.h"

#include "tests/colour/placed.h"

using namespace corvane::test;

TEST(Separation, AgreesWithThePlainForm)
{
    // Planes of the samples, and of the level.
    const int table[6][4] = {{0, 0, 0, 0}, {1, 1, 1, 1}, {2, 2, 2, 2}, {1, 2, 1, 2}, {0, 2, 0, 2}, {0, 1, 0, 2}};
    ProgressWindow window;
    ForEachImage([&](CStlImage& source) {
        for (const int component : {-1, 0, 1, 2, 3, 4, 5, 6, 7}) { // 7 is red of another size
            const CStlImage before = RandomImage({source.GetWidth() + component / 7, source.GetHeight()}, 1, 9);
            CImgSeparation result(before);
            result.SetProgressHandle(window.Handle());
            result.Do(&source, component % 7, 1);
            const std::vector<int> steps(source.GetPlanes() == 3 && component < 7 ? source.GetHeight() : 0, 1);
            EXPECT_EQ(window.Take(), Counted("Splitting RGB image", source.GetHeight(), steps));
            if (component < 0 || component > 5 || source.GetPlanes() == 1) {
                EXPECT_TRUE(Agree(result, Plain(before)));
                EXPECT_EQ(result.GetLevelMin(0), before.GetLevelMin(0));
                continue;
            }
            const auto& [a, b, low, high] = table[component];
            const auto mean = [&, a = a, b = b](double, int x, int y, int) {
                return (0.0 + source.GetPixelGrayRaw(x, y, a) + source.GetPixelGrayRaw(x, y, b)) / 2.0;
            };
            EXPECT_TRUE(Agree(result, Plain(before).Map(mean))) << component;
            EXPECT_EQ(result.GetLevelMin(0), (source.GetLevelMin(low) + source.GetLevelMin(high)) / 2.0);
            EXPECT_EQ(result.GetLevelMax(0), (source.GetLevelMax(low) + source.GetLevelMax(high)) / 2.0);
        }
    });
}
