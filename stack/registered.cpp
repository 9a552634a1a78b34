#include "stack/registered.h"

#include <filesystem>

#include "io/frame.h"
#include "io/input_file.h"
#include "stack/describe.h"

namespace corvane::stack {

namespace {

namespace fs = std::filesystem;

void WriteLight(const Options& options, const Plan& plan, CombinePlan one, FrameSource& source, const Result& stack,
                const std::string& path, const Run& run)
{
    const int light = one.frames.front().frame;
    CStlImage image(-32, one.grid.width, one.grid.height, stack.image.GetPlanes(), 1.0, 0.0, 1);
    image.SetCoordinates(stack.image.GetCoordinates());
    one.frames.front().normalisation.clear();
    one.frames.front().weight = 1.0;
    one.rule = CombineMethod::kMedian;
    one.coverage = Coverage::kAny;
    CombineFrames(one, source, {image}, run);
    io::Save(path, image, DescribeRegistered(options, plan, stack, light), {-32});
}

} // namespace

std::vector<std::string> RegisteredFiles(const Options& options)
{
    std::vector<std::string> files;
    for (const std::string& light : options.lights) {
        if (!options.registered.empty()) {
            files.push_back((fs::path(options.registered) / (io::StemOf(light) + "_registered.fits")).string());
        }
    }
    return files;
}

void WriteRegistered(const Options& options, const Plan& plan, const CombinePlan& combining, FrameSource& source,
                     const Result& stack, const Run& run)
{
    if (options.registered.empty()) {
        return;
    }
    Stage stage(run, "Writing registered lights...", static_cast<int>(combining.frames.size()));
    const Run silent{.cancelled = run.cancelled, .threads = run.threads}; // this stage tells how far the work is
    const std::vector<std::string> files = RegisteredFiles(options);
    std::vector<std::string> written;
    std::error_code ignored;
    try {
        fs::create_directories(options.registered, ignored); // without it, writing says what is wrong
        for (const Placement& placement : combining.frames) {
            if (!stack.frames[static_cast<std::size_t>(placement.frame)].used) { // combining has found it empty
                continue;
            }
            CombinePlan one = combining;
            one.frames = {placement};
            const std::string& path = files[static_cast<std::size_t>(placement.frame)];
            WriteLight(options, plan, std::move(one), source, stack, path, silent);
            written.push_back(path);
            stage.Step();
        }
    } catch (...) {
        for (const std::string& path : written) {
            fs::remove(path, ignored);
        }
        throw;
    }
}

} // namespace corvane::stack
