#include <algorithm>
#include <memory>
#include <vector>

#include "catalogue/colour_balance.h"
#include "catalogue/display_levels.h"
#include "catalogue/operations.h"
#include "catalogue/undefined.h"
#include "corvane/colour/lab_color_enhance.h"
#include "corvane/platform/memory_exception.h"
#include "stars/plane_of.h"

namespace corvane::catalogue {
namespace {

/// An image that came without display levels with some that show its sky a dark grey, and its stars in their colours.
/// Every plane has the same range, from below the noise of its own sky, since what is darker than black loses its
/// colour. The samples are those of the image.
CStlImage WithColourLevels(const CStlImage& image)
{
    CStlImage shown = image.Shared();
    if (image.HasOwnLevel() != 0) {
        return shown;
    }
    std::vector<double> means;
    double sigma = 0.0;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        const Sky sky = MeasureSky(stars::PlaneOf(image, plane));
        means.push_back(sky.mean);
        sigma = std::max(sigma, sky.sigma);
    }
    const double unit = sigma > 0.0 ? sigma : 1.0;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        const double mean = means[static_cast<std::size_t>(plane)];
        shown.CImage::SetLevel(plane, mean - 4.0 * unit, mean + 60.0 * unit);
    }
    shown.SetOwnLevel(1);
    return shown;
}

CStlImage RunSaturate(const CStlImage& given, const Arguments& arguments, const Run& run)
{
    const CStlImage image = WithColourLevels(given);
    const auto gain = [&](const char* hue) { return arguments.Number(arguments.Has(hue) ? hue : "gain"); };
    const std::unique_ptr<CStlImage> lab = image.MakeLabPlane(run);
    CImgLabColorEnhance result(image);
    result.Do(*lab, gain("red"), gain("green"), gain("yellow"), gain("blue"), arguments.Rectangle("rect"), run);
    return result;
}

Parameter GainParameter(const char* name, const char* summary, const char* alias)
{
    return {.name = name, .summary = summary, .min = -10.0, .max = 10.0, .whenAbsent = "gain", .aliases = {alias}};
}

Operation Saturate()
{
    return {.name = "saturate",
            .summary = "make colours stronger or weaker",
            .help = "Colour is taken as CIE L*a*b* of what the display levels show: the axis a goes from green to red, "
                    "b from blue to yellow, and each side is multiplied by its gain. 1 leaves it, 0 makes it grey, a "
                    "negative gain turns it to the opposite hue. Lightness stays, as far as the colour can be shown. "
                    "Samples below black and undefined ones become black; what is above white is kept. The display "
                    "levels stay. Without them, it chooses levels that show the sky grey first.",
            .inputs = {{.planes = Planes::Colour}},
            .parameters = {NumberParameter("gain", "of every hue that has no gain of its own", "", {-10.0, 10.0}, 1.5),
                           GainParameter("red", "gain of red and magenta, where a is not below 0", "a-plus"),
                           GainParameter("green", "gain of green, where a is below 0", "a-minus"),
                           GainParameter("yellow", "gain of yellow, where b is not below 0", "b-plus"),
                           GainParameter("blue", "gain of blue, where b is below 0", "b-minus"), RectangleParameter()},
            .footprint = Always({.levels = LevelUse::Chosen}),
            .run = RunSaturate};
}

// The frame keeps its coordinates and cards: it takes the samples alone.
void RunLab(io::Frame& frame, const Arguments&, const Run& run)
{
    MarkUndefined(frame);
    frame.image = WithColourLevels(frame.image);
    CStlImage& image = frame.image;
    const std::unique_ptr<CStlImage> lab = image.MakeLabPlane(run);
    image.PixelBlt(0, 0, image.GetWidth(), image.GetHeight(), lab.get(), 0, 0, 0);
    image.SetLevel(0, 0.0, 100.0);
    image.SetLevel(1, -100.0, 100.0);
    image.SetLevel(2, -100.0, 100.0);
    image.SetOwnLevel(1);
}

template <int (CStlImage::*kConversion)(const CStlImage&, const Run&)>
CStlImage RunConversion(const CStlImage& image, const Arguments&, const Run& run)
{
    CStlImage result(image);
    if ((result.*kConversion)(image, run) == 0) {
        AfxThrowMemoryException();
    }
    return result;
}

// It refuses an image without any sample that is defined, as a part of one may be.
Operation ToLabPlanes()
{
    return {.name = "lab",
            .summary = "turn a colour image into planes of lightness and colour",
            .help = "The planes become L, a and b of CIE L*a*b*, of what the display levels show: L is 0 for black and "
                    "100 for white, a goes from green (below 0) to red, b from blue (below 0) to yellow. Samples below "
                    "black count as black; what is above white has an L above 100. The result has display levels of "
                    "0 to 100 for L and -100 to 100 for a and b, so a grey image shows a and b in the middle. Without "
                    "display levels, it chooses some that show the sky grey first. A pixel that is undefined in one "
                    "plane becomes so in all.",
            .inputs = {{.planes = Planes::Colour}},
            .footprint = Always({.levels = LevelUse::Chosen, .statistics = true, .makesPlanes = true}),
            .run = RunLab};
}

} // namespace

std::vector<Operation> ColourOperations()
{
    return {
        {.name = "to-grey",
         .summary = "turn a colour image into one plane of brightness",
         .help = "Brightness is 0.299 R + 0.587 G + 0.114 B of what the display levels show; the result has the levels "
                 "of the red plane.",
         .inputs = {{.planes = Planes::Colour}},
         .footprint = Always({.levels = LevelUse::Read, .makesPlanes = true}),
         .aliases = {"to-gray"},
         .run = RunConversion<&CStlImage::ToGray>},
        {.name = "to-color",
         .summary = "turn an image of one plane into three equal planes",
         .help = "The three planes take the samples and the display levels of the one.",
         .inputs = {{.planes = Planes::Mono}},
         .footprint = Always({.makesPlanes = true}),
         .aliases = {"to-colour"},
         .run = RunConversion<&CStlImage::ToColor>},
        NeutralSky(),
        WhiteBalance(),
        TakeOffGreen(),
        Saturate(),
        ToLabPlanes(),
    };
}

} // namespace corvane::catalogue
