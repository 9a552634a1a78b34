// Holds every operation of the catalogue to one result, and one course of progress, for any number of threads.

#include "corvane/core/threads.h"

#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/apply.h"
#include "catalogue/footprint.h"
#include "catalogue/operations.h"
#include "corvane/core/error.h"
#include "tests/io/files.h"
#include "tests/support/images.h"
#include "tests/variants/step_texts.h"

namespace corvane::catalogue {
namespace {

constexpr test::Size kSize{640, 420}; // several blocks of rows, also where planes are taken together

/// All that a caller gets to know.
struct Course {
    std::vector<std::string> progress;
    std::vector<float> samples;
    std::string refused;
};

io::Frame Frame(int planes, std::uint64_t seed)
{
    io::Frame frame;
    frame.image = test::RandomImage(kSize, planes, seed);
    frame.image.SetOrgFileName("random.fits");
    return frame;
}

template <class Work>
Course CourseOf(int threads, Work work)
{
    Course course;
    Run run;
    run.threads = threads;
    run.progress = [&](const Progress& p) {
        course.progress.push_back(std::to_string(static_cast<int>(p.state)) + p.text + ' ' + std::to_string(p.done) +
                                  '/' + std::to_string(p.total));
    };
    SetThreads(threads);
    try {
        course.samples = test::Samples(work(run).image);
    } catch (const Error& error) {
        course.refused = error.what();
    }
    SetThreads(0);
    return course;
}

/// Compares with one thread each time another of several numbers. Returns whether the work is done, not refused.
template <class Work>
bool ExpectOneCourse(Work work)
{
    constexpr int kNumbers[] = {2, 3, 7, 32};
    static std::size_t next = 0;
    const Course one = CourseOf(1, work);
    const Course several = CourseOf(kNumbers[next++ % std::size(kNumbers)], work);
    EXPECT_EQ(several.progress, one.progress);
    EXPECT_TRUE(test::SameSamples(several.samples, one.samples));
    EXPECT_EQ(several.refused, one.refused);
    return one.refused.empty();
}

/// How many sets of arguments are tried; what looks at the whole image takes long.
int TrialsOf(const Step& step)
{
    return FootprintOf(*step.operation, step.arguments).IsWhole() ? 1 : 4;
}

class AnyThreads : public test::InFolder {};

TEST_F(AnyThreads, MakeTheSameOfStepsAtTheSamePace)
{
    StepFiles files{{}, Write("curve.txt", "0 0.05\n0.2 0.5\n1 0.95\n"), Path("mask.fits")};
    io::Save(files.mask, Apply(Frame(1, 9).image, "equalise", {{"low", -20}, {"high", 300}}), {});
    for (const int planes : {1, 3}) {
        const io::Frame frame = Frame(planes, 7);
        files.images.push_back(Path(std::to_string(planes) + ".fits"));
        io::Save(files.images.back(), frame.image, frame.header);
    }
    std::map<std::string, int> trials;
    for (const std::string& text : StepTexts(files)) {
        SCOPED_TRACE(text);
        std::vector<Step> steps;
        try {
            steps.push_back(ParseStep(text));
        } catch (const Error&) { // arguments that do not go together
            continue;
        }
        if (trials[steps[0].operation->name]++ < TrialsOf(steps[0])) {
            for (const int planes : {1, 3}) {
                ExpectOneCourse([&](const corvane::Run& run) { return Apply(Frame(planes, 3), steps, run); });
            }
        }
    }
}

/// Values with which an operation on several images works on noise, which has no stars.
Settings SettingsOnNoise(const Operation& operation)
{
    Settings settings;
    for (const Parameter& parameter : operation.parameters) {
        if (parameter.name == "align") {
            settings.push_back({"align", "none"});
        } else if (parameter.name == "mode" && operation.name == "composite") {
            settings.push_back({"mode", "blend"});
        } else if (parameter.name == "palette" || parameter.name == "factor") {
            settings.push_back({parameter.name, parameter.name == "palette" ? Value(std::string("hos")) : Value(0.3)});
        }
    }
    return settings;
}

TEST_F(AnyThreads, MakeTheSameOfSeveralImages)
{
    const std::set<std::string> seekers{"match", "stars", "find-stars", "psf"}; // they find nothing in noise
    for (const Operation& operation : Operations()) {
        bool isDone = operation.IsStep() || seekers.contains(operation.name);
        for (const int planes : operation.IsStep() ? std::vector<int>() : std::vector{1, 3}) {
            SCOPED_TRACE(operation.name + " of planes " + std::to_string(planes));
            isDone |= ExpectOneCourse([&](const corvane::Run& run) {
                Inputs inputs;
                for (const Input& input : operation.inputs) {
                    for (int i = input.count == Count::Several ? 3 : 1; i > 0; --i) {
                        inputs[input.name].push_back(Frame(planes, 1 + 5 * i + inputs.size()));
                    }
                }
                Outputs outputs = Apply(operation.name, std::move(inputs), SettingsOnNoise(operation), run);
                const auto image = outputs.find("image");
                return image == outputs.end() ? io::Frame() : std::get<io::Frame>(std::move(image->second));
            });
        }
        EXPECT_TRUE(isDone) << operation.name;
    }
}

} // namespace
} // namespace corvane::catalogue
