// What the operations of this group have in common.

#include <functional>
#include <limits>
#include <tuple>

#include "corvane/corvane.h"
#include "tests/geometry/expected.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Calls run(operation, source): it has to return 0 and to change nothing but the reference points, which it unsets.
template <class Operation>
void ExpectRefused(const std::function<int(Operation&, CStlImage*)>& run)
{
    CStlImage source = RandomImage({8, 6}, 3, 1);
    SetReference(source);
    Operation operation(source);
    EXPECT_EQ(run(operation, &source), 0);
    EXPECT_TRUE(Agree(operation, Plain(source)));
    EXPECT_EQ(operation.GetStdPtNum(), 0);
    ExpectCoordinates(operation, {10.0, 20.0, 1.0, 2.0, 3.0, 4.0});
}

} // namespace

TEST(GeometryOperations, RefuseACanvasThatIsNone)
{
    for (const CRect rect : {CRect(1, 1, 1, 3), CRect(0, 3, 3, 1), CRect(kMin, 0, kMax, 1), CRect(kMax, 0, kMin, 1)}) {
        ExpectRefused<CImgCrop>([=](auto& crop, auto* source) { return crop.Do(rect, source, 0); });
    }
    for (const auto& [x, y] : {Size{0, 1}, {1, 0}, {-1, 1}, {kMin, 1}, {kMax, kMax}}) {
        ExpectRefused<CImgExpansion>([=](auto& a, auto* source) { return a.Do(x, y, source, 0); });
        ExpectRefused<CImgSoftBinning>([=](auto& a, auto* source) { return a.Do(x, y, 0, 1, source, 0); });
        ExpectRefused<CImgResize>([=](auto& a, auto* source) { return a.Do(x, y, 4, nullptr, source, 0); });
        ExpectRefused<CImgResolution>([=](auto& a, auto* source) { return a.Do(source, x, y, 0); });
    }
    // In 32 bits the 8 columns would stay 8.
    ExpectRefused<CImgExpansion>([](auto& a, auto* source) { return a.Do((1 << 29) + 1, 1, source, 0); });
    ExpectRefused<CImgRotate>([](auto& a, auto* source) { return a.Do(kInfinity, nullptr, source, 1, 0); });
}

// A crop has no text, and its bar ends half full. An unknown flip opens the bar and closes it.
TEST(GeometryOperations, ReportRowsAndGoOnWhenEscIsPressed)
{
    const std::vector<std::tuple<std::function<void(CStlImage*)>, bool, const char*, int, int>> cases{
        {[](auto* s) { CImgCrop(*s).Do(CRect(0, 1, 5, 4), s, 1); }, true, "", 18, 9},
        {[](auto* s) { CImgExpansion(*s).Do(2, 2, s, 1); }, true, "Expanding image...", 24, 24},
        {[](auto* s) { CImgFlip(*s).Do(0, s, 1); }, false, "Flipping image vertically...", 12, 12},
        {[](auto* s) { CImgFlip(*s).Do(1, s, 1); }, false, "Flipping image horizontally...", 12, 12},
        {[](auto* s) { CImgFlip(*s).Do(5, s, 1); }, false, "Flipping image horizontally...", 12, 0},
        {[](auto* s) { CImgResize(*s).Do(5, 6, 4, nullptr, s, 1); }, true, "Changing canvas size...", 30, 30},
        {[](auto* s) { CImgResolution(*s).Do(s, 5, 3, 1); }, true, "Changing image resolution...", 9, 9},
        {[](auto* s) { CImgRotate(*s).Do(9.0, nullptr, s, 0, 1); }, false, "Rotating...", 12, 12},
        {[](auto* s) { CImgRotate(*s).Do90(0, s, 1); }, true, "Rotating...", 15, 15},
        {[](auto* s) { CImgRotate(*s).Do180(s, 1); }, false, "Rotating...", 12, 12},
        {[](auto* s) { CImgScroll(*s).Do(1, 1, s, 1); }, false, "Scrolling image...", 12, 12},
        {[](auto* s) { CImgSoftBinning(*s).Do(2, 2, 0, 0, s, 1); }, true, "Applying software binning...", 6, 6},
    };
    for (const auto& [run, hasNewCanvas, text, total, steps] : cases) {
        ProgressWindow window;
        CStlImage source = RandomImage({5, 4}, 3, 1);
        source.SetProgressHandle(window.Handle());
        PostMessageA(window.Handle(), WM_KEYDOWN, VK_ESCAPE, 0);
        run(&source);
        std::vector<std::string> messages = Counted(text, total, std::vector<int>(steps, 1));
        if (hasNewCanvas) {
            messages.insert(messages.begin(), {"0:Changing canvas size...", "2:null"});
        }
        EXPECT_EQ(window.Take(), messages) << text;
    }
}
