#include "corvane/colour/cmy_composite.h"

#include "tests/colour/placed.h"

using namespace corvane::test;

TEST(CmyComposite, AgreesWithThePlainForm)
{
    const double signs[3][3] = {{-1, 1, 1}, {1, -1, 1}, {1, 1, -1}}; // of c, m and y in R, G and B
    CStlImage frames[] = {OddFrame(1, 1, true), OddFrame(3, 2, true), OddFrame(1, 3, true)};
    for (int kind = 0; kind < 6; ++kind) {
        const CStlImage before = RandomImage({29, 23}, kind % 2 == 0 ? 3 : 1, 4);
        const auto& places = kPlaces[kind / 2];
        const auto run = [&](CRect* rect) { return Combined<CImgCmyComposit>(before, frames, places, rect, 0); };
        const CImgCmyComposit result = run(nullptr);
        const Plain expected = Plain(before).Map([&](double, int x, int y, int p) {
            double sum = 0.0;
            for (int i = 0; i < 3; ++i) {
                sum += signs[p][i] * RawAt(x, y, frames[i], places[i], 0);
            }
            return sum;
        });
        EXPECT_TRUE(Agree(result, expected, 1, 1e-9)) << kind;
        for (int p = 0; p < 3; ++p) { // p is left out of the mean
            const CStlImage& a = frames[(p + 1) % 3];
            const CStlImage& b = frames[(p + 2) % 3];
            EXPECT_EQ(result.GetLevelMin(p), (a.GetLevelMin(0) + b.GetLevelMin(0)) / 2.0);
            EXPECT_EQ(result.GetLevelMax(p), (a.GetLevelMax(0) + b.GetLevelMax(0)) / 2.0);
        }
        ExpectToKeepToRects(before, run);
    }
    ExpectHarmless<CImgCmyComposit>("Combining CMY images...", 1);
}
