#include "catalogue/placement.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "catalogue/numbers.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/error.h"
#include "corvane/core/turn.h"

namespace corvane::catalogue {
namespace {

constexpr int kRounds = 2;            // the box is put around the star itself in the second one
constexpr double kMostStretch = 0.01; // of the distance of two stars
constexpr double kMostOff = 1.5;      // pixels by which it may be off besides

void CheckPoints(const std::string& option, const std::vector<double>& points)
{
    if (!points.empty() && points.size() != 2 && points.size() != 4) {
        throw ParameterError(option + " = " + NumbersText(points) + ": must be X,Y or X1,Y1,X2,Y2");
    }
    for (const double v : points) {
        CheckRange(option, v, 0.0, kMaxShift);
    }
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
        throw FileError(image.GetOrgFileName(),
                        "the star at " + NumbersText({about.x, about.y}) + " must lie within the image, of " +
                            std::to_string(image.GetWidth()) + " x " + std::to_string(image.GetHeight()) + " pixels");
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

std::string Rounded(double v, const char* format = "%.2f")
{
    char text[32];
    std::snprintf(text, sizeof text, format, v);
    return text;
}

void CheckLines(const io::Frame& first, const io::Frame& second, int box)
{
    const double length = Line(first.image).Length();
    const double other = Line(second.image).Length();
    if (std::min(length, other) < box) {
        throw FileError(second.image.GetOrgFileName(), "the two stars are " + Rounded(std::min(length, other)) +
                                                           " pixels apart; a turn needs stars that are at least one "
                                                           "box, " +
                                                           std::to_string(box) + " pixels, apart");
    }
    if (std::fabs(length - other) > kMostOff + kMostStretch * length) {
        throw FileError(second.image.GetOrgFileName(),
                        "the two stars are " + Rounded(other) + " pixels apart here, but " + Rounded(length) + " in " +
                            first.image.GetOrgFileName() + ": not the same stars, or not the same scale");
    }
}

/// -180 < angle <= 180
double Principal(double angle)
{
    return angle - 360.0 * std::ceil((angle - 180.0) / 360.0);
}

} // namespace

void CheckPlacement(const Placement& placement, const std::string& secondOption)
{
    CheckRange("--dx", placement.dx, -kMaxShift, kMaxShift);
    CheckRange("--dy", placement.dy, -kMaxShift, kMaxShift);
    CheckRange("--angle", placement.angle, -kMaxTurn, kMaxTurn);
    CheckRange("--box", placement.box, kMinBox, kMaxBox);
    CheckPoints("--points", placement.points);
    CheckPoints(secondOption, placement.secondPoints);
    if (placement.points.size() != placement.secondPoints.size()) {
        throw ParameterError("--points = " + NumbersText(placement.points) + ", " + secondOption + " = " +
                             NumbersText(placement.secondPoints) + ": both must name the same stars, one or two");
    }
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

std::string ToText(const Placement& placement, const std::string& secondOption)
{
    std::string text;
    const auto add = [&](const std::string& option, double value, double unset) {
        text += value == unset ? "" : " " + option + " " + ToText(Value(value));
    };
    if (placement.IsByStars()) {
        text += " --points " + NumbersText(placement.points) + " " + secondOption + " " +
                NumbersText(placement.secondPoints);
        add("--box", placement.box, kDefaultBox);
    }
    add("--dx", placement.dx, 0.0);
    add("--dy", placement.dy, 0.0);
    add("--angle", placement.angle, 0.0);
    return text;
}

std::string ToText(const Fit& fit)
{
    const std::string stars = fit.stars == 1 ? "1 star" : std::to_string(fit.stars) + " stars";
    return "aligned by " + stars + ": dx " + Rounded(fit.dx, "%.3f") + ", dy " + Rounded(fit.dy, "%.3f") + ", angle " +
           Rounded(fit.angle, "%.4f");
}

void AddHistory(const std::string& command, const Fit& fit, io::Header& header)
{
    header.AddHistory(command);
    if (fit.stars > 0) {
        header.AddHistory(ToText(fit));
    }
}

} // namespace corvane::catalogue
