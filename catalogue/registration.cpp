#include "catalogue/registration.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "catalogue/names.h"
#include "catalogue/onto_grid.h"
#include "catalogue/row_order.h"
#include "corvane/core/error.h"
#include "corvane/core/run.h"
#include "corvane/core/text.h"
#include "stars/find_stars.h"
#include "stars/patch.h"
#include "stars/place_field.h"
#include "stars/plane_of.h"

namespace corvane::catalogue {
namespace {

bool IsBy(const Registration& registration, const char* word)
{
    return registration.align == word;
}

constexpr int kMostSearch = 1024; // [pixels]
constexpr std::size_t kLeastStars = 3;
constexpr const char* kOtherwise = "; align = none takes frames as they lie";

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

/// The stars of one plane. Throws Error when there are too few to tell a place by.
std::vector<stars::FieldStar> StarsOf(const io::Frame& frame, int plane, const Run& run)
{
    std::vector<stars::FieldStar> stars = stars::FindFieldStars(frame.image, plane, {}, run).stars;
    if (stars.size() < kLeastStars) {
        throw FileError(frame.image.GetOrgFileName(), "shows " + std::to_string(stars.size()) +
                                                          (stars.size() == 1 ? " star" : " stars") +
                                                          ", and it takes 3 to align by" + kOtherwise);
    }
    return stars;
}

/// Matches the stars of a frame with those of the first.
Fit MatchStars(const io::Frame& first, const std::vector<stars::FieldStar>& firstStars, io::Frame& frame, int plane,
               const Run& run)
{
    const auto stars = StarsOf(frame, plane, run);
    frame.image.SetDefaultCenter();
    const stars::FieldPlace place =
        stars::PlaceField({firstStars, first.image.GetWidth(), first.image.GetHeight()},
                          {stars, frame.image.GetWidth(), frame.image.GetHeight()}, frame.image.GetStdCtr(), run);
    const stars::FieldMatch& match = place.match;
    if (!match.reason.empty()) {
        throw FileError(frame.image.GetOrgFileName(), std::string("cannot be placed on ") +
                                                          first.image.GetOrgFileName() +
                                                          " by its stars: " + match.reason + kOtherwise);
    }
    return {match.dx, match.dy, match.angle, place.stars, match.scale, place.isBent, place.mapping};
}

/// The same fit, moved by hand.
Fit MovedByHand(Fit fit, const Placement& byHand)
{
    fit.dx += byHand.dx;
    fit.dy += byHand.dy;
    fit.angle += byHand.angle;
    return fit;
}

} // namespace

std::vector<Parameter> RegistrationParameters(const std::vector<Parameter>& own, const std::vector<std::string>& names)
{
    std::vector<Parameter> parameters{
        {.name = "align",
         .kind = Kind::Choice,
         .summary = "how the frames are brought onto " + names[0] +
                    ": stars matches all stars, shift looks for one, points measures stars that are pointed at",
         .choices = {"stars", "none", "shift", "points"},
         .whenAbsent = "stars; none where a shift, a turn or a scale is given by hand"},
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

Parameter StarsOrNone(const std::string& first)
{
    return ChoiceParameter("align", "how the others are brought onto " + first + ": by their stars, or as they lie",
                           {"stars", "none"}, "stars");
}

std::string AlignmentOf(const Arguments& arguments, std::size_t frames)
{
    bool isByHand = std::any_of(arguments.List().begin(), arguments.List().end(), [](const Argument& argument) {
        return argument.parameter->name == "scale" && std::get<double>(argument.value) != 1.0;
    });
    for (std::size_t i = 0; i < frames; ++i) {
        isByHand |= arguments.Has(NameFor("shift", i)) || arguments.Number(NameFor("angle", i)) != 0.0;
    }
    return arguments.Has("align") ? arguments.Text("align") : isByHand ? "none" : "stars";
}

void CheckRegistration(const Arguments& arguments, std::size_t frames)
{
    const std::string align = AlignmentOf(arguments, frames);
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
    Registration registration{.align = AlignmentOf(arguments, frames),
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

Registration RegistrationBy(const std::string& align, std::size_t frames)
{
    return {.align = align, .frames = std::vector<FramePlace>(frames)};
}

std::vector<Fit> FitFrames(std::vector<io::Frame>& frames, const std::vector<int>& planes,
                           const Registration& registration, const Run& run)
{
    Registration inOrder = registration;
    const bool isByStars = IsBy(registration, "stars");
    const auto stars = isByStars ? StarsOf(frames[0], planes[0], run) : std::vector<stars::FieldStar>();
    std::vector<Fit> fits(1);
    for (std::size_t i = 1; i < frames.size(); ++i) {
        BringToOrderOf(frames[0], frames[i], run, &inOrder.frames[i].points);
        const Placement byHand = PlacementOf(inOrder, i);
        if (isByStars) {
            fits.push_back(MovedByHand(MatchStars(frames[0], stars, frames[i], planes[i], run), byHand));
        } else if (IsBy(registration, "shift")) {
            fits.push_back(MovedByHand(FindShift(frames[0], planes[0], frames[i], planes[i], inOrder, run), byHand));
        } else {
            fits.push_back(FitOnto(frames[0], frames[i], byHand));
        }
    }
    fits[0] = FitOfFirst(frames[0], registration);
    return fits;
}

Mapping MappingOf(const Fit& fit, const io::Frame& frame)
{
    return fit.map ? *fit.map : Mapping(Alignment::Turned(fit.dx, fit.dy, fit.angle, frame.image.GetStdCtr()));
}

Fit BringOnto(const io::Frame& first, io::Frame& frame, const Fit& fit, const FramePlace& byHand,
              const std::vector<double>& outside, const Run& run)
{
    if (!fit.map) {
        return fit;
    }
    frame.image = OntoGrid(frame.image, *fit.map, first.image.GetWidth(), first.image.GetHeight(), outside, run);
    return {byHand.shift.empty() ? 0.0 : byHand.shift[0], byHand.shift.empty() ? 0.0 : byHand.shift[1], byHand.angle,
            fit.stars};
}

} // namespace corvane::catalogue
