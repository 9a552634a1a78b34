// Members of the interface with each of their allocations failing in turn.

#include <cstdio>
#include <memory>
#include <string>

#include "corvane/corvane.h"
#include "tests/support/failing_memory.h"
#include "tests/support/images.h"

using namespace corvane::test;

namespace {

enum class Promise { kMayThrow, kZero, kZeroUnchanged };
using enum Promise;

/// Runs run(image, source) with its first allocation failing, its second, and so on until none is left: each time it
/// has to throw CMemoryException or, where it promises that, return 0, with the image as it was. Progress has to be
/// closed. Returns the last text that a message box shows.
template <class Image, class Run>
std::string Starve(Promise promise, Run run)
{
    static char said[100];
    said[0] = '\0';
    corvane::platform::SetMessageBoxHandler(
        [](const char* text, UINT) { return std::snprintf(said, sizeof said, "%s", text); });
    int open = 0;
    HWND window = corvane::platform::CreateMessageWindow(
        [&](UINT, WPARAM word, LPARAM) { return open += (word == 0 ? 1 : 0) - (word == 2 ? 1 : 0); });
    CStlImage source = RandomImage({40, 30}, 3, 1);
    source.SetProgressHandle(window);
    bool hasFailed = true;
    for (int allowed = 0; hasFailed; ++allowed) {
        Image image(source);
        bool isDone = false;
        bool hasThrown = false;
        const FailingMemory memory(allowed);
        try {
            isDone = run(image, &source);
        } catch (const CMemoryException&) {
            hasThrown = true;
        }
        hasFailed = memory.HasFailed();
        EXPECT_EQ(isDone, !hasFailed) << allowed;
        EXPECT_TRUE(!hasThrown || promise == kMayThrow) << allowed;
        EXPECT_TRUE(isDone || promise != kZeroUnchanged || Samples(image) == Samples(source)) << allowed;
        EXPECT_EQ(open, 0) << allowed;
    }
    corvane::platform::DestroyMessageWindow(window);
    corvane::platform::SetMessageBoxHandler({});
    return said;
}

bool Keep(CStlImage* made)
{
    return std::unique_ptr<CStlImage>(made) != nullptr;
}

} // namespace

TEST(WantOfMemory, IsZeroWhereThatIsPromised)
{
    Starve<CStlImage>(kZeroUnchanged, [](auto& i, auto* s) { return i.Create(*s) != 0; });
    Starve<CStlImage>(kZeroUnchanged, [](auto& i, auto*) { return i.ChangeSize(50, 20) != 0; });
    Starve<CStlImage>(kZeroUnchanged, [](auto& i, auto*) { return i.ChangePlanes(1) != 0; });
    Starve<CStlImage>(kZeroUnchanged, [](auto& i, auto*) { return i.ChangeBits(16, 0, 0) != 0; });
    Starve<CStlImage>(kZeroUnchanged, [](auto& i, auto* s) { return i.ToGray(s, 1) != 0; });
    Starve<CStlImage>(kZero, [](auto& i, auto* s) { return i.ToGray() != 0 && i.ToColor(s, 1) != 0; });
    Starve<CStlImage>(kZero, [](auto& i, auto* s) {
        HDIB dib = s->GetDib(8);
        const bool isDone = dib != nullptr && i.AttachDIB(dib) != 0;
        GlobalFree(dib);
        return isDone;
    });
    Starve<CStlImage>(kZeroUnchanged, [](auto& i, auto*) { return Keep(i.MakeLPlane()) && Keep(i.MakeAbPlane(1)); });
    Starve<CImgFilter>(kZeroUnchanged,
                       [](auto& i, auto*) { return Keep(i.MakeFilterWork(0, 1)) && Keep(i.MakeDDWork(0, 1)); });
    Starve<CImgCrop>(kZeroUnchanged, [](auto& i, auto* s) { return i.Do(CRect(1, 2, 9, 9), s, 1) != 0; });
    Starve<CImgExpansion>(kZeroUnchanged, [](auto& i, auto* s) { return i.Do(2, 3, s, 1) != 0; });
    Starve<CImgResize>(kZeroUnchanged, [](auto& i, auto* s) { return i.Do(50, 50, 4, nullptr, s, 1) != 0; });
    Starve<CImgResolution>(kZeroUnchanged, [](auto& i, auto* s) { return i.Do(s, 33, 44, 1) != 0; });
    Starve<CImgRotate>(kZeroUnchanged, [](auto& i, auto* s) { return i.Do(9.0, nullptr, s, 1, 1) != 0; });
    Starve<CImgSoftBinning>(kZeroUnchanged, [](auto& i, auto* s) { return i.Do(2, 2, 0, 0, s, 1) != 0; });
    Starve<CImgWiener>(kZeroUnchanged, [](auto& i, auto*) {
        CRect rect(2, 2, 19, 19);
        return i.Do(1.0, 0.1, &rect, 1) != 0;
    });
    EXPECT_EQ(Starve<CImgLucy>(kZeroUnchanged, [](auto& i, auto*) { return i.Do(1.2, 1.6, 6.0, 1, nullptr, 0) != 0; }),
              "Insufficient memory.  Close applications and re-execute command.");
    EXPECT_EQ(Starve<CImgMem>(kZeroUnchanged, [](auto& i, auto*) { return i.Do(1.5, 1.0, 1, nullptr, 0) != 0; }),
              "Insufficient memory.  Close applications and re-execute command");
}

