#include "cli/star_plot.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "cli/svg.h"
#include "corvane/core/text.h"

namespace corvane::cli {
namespace {

using Anchor = Svg::Anchor;
using stars::kFieldParts;

constexpr Rgb kInk{60, 60, 60};
constexpr Rgb kGridLine{190, 190, 190};
constexpr Rgb kColours[] = {{45, 75, 155}, {40, 150, 170}, {120, 190, 100}, {245, 200, 70}, {215, 65, 45}};
constexpr int kColourSteps = static_cast<int>(std::size(kColours)) - 1;

constexpr double kFieldLeft = 80.0; // of the field in the drawing
constexpr double kFieldTop = 60.0;
constexpr double kLongSide = 680.0;
constexpr double kBeside = 40.0; // between the field and the scale
constexpr double kScaleWidth = 20.0;
constexpr double kScaleHeight = 160.0;
constexpr double kCellWidth = 62.0;
constexpr double kCellHeight = 42.0;
constexpr double kPanelWidth = kFieldParts * kCellWidth;
constexpr double kPanelHeight = kScaleHeight + kFieldParts * kCellHeight + 90.0;
constexpr int kScaleLabels = 4; // intervals between them

/// From widths to colours.
class Scale {
public:
    explicit Scale(const stars::FieldWidths& widths)
    {
        std::vector<double> sorted;
        for (const stars::MeasuredStar& star : widths.stars) {
            if (star.IsUsed()) {
                sorted.push_back(star.fwhm);
            }
        }
        std::sort(sorted.begin(), sorted.end());
        constexpr double kLeastRange = 0.1; // pixels
        const double last = static_cast<double>(sorted.size()) - 1.0;
        low_ = sorted.empty() ? 0.0 : sorted[static_cast<std::size_t>(std::lround(0.05 * last))];
        high_ = sorted.empty() ? 0.0 : sorted[static_cast<std::size_t>(std::lround(0.95 * last))];
        const double missing = std::max(0.0, kLeastRange - (high_ - low_));
        low_ -= missing / 2.0;
        high_ += missing / 2.0;
    }

    double Part(double fwhm) const { return std::clamp((fwhm - low_) / (high_ - low_), 0.0, 1.0); }
    double Width(double part) const { return low_ + part * (high_ - low_); }

    Rgb Colour(double fwhm) const
    {
        const double place = Part(fwhm) * kColourSteps;
        const int below = std::min(static_cast<int>(place), kColourSteps - 1);
        Rgb colour{};
        for (std::size_t i = 0; i < colour.size(); ++i) {
            colour[i] = std::lerp(kColours[below][i], kColours[below + 1][i], place - below);
        }
        return colour;
    }

private:
    double low_;
    double high_;
};

/// A colour so pale that dark text shows on it.
Rgb Paled(Rgb colour)
{
    for (double& part : colour) {
        part = std::lerp(255.0, part, 0.45);
    }
    return colour;
}

/// The field on the drawing.
struct Area {
    const PlottedField& field;
    double scale; ///< of the drawing to the image

    explicit Area(const PlottedField& plotted)
        : field(plotted), scale(kLongSide / std::max(plotted.width, plotted.height))
    {}

