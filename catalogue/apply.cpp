#include "catalogue/apply.h"

#include <memory>
#include <utility>

#include "catalogue/operations.h"
#include "corvane/core/error.h"

namespace corvane {
namespace {

/// A frame to begin with: a step that makes a new image reads the samples in their place.
io::Frame FrameFor(const catalogue::Step& first, const CStlImage& image)
{
    const bool isRead = std::holds_alternative<catalogue::OnImage>(first.operation->run);
    io::Frame frame;
    frame.image = isRead ? image.Shared() : CStlImage(image);
    return frame;
}

} // namespace

CStlImage Apply(const CStlImage& image, std::string_view operation, const catalogue::Settings& settings, const Run& run)
{
    return Apply(image, std::vector{catalogue::Step(operation, settings)}, run);
}

CStlImage Apply(const CStlImage& image, const std::vector<catalogue::Step>& steps, const Run& run)
{
    return steps.empty() ? CStlImage(image) : Apply(FrameFor(steps.front(), image), steps, run).image;
}

io::Frame Apply(io::Frame frame, std::string_view operation, const catalogue::Settings& settings, const Run& run)
{
    return Apply(std::move(frame), std::vector{catalogue::Step(operation, settings)}, run);
}

io::Frame Apply(io::Frame frame, const std::vector<catalogue::Step>& steps, const Run& run)
{
    for (const catalogue::Step& step : steps) {
        catalogue::RunStep(step, frame, run);
    }
    return frame;
}

catalogue::Outputs Apply(std::string_view operation, catalogue::Inputs inputs, const catalogue::Settings& settings,
                         const Run& run)
{
    const catalogue::Operation& found = catalogue::FindOperation(operation);
    try {
        const catalogue::Arguments arguments = catalogue::MakeArguments(found, settings);
        return catalogue::RunOperation(found, std::move(inputs), arguments, run);
    } catch (const Error& error) {
        throw error.Is(Error::Kind::kFile) ? error : error.Of(found.name);
    }
}

catalogue::Value AsValue(const CStlImage& image)
{
    auto frame = std::make_shared<io::Frame>();
    frame->image = image.Shared();
    return catalogue::SharedFrame(std::move(frame));
}

} // namespace corvane