TEST(WantOfMemory, IsAMemoryExceptionOtherwise)
{
    corvane::platform::SetWaitCursorHandler([big = std::array<char, 99>()](bool) { EXPECT_EQ(big[0], 0); });
    const auto starve = [](auto run) {
        Starve<CStlImage>(kMayThrow, [run](auto&, auto* s) {
            run(s);
            return true;
        });
    };
    double place[] = {1.0, 1.0};
    int counts[300];
    starve([](auto* s) { CStlImage() = *s; });
    starve([](auto* s) { s->GetStore()->Unlock(nullptr), CVmImage(*s->GetStore()); });
    starve([](auto*) { CLineData(1000), CString("no short text that fits into the object itself"); });
    starve([](auto*) { CArray<int>().SetAtGrow(1000, 1); });
    starve([&](auto* s) { s->GetHistGram(counts, 300, 0.0, 255.0, -1, nullptr, 1, 0); });
    starve([](auto* s) { s->FlatClbrtn(std::make_unique<CStlImage>(-32, 9, 9, 1, 1.0, 0.0, 1).get(), 1); });
    starve([](auto* s) { CImgAutoLevel(*s).Do(0.2, 1.0, 0, nullptr); });
    starve([](auto* s) { CImgFilter(*s).GaussianFilter(2.0, s, nullptr, 1); });
    starve([](auto* s) { CImgFilter(*s).BkgSmooth(99.0, 1, 1.0, s, nullptr, 1); });
    starve([](auto* s) { CImgComposit(*s).Do(s, s, 1.0, 1.0, 9.0, 0, 0.5, 1, 0, 0.9, 1, nullptr, 1, -1); });
    starve([](auto* s) { CImgComposit(*s).Abr(s, s, 1.0, 1.0, 9.0, 0, 0.5, 1, 0, 0.9, 1, nullptr, 1, -1); });
    starve([](auto* s) { CImgMosic(*s).Do(s, 1, 1, s, 1.0, 1.0, 9.0, 2, nullptr, nullptr, 1, 0, nullptr, 1); });
    starve([&](auto* s) { CImgMatching(*s).Do(s, place, place + 1, 4, 1, 1); });
    starve([](auto* s) { CImgCmyComposit(*s).Do(s, 0, 0, 0, s, 1, 1, 1, s, 0, 0, 0, nullptr, 0, 1); });
    starve([](auto* s) {
        CStlImage target(*s);
        CImgMedianComposit median(&target);
        median.Store(s, 0, 1.0, 1.0, 5.0);
        median.CalcClipping();
    });
    corvane::platform::SetWaitCursorHandler({});
}
