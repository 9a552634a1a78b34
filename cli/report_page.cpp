#include "cli/report_page.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>
#include <vector>

#include "cli/report_pictures.h"
#include "cli/svg.h"
#include "corvane/core/text.h"
#include "stack/names.h"

namespace corvane::cli {
namespace {

using stack::FrameReport;

constexpr Rgb kUsed{45, 75, 155};
constexpr Rgb kLeftOut{215, 65, 45};
constexpr Rgb kDark{60, 60, 60};
constexpr Rgb kPale{225, 225, 225};

constexpr double kLeft = 70.0;
constexpr double kTop = 34.0;
constexpr double kMargin = 30.0; // right of a plot, and below it for its labels
constexpr double kRadius = 3.5;

/// A point of a plot.
struct Point {
    double x;
    double y;
    bool isUsed;
    std::string hint;
};

/// What an axis shows.
struct Axis {
    std::string name;
    double low = 0.0;
    double high = 1.0;

    /// An axis that holds some values with room on both sides.
    Axis(std::string title, std::vector<double> values) : name(std::move(title))
    {
        std::erase_if(values, [](double v) { return !std::isfinite(v); });
        if (!values.empty()) {
            const auto [least, most] = std::minmax_element(values.begin(), values.end());
            const double room = std::max((*most - *least) * 0.05, std::max(std::fabs(*most) * 1e-3, 1e-3));
            low = *least - room;
            high = *most + room;
        }
    }

    double Part(double v) const { return (v - low) / (high - low); }
    double Step() const { return NiceStep((high - low) / 5.0); }
    /// Calls visit(value, text) for the marks of the axis.
    template <class Visit>
    void ForEachMark(Visit visit) const
    {
        const int digits = std::max(-static_cast<int>(std::floor(std::log10(Step()) + 1e-9)), 0);
        const auto last = std::floor(high / Step());
        for (double i = std::ceil(low / Step()); i <= last; ++i) {
            visit(i * Step(), NumberText(i * Step() + 0.0, digits));
        }
    }
};

/// A plot of points, with lines between those that follow each other if they are joined.
struct Plot {
    std::string title;
    Axis x;
    Axis y;
    std::vector<Point> points;
    double width;
    double height;
    bool isJoined;

