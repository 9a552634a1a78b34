#include <string>

#include "catalogue/error.h"
#include "catalogue/operations.h"
#include "io/frame.h"
#include "io/reader.h"

namespace corvane::catalogue {
namespace {

std::string SizeText(int width, int height, int planes)
{
    return std::to_string(width) + " x " + std::to_string(height) + " pixels, " + std::to_string(planes) +
           (planes == 1 ? " plane" : " planes");
}

// A calibration frame of one plane serves every plane of a colour image. It is judged before its samples are read.
io::Frame LoadFitting(const std::string& file, const CStlImage& image)
{
    const io::FrameInfo info = io::OpenFrame(file)->Info();
    if (info.width != image.GetWidth() || info.height != image.GetHeight() || info.planes > image.GetPlanes()) {
        throw Error("file = " + file + ": is " + SizeText(info.width, info.height, info.planes) + "; the image is " +
                    SizeText(image.GetWidth(), image.GetHeight(), image.GetPlanes()));
    }
    return io::Load(file);
}

void RunDark(io::Frame& frame, Arguments& arguments, const Context& context)
{
    io::Frame dark = LoadFitting(arguments.Text("file"), frame.image);
    frame.image.DarkClbrtn(&dark.image, context.showProgress);
}

void RunFlat(io::Frame& frame, Arguments& arguments, const Context& context)
{
    io::Frame flat = LoadFitting(arguments.Text("file"), frame.image);
    frame.image.FlatClbrtn(&flat.image, context.showProgress);
}

Parameter FileParameter(const std::string& summary)
{
    return {.name = "file", .kind = Kind::File, .summary = summary};
}

} // namespace

std::vector<Operation> CalibrationOperations()
{
    return {
        {.name = "dark",
         .summary = "take a dark frame off",
         .help = "What would fall below 0 becomes 0. The dark must have the image's size, and one plane or as many.",
         .parameters = {FileParameter("the dark frame")},
         .run = RunDark},
        {.name = "flat",
         .summary = "divide by a flat field",
         .help = "The result keeps its scale: samples are multiplied by the mean of the flat's first plane. Where the "
                 "flat is 0 or less they stay as they are. The flat must have the image's size, and one plane or as "
                 "many. Take its bias off before.",
         .parameters = {FileParameter("the flat field")},
         .run = RunFlat},
    };
}

} // namespace corvane::catalogue
