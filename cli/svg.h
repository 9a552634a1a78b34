#pragma once

#include <array>
#include <string>

namespace corvane::cli {

/// A colour, each part 0 to 255.
using Rgb = std::array<double, 3>;

/// The text as a reader of XML or HTML gives it back. Control characters, which XML cannot hold, become blanks; what is
/// no UTF-8 becomes U+FFFD.
std::string EscapedXml(const std::string& text);

/// 1, 2, 5 or 10 times a power of ten: about as much as a number above 0, for the steps of an axis.
double NiceStep(double about);

/// Writes a vector drawing (SVG 1.1) that needs nothing besides itself. Units are pixels, from the upper left corner.
class Svg {
public:
    enum class Anchor { kStart, kMiddle, kEnd };

    Svg(double width, double height);

    void Line(double x1, double y1, double x2, double y2, const Rgb& colour);
    void Rectangle(double x, double y, double width, double height, const Rgb& fill);
    void Frame(double x, double y, double width, double height, const Rgb& colour);
    /// A disc that tells `hint` under the mouse.
    void Disc(double x, double y, double radius, const Rgb& fill, const std::string& hint);
    /// A line of dark text; `size` is that of its letters.
    void Text(double x, double y, const std::string& text, double size = 13.0, Anchor anchor = Anchor::kStart);

    /// The whole drawing.
    std::string Finish() const { return text_ + "</svg>\n"; }

private:
    std::string text_;
};

} // namespace corvane::cli
