#include "catalogue/image_beside.h"

#include "catalogue/colour_header.h"
#include "catalogue/row_order.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "io/reader.h"

namespace corvane::catalogue {
namespace {

std::string ShapeText(int width, int height, int planes)
{
    return corvane::SizeText(width, height) + " pixels, " + std::to_string(planes) +
           (planes == 1 ? " plane" : " planes");
}

/// Why an image of that shape does not go with another; empty when it does.
std::string MisfitOf(int width, int height, int planes, int mostPlanes, const CStlImage& image)
{
    if (width != image.GetWidth() || height != image.GetHeight() || planes > image.GetPlanes()) {
        return "is " + ShapeText(width, height, planes) + "; the image is " +
               ShapeText(image.GetWidth(), image.GetHeight(), image.GetPlanes());
    }
    return planes > mostPlanes ? "has " + std::to_string(planes) + " planes; it must have " + std::to_string(mostPlanes)
                               : "";
}

} // namespace

CStlImage EmptyLike(const CStlImage& image)
{
    CStlImage empty(-32, image.GetWidth(), image.GetHeight(), image.GetPlanes(), 1.0, 0.0, 1);
    empty.SetCoordinates(image.GetCoordinates());
    return empty;
}

void SaveBeside(const std::string& path, const CStlImage& image, const io::Frame& frame, int bits)
{
    io::Header header = frame.header;
    DropExtremes(header);
    io::Save(path, image, header, {.bits = bits});
}

io::Frame FittingImage(const std::string& parameter, int planes, const io::Frame& frame, const Arguments& arguments,
                       const Run& run)
{
    const auto check = [&](int width, int height, int own) {
        if (const std::string misfit = MisfitOf(width, height, own, planes, frame.image); !misfit.empty()) {
            throw arguments.Refusal(parameter, misfit);
        }
    };
    if (arguments.IsWord(parameter)) {
        const io::FrameInfo info = io::OpenFrame(arguments.Text(parameter))->Info();
        check(info.width, info.height, info.planes);
    }
    io::Frame beside = arguments.Image(parameter);
    check(beside.image.GetWidth(), beside.image.GetHeight(), beside.image.GetPlanes());
    BringToOrderOf(frame, beside, run);
    return beside;
}

} // namespace corvane::catalogue
