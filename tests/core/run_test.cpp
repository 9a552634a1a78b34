#include "corvane/core/run.h"

#include <gtest/gtest.h>

#include "corvane/colour/rgb_composite.h"
#include "corvane/core/vm_image.h"
#include "corvane/filter/filter.h"
#include "corvane/geometry/rotate.h"
#include "corvane/tone/invert.h"
#include "tests/support/images.h"
#include "tests/support/progress_window.h"
#include "tests/support/storage.h"

using namespace corvane;
using namespace corvane::test;
using State = Progress::State;

namespace {

/// An operation, and the totals of its stages for an image of 9 x 7 x 3.
struct Work {
    void (*run)(const CStlImage& source, const Run& run);
    std::vector<int> totals;
};

const Work kWorks[] = {
    {[](const CStlImage& s, const Run& run) { CImgInvert(s).Do(s, nullptr, run); }, {21}},
    {[](const CStlImage& s, const Run& run) { CImgFilter(s).MedianFilter(1, s, nullptr, run); }, {21}},
    {[](const CStlImage& s, const Run& run) { CImgFilter(s).DigitalDvlp(5.0, 1.0, s, nullptr, nullptr, run); }, {21}},
    {[](const CStlImage& s, const Run& run) { CImgRotate(s).Do90(0, s, run); }, {0, 27}},
    {[](const CStlImage& s, const Run& run) {
         CImgRgbCmpst(s).Do(s, 0, 0, 0, s, 0, 0, 0, s, 0, 0, 0, nullptr, 0, nullptr, run);
     },
     {7}},
};

/// Writes down the stages of a run: what was counted of each, and whether they began and ended one after the other.
struct Recorder {
    Run run;
    std::vector<int> totals;
    std::vector<int> counts;
    bool isOpen = false;

    Recorder()
    {
        run.progress = [this](const Progress& progress) {
            EXPECT_EQ(isOpen, progress.state != State::kBegun);
            isOpen = progress.state != State::kEnded;
            if (progress.state == State::kBegun) {
                EXPECT_STRNE(progress.text, "");
                totals.push_back(progress.total);
                counts.push_back(0);
            }
            counts.back() += progress.steps;
            EXPECT_EQ(progress.total, totals.back());
            EXPECT_EQ(progress.done, counts.back());
        };
    }
};

} // namespace

TEST(RunOfWork, TellsStagesAndCanBeCancelled)
{
    const CStlImage source = RandomImage({9, 7}, 3, 41);
    const std::vector<float> before = Samples(source);
    for (const Work& work : kWorks) {
        Recorder whole;
        work.run(source, whole.run);
        EXPECT_EQ(whole.totals, work.totals);
        EXPECT_EQ(whole.counts, work.totals);
        EXPECT_FALSE(whole.isOpen);
        Recorder part;
        part.run.cancelled = [&part] { return part.counts.back() == 4; };
        EXPECT_THROW(work.run(source, part.run), Cancelled);
        EXPECT_EQ(part.counts.back(), 4);
        EXPECT_FALSE(part.isOpen);
        EXPECT_EQ(Samples(source), before);
    }
}

TEST(RunOfWork, PassesOnWhatAListenerThrowsButAtTheEnd)
{
    for (const State failing : {State::kBegun, State::kCounted, State::kEnded}) {
        corvane::Run run;
        run.progress = [=](const corvane::Progress& progress) {
            if (progress.state == failing) {
                throw std::bad_alloc();
            }
        };
        const auto work = [&run] { Stage(run, "work", 1).Step(); };
        if (failing == State::kEnded) {
            EXPECT_NO_THROW(work());
        } else {
            EXPECT_THROW(work(), std::bad_alloc);
        }
    }
}

