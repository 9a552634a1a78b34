#include "io/formats/srgb_profile.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "corvane/core/power.h"

namespace corvane::io {
namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>; ///< rows

constexpr std::size_t kHeaderBytes = 128;
constexpr std::size_t kTagBytes = 12; ///< of an entry of the table of tags
constexpr int kCurveSteps = 1024;

/// The light that the form counts colours by.
constexpr Vector kD50{0.9642, 1.0, 0.8249};

/// A colour of brightness 1 at a chromaticity.
constexpr Vector ColourAt(double x, double y)
{
    return {x / y, 1.0, (1.0 - x - y) / y};
}

constexpr Vector kD65 = ColourAt(0.3127, 0.3290);

Vector Product(const Matrix& m, const Vector& v)
{
    Vector result{};
    for (std::size_t row = 0; row < 3; ++row) {
        result[row] = m[row][0] * v[0] + m[row][1] * v[1] + m[row][2] * v[2];
    }
    return result;
}

/// The inverse, by cofactors.
Matrix Inverse(const Matrix& m)
{
    const auto cofactor = [&](std::size_t row, std::size_t column) {
        const std::size_t r1 = (row + 1) % 3;
        const std::size_t r2 = (row + 2) % 3;
        const std::size_t c1 = (column + 1) % 3;
        const std::size_t c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    const double determinant = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
    Matrix inverse{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            inverse[row][column] = cofactor(column, row) / determinant;
        }
    }
    return inverse;
}

/// What a colour in the light D65 looks like in D50. K. M. Lam, Metamerism and colour constancy, thesis, University of
/// Bradford, 1985.
Vector ToD50(const Vector& colour)
{
    constexpr Matrix kCones{{{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};
    const Vector from = Product(kCones, kD65);
    const Vector to = Product(kCones, kD50);
    Vector seen = Product(kCones, colour);
    for (std::size_t i = 0; i < 3; ++i) {
        seen[i] *= to[i] / from[i];
    }
    return Product(Inverse(kCones), seen);
}

/// The colours of full red, green and blue, which together are white.
std::array<Vector, 3> Primaries()
{
    const std::array<Vector, 3> hues{ColourAt(0.64, 0.33), ColourAt(0.30, 0.60), ColourAt(0.15, 0.06)};
    Matrix columns{};
    for (std::size_t row = 0; row < 3; ++row) {
        columns[row] = {hues[0][row], hues[1][row], hues[2][row]};
    }
    const Vector parts = Product(Inverse(columns), kD65);
    std::array<Vector, 3> primaries{};
    for (std::size_t i = 0; i < 3; ++i) {
        primaries[i] = ToD50({hues[i][0] * parts[i], hues[i][1] * parts[i], hues[i][2] * parts[i]});
    }
    return primaries;
}

/// How much light a sample stands for, both from 0 to 1.
double LightOf(double sample)
{
    return sample <= 0.04045 ? sample / 12.92 : Pow((sample + 0.055) / 1.055, 2.4);
}

/// Appends the low bytes of a number, the high one first.
void AddNumber(std::string& bytes, std::uint32_t value, int count = 4)
{
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
        bytes += static_cast<char>(value >> shift & 0xFFU);
    }
}

void AddFixed(std::string& bytes, const Vector& values)
{
    for (const double value : values) {
        AddNumber(bytes, static_cast<std::uint32_t>(std::lround(value * 65536.0)));
    }
}

/// The beginning of an element: what it is, and four bytes of nothing.
std::string Element(const char* type)
{
    return std::string(type) + std::string(4, '\0');
}

std::string ColourElement(const Vector& colour)
{
    std::string bytes = Element("XYZ ");
    AddFixed(bytes, colour);
    return bytes;
}

std::string CurveElement()
{
    std::string bytes = Element("curv");
    AddNumber(bytes, kCurveSteps);
    for (int i = 0; i < kCurveSteps; ++i) {
        AddNumber(bytes, static_cast<std::uint32_t>(std::lround(65535.0 * LightOf(i / (kCurveSteps - 1.0)))), 2);
    }
    return bytes;
}

/// A name in ASCII; those in other alphabets, of which the form has two, are empty.
std::string NameElement(const std::string& name)
{
    constexpr std::size_t kOtherAlphabets = 4 + 4 + 2 + 1 + 67;
    std::string bytes = Element("desc");
    AddNumber(bytes, static_cast<std::uint32_t>(name.size() + 1));
    return bytes + name + std::string(1 + kOtherAlphabets, '\0');
}

/// Elements with the signatures under which they are found; several may share one.
using Elements = std::vector<std::pair<std::vector<const char*>, std::string>>;

Elements ElementsFor(int planes)
{
    Elements elements{{{"desc"}, NameElement("sRGB")},
                      {{"cprt"}, Element("text") + "Public domain" + std::string(1, '\0')},
                      {{"wtpt"}, ColourElement(kD65)}};
    if (planes == 1) {
        elements.push_back({{"kTRC"}, CurveElement()});
        return elements;
    }
    const std::array<Vector, 3> primaries = Primaries();
    const std::array<const char*, 3> names{"rXYZ", "gXYZ", "bXYZ"};
    for (std::size_t i = 0; i < 3; ++i) {
        elements.push_back({{names[i]}, ColourElement(primaries[i])});
    }
    elements.push_back({{"rTRC", "gTRC", "bTRC"}, CurveElement()});
    return elements;
}

std::string Head(std::size_t size, int planes)
{
    std::string head;
    AddNumber(head, static_cast<std::uint32_t>(size));
    AddNumber(head, 0);          // no colour engine is preferred
    AddNumber(head, 0x02400000); // version 2.4
    head += std::string("mntr") + (planes == 1 ? "GRAY" : "RGB ") + "XYZ ";
    for (const std::uint32_t part :
         {2001U, 4U, 1U, 0U, 0U, 0U}) { // the date of the form, since the profile never changes
        AddNumber(head, part, 2);
    }
    head += "acsp" + std::string(28, '\0'); // no platform, flags, maker or model; perceptual
    AddFixed(head, kD50);
    head.resize(kHeaderBytes, '\0');
    return head;
}

std::string Made(int planes)
{
    const Elements elements = ElementsFor(planes);
    std::size_t tags = 0;
    for (const auto& [names, element] : elements) {
        tags += names.size();
    }
    const std::size_t start = kHeaderBytes + 4 + tags * kTagBytes;
    std::string table;
    std::string data;
    AddNumber(table, static_cast<std::uint32_t>(tags));
    for (const auto& [names, element] : elements) {
        for (const char* const name : names) {
            table += name;
            AddNumber(table, static_cast<std::uint32_t>(start + data.size()));
            AddNumber(table, static_cast<std::uint32_t>(element.size()));
        }
        data += element;
        data.resize((data.size() + 3) / 4 * 4, '\0');
    }
    return Head(start + data.size(), planes) + table + data;
}

} // namespace

const std::string& SrgbProfile(int planes)
{
    static const std::string grey = Made(1);
    static const std::string colour = Made(3);
    return planes == 1 ? grey : colour;
}

} // namespace corvane::io
