#include "cli/star_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "catalogue/shown.h"
#include "io/metadata.h"
#include "io/picture.h"

namespace corvane::cli {
namespace {

using Colour = std::array<float, 3>;

constexpr Colour kUsedMark{80, 240, 110};
constexpr Colour kNotUsed{255, 140, 40};
constexpr Colour kShadow{0, 0, 0};
constexpr float kShadowStrength = 0.6F;

constexpr double kMarkRadius = 2.5; // widths
constexpr double kMinRadius = 5.0;
constexpr double kMaxRadius = 60.0;
constexpr std::size_t kMostNumbers = 100; // more would cover each other
constexpr int kDigitWidth = 3;
constexpr int kDigitHeight = 5;

/// The digits' rows, of three bits each.
constexpr unsigned char kDigits[10][kDigitHeight] = {{7, 5, 5, 5, 7}, {2, 6, 2, 2, 7}, {7, 1, 7, 4, 7}, {7, 1, 3, 1, 7},
                                                     {5, 5, 7, 1, 1}, {7, 4, 7, 1, 7}, {7, 4, 7, 5, 7}, {7, 1, 1, 2, 2},
                                                     {7, 5, 7, 5, 7}, {7, 5, 7, 1, 7}};

/// An 8-bit picture in colours, the right way up.
class Canvas {
public:
    Canvas(const CStlImage& image, bool bottomUp)
        : picture_(-32, image.GetWidth(), image.GetHeight(), 3, 1.0, 0.0, 1), height_(image.GetHeight()),
          bottomUp_(bottomUp), scale_(std::clamp(std::max(image.GetWidth(), height_) / 1200, 1, 8))
    {
        for (int y = 0; y < height_; ++y) {
            for (int plane = 0; plane < 3; ++plane) {
                CopyRow(image, y, plane);
            }
        }
    }

    void DrawMark(const Mark& mark, std::size_t number)
    {
        const double y = bottomUp_ ? height_ - 1 - mark.y : mark.y;
        const double radius = std::clamp(kMarkRadius * mark.fwhm, kMinRadius * scale_, kMaxRadius * scale_);
        const Colour& colour = mark.isUsed ? kUsedMark : kNotUsed;
        DrawRing(mark.x, y, radius, 2.0 * scale_ + 1.0, kShadow, kShadowStrength);
        DrawRing(mark.x, y, radius, scale_ + 0.5, colour, 1.0F);
        if (number > 0) {
            DrawNumber(mark.x + 0.75 * radius, y - 0.75 * radius, std::to_string(number), colour);
        }
    }

    void Save(const std::string& path) const { io::SavePicture(path, picture_, false); }

private:
    void CopyRow(const CStlImage& image, int y, int plane)
    {
        const int source = image.IsColor() != 0 ? plane : 0;
        const float* from = image.GetImageAdr(0, bottomUp_ ? height_ - 1 - y : y, source, 1);
        float* to = picture_.GetImageAdr(0, y, plane);
        for (int x = 0; x < image.GetWidth(); ++x) {
            to[x] = std::isnan(from[x]) ? 0.0F : static_cast<float>(image.GetPixelGray256(from + x, source));
        }
    }

    void Blend(int x, int y, const Colour& colour, float part)
    {
        if (x < 0 || y < 0 || x >= picture_.GetWidth() || y >= height_) {
            return;
        }
        for (int plane = 0; plane < 3; ++plane) {
            float& s = *picture_.GetImageAdr(x, y, plane);
            s += (colour[plane] - s) * part;
        }
    }

    /// A pixel is covered by as much of the line as lies within half a pixel of its centre.
    void DrawRing(double x, double y, double radius, double line, const Colour& colour, float strength)
    {
        const int reach = static_cast<int>(std::ceil(radius + line));
        const int middleX = static_cast<int>(std::lround(x));
        const int middleY = static_cast<int>(std::lround(y));
        for (int py = middleY - reach; py <= middleY + reach; ++py) {
            for (int px = middleX - reach; px <= middleX + reach; ++px) {
                const double away = std::fabs(std::hypot(px - x, py - y) - radius);
                const double covered = std::clamp(0.5 * line + 0.5 - away, 0.0, 1.0);
                Blend(px, py, colour, static_cast<float>(covered) * strength);
            }
        }
    }

    /// A number on a dark ground whose lower left corner is there, moved so that it lies in the picture.
    void DrawNumber(double x, double y, const std::string& digits, const Colour& colour)
    {
        const int cell = 2 * scale_;
        const int width = (static_cast<int>(digits.size()) * (kDigitWidth + 1) + 1) * cell;
        const int height = (kDigitHeight + 2) * cell;
        const int left = std::max(0, std::min(static_cast<int>(x), picture_.GetWidth() - width));
        const int top = std::max(0, static_cast<int>(y) - height);
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                Blend(left + column, top + row, kShadow, kShadowStrength);
            }
        }
        for (std::size_t i = 0; i < digits.size(); ++i) {
            const int at = left + (static_cast<int>(i) * (kDigitWidth + 1) + 1) * cell;
            DrawDigit(at, top + cell, digits[i] - '0', colour);
        }
    }

    void DrawDigit(int left, int top, int digit, const Colour& colour)
    {
        const int cell = 2 * scale_;
        for (int y = 0; y < kDigitHeight * cell; ++y) {
            for (int x = 0; x < kDigitWidth * cell; ++x) {
                const int bit = kDigitWidth - 1 - x / cell;
                const bool isSet = (kDigits[digit][y / cell] >> bit & 1) != 0;
                Blend(left + x, top + y, colour, isSet ? 1.0F : 0.0F);
            }
        }
    }

    CStlImage picture_; ///< samples 0 to 255, which its levels show as they are
    int height_;
    bool bottomUp_;
    int scale_; ///< of lines and digits: large pictures are looked at from afar
};

} // namespace

void SaveStarMap(const std::string& path, const io::Frame& frame, const std::vector<Mark>& marks)
{
    io::Frame shown{frame.image.Shared(), frame.header};
    catalogue::MakeShown(shown);
    Canvas canvas(shown.image, io::IsBottomUp(shown.header));
    for (std::size_t i = 0; i < marks.size(); ++i) {
        canvas.DrawMark(marks[i], marks.size() <= kMostNumbers ? i + 1 : 0);
    }
    canvas.Save(path);
}

} // namespace corvane::cli
