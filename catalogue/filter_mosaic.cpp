#include "catalogue/filter_mosaic.h"

#include <cmath>
#include <optional>
#include <string>

#include "io/metadata.h"

namespace corvane::catalogue {
namespace {

constexpr const char* kPatternNames[] = {"BAYERPAT", "COLORTYP", "CFA-PAT"};
constexpr const char* kOffsetNames[] = {"XBAYROFF", "YBAYROFF"};

/// The same place in 0..1; both are even or both odd.
std::size_t Parity(double v)
{
    return std::fmod(v, 2.0) == 0.0 ? 0 : 1;
}

/// The filters over the pixels (0, 0), (1, 0), (0, 1) and (1, 1) of the result.
std::string Moved(const std::string& pattern, double offsetX, double offsetY, const PixelMap& map)
{
    std::string moved;
    for (const double y : {0.0, 1.0}) {
        for (const double x : {0.0, 1.0}) {
            // A turn by quarters or a mirror: the way back is the transposed matrix.
            const double fromX = map.linear.m11 * (x - map.x0) + map.linear.m21 * (y - map.y0);
            const double fromY = map.linear.m12 * (x - map.x0) + map.linear.m22 * (y - map.y0);
            moved += pattern[2 * Parity(fromY + offsetY) + Parity(fromX + offsetX)];
        }
    }
    return moved;
}

bool StatesPattern(const io::Header& header, const char* name)
{
    io::Header card;
    card.Set(name, header.Text(name).value_or(""));
    return io::BayerPattern(card).has_value();
}

} // namespace

void CarryMosaic(const PixelMap& map, io::Header& header)
{
    const std::optional<std::string> pattern = io::BayerPattern(header);
    if (!pattern) {
        return;
    }
    if (pattern->size() != 4) {
        DropMosaic(header);
        return;
    }
    const std::string moved = Moved(*pattern, header.Number(kOffsetNames[0]).value_or(0.0),
                                    header.Number(kOffsetNames[1]).value_or(0.0), map);
    for (const char* name : kPatternNames) {
        if (StatesPattern(header, name)) {
            header.Set(name, moved);
        }
    }
    for (const char* name : kOffsetNames) {
        if (header.Has(name)) {
            header.Set(name, 0);
        }
    }
}

void DropMosaic(io::Header& header)
{
    for (const char* name : kPatternNames) {
        header.Remove(name);
    }
    for (const char* name : kOffsetNames) {
        header.Remove(name);
    }
}

} // namespace corvane::catalogue