    double Width() const { return field.width * scale; }
    double Height() const { return field.height * scale; }
    double Right() const { return kFieldLeft + Width(); }
    double Bottom() const { return kFieldTop + Height(); }
    double X(double x) const { return kFieldLeft + (x + 0.5) * scale; }
    double Y(double y) const { return field.bottomUp ? Bottom() - (y + 0.5) * scale : kFieldTop + (y + 0.5) * scale; }
};

void DrawAxes(const Area& area, Svg& svg)
{
    for (int i = 1; i < kFieldParts; ++i) {
        const double x = kFieldLeft + area.Width() * i / kFieldParts;
        const double y = kFieldTop + area.Height() * i / kFieldParts;
        svg.Line(x, kFieldTop, x, area.Bottom(), kGridLine);
        svg.Line(kFieldLeft, y, area.Right(), y, kGridLine);
    }
    svg.Frame(kFieldLeft, kFieldTop, area.Width(), area.Height(), kInk);
    const double stepX = std::max(NiceStep(area.field.width / 6.0), 1.0);
    for (double x = 0.0; x < area.field.width; x += stepX) {
        svg.Line(area.X(x), area.Bottom(), area.X(x), area.Bottom() + 5.0, kInk);
        svg.Text(area.X(x), area.Bottom() + 20.0, NumberText(x, 0), 12.0, Anchor::kMiddle);
    }
    const double stepY = std::max(NiceStep(area.field.height / 6.0), 1.0);
    for (double y = 0.0; y < area.field.height; y += stepY) {
        svg.Line(kFieldLeft - 5.0, area.Y(y), kFieldLeft, area.Y(y), kInk);
        svg.Text(kFieldLeft - 9.0, area.Y(y) + 4.0, NumberText(y, 0), 12.0, Anchor::kEnd);
    }
    svg.Text(kFieldLeft + area.Width() / 2.0, area.Bottom() + 42.0, "x [pixels]", 13.0, Anchor::kMiddle);
    svg.Text(kFieldLeft, kFieldTop - 10.0, "y [pixels]", 13.0, Anchor::kEnd);
}

/// The widest first, so that no star hides under another one.
void DrawStars(const Area& area, const stars::FieldWidths& widths, const Scale& scale, Svg& svg)
{
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < widths.stars.size(); ++i) {
        if (widths.stars[i].IsUsed()) {
            order.push_back(i);
        }
    }
    const auto isWider = [&](std::size_t a, std::size_t b) { return widths.stars[a].fwhm > widths.stars[b].fwhm; };
    std::stable_sort(order.begin(), order.end(), isWider);
    for (const std::size_t i : order) {
        const stars::MeasuredStar& star = widths.stars[i];
        svg.Disc(area.X(star.x), area.Y(star.y), 3.5 + 4.5 * scale.Part(star.fwhm), scale.Colour(star.fwhm),
                 "star " + std::to_string(i + 1) + " at " + NumberText(star.x, 1) + ", " + NumberText(star.y, 1) +
                     ": FWHM " + NumberText(star.fwhm, 2));
    }
}

void DrawScale(double left, const Scale& scale, Svg& svg)
{
    svg.Text(left, kFieldTop + 4.0, "FWHM [pixels]");
    const double top = kFieldTop + 18.0;
    constexpr int kBands = 80;
    constexpr double kBand = kScaleHeight / kBands;
    for (int i = 0; i < kBands; ++i) {
        const double part = 1.0 - (i + 0.5) / kBands;
        svg.Rectangle(left, top + i * kBand, kScaleWidth, kBand + (i + 1 < kBands ? 0.5 : 0.0),
                      scale.Colour(scale.Width(part)));
    }
    svg.Frame(left, top, kScaleWidth, kScaleHeight, kInk);
    for (int i = 0; i <= kScaleLabels; ++i) {
        const double part = static_cast<double>(i) / kScaleLabels;
        const double y = top + (1.0 - part) * kScaleHeight;
        svg.Line(left + kScaleWidth, y, left + kScaleWidth + 5.0, y, kInk);
        svg.Text(left + kScaleWidth + 9.0, y + 4.0, NumberText(scale.Width(part), 2), 12.0);
    }
}

void DrawParts(double left, const PlottedField& field, const stars::FieldWidths& widths, const Scale& scale, Svg& svg)
{
    const double top = kFieldTop + kScaleHeight + 72.0;
    svg.Text(left, top - 10.0, "Mean of each part (stars)");
    for (int row = 0; row < kFieldParts; ++row) {
        for (int column = 0; column < kFieldParts; ++column) {
            const stars::FieldPart& part = widths.parts[field.bottomUp ? kFieldParts - 1 - row : row][column];
            const double x = left + column * kCellWidth;
            const double y = top + row * kCellHeight;
            if (part.stars > 0) {
                svg.Rectangle(x, y, kCellWidth, kCellHeight, Paled(scale.Colour(part.fwhm)));
                svg.Text(x + kCellWidth / 2.0, y + 19.0, NumberText(part.fwhm, 2), 14.0, Anchor::kMiddle);
            }
            svg.Text(x + kCellWidth / 2.0, y + 35.0, std::string("(").append(std::to_string(part.stars)) + ")", 11.0,
                     Anchor::kMiddle);
            svg.Frame(x, y, kCellWidth, kCellHeight, kInk);
        }
    }
}

} // namespace

std::string PlotWidths(const PlottedField& field, const stars::FieldWidths& widths)
{
    const Area area(field);
    const Scale scale(widths);
    const double panel = area.Right() + kBeside;
    Svg svg(panel + kPanelWidth + 30.0, kFieldTop + std::max(area.Height(), kPanelHeight) + 60.0);
    const std::string stars = std::to_string(widths.used) + (widths.used == 1 ? " star" : " stars");
    svg.Text(kFieldLeft, 26.0,
             field.name + ": " + stars + ", median FWHM " + NumberText(widths.medianFwhm, 2) + " pixels", 17.0);
    DrawAxes(area, svg);
    DrawStars(area, widths, scale, svg);
    DrawScale(panel, scale, svg);
    DrawParts(panel, field, widths, scale, svg);
    return svg.Finish();
}

} // namespace corvane::cli
