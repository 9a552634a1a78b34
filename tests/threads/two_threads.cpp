// Two threads at work on images of their own, each with workers, while the memory budget moves and messages come in.
// The thread sanitizer fails the program where they touch the same memory unguarded; the program itself compares what
// they made, beside what one made without workers.

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>
#include <vector>

#include "corvane/core/memory_budget.h"
#include "corvane/core/progress_message.h"
#include "corvane/core/sample_memory.h"
#include "corvane/core/threads.h"
#include "corvane/filter/filter.h"
#include "corvane/geometry/rotate.h"
#include "corvane/platform/memory.h"
#include "corvane/platform/messages.h"
#include "corvane/restore/lucy_engine.h"
#include "corvane/tone/auto_level.h"
#include "corvane/tone/invert.h"
#include "stack/combine/combine.h"
#include "stars/find_stars.h"

using namespace corvane;

namespace {

constexpr std::uint64_t kPaged = 1 << 20;
constexpr std::uint64_t kPlain = 256 << 20;

/// What a thread's work comes to.
struct Outcome {
    std::vector<float> samples;
    int messages = 0;

    bool operator==(const Outcome&) const = default;
};

CStlImage Frame(int width, int height, int planes, int seed)
{
    CStlImage image(-32, width, height, planes, 1.0, 0.0, 0);
    for (int row = 0; row < height * planes; ++row) {
        float* const samples = image.GetImageAdr(0, row % height, row / height);
        for (int x = 0; x < width; ++x) {
            samples[x] = static_cast<float>((x * (seed + 7) + row * 31) % 997);
        }
    }
    return image;
}

/// Keeps some samples, spread over the image, and a number that all of them share in.
void Keep(const CStlImage& image, std::vector<float>& samples)
{
    for (int i = 0; i < 100; ++i) {
        samples.push_back(image.GetPixelGrayRaw(i * 7 % image.GetWidth(), i * image.GetHeight() / 100, 0));
    }
    samples.push_back(image.GetAvrGrayRaw(0) + static_cast<float>(image.GetLevelMax(0)));
}

/// Keeps a sharpened plane, large enough for workers; the engine does not ask for the budget.
void Sharpen(int seed, std::vector<float>& samples)
{
    const std::vector<float> psf(9, 1.0F);
    std::vector<float> plane;
    for (int i = 0; i < 520 * 510; ++i) {
        plane.push_back(static_cast<float>(i * (seed + 7) % 997));
    }
    const LucyJob job{.width = 520, .height = 510, .psf = psf.data(), .psfWidth = 3, .psfHeight = 3, .iterations = 2};
    RestoreLucy(plane.data(), job, {}, 0);
    samples.insert(samples.end(), plane.begin(), plane.begin() + 1000);
}

/// A sky with stars, 40 pixels apart.
CStlImage Field(int side, int seed)
{
    CStlImage image(-32, side, side, 1, 1.0, 0.0, 0);
    for (int y = 0; y < side; ++y) {
        float* const samples = image.GetImageAdr(0, y, 0);
        for (int x = 0; x < side; ++x) {
            const int dx = x % 40 - 20;
            const int dy = y % 40 - 20;
            const int far = dx * dx + dy * dy;
            samples[x] = static_cast<float>((x * (seed + 73) + y * 31) % 17);
            samples[x] += far < 60 ? 1000.0F * std::exp(static_cast<float>(-far) / 4.0F) : 0.0F;
        }
    }
    return image;
}

/// Keeps the stars of a field, and of its clipped mean with two others.
void FindAndCombine(int seed, std::vector<float>& samples)
{
    constexpr int kSide = 560; // enough for workers
    const CStlImage frames[] = {Field(kSide, seed), Field(kSide, seed + 1), Field(kSide, seed + 2)};
    stack::ImageSource source({&frames[0], &frames[1], &frames[2]});
    stack::CombinePlan plan{.grid = {kSide, kSide}, .rule = {CombineMethod::kClippedMean}};
    for (int i = 0; i < 3; ++i) {
        plan.frames.push_back({i, Alignment::Turned(0.5 * i, 0.0, i, {kSide / 2.0, kSide / 2.0})});
    }
    CStlImage mean(-32, kSide, kSide, 1, 1.0, 0.0, 0);
    stack::CombineFrames(plan, source, {mean});
    Keep(mean, samples);
    for (const CStlImage* image : {&frames[0], static_cast<const CStlImage*>(&mean)}) {
        for (const stars::FieldStar& star : stars::FindFieldStars(*image, 0).stars) {
            samples.push_back(static_cast<float>(star.x + star.y + star.fwhm));
        }
    }
}

/// Makes, filters, turns, copies and frees images; `window` becomes that of the thread.
Outcome Work(int seed, std::atomic<HWND>& window)
{
    Outcome outcome;
    window = platform::CreateMessageWindow([&](UINT message, WPARAM, LPARAM) {
        outcome.messages += message == kProgressMessage ? 1 : 0;
        return 0;
    });
    platform::SetMainWindow(window);
    for (int round = 0; round < 4; ++round) {
        CStlImage large = Frame(1024, 1300, 1, seed + round); // more pages than the smaller budget has room for
        CImgInvert inverted(large);
        inverted.Do(&large, nullptr, 1);
        Keep(CStlImage(inverted), outcome.samples);
        CStlImage small = Frame(330, 300 + round, 3, seed); // enough for workers
        CImgFilter smooth(small);
        smooth.GaussianFilter(1.0, &small, nullptr, 1);
        CImgRotate turned(smooth);
        turned.Do(20.0, nullptr, &smooth, 0, 1);
        CImgAutoLevel levelled(turned);
        levelled.Do(1.0, 2.0, 1, nullptr);
        Keep(levelled, outcome.samples);
    }
    Sharpen(seed, outcome.samples);
    FindAndCombine(seed, outcome.samples);
    platform::DestroyMessageWindow(window.exchange(nullptr));
    return outcome;
}

} // namespace

int main()
{
    SetMemoryBudget(kPlain);
    SetThreads(1);
    std::atomic<HWND> windows[2] = {};
    const Outcome expected[2] = {Work(0, windows[0]), Work(1, windows[1])};
    SetThreads(3);
    Outcome outcomes[2];
    std::atomic<int> working = 2;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&, i] {
            outcomes[i] = Work(i, windows[i]);
            --working;
        });
    }
    for (int round = 0; working > 0; ++round) {
        SetMemoryBudget(round % 2 == 0 ? kPaged : kPlain);
        SetSpillFolder(round % 3 == 0 ? platform::TemporaryFolder() : "");
        PostMessageA(windows[round % 2], WM_KEYDOWN, 'A', 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    DropSpareMemory();
    const bool isSame = outcomes[0] == expected[0] && outcomes[1] == expected[1] && expected[0].messages > 0;
    std::printf("samples and messages: %s, in use: %d bytes\n", isSame ? "the same" : "NOT the same",
                static_cast<int>(MemoryInUse()));
    return isSame && MemoryInUse() == 0 ? 0 : 1;
}
