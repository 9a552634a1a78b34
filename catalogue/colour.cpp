#include "catalogue/operations.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::catalogue {
namespace {

// Both conversions read the samples of the image that the result starts as a copy of.
void Convert(CStlImage& image, int (CStlImage::*conversion)(CStlImage*, int), const Context& context)
{
    CStlImage result(image);
    if ((result.*conversion)(&image, context.showProgress) == 0) {
        AfxThrowMemoryException();
    }
    image.Swap(&result);
}

} // namespace

std::vector<Operation> ColourOperations()
{
    return {
        {.name = "to-grey",
         .summary = "turn a colour image into one plane of brightness",
         .help = "Brightness is 0.299 R + 0.587 G + 0.114 B of what the display levels show; the result has the levels "
                 "of the red plane.",
         .planes = Planes::Colour,
         .aliases = {"to-gray"},
         .run = [](io::Frame& frame, Arguments&,
                   const Context& context) { Convert(frame.image, &CStlImage::ToGray, context); }},
        {.name = "to-color",
         .summary = "turn an image of one plane into three equal planes",
         .help = "The three planes take the samples and the display levels of the one.",
         .planes = Planes::Mono,
         .aliases = {"to-colour"},
         .run = [](io::Frame& frame, Arguments&,
                   const Context& context) { Convert(frame.image, &CStlImage::ToColor, context); }},
    };
}

} // namespace corvane::catalogue
