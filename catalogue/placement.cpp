#include "catalogue/placement.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "catalogue/numbers.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "corvane/core/turn.h"

namespace corvane::catalogue {
namespace {

constexpr int kRounds = 2;            // the box is put around the star itself in the second one
constexpr double kMostStretch = 0.01; // of the distance of two stars
constexpr double kMostOff = 1.5;      // pixels by which it may be off besides

Parameter ShiftParameter(const char* name, const char* direction)
{
    return NumberParameter(name, std::string("shift ") + direction + ", on top of what stars say", "pixels",
                           {-kMaxShift, kMaxShift}, 0.0);
}

CfPoint StarAt(const std::vector<double>& points, std::size_t star)
{
    return {points[2 * star], points[2 * star + 1]};
}

/// The centroid of the star that is about there.
CfPoint Centroid(const io::Frame& frame, const CfPoint& about, int box)
{
    const CStlImage& image = frame.image;
    if (about.ix >= image.GetWidth() || about.iy >= image.GetHeight()) {
        throw FileError(image.GetOrgFileName(), "the star at " + NumbersText({about.x, about.y}) +
                                                    " must lie within the image, of " +
                                                    SizeText(image.GetWidth(), image.GetHeight()) + " pixels");
    }
    CfPoint centroid(about);
    for (int round = 0; round < kRounds; ++round) {
        const int left = static_cast<int>(std::floor(centroid.x + 0.5)) - box / 2;
        const int top = static_cast<int>(std::floor(centroid.y + 0.5)) - box / 2;
        CRect rect(left, top, left + box, top + box);
        image.GetCenterOfGravity(centroid.x, centroid.y, &rect);
    }
    return {centroid.x, centroid.y};
}

void SetStars(io::Frame& frame, const std::vector<double>& points, int box)
{
    for (std::size_t star = 0; star < points.size() / 2; ++star) {
        frame.image.SetStdPt(static_cast<int>(star), Centroid(frame, StarAt(points, star), box));
    }
}

/// From star 1 to star 0.
struct Line {
    double dx;
    double dy;

    explicit Line(const CStlImage& image)
        : dx(image.GetStdPt(0).x - image.GetStdPt(1).x), dy(image.GetStdPt(0).y - image.GetStdPt(1).y)
    {}

