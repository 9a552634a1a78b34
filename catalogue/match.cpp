#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/operations.h"
#include "catalogue/placement.h"
#include "catalogue/row_order.h"
#include "corvane/combine/cut_out_search.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"

namespace corvane::catalogue {
namespace {

constexpr double kLeastLead =
    0.25; // over another place, on the scale of Judge; 11 of 171 cut-outs of other fields pass it

constexpr int kDefaultRange = 64; // [pixels]
// Two single, noisy frames of one field may have less; but a star is like any other, and no place is better than a
// wrong one.
constexpr double kLeastCorrelation = 0.7;

double Tenths(double v)
{
    return std::round(v * 10.0) / 10.0 + 0.0; // no -0
}

std::string SizeOf(const CStlImage& image)
{
    return SizeText(image.GetWidth(), image.GetHeight());
}

void CheckPair(const CStlImage& reference, const CStlImage& image)
{
    const int planes = reference.GetPlanes();
    if (planes != image.GetPlanes()) {
        throw InputError("reference", "has " + std::to_string(planes) + (planes == 1 ? " plane" : " planes") +
                                          "; the image has " + std::to_string(image.GetPlanes()));
    }
    if (reference.GetWidth() > image.GetWidth() || reference.GetHeight() > image.GetHeight()) {
        throw InputError("reference", "is " + SizeOf(reference) + ", larger than the image, which is " + SizeOf(image));
    }
}

/// "200.3,41"
std::string PlaceText(const CutOutPlace& place)
{
    return ToText(Value(Tenths(place.x))) + "," + ToText(Value(Tenths(place.y)));
}

/// Two stars are alike in any field: one place must fit clearly better than the others do. How much better is told on
/// the scale on which correlations scatter evenly (R. A. Fisher, On the "probable error" of a coefficient of
/// correlation deduced from a small sample, Metron 1, 1921).
void Judge(const CutOutPlace& found, double least)
{
    const double lead = std::atanh(found.correlation) - std::atanh(found.rival);
    const bool isAlone = lead >= kLeastLead; // not where both have 1
    if (found.correlation < least) {
        throw InputError("reference", "is not in the image: the best place, " + PlaceText(found) +
                                          ", has a correlation of " + NumberText(found.correlation, 3) + ", and " +
                                          ToText(Value(least)) + " is needed");
    }
    if (!isAlone) {
        throw InputError("reference", "is not to be told apart in the image: " + PlaceText(found) +
                                          " has a correlation of " + NumberText(found.correlation, 3) +
                                          ", and another place " + NumberText(found.rival, 3) +
                                          "; a larger cut-out may, or start and range");
    }
}

/// The places to try along one axis, end exclusive.
struct Places {
    int begin;
    int end;
};

Places PlacesAlong(int size, int imageSize, std::optional<double> start, int range)
{
    const int all = imageSize - size + 1;
    if (!start) {
        return {0, all};
    }
    const int half = range / 2;
    const int middle = static_cast<int>(std::lround(*start));
    return {std::max(middle - half, 0), std::min(middle + half + 1, all)};
}

CRect PlacesIn(const CStlImage& reference, const CStlImage& image, const Arguments& arguments)
{
    const int range = arguments.Has("range") ? arguments.Whole("range") : kDefaultRange;
    const auto start = [&](std::size_t axis) {
        return arguments.Has("start") ? std::optional(arguments.Numbers("start")[axis]) : std::nullopt;
    };
    const Places columns = PlacesAlong(reference.GetWidth(), image.GetWidth(), start(0), range);
    const Places rows = PlacesAlong(reference.GetHeight(), image.GetHeight(), start(1), range);
    if (columns.begin >= columns.end || rows.begin >= rows.end) {
        throw InputError("reference", "lies whole in the image nowhere in the range");
    }
    return {columns.begin, rows.begin, columns.end, rows.end};
}

void CheckMatch(const Arguments& arguments)
{
    if (arguments.Has("range") && !arguments.Has("start")) {
        throw arguments.Refusal("range", "needs start, about which it lies; without both the whole image is searched");
    }
}

Outputs RunMatch(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    io::Frame& reference = inputs["reference"].front();
    const io::Frame& image = inputs["image"].front();
    CheckPair(reference.image, image.image);
    BringToOrderOf(image, reference, run);
    const CRect places = PlacesIn(reference.image, image.image, arguments);
    const std::optional<CutOutPlace> found = FindCutOut(reference.image, image.image, places, run);
    if (!found) {
        throw InputError("reference",
                         "cannot be compared: it or what lies there is flat, or less than half of it is defined");
    }
    Judge(*found, arguments.Number("least"));
    return {
        {"place", Table{.columns = {{"x"}, {"y"}, {"correlation"}, {"rms"}, {"rival"}},
                        .rows = {{Tenths(found->x), Tenths(found->y), found->correlation, found->rms, found->rival}}}}};
}

std::vector<Parameter> MatchParameters()
{
    return {
        {.name = "start",
         .kind = Kind::Numbers,
         .summary = "where the first sample of REFERENCE is expected in IMAGE",
         .unit = "pixels",
         .min = -kMaxShift,
         .max = kMaxShift,
         .choices = {"X,Y"},
         .whenAbsent = "it is looked for everywhere"},
        WholeParameter("range", "with start: width of the square that is searched about it", "pixels", {0.0, 1024.0},
                       std::to_string(kDefaultRange)),
        NumberParameter("least", "the least correlation that is taken for a match", "", {0.0, 1.0}, kLeastCorrelation)};
}

} // namespace

std::vector<Operation> MatchOperations()
{
    return {{.name = "match",
             .summary = "find where a cut-out lies in an image",
             .help = "Tells the column and row of IMAGE on which the first sample of REFERENCE falls, to a tenth of a "
                     "pixel; the correlation, which is 1 where the two differ by pedestal and gain alone, and about 0 "
                     "where they have nothing in common; the difference that is left (rms), in the units of IMAGE; and "
                     "the correlation of the best other place (rival): where it is nearly as good, nothing is found. "
                     "REFERENCE must lie whole in IMAGE. Undefined samples take no part.",
             .inputs = {{.name = "reference", .summary = "the cut-out to find"},
                        {.name = "image", .summary = "the image to find it in"}},
             .parameters = MatchParameters(),
             .outputs = {{.name = "place", .kind = OutputKind::Numbers, .summary = "x, y, correlation, rms, rival"}},
             .check = CheckMatch,
             .run = RunMatch}};
}

} // namespace corvane::catalogue