TEST(RunOfWork, OfAWindowSendsWhatTheChannelSends)
{
    ProgressWindow window;
    CStlImage image;
    image.SetProgressHandle(window.Handle());
    for (const int show : {0, 1}) {
        for (const int total : {-1, 30, 240}) {
            const int steps = total < 0 ? 0 : 200; // an area turned inside out has none
            image.ShowProgressInit(show, "work", total);
            for (int i = 0; i < steps; ++i) {
                image.ShowProgress(1);
            }
            if (show != 0) { // the channel sends a message all the same; a run that shows nothing is silent
                image.ShowProgressMsg("message");
            }
            image.ShowProgressEnd(nullptr);
            const std::vector<std::string> expected = window.Take();
            const auto run = WindowRun(image, show);
            {
                Stage stage(run, "work", total);
                for (int i = 0; i < steps; ++i) {
                    stage.Step();
                }
                run.progress({.state = State::kMessage, .text = "message"});
            }
            EXPECT_EQ(window.Take(), expected) << show << ' ' << total;
        }
    }
    const auto run = WindowRun(image, 1);
    run.progress({.state = State::kBegun, .text = "parts", .total = Progress::kPercent});
    run.progress({.state = State::kReached, .done = 40});
    run.progress({.state = State::kEnded});
    EXPECT_EQ(window.Take(), (std::vector<std::string>{"0:parts", "1:40", "2:null"}));
}

TEST(RunOfWork, OfAWindowIsCancelledByEscapeWhereThatCounts)
{
    ProgressWindow window;
    CStlImage image;
    for (const EscapeKey escape : {EscapeKey::kIgnored, EscapeKey::kEnds}) {
        const auto run = WindowRun(image, 1, escape);
        Stage stage(run, "keys", 10);
        EXPECT_TRUE(stage.Advance());
        PostMessageA(window.Handle(), WM_KEYDOWN, VK_ESCAPE, 0);
        EXPECT_EQ(stage.Advance(), escape == EscapeKey::kIgnored);
    }
}

TEST(ImageSamples, CanBeMovedSharedAndAdopted)
{
    CStlImage first = RandomImage({9, 7}, 3, 42);
    const std::vector<float> samples = Samples(first);
    const float* const address = first.GetImageAdr(0, 0, 0);
    CStlImage second = std::move(first);
    EXPECT_EQ(second.GetImageAdr(0, 0, 0), address);
    EXPECT_EQ(first.GetStore(), nullptr); // NOLINT(bugprone-use-after-move)
    first = second;
    EXPECT_NE(first.GetImageAdr(0, 0, 0), address);
    EXPECT_EQ(Samples(first), samples);

    int deleted = 0;
    std::vector<float> owned(12, 5.0F);
    {
        auto* const bytes = reinterpret_cast<unsigned char*>(owned.data());
        const std::shared_ptr<unsigned char> memory(bytes, [&](unsigned char*) { ++deleted; });
        CStlImage adopted(std::make_shared<CVmImage>(memory, 4, 3, 1, 4));
        EXPECT_EQ(adopted.GetImageAdr(0, 0, 0), owned.data());
        const CStlImage copy(adopted);
        adopted.SetPixelGrayRaw(1, 2, 8.0F, 0);
        EXPECT_EQ(owned[9], 8.0F);
        EXPECT_EQ(copy.GetPixelGrayRaw(1, 2, 0), 5.0F);
    }
    EXPECT_EQ(deleted, 1);
}

TEST(ImageSamples, LiveAsLongAsOneOfTheImagesThatShareThem)
{
    const TightMemory tight(1U << 20U);
    for (const Size size : {Size{9, 7}, {1100, 700}}) {
        auto first = std::make_unique<CStlImage>(RandomImage(size, 3, 43));
        EXPECT_EQ(first->GetStore()->IsPaged(), size.width > 9);
        std::vector<float> samples = Samples(*first);
        CStlImage second = first->Shared();
        samples[3] = 99.0F;
        first->SetPixelGrayRaw(3, 0, samples[3], 0);
        second.SetLevel(0, 7.0, 8.0);
        EXPECT_NE(first->GetLevelMin(0), 7.0);
        first.reset();
        EXPECT_EQ(Samples(second), samples);
    }
}
