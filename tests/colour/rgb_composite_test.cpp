#include "corvane/colour/rgb_composite.h"

#include "tests/colour/placed.h"

using namespace corvane::test;

TEST(RgbComposite, AgreesWithThePlainForm)
{
    int flags[][3] = {{0, 1, 0}, {0, 0, 5}, {1, 0, 0}, {0, 0, 0}};
    CStlImage frames[] = {OddFrame(1, 1), OddFrame(3, 2), OddFrame(3, 3)};
    for (int kind = 0; kind < 30; ++kind) {
        const CStlImage before = RandomImage({29, 23}, kind % 2 == 0 ? 3 : 1, 4);
        const auto& places = kPlaces[kind / 2 % 3];
        int* const planes = kind < 24 ? flags[kind / 6] : nullptr;
        const auto run = [&](CRect* rect) { return Combined<CImgRgbCmpst>(before, frames, places, rect, planes, 0); };
        const CImgRgbCmpst result = run(nullptr);
        const Plain expected = Plain(before).Map([&](double v, int x, int y, int p) {
            const bool isTaken = planes == nullptr || planes[0] != 0 || planes[p] != 0;
            return isTaken ? RawAt(x, y, frames[p], places[p], p) : v;
        });
        EXPECT_TRUE(Agree(result, expected)) << kind;
        for (int p = 0; p < 3; ++p) {
            EXPECT_EQ(result.GetLevelMin(p), frames[p].GetLevelMin(p));
            EXPECT_EQ(result.GetLevelMax(p), frames[p].GetLevelMax(p));
        }
        ExpectToKeepToRects(before, run);
    }
    int* const all = nullptr;
    ExpectHarmless<CImgRgbCmpst>("Combining RGB files...", all, 1);
}
