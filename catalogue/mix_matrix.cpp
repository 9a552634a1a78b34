#include "catalogue/mix_matrix.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>

#include "catalogue/names.h"
#include "catalogue/number_lines.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"

namespace corvane::catalogue {
namespace {

constexpr NumberLines kMatrixLines{"a matrix", "1 to 16 numbers", 16};

std::string LinesText(const NamedPalette& palette)
{
    std::string text;
    for (const char* line : palette.lines) {
        text += (text.empty() ? "" : ", ") + std::string(line);
    }
    return text;
}

} // namespace

std::string MatrixText(const MixMatrix& matrix)
{
    std::string text;
    for (std::size_t row = 0; row < matrix.size(); ++row) {
        text += std::string(row == 0 ? "" : ", ") + kChannels[row];
        for (const double part : matrix[row]) {
            text += " " + NumberText(part);
        }
    }
    return text;
}

const std::vector<NamedPalette>& Palettes()
{
    static const std::vector<NamedPalette> palettes{
        {"sho", {"Ha", "OIII", "SII"}, {{0.0, 0.0, 1.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}}},
        {"hoo", {"Ha", "OIII"}, {{1.0, 0.0}, {0.0, 1.0}, {0.0, 1.0}}},
        {"hos", {"Ha", "OIII", "SII"}, {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}}};
    return palettes;
}

std::vector<std::string> PaletteNames()
{
    std::vector<std::string> names;
    for (const NamedPalette& palette : Palettes()) {
        names.emplace_back(palette.name);
    }
    return names;
}

std::string PalettesText()
{
    std::string text;
    for (const NamedPalette& palette : Palettes()) {
        text += (text.empty() ? "" : "; ") + std::string(palette.name) + ", of " + LinesText(palette) + ": " +
                MatrixText(palette.matrix);
    }
    return text;
}

MixMatrix ReadMixMatrix(const std::string& nameOrFile)
{
    const auto palette = std::find_if(Palettes().begin(), Palettes().end(),
                                      [&](const NamedPalette& named) { return named.name == nameOrFile; });
    if (palette != Palettes().end()) {
        return palette->matrix;
    }
    if (std::error_code error; !std::filesystem::exists(nameOrFile, error)) {
        throw FileError(nameOrFile, "no such file, nor a palette: those are " + Joined(PaletteNames()));
    }
    MixMatrix matrix = ReadNumberLines(nameOrFile, kMatrixLines);
    if (matrix.size() != kChannels.size()) {
        throw FileError(nameOrFile, "has " + std::to_string(matrix.size()) + (matrix.size() == 1 ? " line" : " lines") +
                                        " of numbers; a palette has three: for red, green and blue");
    }
    for (const std::vector<double>& row : matrix) {
        if (std::any_of(row.begin(), row.end(), [](double part) { return !(std::fabs(part) <= 1e6); })) {
            throw FileError(nameOrFile, "has a number that is not -1e6 to 1e6");
        }
    }
    return matrix;
}

} // namespace corvane::catalogue
