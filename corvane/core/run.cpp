#include "corvane/core/run.h"

#include <memory>

#include "corvane/core/stl_image.h"
#include "corvane/resources/string_table.h"

namespace corvane {
namespace {

const char* TextOf(int id)
{
    const char* const text = FindString(static_cast<unsigned>(id));
    return text == nullptr ? "" : text;
}

} // namespace

const char* Cancelled::what() const noexcept
{
    return "cancelled";
}

Run WindowRun(CStlImage& image, int show, Escape escape)
{
    const auto goesOn = std::make_shared<bool>(true);
    Run run;
    run.progress = [&image, show, goesOn](const Progress& progress) {
        const bool isPercent = progress.total == Progress::kPercent;
        if (show == 0 && (isPercent || progress.state == Progress::State::kMessage)) {
            return; // the channel knows silence only where it counts
        }
        switch (progress.state) {
        case Progress::State::kBegun:
            if (isPercent) {
                image.ShowProgressInit(progress.text);
            } else {
                image.ShowProgressInit(show, progress.text, progress.total);
            }
            break;
        case Progress::State::kCounted:
            *goesOn = image.ShowProgress(progress.steps) != 0;
            break;
        case Progress::State::kReached:
            *goesOn = image.ShowProgress(progress.done) != 0;
            break;
        case Progress::State::kMessage:
            image.ShowProgressMsg(progress.text);
            break;
        case Progress::State::kEnded:
            image.ShowProgressEnd(nullptr);
            break;
        }
    };
    if (escape == Escape::kEnds) {
        run.cancelled = [goesOn] { return !*goesOn; };
    }
    return run;
}

Stage::Stage(const Run& run, const char* text, int total) : run_(run), total_(total)
{
    if (run_.progress) {
        run_.progress({.state = Progress::State::kBegun, .text = text, .total = total_});
    }
}

Stage::Stage(const Run& run, int textId, int total) : Stage(run, TextOf(textId), total) {}

Stage::~Stage()
{
    if (run_.progress) {
        run_.progress({.state = Progress::State::kEnded, .done = done_, .total = total_});
    }
}

bool Stage::Advance(int steps)
{
    done_ += steps;
    if (run_.progress) {
        run_.progress({.state = Progress::State::kCounted, .steps = steps, .done = done_, .total = total_});
    }
    return !run_.IsCancelled();
}

} // namespace corvane
