#include "corvane/measure/vignetting.h"

#include <cmath>

#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

TEST(Vignetting, EqualsThePlainForm)
{
    // Centre, k and base. In the last the terms nearly cancel, at distances whose root was rounded up or down.
    const double models[][4] = {{8, 6, -1e-3, 1}, {300, 2, 7e-6, 1.5}, {8, 6, 0, -3}, {-2147483648.0, 2147483647, 3, 1},
                                {2, 2, 5, -11},   {0, 0, NAN, 1},      {0, 0, -1, 2}, {0, 0, -1, 13},
                                {0, 0, -1, 25}};
    ForEachImage([&](CStlImage& source) {
        ForEachRect(source, [&](CRect* rect) {
            for (const auto& [cx, cy, k, base] : models) {
                const Plain expected =
                    Plain(source).Map([&, x0 = cx, y0 = cy, a = k, b = base](double v, int x, int y, int) {
                        const double r = std::sqrt((x - x0) * (x - x0) + (y - y0) * (y - y0));
                        const double d = r * r * a + b;
                        return rect != nullptr && !rect->PtInRect({x, y}) ? v : d <= 0.0 ? 255.0 : b / d * v;
                    });
                CImgFlat result(source);
                result.Do(&source, {static_cast<int>(cx), static_cast<int>(cy)}, k, base, rect, 0);
                EXPECT_TRUE(Agree(result, expected, 1)) << "k " << k << ", base " << base;
            }
        });
    });
}

TEST(Vignetting, RepeatsTheEdgeOfASmallerSourceAndReportsRows)
{
    ProgressWindow window;
    CStlImage source = RandomImage({5, 4}, 1, 2);
    CImgFlat operation(RandomImage({9, 8}, 3, 3));
    operation.SetProgressHandle(window.Handle());
    operation.Do(&source, {4, 3}, 0.0, 1.5, nullptr, 1);
    EXPECT_EQ(window.Take(), Counted("Applying vignetting correction...", 24, std::vector<int>(24, 1)));
    const Plain from(source);
    EXPECT_TRUE(Agree(operation, Plain(operation).Map([&](double, int x, int y, int p) { return from.At(x, y, p); })));
}
