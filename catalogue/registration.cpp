#include "catalogue/registration.h"

#include <algorithm>
#include <cmath>

#include "catalogue/match.h"
#include "catalogue/names.h"
#include "catalogue/numbers.h"
#include "catalogue/row_order.h"
#include "corvane/core/error.h"
#include "corvane/core/run.h"
#include "stars/patch.h"
#include "stars/plane_of.h"

namespace corvane::catalogue {
namespace {

bool IsBy(const Registration& registration, const char* word)
{
    return registration.align == word;
}

void CheckPlaces(const Registration& registration)
{
    for (std::size_t i = 0; i < registration.frames.size(); ++i) {
        const FramePlace& place = registration.frames[i];
        const std::string option = FrameOption("--shift", i);
        if (!place.shift.empty() && place.shift.size() != 2) {
            throw ParameterError(option + " = " + NumbersText(place.shift) + ": must be DX,DY");
        }
        for (const double v : place.shift) {
            CheckRange(option, v, -kMaxShift, kMaxShift);
        }
        CheckRange(FrameOption("--angle", i), place.angle, -kMaxTurn, kMaxTurn);
        if (!place.points.empty() && !IsBy(registration, "points")) {
            throw ParameterError(FrameOption("--points", i) + " needs --align points");
        }
    }
}

void CheckStar(const Registration& registration)
{
    const std::vector<double>& at = registration.at;
    if (IsBy(registration, "shift") == at.empty()) {
        throw ParameterError(
            "--align shift and --at belong together: X,Y is about where the star is in the first frame");
    }
    if (!at.empty() && at.size() != 2) {
        throw ParameterError("--at = " + NumbersText(at) + ": must be X,Y");
    }
    for (const double v : at) {
        CheckRange("--at", v, 0.0, kMaxShift);
    }
    CheckRange("--size", registration.size, kMinPatch, kMaxPatch);
    CheckRange("--range", registration.range, kMinSearch, kMaxMatchRange);
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

void CheckPoints(const Registration& registration)
{
    CheckRange("--box", registration.box, kMinBox, kMaxBox);
    if (!IsBy(registration, "points")) {
        return;
    }
    if (registration.frames[0].points.empty()) {
        throw ParameterError("--align points needs --points, and the same stars in the other frames");
    }
    for (std::size_t i = 1; i < registration.frames.size(); ++i) {
        CheckPlacement(PlacementOf(registration, i), FrameOption("--points", i));
    }
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
        throw FileError(image.GetOrgFileName(), "--at = " + NumbersText(at) + ": must lie within the image, of " +
                                                    std::to_string(image.GetWidth()) + " x " +
                                                    std::to_string(image.GetHeight()) + " pixels");
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
                        "the star is not within --range = " + std::to_string(registration.range) + " of its place in " +
                            first.image.GetOrgFileName() + ": the best match lies at the edge");
    }
    frame.image.SetStdCtr(at.x - fit.dx, at.y - fit.dy);
    return fit;
}

Fit FitOfOther(std::vector<io::Frame>& frames, std::size_t i, const std::vector<int>& planes,
               const Registration& registration, const Context& context)
{
    const Placement placement = PlacementOf(registration, i);
    if (!IsBy(registration, "shift")) {
        return FitOnto(frames[0], frames[i], placement);
    }
    const Run run = WindowRun(frames[i].image, context.showProgress);
    Fit fit = FindShift(frames[0], planes[0], frames[i], planes[i], registration, run);
    fit.dx += placement.dx;
    fit.dy += placement.dy;
    fit.angle = placement.angle;
    return fit;
}

} // namespace

const std::vector<std::string>& AlignWords()
{
    static const std::vector<std::string> words = {"none", "shift", "points"};
    return words;
}

std::string FrameOption(const std::string& name, std::size_t frame)
{
    return name == "--points" && frame == 0 ? name : name + std::to_string(frame + 1);
}

void CheckRegistration(const Registration& registration)
{
    CheckWord("--align", registration.align, AlignWords());
    CheckPlaces(registration);
    CheckStar(registration);
    CheckPoints(registration);
}

std::vector<Fit> FitFrames(std::vector<io::Frame>& frames, const std::vector<int>& planes,
                           const Registration& registration, const Context& context)
{
    Registration inOrder = registration;
    std::vector<Fit> fits(1);
    for (std::size_t i = 1; i < frames.size(); ++i) {
        BringToOrderOf(frames[0], frames[i], context, &inOrder.frames[i].points);
        fits.push_back(FitOfOther(frames, i, planes, inOrder, context));
    }
    fits[0] = FitOfFirst(frames[0], registration);
    return fits;
}

std::string ToText(const Registration& registration)
{
    std::string text = IsBy(registration, "none") ? "" : " --align " + registration.align;
    const auto add = [&](const std::string& option, const std::vector<double>& numbers) {
        text += numbers.empty() ? "" : " " + option + " " + NumbersText(numbers);
    };
    add("--at", registration.at);
    if (IsBy(registration, "shift")) {
        text += " --size " + std::to_string(registration.size) + " --range " + std::to_string(registration.range);
    }
    for (std::size_t i = 0; i < registration.frames.size(); ++i) {
        const FramePlace& place = registration.frames[i];
        add(FrameOption("--points", i), place.points);
        add(FrameOption("--shift", i), place.shift);
        add(FrameOption("--angle", i), place.angle == 0.0 ? std::vector<double>() : std::vector{place.angle});
    }
    text += IsBy(registration, "points") ? " --box " + std::to_string(registration.box) : "";
    return text;
}

} // namespace corvane::catalogue
