#include "corvane/core/run.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "corvane/core/stl_image.h"
#include "corvane/core/threads.h"
#include "corvane/resources/string_table.h"

namespace corvane {
namespace {

const char* TextOf(int id)
{
    const char* const text = FindString(static_cast<unsigned>(id));
    return text == nullptr ? "" : text;
}

/// Sends progress by the channel of an image. Of steps it returns whether the work goes on: ESC was not pressed.
std::optional<bool> Send(CStlImage& image, int show, const Progress& progress)
{
    const bool isPercent = progress.total == Progress::kPercent;
    if (show == 0 && (isPercent || progress.state == Progress::State::kMessage)) {
        return {}; // the channel knows silence only where it counts
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
        return image.ShowProgress(progress.steps) != 0;
    case Progress::State::kReached:
        return image.ShowProgress(progress.done) != 0;
    case Progress::State::kMessage:
        image.ShowProgressMsg(progress.text);
        break;
    case Progress::State::kEnded:
        image.ShowProgressEnd(nullptr);
        break;
    }
    return {};
}

} // namespace

Run WindowRun(CStlImage& image, int show, EscapeKey escape)
{
    Run run;
    if (escape == EscapeKey::kIgnored) { // takes no memory, since some members promise 0 where there is none
        run.progress = [&image, show](const Progress& progress) { Send(image, show, progress); };
        return run;
    }
    const auto goesOn = std::make_shared<bool>(true);
    run.progress = [&image, show, goesOn](const Progress& progress) {
        *goesOn = Send(image, show, progress).value_or(*goesOn);
    };
    run.cancelled = [goesOn] { return !*goesOn; };
    return run;
}

int Run::Threads() const
{
    return threads > 0 ? threads : corvane::Threads();
}

Stage::Stage(const Run& run, const char* text, int total) : run_(run), total_(std::max(total, 0))
{
    if (run_.progress) {
        run_.progress({.state = Progress::State::kBegun, .text = text, .total = total_});
    }
}

Stage::Stage(const Run& run, int textId, int total) : Stage(run, TextOf(textId), total) {}

Stage::~Stage()
{
    if (run_.progress) {
        try {
            run_.progress({.state = Progress::State::kEnded, .done = done_, .total = total_});
        } catch (...) { // for want of memory perhaps; the work is done, or ends by an error of its own
        }
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
