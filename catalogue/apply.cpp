#include "catalogue/apply.h"

#include <memory>
#include <utility>

#include "catalogue/operations.h"
#include "corvane/core/error.h"

namespace corvane {
namespace {

/// An image to begin with: a step that makes a new one reads the samples in their place.
CStlImage ImageFor(const std::vector<catalogue::Step>& steps, const CStlImage& image)
{
    const bool isRead = !steps.empty() && std::holds_alternative<catalogue::OnImage>(steps.front().operation->run);
    return isRead ? image.Shared() : CStlImage(image);
}

io::Frame Applied(io::Frame frame, const std::vector<catalogue::Step>& steps, const Run& run)
{
    for (const catalogue::Step& step : steps) {
        catalogue::RunStep(step, frame, run);
    }
    return frame;
}

} // namespace

CStlImage Apply(const CStlImage& image, std::string_view operation, const catalogue::Settings& settings, const Run& run)
{
    return Apply(image, std::vector{catalogue::Step(operation, settings)}, run);
}

CStlImage Apply(const CStlImage& image, const std::vector<catalogue::Step>& steps, const Run& run)
{
    return Applied({ImageFor(steps, image), {}}, steps, run).image;
}

io::Frame Apply(const io::Frame& frame, std::string_view operation, const catalogue::Settings& settings, const Run& run)
{
    return Apply(frame, std::vector{catalogue::Step(operation, settings)}, run);
}

io::Frame Apply(const io::Frame& frame, const std::vector<catalogue::Step>& steps, const Run& run)
{
    return Applied({ImageFor(steps, frame.image), frame.header}, steps, run);
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
