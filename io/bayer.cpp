#include "io/bayer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "corvane/colour/demosaic.h"
#include "corvane/core/ascii.h"
#include "io/metadata.h"

namespace corvane::io {
namespace {

constexpr const char* kNames[] = {"BAYERPAT", "COLORTYP", "CFA-PAT"};
constexpr const char* kOffsets[] = {"XBAYROFF", "YBAYROFF"};

std::optional<std::string> PatternOf(const Header& header, const char* name)
{
    std::string pattern = Upper(header.Text(name).value_or(""));
    const bool isPattern = pattern.size() == 4 && pattern.find_first_not_of("RGB") == pattern.npos;
    return isPattern || pattern == "XTRANS" ? std::optional(pattern) : std::nullopt;
}

/// The same place in 0..1; both are even or both odd.
std::size_t Parity(double v)
{
    return std::fmod(v, 2.0) == 0.0 ? 0 : 1;
}

/// Takes a pattern from the order that the header means to the file's order of rows. Without offsets the way back is
/// the same.
std::string Reordered(const Header& header, const std::string& pattern, int height, double offsetX, double offsetY)
{
    const bool isFromLastRow = header.Text("ROWORDER").value_or("") == "BOTTOM-UP";
    std::string reordered;
    for (const int y : {0, 1}) {
        const int row = isFromLastRow ? height - 1 - y : y;
        for (const int x : {0, 1}) {
            reordered += pattern[2 * Parity(row + offsetY) + Parity(x + offsetX)];
        }
    }
    return reordered;
}

} // namespace

std::optional<std::string> BayerPattern(const Header& header)
{
    for (const char* name : kNames) {
        if (auto pattern = PatternOf(header, name)) {
            return pattern;
        }
    }
    return std::nullopt;
}

std::optional<std::string> HintedBayerPattern(const Header& header)
{
    const std::string filter = Upper(Filter(header).value_or(""));
    return !BayerPattern(header) && NamedBayerPattern(filter) ? std::optional(filter) : std::nullopt;
}

std::optional<std::string> StoredBayerPattern(const Header& header, int height)
{
    const std::optional<std::string> pattern = BayerPattern(header);
    if (!pattern || pattern->size() != 4) {
        return std::nullopt;
    }
    return Reordered(header, *pattern, height, header.Number(kOffsets[0]).value_or(0.0),
                     header.Number(kOffsets[1]).value_or(0.0));
}

void SetStoredBayerPattern(Header& header, const std::string& pattern, int height)
{
    for (const char* name : kNames) {
        if (PatternOf(header, name)) {
            header.Set(name, Reordered(header, pattern, height, 0.0, 0.0));
        }
    }
    for (const char* name : kOffsets) {
        if (header.Has(name)) {
            header.Set(name, 0);
        }
    }
}

} // namespace corvane::io
