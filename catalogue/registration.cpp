#include "catalogue/registration.h"

#include <algorithm>
#include <cmath>

#include "catalogue/row_order.h"
#include "corvane/core/error.h"
#include "corvane/core/run.h"
#include "corvane/core/text.h"
#include "stars/patch.h"
#include "stars/plane_of.h"

namespace corvane::catalogue {
namespace {

bool IsBy(const Registration& registration, const char* word)
{
    return registration.align == word;
}

constexpr int kMostSearch = 1024; // [pixels]

/// The parameter for something of frame i: points, points2, points3; shift1, shift2.
std::string NameFor(const char* what, std::size_t i)
{
    return what == std::string("points") && i == 0 ? what : what + std::to_string(i + 1);
}

Parameter ShiftParameter(std::size_t i, const std::string& frame)
{
    return {.name = NameFor("shift", i),
            .kind = Kind::Numbers,
            .summary = "shift of " + frame + " to the right and down, on top of what stars say",
            .unit = "pixels",
            .min = -kMaxShift,
            .max = kMaxShift,
            .choices = {"DX,DY"},
            .whenAbsent = "none"};
}

Parameter SquareParameter(const char* name, const char* summary, int min, int max, int usual)
{
    return WholeParameter(name, summary, "pixels", {1.0 * min, 1.0 * max}, usual);
}

std::vector<double> NumbersOf(const Arguments& arguments, const std::string& name)
{
    return arguments.Has(name) ? arguments.Numbers(name) : std::vector<double>();
}

/// What is said by hand of a frame, and the stars if it is aligned by points.
Placement PlacementOf(const Registration& registration, std::size_t frame)
{
    const FramePlace& place = registration.frames[frame];
    return {.dx = place.shift.empty() ? 0.0 : place.shift[0],
            .dy = place.shift.empty() ? 0.0 : place.shift[1],
            .angle = place.angle,
            .points = registration.frames[0].points,
            .secondPoints = place.points,
            .box = registration.box};
}

/// Where the first frame is moved by hand.
Fit FitOfFirst(io::Frame& first, const Registration& registration)
{
    const Placement placement = PlacementOf(registration, 0);
    if (!placement.IsByStars()) {
        first.image.SetDefaultCenter();
    }
    return {placement.dx, placement.dy, placement.angle, 0};
}

void CheckInside(const io::Frame& first, const std::vector<double>& at)
{
    const CStlImage& image = first.image;
    if (!(at[0] < image.GetWidth()) || !(at[1] < image.GetHeight())) {
        throw ParameterError("at", ToText(Value(at)),
                             "must lie within the image, of " + SizeText(image.GetWidth(), image.GetHeight()) +
                                 " pixels");
    }
}

void CheckSeen(bool isSeen, const io::Frame& frame, const CPoint& at, int reach)
{
    if (!isSeen) {
        throw FileError(frame.image.GetOrgFileName(), "shows no star within " + std::to_string(reach) + " pixels of " +
                                                          std::to_string(at.x) + "," + std::to_string(at.y));
    }
}

/// Finds the star of the first frame in another one, in one plane of each. Its place becomes the frame's standard
/// centre.
Fit FindShift(const io::Frame& first, int firstPlane, io::Frame& frame, int plane, const Registration& registration,
              const Run& run)
{
    CheckInside(first, registration.at);
    const CPoint at(static_cast<int>(registration.at[0]), static_cast<int>(registration.at[1]));
    const int reach = registration.range / 2;
    const stars::Patch patch(stars::PlaneOf(first.image, firstPlane), at, registration.size, reach,
                             stars::PatchLight::kAny);
    CheckSeen(patch.ShowsObject(), first, at, registration.size / 2);
    Fit fit{0.0, 0.0, 0.0, 1};
    const auto take = [&](const stars::PatchPlace& place) {
        fit.dx = place.dx;
        fit.dy = place.dy;
        return false;
    };
    const int places = patch.Find(stars::PlaneOf(frame.image, plane), take, run);
    CheckSeen(places > 0, frame, at, registration.size / 2 + reach);
    if (std::max(std::fabs(fit.dx), std::fabs(fit.dy)) >= reach) {
        throw FileError(frame.image.GetOrgFileName(),
                        "the star is not within range = " + std::to_string(registration.range) + " of its place in " +
                            first.image.GetOrgFileName() + ": the best match lies at the edge");
    }
    frame.image.SetStdCtr(at.x - fit.dx, at.y - fit.dy);
    return fit;
}

Fit FitOfOther(std::vector<io::Frame>& frames, std::size_t i, const std::vector<int>& planes,
               const Registration& registration, const Run& run)
{
    const Placement placement = PlacementOf(registration, i);
    if (!IsBy(registration, "shift")) {
        return FitOnto(frames[0], frames[i], placement);
    }
    Fit fit = FindShift(frames[0], planes[0], frames[i], planes[i], registration, run);
    fit.dx += placement.dx;
    fit.dy += placement.dy;
    fit.angle = placement.angle;
    return fit;
}

} // namespace

std::vector<Parameter> RegistrationParameters(const std::vector<Parameter>& own, const std::vector<std::string>& names)
{
    std::vector<Parameter> parameters{
        {.name = "align",
         .kind = Kind::Choice,
         .summary = "how the frames are brought onto " + names[0] +
                    ": shift looks for a star, points measures stars that are pointed at",
         .choices = {"none", "shift", "points"},
         .defaultValue = std::string("none")},
        {.name = "at",
         .kind = Kind::Numbers,
         .summary = "align = shift: roughly where the star is in " + names[0],
         .unit = "pixels",
         .min = 0.0,
         .max = kMaxShift,
         .choices = {"X,Y"},
         .whenAbsent = "none"},
        SquareParameter("size", "align = shift: side of the square about the star that is looked for", kMinPatch,
                        kMaxPatch, kDefaultPatch),
        SquareParameter("range", "align = shift: width of the square that is searched", kMinSearch, kMostSearch,
                        kDefaultSearch),
        BoxParameter()};
    for (std::size_t i = 0; i < names.size(); ++i) {
        parameters.push_back(PointsParameter(NameFor("points", i),
                                             "align = points: roughly where " +
                                                 std::string(i == 0 ? "one star, or two, are" : "the same stars are") +
                                                 " in " + names[i]));
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        parameters.push_back(ShiftParameter(i, names[i]));
        parameters.push_back(AngleParameter(NameFor("angle", i), "turn of " + names[i]));
    }
    parameters.insert(parameters.end(), own.begin(), own.end());
    return parameters;
}

void CheckRegistration(const Arguments& arguments, std::size_t frames)
{
    const std::string& align = arguments.Text("align");
    if ((align == "shift") != arguments.Has("at")) {
        throw arguments.Refusal("at", "belongs to align = shift, which needs it");
    }
    for (std::size_t i = 0; i < frames; ++i) {
        const std::string points = NameFor("points", i);
        if ((align == "points") != arguments.Has(points)) {
            throw arguments.Refusal(points, "belongs to align = points, which needs it");
        }
        if (NumbersOf(arguments, points).size() != NumbersOf(arguments, "points").size()) {
            throw arguments.Refusal(points, "must name the same stars as points, one or two");
        }
    }
}

Registration RegistrationOf(const Arguments& arguments, std::size_t frames)
{
    Registration registration{.align = arguments.Text("align"),
                              .at = NumbersOf(arguments, "at"),
                              .size = arguments.Whole("size"),
                              .range = arguments.Whole("range"),
                              .box = arguments.Whole("box")};
    for (std::size_t i = 0; i < frames; ++i) {
        registration.frames.push_back({NumbersOf(arguments, NameFor("shift", i)), arguments.Number(NameFor("angle", i)),
                                       NumbersOf(arguments, NameFor("points", i))});
    }
    return registration;
}

std::vector<Fit> FitFrames(std::vector<io::Frame>& frames, const std::vector<int>& planes,
                           const Registration& registration, const Run& run)
{
    Registration inOrder = registration;
    std::vector<Fit> fits(1);
    for (std::size_t i = 1; i < frames.size(); ++i) {
        BringToOrderOf(frames[0], frames[i], run, &inOrder.frames[i].points);
        fits.push_back(FitOfOther(frames, i, planes, inOrder, run));
    }
    fits[0] = FitOfFirst(frames[0], registration);
    return fits;
}

} // namespace corvane::catalogue
