#include "io/formats/tiled_samples.h"

#include <algorithm>

#include "corvane/core/memory_budget.h"
#include "io/formats/limits.h"
#include "io/formats/tile_decoder.h"

namespace corvane::io {
namespace {

/// The tiles that a plane lies in.
struct PlaneOfTiles {
    std::uint64_t firstTile = 0;    ///< the one with the plane's first sample
    std::uint64_t group = 0;        ///< planes with the same tiles have the same number
    std::uint64_t planeOfTile = 0;  ///< which of the planes of a tile it is
    std::uint64_t planesOfTile = 1; ///< how many there are
};

PlaneOfTiles FindPlane(const TileLayout& layout, long long plane)
{
    PlaneOfTiles place;
    auto rest = static_cast<std::uint64_t>(plane);
    std::uint64_t groups = 1;
    for (std::size_t i = 2; i < layout.tile.size(); ++i) {
        const auto size = static_cast<std::uint64_t>(layout.image.sizes[i]);
        const auto tile = static_cast<std::uint64_t>(layout.tile[i]);
        const std::uint64_t at = rest % size;
        rest /= size;
        place.group += at / tile * groups;
        groups *= static_cast<std::uint64_t>(layout.tiles[i]);
        place.planeOfTile += at % tile * place.planesOfTile;
        place.planesOfTile *= std::min(tile, size - at / tile * tile);
    }
    place.firstTile = place.group * static_cast<std::uint64_t>(layout.tiles[0] * layout.tiles[1]);
    return place;
}

class TiledSamples : public FitsSamples {
public:
    TiledSamples(FitsFile& file, const StoredScale& scale)
        : layout_(ReadTileLayout(file.Hdu())), decoder_(file, layout_, scale)
    {
        CheckMemory(file.Name(), "a tile of " + SizesText(layout_.tile) + " samples",
                    static_cast<double>(TileMemory(layout_)));
        kept_.resize(CountKept());
    }

    void Read(long long plane, long long firstRow, long long rowCount, float* samples) override
    {
        const PlaneOfTiles place = FindPlane(layout_, plane);
        const long long height = layout_.tile[1];
        for (long long row = firstRow / height; row * height < firstRow + rowCount; ++row) {
            for (long long column = 0; column < layout_.tiles[0]; ++column) {
                CopyTile(place, column, row, firstRow, rowCount, samples);
            }
        }
    }

private:
    struct KeptTile {
        std::optional<std::uint64_t> tile;
        std::vector<float> samples;
    };

    /// A row of tiles of each plane is kept, so that bands which end within tiles decode none twice, as far as a
    /// quarter of the memory budget allows.
    std::size_t CountKept() const
    {
        constexpr double kPlanes = 3.0;
        const std::uint64_t tileBytes = layout_.TileSamples() * sizeof(float) + sizeof(KeptTile);
        const double wanted = static_cast<double>(layout_.tiles[0]) * std::min(layout_.image.Planes(), kPlanes);
        const double room = static_cast<double>(MemoryBudget()) / 4.0 / static_cast<double>(tileBytes);
        return static_cast<std::size_t>(std::max(1.0, std::min(wanted, room)));
    }

    const std::vector<float>& Decoded(std::uint64_t tile, std::uint64_t slot, std::size_t width, std::size_t count)
    {
        KeptTile& kept = kept_[static_cast<std::size_t>(slot % kept_.size())];
        if (kept.tile != tile) {
            kept.tile.reset();
            kept.samples.resize(count);
            decoder_.Decode(tile, width, kept.samples, buffers_);
            kept.tile = tile;
        }
        return kept.samples;
    }

    void CopyTile(const PlaneOfTiles& place, long long column, long long row, long long firstRow, long long rowCount,
                  float* samples)
    {
        const std::vector<long long>& sizes = layout_.image.sizes;
        const long long left = column * layout_.tile[0];
        const long long top = row * layout_.tile[1];
        const long long width = std::min(layout_.tile[0], sizes[0] - left);
        const long long height = std::min(layout_.tile[1], sizes[1] - top);
        const auto across = static_cast<std::uint64_t>(layout_.tiles[0]);
        const std::uint64_t tile =
            place.firstTile + static_cast<std::uint64_t>(row) * across + static_cast<std::uint64_t>(column);
        const std::vector<float>& decoded =
            Decoded(tile, place.group * across + static_cast<std::uint64_t>(column), static_cast<std::size_t>(width),
                    static_cast<std::size_t>(width * height) * place.planesOfTile);
        const float* const first = decoded.data() + static_cast<std::uint64_t>(width * height) * place.planeOfTile;
        const long long end = std::min(top + height, firstRow + rowCount);
        for (long long y = std::max(top, firstRow); y < end; ++y) {
            std::copy_n(first + (y - top) * width, width, samples + (y - firstRow) * sizes[0] + left);
        }
    }

    TileLayout layout_;
    TileDecoder decoder_;
    TileBuffers buffers_;
    std::vector<KeptTile> kept_;
};

} // namespace

std::unique_ptr<FitsSamples> OpenTiledSamples(FitsFile& file, const StoredScale& scale)
{
    return std::make_unique<TiledSamples>(file, scale);
}

} // namespace corvane::io
