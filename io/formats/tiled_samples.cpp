#include "io/formats/tiled_samples.h"

#include <algorithm>

#include "corvane/core/memory_budget.h"
#include "corvane/core/walk.h"
#include "corvane/platform/workers.h"
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

    /// Tiles are decoded side by side. What is kept of the first row of tiles is copied before, since the last one
    /// takes its place.
    void Read(long long plane, long long firstRow, long long rowCount, float* samples) override
    {
        const Band band{FindPlane(layout_, plane), firstRow, firstRow + rowCount, samples};
        const long long first = firstRow / layout_.tile[1];
        const long long last = (band.end - 1) / layout_.tile[1];
        const long long across = layout_.tiles[0];
        std::vector<bool> isCopied;
        for (long long column = 0; column < across; ++column) {
            isCopied.push_back(CopyKept(band, column, first));
        }
        const int threads = std::min(ThreadsFor(rowCount * layout_.image.sizes[0]), MostThreads());
        scratch_.resize(std::max(scratch_.size(), static_cast<std::size_t>(threads)));
        const auto read = [&](int block, int thread) {
            if (block >= across || !isCopied[static_cast<std::size_t>(block)]) {
                Scratch& scratch = scratch_[static_cast<std::size_t>(thread)];
                const long long row = first + block / across;
                KeptTile* const slot = row == last ? SlotOf(band.place, block % across) : nullptr;
                ReadTile(band, block % across, row, slot != nullptr ? *slot : scratch.tile, scratch.buffers);
            }
        };
        platform::ForBlocks(static_cast<int>((last - first + 1) * across), threads, read, [](int) {});
    }

private:
    struct KeptTile {
        std::optional<std::uint64_t> number;
        std::vector<float> samples;
    };

    /// What one thread works with.
    struct Scratch {
        TileBuffers buffers;
        KeptTile tile;
    };

    /// The rows of a plane that are read.
    struct Band {
        PlaneOfTiles place;
        long long first;
        long long end;
        float* samples;
    };

    /// The last row of tiles of each plane is kept, so that bands which end within tiles decode none twice, as far as a
    /// quarter of the memory budget allows.
    std::size_t CountKept() const
    {
        constexpr double kPlanes = 3.0;
        const std::uint64_t tileBytes = layout_.TileSamples() * sizeof(float) + sizeof(KeptTile);
        const double wanted = static_cast<double>(layout_.tiles[0]) * std::min(layout_.image.Planes(), kPlanes);
        const double room = static_cast<double>(MemoryBudget()) / 4.0 / static_cast<double>(tileBytes);
        return static_cast<std::size_t>(std::max(1.0, std::min(wanted, room)));
    }

    /// Threads may take another quarter.
    int MostThreads() const
    {
        constexpr std::uint64_t kMost = 1024;
        return static_cast<int>(std::clamp<std::uint64_t>(MemoryBudget() / 4 / TileMemory(layout_), 1, kMost));
    }

    /// Where a tile of the last row is kept; null where there is no room for it.
    KeptTile* SlotOf(const PlaneOfTiles& place, long long column)
    {
        const std::uint64_t slot =
            place.group * static_cast<std::uint64_t>(layout_.tiles[0]) + static_cast<std::uint64_t>(column);
        return static_cast<std::size_t>(column) < kept_.size() ? &kept_[slot % kept_.size()] : nullptr;
    }

    std::uint64_t NumberOf(const PlaneOfTiles& place, long long column, long long row) const
    {
        return place.firstTile + static_cast<std::uint64_t>(row * layout_.tiles[0] + column);
    }

    /// False when the tile is not kept.
    bool CopyKept(const Band& band, long long column, long long row)
    {
        const KeptTile* const kept = SlotOf(band.place, column);
        if (kept == nullptr || kept->number != NumberOf(band.place, column, row)) {
            return false;
        }
        CopyTile(band, column, row, kept->samples);
        return true;
    }

    void ReadTile(const Band& band, long long column, long long row, KeptTile& tile, TileBuffers& buffers) const
    {
        const auto width = static_cast<std::size_t>(WidthOf(column));
        const std::uint64_t number = NumberOf(band.place, column, row);
        tile.number.reset();
        tile.samples.resize(width * static_cast<std::size_t>(HeightOf(row)) * band.place.planesOfTile);
        decoder_.Decode(number, width, tile.samples, buffers);
        tile.number = number;
        CopyTile(band, column, row, tile.samples);
    }

    /// Copies what a tile has of a band.
    void CopyTile(const Band& band, long long column, long long row, const std::vector<float>& samples) const
    {
        const long long left = column * layout_.tile[0];
        const long long top = row * layout_.tile[1];
        const long long width = WidthOf(column);
        const long long height = HeightOf(row);
        const float* const plane = samples.data() + static_cast<std::uint64_t>(width * height) * band.place.planeOfTile;
        for (long long y = std::max(top, band.first); y < std::min(top + height, band.end); ++y) {
            std::copy_n(plane + (y - top) * width, width,
                        band.samples + (y - band.first) * layout_.image.sizes[0] + left);
        }
    }

    long long WidthOf(long long column) const { return SizeOf(0, column); }
    long long HeightOf(long long row) const { return SizeOf(1, row); }
    long long SizeOf(std::size_t axis, long long i) const
    {
        return std::min(layout_.tile[axis], layout_.image.sizes[axis] - i * layout_.tile[axis]);
    }

    TileLayout layout_;
    TileDecoder decoder_;
    std::vector<Scratch> scratch_; ///< one for each thread
    std::vector<KeptTile> kept_;
};

} // namespace

std::unique_ptr<FitsSamples> OpenTiledSamples(FitsFile& file, const StoredScale& scale)
{
    return std::make_unique<TiledSamples>(file, scale);
}

} // namespace corvane::io