    double X(double v) const { return kLeft + x.Part(v) * width; }
    double Y(double v) const { return kTop + (1.0 - y.Part(v)) * height; }
};

void DrawAxes(const Plot& plot, Svg& svg)
{
    plot.y.ForEachMark([&](double value, const std::string& text) {
        svg.Line(kLeft, plot.Y(value), kLeft + plot.width, plot.Y(value), kPale);
        svg.Text(kLeft - 6.0, plot.Y(value) + 4.0, text, 11.0, Svg::Anchor::kEnd);
    });
    plot.x.ForEachMark([&](double value, const std::string& text) {
        svg.Line(plot.X(value), kTop, plot.X(value), kTop + plot.height, kPale);
        svg.Text(plot.X(value), kTop + plot.height + 15.0, text, 11.0, Svg::Anchor::kMiddle);
    });
    svg.Frame(kLeft, kTop, plot.width, plot.height, kDark);
    svg.Text(kLeft, kTop - 12.0, plot.title, 14.0);
    svg.Text(kLeft + plot.width / 2.0, kTop + plot.height + 32.0, plot.x.name, 12.0, Svg::Anchor::kMiddle);
}

std::string Draw(const Plot& plot)
{
    Svg svg(kLeft + plot.width + kMargin, kTop + plot.height + 1.5 * kMargin);
    DrawAxes(plot, svg);
    for (std::size_t i = 1; i < plot.points.size() && plot.isJoined; ++i) {
        const Point& from = plot.points[i - 1];
        const Point& to = plot.points[i];
        svg.Line(plot.X(from.x), plot.Y(from.y), plot.X(to.x), plot.Y(to.y), kPale);
    }
    for (const Point& point : plot.points) {
        svg.Disc(plot.X(point.x), plot.Y(point.y), kRadius, point.isUsed ? kUsed : kLeftOut, point.hint);
    }
    return svg.Finish();
}

template <class Value>
std::vector<double> Values(const std::vector<Point>& points, Value value)
{
    std::vector<double> values;
    std::transform(points.begin(), points.end(), std::back_inserter(values), value);
    return values;
}

/// Where the reference's middle lies in each light that is placed.
std::string DrawDrift(const stack::Registration& lights)
{
    std::vector<Point> points;
    for (const FrameReport& light : lights.frames) {
        if (light.used) {
            points.push_back({light.dx, light.dy, true, light.file});
        }
    }
    return Draw({"Shift, light after light: dy over dx [pixels]",
                 Axis("dx [pixels]", Values(points, [](const Point& p) { return p.x; })),
                 Axis("dy [pixels]", Values(points, [](const Point& p) { return p.y; })), points, 420.0, 420.0, true});
}

/// One quantity over the number of the light.
std::string DrawSeries(const stack::Registration& lights, const std::string& title, bool ofUsedAlone,
                       const std::function<double(const FrameReport&)>& value)
{
    std::vector<Point> points;
    for (std::size_t i = 0; i < lights.frames.size(); ++i) {
        const FrameReport& light = lights.frames[i];
        if ((light.used || !ofUsedAlone) && std::isfinite(value(light))) {
            const std::string hint = light.file + (light.used ? "" : ": " + light.reason);
            points.push_back({static_cast<double>(i + 1), value(light), light.used, hint});
        }
    }
    return Draw({title, Axis("light", {1.0, static_cast<double>(lights.frames.size())}),
                 Axis("", Values(points, [](const Point& p) { return p.y; })), points, 420.0, 160.0, false});
}

std::string TableCell(const std::string& text)
{
    return "<td>" + text + "</td>";
}

/// What part of a light's values was dropped.
double Percent(const FrameReport& light, long long stack::RejectedValues::*which)
{
    const stack::RejectedValues values = light.rejected.value_or(stack::RejectedValues());
    return values.values > 0 ? 100.0 * static_cast<double>(values.*which) / static_cast<double>(values.values)
                             : std::nan("");
}

std::string PercentText(const FrameReport& light, long long stack::RejectedValues::*which)
{
    const double percent = Percent(light, which);
    return std::isnan(percent) ? "" : NumberText(percent, 3);
}

/// What the stack comes to: how deep it is, and what was dropped in all.
std::string StackText(const stack::Registration& lights)
{
    std::string text;
    if (lights.depth) {
        const auto& [light, ideal, stack] = *lights.depth;
        const auto used = std::count_if(lights.frames.begin(), lights.frames.end(),
                                        [](const FrameReport& frame) { return frame.used; });
        text += "<p>Noise of the sky [raw units]: " + NumberText(light, 3) + " in a light, " + NumberText(stack, 3) +
                " in the stack, which is " + NumberText(light / stack, 2) + " times deeper; the root of " +
                std::to_string(used) + " is " + NumberText(std::sqrt(static_cast<double>(used)), 2) +
                ". The best mean of these lights has " + NumberText(ideal, 3) + ", so the stack has " +
                NumberText(100.0 * (stack / ideal - 1.0), 1) +
                " % more. Interpolation evens out noise between neighbours, by which a stack can have less.</p>\n";
    }
    stack::RejectedValues all;
    for (const FrameReport& frame : lights.frames) {
        const stack::RejectedValues values = frame.rejected.value_or(stack::RejectedValues());
        all.values += values.values;
        all.low += values.low;
        all.high += values.high;
    }
    if (all.values > 0) {
        text += "<p>Dropped of " + std::to_string(all.values) + " values: " + std::to_string(all.low) +
                " since they were too low, " + std::to_string(all.high) + " since they were too high.</p>\n";
    }
    return text;
}

std::string Row(const stack::Registration& lights, std::size_t i)
{
    const FrameReport& light = lights.frames[i];
    const bool isReference = static_cast<int>(i) == lights.referenceLight;
    std::string row = light.used ? "<tr>" : "<tr class=\"out\">";
    row += TableCell(std::to_string(i + 1)) + "<td class=\"text\">" + EscapedXml(light.file) + "</td>";
    for (const auto& [number, digits] : {std::pair(light.dx, 2), std::pair(light.dy, 2), std::pair(light.angle, 4),
                                         std::pair(light.scale, 5), std::pair(light.residual, 3)}) {
        row += TableCell(light.used ? NumberText(number, digits) : "");
    }
    row += TableCell(light.used ? stack::NameOf(stack::kTransformNames, std::optional(light.model)) : "");
    row += TableCell(std::to_string(light.matched)) + TableCell(std::to_string(light.stars)) +
           TableCell(NumberText(light.fwhm, 2)) + TableCell(NumberText(light.background, 1)) +
           TableCell(NumberText(light.noise, 2)) + TableCell(light.fluxRatio ? NumberText(*light.fluxRatio, 3) : "") +
           TableCell(NumberText(light.weight, 3)) + TableCell(PercentText(light, &stack::RejectedValues::low)) +
           TableCell(PercentText(light, &stack::RejectedValues::high));
    return row + "<td class=\"text\">" + (isReference ? "reference" : EscapedXml(light.reason)) + "</td></tr>\n";
}

std::string TableText(const stack::Registration& lights)
{
    std::string text = "<table>\n<tr>";
    for (const char* name :
         {"", "light", "dx", "dy", "turn [degrees]", "scale", "residual", "transform", "matched", "stars", "FWHM",
          "background", "noise", "flux", "weight", "dropped low [%]", "dropped high [%]", ""}) {
        text += std::string("<th>") + name + "</th>";
    }
    text += "</tr>\n";
    for (std::size_t i = 0; i < lights.frames.size(); ++i) {
        text += Row(lights, i);
    }
    return text + "</table>\n";
}

constexpr const char* kPageHead =
    "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Lights</title>\n<style>\n"
    "body { font-family: sans-serif; color: #222; margin: 2em; }\n"
    ".plots { display: flex; flex-wrap: wrap; gap: 1em; align-items: flex-start; }\n"
    "table { border-collapse: collapse; font-size: 90%; }\n"
    "th, td { padding: 0.2em 0.6em; text-align: right; border-bottom: 1px solid #ddd; }\n"
    ".strip { display: flex; flex-wrap: wrap; gap: 4px; }\n.strip img { border: 3px solid #2d4b9b; }\n"
    ".stack { max-width: 100%; }\n.strip .out { border-color: #d7412d; opacity: 0.6; }\nfigure { margin: 0; }\n"
    ".text { text-align: left; }\n.out { color: #b03020; }\n</style></head>\n<body>\n";

} // namespace

std::string ReportPage(const stack::Registration& lights, const std::string& stack)
{
    const auto used =
        std::count_if(lights.frames.begin(), lights.frames.end(), [](const FrameReport& light) { return light.used; });
    std::string page = kPageHead;
    page += "<h1>" + std::to_string(lights.frames.size()) + " lights, " + std::to_string(used) + " used</h1>\n";
    page += stack + StackText(lights) + LightPictures(lights);
    page += "<p>Blue: used. Red: left out. A point tells its light under the mouse.</p>\n<div class=\"plots\">\n";
    page += DrawDrift(lights);
    page += DrawSeries(lights, "Turn [degrees]", true, [](const FrameReport& light) { return light.angle; });
    page += DrawSeries(lights, "FWHM [pixels]", false, [](const FrameReport& light) { return light.fwhm; });
    page += DrawSeries(lights, "Stars", false, [](const FrameReport& light) { return light.stars; });
    page +=
        DrawSeries(lights, "Background [raw units]", false, [](const FrameReport& light) { return light.background; });
    page += DrawSeries(lights, "Residual [pixels]", true, [](const FrameReport& light) { return light.residual; });
    page += DrawSeries(lights, "Light of the stars, over the reference's", true,
                       [](const FrameReport& light) { return light.fluxRatio.value_or(std::nan("")); });
    page += DrawSeries(lights, "Weight", true, [](const FrameReport& light) { return light.weight; });
    page += DrawSeries(lights, "Values dropped [%]", true, [](const FrameReport& light) {
        return Percent(light, &stack::RejectedValues::low) + Percent(light, &stack::RejectedValues::high);
    });
    page += RejectedPicture(lights) + "</div>\n" + TableText(lights);
    for (const std::string& note : lights.notes) {
        page += "<p>Note: " + EscapedXml(note) + "</p>\n";
    }
    return page + "</body></html>\n";
}

} // namespace corvane::cli
