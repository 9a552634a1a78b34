#include "catalogue/match.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "catalogue/numbers.h"
#include "catalogue/placement.h"
#include "catalogue/row_order.h"
#include "corvane/combine/cut_out_search.h"
#include "corvane/core/error.h"
#include "corvane/core/run.h"

namespace corvane::catalogue {
namespace {

constexpr double kLeastLead =
    0.25; // over another place, on the scale of Judge; 11 of 171 cut-outs of other fields pass it

double Tenths(double v)
{
    return std::round(v * 10.0) / 10.0 + 0.0; // no -0
}

std::string SizeText(const CStlImage& image)
{
    return std::to_string(image.GetWidth()) + " x " + std::to_string(image.GetHeight());
}

std::string CorrelationText(double correlation)
{
    char text[16];
    std::snprintf(text, sizeof text, "%.3f", correlation);
    return text;
}

void CheckPair(const CStlImage& reference, const CStlImage& image)
{
    const char* const file = reference.GetOrgFileName();
    const int planes = reference.GetPlanes();
    if (planes != image.GetPlanes()) {
        throw FileError(file, "has " + std::to_string(planes) + (planes == 1 ? " plane" : " planes") +
                                  "; the image has " + std::to_string(image.GetPlanes()));
    }
    if (reference.GetWidth() > image.GetWidth() || reference.GetHeight() > image.GetHeight()) {
        throw FileError(file, "is " + SizeText(reference) + ", larger than the image, which is " + SizeText(image));
    }
}

/// "200.3,41"
std::string PlaceText(const CutOutPlace& place)
{
    return ToText(Value(Tenths(place.x))) + "," + ToText(Value(Tenths(place.y)));
}

/// Two stars are alike in any field: one place must fit clearly better than the others do. How much better is told on
/// the scale on which correlations scatter evenly (R. A. Fisher, On the "probable error" of a coefficient of correlation
/// deduced from a small sample, Metron 1, 1921).
void Judge(const CutOutPlace& found, const char* file, double least)
{
    const double lead = std::atanh(found.correlation) - std::atanh(found.rival);
    const bool isAlone = lead >= kLeastLead; // not where both have 1
    if (found.correlation < least) {
        throw FileError(file, "is not in the image: the best place, " + PlaceText(found) + ", has a correlation of " +
                                  CorrelationText(found.correlation) + ", and " + ToText(Value(least)) + " is needed");
    }
    if (!isAlone) {
        throw FileError(file, "is not to be told apart in the image: " + PlaceText(found) + " has a correlation of " +
                                  CorrelationText(found.correlation) + ", and another place " +
                                  CorrelationText(found.rival) + "; a larger cut-out may, or --start and --range");
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

CRect PlacesIn(const CStlImage& reference, const CStlImage& image, const MatchOptions& options)
{
    const auto start = [&](std::size_t axis) {
        return options.start ? std::optional((*options.start)[axis]) : std::nullopt;
    };
    const Places columns = PlacesAlong(reference.GetWidth(), image.GetWidth(), start(0), options.range);
    const Places rows = PlacesAlong(reference.GetHeight(), image.GetHeight(), start(1), options.range);
    if (columns.begin >= columns.end || rows.begin >= rows.end) {
        throw FileError(reference.GetOrgFileName(), "lies whole in the image nowhere in the range");
    }
    return {columns.begin, rows.begin, columns.end, rows.end};
}

} // namespace

void CheckMatch(const MatchOptions& options)
{
    for (const double v : options.start.value_or(std::array{0.0, 0.0})) {
        CheckRange("--start", v, -kMaxShift, kMaxShift);
    }
    CheckRange("--range", options.range, 0.0, kMaxMatchRange);
    CheckRange("--least", options.least, 0.0, 1.0);
}

Match RunMatch(io::Frame& reference, io::Frame& image, const MatchOptions& options, const Context& context)
{
    CheckMatch(options);
    CheckPair(reference.image, image.image);
    BringToOrderOf(image, reference, context);
    const CRect places = PlacesIn(reference.image, image.image, options);
    const std::optional<CutOutPlace> found =
        FindCutOut(reference.image, image.image, places, WindowRun(image.image, context.showProgress, Escape::kEnds));
    const char* const file = reference.image.GetOrgFileName();
    if (!found) {
        throw FileError(file, "cannot be compared: it or what lies there is flat, or less than half of it is defined");
    }
    Judge(*found, file, options.least);
    return {Tenths(found->x), Tenths(found->y), found->correlation, found->rms, found->rival};
}

} // namespace corvane::catalogue
