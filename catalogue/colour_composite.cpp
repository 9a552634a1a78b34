// Colour images made of several frames.

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/colour_header.h"
#include "catalogue/frame_balance.h"
#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/registration.h"
#include "catalogue/sky_black.h"
#include "catalogue/undefined.h"
#include "corvane/colour/cmy_composite.h"
#include "corvane/colour/lrgb_composite.h"
#include "corvane/colour/rgb_composite.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/turn.h"
#include "corvane/platform/memory_exception.h"
#include "io/sky.h"

namespace corvane::catalogue {
namespace {

using Frames = std::vector<io::Frame>;
using Fits = std::vector<Fit>;

/// Where the pixels of the first frame go.
io::PixelMap MapOf(const CfPoint& centre, const Fit& fit)
{
    const auto [sine, cosine] = SineAndCosine(fit.angle * kDegree);
    return {{cosine, -sine, sine, cosine},
            centre.x + fit.dx - (cosine * centre.x - sine * centre.y),
            centre.y + fit.dy - (sine * centre.x + cosine * centre.y)};
}

/// Puts the middle of a scaled frame onto that of the first.
void Centre(const CStlImage& first, CStlImage& scaled, Fit& fit)
{
    scaled.SetStdCtr((scaled.GetWidth() - 1) * 0.5, (scaled.GetHeight() - 1) * 0.5);
    fit.dx += (first.GetWidth() - 1) * 0.5 - scaled.GetStdCtr().x;
    fit.dy += (first.GetHeight() - 1) * 0.5 - scaled.GetStdCtr().y;
}

/// Takes the frames of inputs of one frame each.
Frames Taken(Inputs& inputs, const std::vector<std::string>& names)
{
    Frames frames;
    for (const std::string& name : names) {
        frames.push_back(std::move(inputs[name].front()));
    }
    return frames;
}

/// Brings frames whose stars were matched onto the grid of the first; planes of others have these values where they are
/// not. Returns what is left to do to each.
Fits BringAll(Frames& frames, const Fits& fits, const Registration& registration, const std::vector<double>& outside,
              const Run& run)
{
    Fits left{fits[0]};
    for (std::size_t i = 1; i < frames.size(); ++i) {
        left.push_back(BringOnto(frames[0], frames[i], fits[i], registration.frames[i], outside, run));
    }
    return left;
}

/// Makes one image of frames that are brought onto the first, by looking for stars in the given planes; by
/// prepare(fits), after which places outside of them have the values that it returns; and then by combine(result,
/// fits). Undefined samples become NaN.
template <class Result, class Prepare, class Combine>
Outputs Compose(Frames& frames, const std::vector<int>& planes, const Arguments& arguments, const Run& run,
                Prepare prepare, Combine combine)
{
    const Registration registration = RegistrationOf(arguments, frames.size());
    const Fits fits = FitFrames(frames, planes, registration, run);
    std::for_each(frames.begin(), frames.end(), MarkUndefined);
    io::Frame& first = frames[0];
    Result result(first.image);
    if (result.ToColor() == 0) {
        AfxThrowMemoryException();
    }
    const std::vector<double> outside = prepare(fits);
    Fits left = BringAll(frames, fits, registration, outside, run);
    combine(result, left);
    DescribeColour(frames, fits);
    if (fits[0].dx != 0.0 || fits[0].dy != 0.0 || fits[0].angle != 0.0) {
        CarryCoordinates(MapOf(first.image.GetStdCtr(), fits[0]), first, result);
    }
    first.image = std::move(result);
    Outputs outputs;
    outputs.emplace("image", std::move(first));
    outputs.emplace("fits", TableOf(fits));
    return outputs;
}

/// Of three frames through filters; a colour frame gives the plane of its colour. `last` is what Do takes besides.
template <class Result, class... Last>
Outputs ComposeThree(Frames frames, const Arguments& arguments, const Run& run, Last... last)
{
    std::vector<int> planes;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        planes.push_back(frames[i].image.GetPlanes() >= 3 ? static_cast<int>(i) : 0);
    }
    const bool own = HaveOwnLevels(frames);
    const int outside = arguments.Whole("outside");
    const auto prepare = [&](const Fits& fits) {
        Balance(frames, planes, fits, arguments.Text("balance"), run);
        return std::vector<double>(kChannels.size(), outside);
    };
    return Compose<Result>(frames, planes, arguments, run, prepare, [&](Result& result, const Fits& at) {
        result.Do(frames[0].image, at[0].dx, at[0].dy, at[0].angle, frames[1].image, at[1].dx, at[1].dy, at[1].angle,
                  frames[2].image, at[2].dx, at[2].dy, at[2].angle, nullptr, outside, last..., run);
        result.SetOwnLevel(own ? 1 : 0);
    });
}

Outputs RunRgb(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    return ComposeThree<CImgRgbCmpst>(Taken(inputs, {"r", "g", "b"}), arguments, run, nullptr);
}

Outputs RunCmy(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    return ComposeThree<CImgCmyComposit>(Taken(inputs, {"c", "m", "y"}), arguments, run);
}

/// What shows black in each plane of a colour image.
std::vector<double> BlackOf(const CStlImage& image)
{
    return {image.GetLevelMin(0), image.GetLevelMin(1), image.GetLevelMin(2)};
}

// With a scale and without stars the middle of the colour frame comes to lie on that of the luminance frame.
Outputs RunLrgb(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    constexpr int kGreen = 1;
    Frames frames = Taken(inputs, {"l", "rgb"});
    CStlImage& luminance = frames[0].image;
    CStlImage& colour = frames[1].image;
    const double scale = arguments.Number("scale");
    const std::vector<int> planes{luminance.GetPlanes() >= 3 ? kGreen : 0, kGreen};
    const auto prepare = [&](const Fits&) {
        GiveSkyBlack(luminance);
        GiveSkyBlack(colour);
        return BlackOf(colour);
    };
    return Compose<CImgLrgbCmpst>(frames, planes, arguments, run, prepare, [&](CImgLrgbCmpst& result, Fits& at) {
        if (scale != 1.0 && AlignmentOf(arguments, frames.size()) == "none") {
            Centre(luminance, colour, at[1]);
        }
        result.DoLrgb(luminance, at[0].dx, at[0].dy, at[0].angle, colour, at[1].dx, at[1].dy, at[1].angle, scale,
                      nullptr, arguments.Flag("average"), run);
    });
}

void CheckLrgb(const Arguments& arguments)
{
    constexpr std::size_t kFrames = 2;
    CheckRegistration(arguments, kFrames);
    const std::string align = AlignmentOf(arguments, kFrames);
    if (arguments.Number("scale") != 1.0 && align == "shift") {
        throw arguments.Refusal("scale", "must be 1 with align = shift, which finds stars at the same scale only");
    }
    if (arguments.Number("scale") != 1.0 && align == "stars") {
        throw arguments.Refusal("scale", "must be 1 with align = stars, which finds the scale itself");
    }
}

constexpr const char* kAlignment =
    " With align = stars, which is what happens when nothing is said, the stars of the others are matched with those "
    "of the first: they may be shifted, turned and of another scale, and are read between their samples by Lanczos' "
    "kernel, as lights of a stack are. With align = none they are taken as they lie. The star of align = shift should "
    "be the brightest within the square and the range, and wider than two pixels. What stars say is told, to a tenth "
    "of a pixel with shift; shifts and turns by hand are added to it. A frame turns about its star, without one about "
    "its middle.";

Parameter OutsideParameter()
{
    return WholeParameter("outside", "the value of samples outside of a frame", "counts", kAnyNumber, 0);
}

std::vector<Output> ColourOutputs()
{
    return {Output{},
            {.name = "fits",
             .kind = OutputKind::Table,
             .summary = "where each frame lies on the first: dx, dy, angle, scale; and by how many stars it is known"}};
}

Operation Rgb()
{
    return {.name = "rgb",
            .summary = "make a colour image of frames for red, green and blue",
            .help = std::string("Samples keep their values unless balance says otherwise. The result has the size and "
                                "header of R, each plane the display levels of its frame. A colour frame gives its "
                                "plane of that colour. What is undefined in a frame stays so.") +
                    kBalanceHelp + kAlignment,
            .inputs = {{.name = "r", .summary = "the frame for red"},
                       {.name = "g", .summary = "the frame for green"},
                       {.name = "b", .summary = "the frame for blue"}},
            .parameters = RegistrationParameters({BalanceParameter("none"), OutsideParameter()}, {"R", "G", "B"}),
            .outputs = ColourOutputs(),
            .skies = Skies::Balanced,
            .check = [](const Arguments& arguments) { CheckRegistration(arguments, 3); },
            .run = RunRgb};
}

Operation Cmy()
{
    return {.name = "cmy",
            .summary = "make a colour image of frames for cyan, magenta, yellow",
            .help = std::string("Red becomes Y + M - C, green C + Y - M, blue C + M - Y. The result has the size and "
                                "header of C, and display levels between those of the frames. What is undefined in a "
                                "frame stays so.") +
                    kBalanceHelp + kAlignment,
            .inputs = {{.name = "c", .summary = "the frame for cyan", .planes = Planes::Mono},
                       {.name = "m", .summary = "the frame for magenta", .planes = Planes::Mono},
                       {.name = "y", .summary = "the frame for yellow", .planes = Planes::Mono}},
            .parameters = RegistrationParameters({BalanceParameter("none"), OutsideParameter()}, {"C", "M", "Y"}),
            .outputs = ColourOutputs(),
            .skies = Skies::Balanced,
            .check = [](const Arguments& arguments) { CheckRegistration(arguments, 3); },
            .run = RunCmy};
}

Operation Lrgb()
{
    return {
        .name = "lrgb",
        .summary = "give the colours of one image to the luminance of another",
        .help = std::string(
                    "Both are taken as their display levels show them. A file that has none gets, for this work alone, "
                    "black just below the sky of each plane and white at its largest sample. So levels matter: where "
                    "one file shows faint parts brighter than the other, colours get paler or stronger. Set them with "
                    "the steps auto-levels or levels first. What lies below black is cut off, and so is what is more "
                    "than 19.6 times as far above it as white; not so with average. The result has the size, header "
                    "and levels of L. Where RGB is not, L is grey; undefined samples become black, but with average "
                    "stay undefined. With a scale by hand the middle of RGB lies on that of L.") +
                kAlignment,
        .inputs = {{.name = "l", .summary = "the luminance frame"},
                   {.name = "rgb", .summary = "the colour frame", .planes = Planes::Colour}},
        .parameters = RegistrationParameters(
            {FlagParameter("average", "take the mean of both instead of lightness and colour in CIE L*a*b*", false),
             NumberParameter("scale",
                             "by hand: pixels of RGB that go on one of L; 0.5 enlarges an RGB that was binned 2 x 2",
                             "", {0.01, 100.0}, 1.0)},
            {"L", "RGB"}),
        .outputs = ColourOutputs(),
        .skies = Skies::Joined,
        .check = CheckLrgb,
        .run = RunLrgb};
}

} // namespace

std::vector<Operation> ColourCompositeOperations()
{
    return {Rgb(), Cmy(), Lrgb()};
}

} // namespace corvane::catalogue
