#include "catalogue/filter_mosaic.h"

#include <cmath>
#include <cstddef>
#include <optional>
#include <string>

#include "io/bayer.h"

namespace corvane::catalogue {
namespace {

/// The same place in 0..1; both are even or both odd.
std::size_t Parity(double v)
{
    return std::fmod(v, 2.0) == 0.0 ? 0 : 1;
}

/// The filters over the pixels (0, 0), (1, 0), (0, 1) and (1, 1) of the result.
std::string Moved(const std::string& pattern, const io::PixelMap& map)
{
    std::string moved;
    for (const double y : {0.0, 1.0}) {
        for (const double x : {0.0, 1.0}) {
            // A turn by quarters or a mirror: the way back is the transposed matrix.
            const double fromX = map.linear.m11 * (x - map.x0) + map.linear.m21 * (y - map.y0);
            const double fromY = map.linear.m12 * (x - map.x0) + map.linear.m22 * (y - map.y0);
            moved += pattern[2 * Parity(fromY) + Parity(fromX)];
        }
    }
    return moved;
}

} // namespace

void CarryMosaic(const io::PixelMap& map, const CImage& source, const CImage& result, io::Header& header)
{
    if (const std::optional<std::string> pattern = io::StoredBayerPattern(header, source.GetHeight())) {
        io::SetStoredBayerPattern(header, Moved(*pattern, map), result.GetHeight());
    } else if (io::BayerPattern(header)) {
        DropMosaic(header);
    }
}

void DropMosaic(io::Header& header)
{
    for (const char* name : io::kBayerCards) {
        header.Remove(name);
    }
}

} // namespace corvane::catalogue