    double Length() const { return std::sqrt(dx * dx + dy * dy); }
    /// Degrees, counted upwards.
    double Direction() const { return corvane::Direction(-dy, dx) / kDegree; }
};

void CheckLines(const io::Frame& first, const io::Frame& second, int box)
{
    const double length = Line(first.image).Length();
    const double other = Line(second.image).Length();
    if (std::min(length, other) < box) {
        throw FileError(second.image.GetOrgFileName(), "the two stars are " + NumberText(std::min(length, other), 2) +
                                                           " pixels apart; a turn needs stars that are at least one "
                                                           "box, " +
                                                           std::to_string(box) + " pixels, apart");
    }
    if (std::fabs(length - other) > kMostOff + kMostStretch * length) {
        throw FileError(second.image.GetOrgFileName(), "the two stars are " + NumberText(other, 2) +
                                                           " pixels apart here, but " + NumberText(length, 2) + " in " +
                                                           first.image.GetOrgFileName() +
                                                           ": not the same stars, or not the same scale");
    }
}

/// -180 < angle <= 180
double Principal(double angle)
{
    return angle - 360.0 * std::ceil((angle - 180.0) / 360.0);
}

} // namespace

Parameter PointsParameter(const std::string& name, const std::string& summary)
{
    return {.name = name,
            .kind = Kind::Numbers,
            .summary = summary,
            .unit = "pixels",
            .min = 0.0,
            .max = kMaxShift,
            .choices = {"X,Y", "X1,Y1,X2,Y2"},
            .whenAbsent = "none"};
}

Parameter AngleParameter(const std::string& name, const std::string& summary)
{
    return NumberParameter(name, summary + ", clockwise where the first row is the top, on top of what stars say",
                           "degrees", {-kMaxTurn, kMaxTurn}, 0.0);
}

Parameter BoxParameter()
{
    return WholeParameter("box", "side of the square in which a star's centre is measured", "pixels",
                          {kMinBox, kMaxBox}, kDefaultBox);
}

std::vector<Parameter> PlacementParameters(std::vector<Parameter> own, const char* secondPoints,
                                           const std::string& first, const std::string& second)
{
    const std::vector<Parameter> placement{
        {.name = "align",
         .kind = Kind::Choice,
         .summary = "points: find shift and turn from stars",
         .choices = {"none", "points"},
         .whenAbsent = "points where stars are given"},
        PointsParameter("points", "roughly where one star, or two, are in " + first),
        PointsParameter(secondPoints, "roughly where the same stars are in " + second),
        BoxParameter(),
        ShiftParameter("dx", "to the right"),
        ShiftParameter("dy", "downwards"),
        AngleParameter("angle", "turn")};
    own.insert(own.end(), placement.begin(), placement.end());
    return own;
}

void CheckPlacement(const Arguments& arguments, const char* secondPoints)
{
    const auto count = [&](const char* points) { return arguments.Has(points) ? arguments.Numbers(points).size() : 0; };
    if (arguments.Has("align") && (arguments.Text("align") == "points") != arguments.Has("points")) {
        throw arguments.Refusal("align", arguments.Has("points")
                                             ? "points are given, which need align = points"
                                             : "needs points, and the same stars in the other image");
    }
    if (count("points") != count(secondPoints)) {
        throw arguments.Refusal(secondPoints, "must name the same stars as points, one or two");
    }
}

Placement PlacementOf(const Arguments& arguments, const char* secondPoints)
{
    const auto numbers = [&](const char* name) {
        return arguments.Has(name) ? arguments.Numbers(name) : std::vector<double>();
    };
    return {.dx = arguments.Number("dx"),
            .dy = arguments.Number("dy"),
            .angle = arguments.Number("angle"),
            .points = numbers("points"),
            .secondPoints = numbers(secondPoints),
            .box = arguments.Whole("box")};
}

Fit FitOnto(io::Frame& first, io::Frame& second, const Placement& placement)
{
    Fit fit{placement.dx, placement.dy, placement.angle, 0};
    second.image.SetDefaultCenter();
    if (!placement.IsByStars()) {
        return fit;
    }
    first.image.InitStdPt();
    second.image.InitStdPt();
    SetStars(first, placement.points, placement.box);
    SetStars(second, placement.secondPoints, placement.box);
    if (placement.points.size() > 2) {
        CheckLines(first, second, placement.box);
    }
    fit.stars =
        first.image.GetFitPrm(&second.image, fit.dx, fit.dy, fit.angle, placement.dx, placement.dy, placement.angle);
    // GetFitPrm takes the turn between whole pixels and rounds it down to a tenth of a degree.
    const double turn = fit.stars == 2 ? Line(second.image).Direction() - Line(first.image).Direction() : 0.0;
    fit.angle = Principal(turn + placement.angle);
    return fit;
}

std::string ToText(const Fit& fit)
{
    const std::string stars = fit.stars == 1 ? "1 star" : std::to_string(fit.stars) + " stars";
    return "aligned by " + stars + ": dx " + NumberText(fit.dx, 3) + ", dy " + NumberText(fit.dy, 3) + ", angle " +
           NumberText(fit.angle, 4) + (fit.scale == 1.0 ? "" : ", scale " + NumberText(fit.scale, 5)) +
           (fit.isBent ? ", and bent" : "");
}

Table TableOf(const std::vector<Fit>& fits)
{
    Table table{.columns = {{"dx"}, {"dy"}, {"angle"}, {"stars", 0}, {"scale"}}};
    for (const Fit& fit : fits) {
        table.rows.push_back({fit.dx, fit.dy, fit.angle, static_cast<double>(fit.stars), fit.scale});
    }
    return table;
}

std::vector<Fit> FitsOf(const Table& table)
{
    std::vector<Fit> fits;
    for (const std::vector<Cell>& row : table.rows) {
        const auto number = [&](std::size_t column) { return std::get<double>(row[column]); };
        fits.push_back({number(0), number(1), number(2), static_cast<int>(number(3)), number(4)});
    }
    return fits;
}

std::vector<Output> PairOutputs()
{
    return {Output{},
            {.name = "fit",
             .kind = OutputKind::Numbers,
             .summary = "where the second image lies on the first: dx, dy, angle; and by how many stars it is known"}};
}

Outputs PairOutputs(io::Frame& image, const Fit& fit)
{
    if (fit.stars > 0) {
        image.header.AddHistory(ToText(fit));
    }
    Outputs outputs;
    outputs.emplace("image", std::move(image));
    outputs.emplace("fit", TableOf({fit}));
    return outputs;
}

} // namespace corvane::catalogue
