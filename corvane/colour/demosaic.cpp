#include "corvane/colour/demosaic.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <vector>

#include "corvane/colour/mosaic_rows.h"
#include "corvane/colour/split_row.h"
#include "corvane/core/blank.h"
#include "corvane/core/walk.h"
#include "corvane/platform/memory_exception.h"

namespace corvane {
namespace {

using demosaic::MadeColours;
using demosaic::Mirrored;
using demosaic::SplitRow;
using demosaic::SplitRows;

/// Rows that are made together: many, since each band begins with rows that the one before takes too.
constexpr int kBand = 256;

/// In the order of BayerPattern.
constexpr const char* kNames[] = {"RGGB", "GRBG", "GBRG", "BGGR"};

/// Where a pattern has its red samples: columns and rows of these parities.
struct RedPlace {
    explicit RedPlace(BayerPattern pattern)
        : x(pattern == BayerPattern::kGrbg || pattern == BayerPattern::kBggr ? 1 : 0),
          y(pattern == BayerPattern::kGbrg || pattern == BayerPattern::kBggr ? 1 : 0)
    {}

    bool IsInRow(int row) const { return (row & 1) == y; }
    /// The parity of the columns that are red or blue in a row.
    int ChromaParity(int row) const { return IsInRow(row) ? x : 1 - x; }

    int x;
    int y;
};

/// Walks down a mosaic: makes the colours of one row after the other from the rows about it, each of which is taken
/// once. Rows beyond the mosaic are its own, mirrored.
class Walk {
public:
    Walk(int width, int height, BayerPattern pattern, DemosaicMethod method, int firstRow)
        : width_(width), height_(height), pairs_(width / 2 + width % 2), red_(pattern), method_(method),
          next_(firstRow), taken_(next_ - kDemosaicMargin), made_(next_ - SplitRows::kReach),
          rows_(kSlots, SplitRow(width)), greens_(kSlots, Half()), colours_{Half(), Half(), Half(), Half()}
    {}

    /// Makes the next row; rowOf(y) gives a row of the mosaic.
    template <class RowOf>
    void MakeRow(RowOf rowOf, float* r, float* g, float* b)
    {
        for (; taken_ <= next_ + kDemosaicMargin; ++taken_) {
            rows_[Slot(taken_)].Take(rowOf(Mirrored(taken_, height_)));
        }
        MakeColours(r, g, b);
        if (rows_[Slot(next_)].HasGaps()) {
            KeepGaps(rowOf(static_cast<int>(next_)), r, g, b);
        }
        ++next_;
    }

private:
    static constexpr std::size_t kSlots = 16; // more than 2 x kDemosaicMargin rows
    static constexpr int kBeyond = 4;         // pixels beyond the ends of a row whose green is used

    static std::size_t Slot(long long row) { return static_cast<std::size_t>(row) % kSlots; }
    std::vector<float> Half() const
    {
        return std::vector<float>(static_cast<std::size_t>(pairs_ + 2 * SplitRow::kPad));
    }
    float* Green(long long row) { return greens_[Slot(row)].data() + SplitRow::kPad; }

    SplitRows RowsAbout(long long row)
    {
        SplitRows rows{};
        const int parity = red_.ChromaParity(static_cast<int>(row & 1));
        // A green sample of an even column lies left of the odd one of its number; the left one of an even column has
        // the number before.
        const int shift = parity - 1;
        for (int k = -SplitRows::kReach; k <= SplitRows::kReach; ++k) {
            const SplitRow& split = rows_[Slot(row + k)];
            rows.chromaRows[k + SplitRows::kReach] = split.Half(parity);
            rows.greenRows[k + SplitRows::kReach] = split.Half(1 - parity) + shift;
            rows.madeRows[k + SplitRows::kReach] = Green(row + k) + (k % 2 == 0 ? 0 : shift);
        }
        return rows;
    }

    void MakeColours(float* r, float* g, float* b)
    {
        const int parity = red_.ChromaParity(static_cast<int>(next_ & 1));
        const int shift = parity - 1;
        const MadeColours made{Start(0), Start(1), Start(2) + shift, Start(3) + shift};
        if (method_ == DemosaicMethod::kBilinear) {
            demosaic::MakeBilinear(RowsAbout(next_), -shift, pairs_, made);
        } else if (method_ == DemosaicMethod::kLinear) {
            demosaic::MakeLinear(RowsAbout(next_), -shift, pairs_, made);
        } else {
            for (; made_ <= next_ + SplitRows::kReach; ++made_) {
                demosaic::MakeGreen(RowsAbout(made_), -kBeyond, pairs_ + kBeyond, Green(made_));
            }
            demosaic::MakeEdgeAware(RowsAbout(next_), -shift, pairs_, made);
        }
        const SplitRow& row = rows_[Slot(next_)];
        const bool isRed = red_.IsInRow(static_cast<int>(next_ & 1));
        Join(parity, row.Half(parity), Start(2), isRed ? r : b);
        Join(parity, Start(0), row.Half(1 - parity), g);
        Join(parity, Start(1), Start(3), isRed ? b : r);
    }

    float* Start(std::size_t i) { return colours_[i].data() + SplitRow::kPad; }

    /// Puts the halves of a row together again.
    void Join(int parity, const float* chroma, const float* green, float* __restrict row) const
    {
        const float* const even = parity == 0 ? chroma : green;
        const float* const odd = parity == 0 ? green : chroma;
        const int whole = width_ / 2;
        for (int i = 0; i < whole; ++i) {
            row[2 * i] = even[i];
            row[2 * i + 1] = odd[i];
        }
        if (width_ % 2 != 0) {
            row[width_ - 1] = even[whole];
        }
    }

    void KeepGaps(const float* row, float* r, float* g, float* b) const
    {
        for (int x = 0; x < width_; ++x) {
            if (!std::isfinite(row[x])) {
                r[x] = row[x];
                g[x] = row[x];
                b[x] = row[x];
            }
        }
    }

    int width_;
    int height_;
    int pairs_; ///< of columns, the last one filled up
    RedPlace red_;
    DemosaicMethod method_;
    long long next_;  ///< row to be made
    long long taken_; ///< rows before it are split
    long long made_;  ///< rows before it have their green
    std::vector<SplitRow> rows_;
    std::vector<std::vector<float>> greens_;
    std::array<std::vector<float>, 4> colours_;
};

/// Writes the samples of the mosaic that are blank into all colours of their pixels.
void KeepBlanks(const BlankTest& isBlank, const float* mosaic, int width, float* colour)
{
    for (int x = 0; x < width; ++x) {
        colour[x] = isBlank(mosaic[x]) ? mosaic[x] : colour[x];
    }
}

/// Copies a row with NaN in the place of blanks.
void CopyWithoutBlanks(const BlankTest& isBlank, const float* row, int width, float* copy)
{
    for (int x = 0; x < width; ++x) {
        copy[x] = isBlank(row[x]) ? std::numeric_limits<float>::quiet_NaN() : row[x];
    }
}

/// An image of three planes with the record of a mosaic, its samples still to be written.
void MakeColourImage(const CStlImage& mosaic, CStlImage& colour)
{
    CStlImage record;
    if (record.Create(mosaic) == 0) {
        AfxThrowMemoryException();
    }
    record.SetPlanes(3);
    for (const int plane : {1, 2}) {
        record.CImage::SetLevel(plane, mosaic.GetLevelMin(0), mosaic.GetLevelMax(0));
        record.SetOrgDefaultLevel(plane, mosaic.GetOrgDefaultLevelMin(0), mosaic.GetOrgDefaultLevelMax(0));
    }
    if (colour.Create(record) == 0) {
        AfxThrowMemoryException();
    }
}

} // namespace

const char* NameOf(BayerPattern pattern)
{
    return kNames[static_cast<int>(pattern)];
}

std::optional<BayerPattern> NamedBayerPattern(std::string_view name)
{
    const auto found = std::find(std::begin(kNames), std::end(kNames), name);
    return found == std::end(kNames) ? std::nullopt
                                     : std::optional(static_cast<BayerPattern>(found - std::begin(kNames)));
}

void DemosaicRows(const MosaicRows& mosaic, BayerPattern pattern, DemosaicMethod method, int firstRow, int rowCount,
                  float* r, float* g, float* b)
{
    const int first = std::max(firstRow, 0);
    const long long end = std::min<long long>(static_cast<long long>(firstRow) + rowCount, mosaic.height);
    if (mosaic.width < 1 || mosaic.rowCount < 1 || first >= end) {
        return;
    }
    const auto rowOf = [&](int y) {
        const long long row =
            std::clamp<long long>(static_cast<long long>(y) - mosaic.firstRow, 0, mosaic.rowCount - 1);
        return mosaic.rows + row * mosaic.width;
    };
    Walk walk(mosaic.width, mosaic.height, pattern, method, first);
    for (long long y = first; y < end; ++y) {
        const long long offset = (y - firstRow) * mosaic.width;
        walk.MakeRow(rowOf, r + offset, g + offset, b + offset);
    }
}

void Demosaic(const CStlImage& mosaic, BayerPattern pattern, DemosaicMethod method, CStlImage& colour, const Run& run)
{
    const int width = mosaic.GetWidth();
    const int height = mosaic.GetPixelCount() == 0 ? 0 : mosaic.GetHeight();
    const BlankTest isBlank(mosaic);
    CStlImage made;
    MakeColourImage(mosaic, made);
    const auto makeBlock = [&](const RowBlock& block) {
        std::vector<float> unblanked(static_cast<std::size_t>(width));
        const auto rowOf = [&](int y) -> const float* {
            CopyWithoutBlanks(isBlank, mosaic.GetImageAdr(0, y, 0, 1), width, unblanked.data());
            return unblanked.data();
        };
        Walk walk(width, height, pattern, method, block.first);
        for (int y = block.first; y < block.end; ++y) {
            float* const planes[] = {made.GetImageAdr(0, y, 0), made.GetImageAdr(0, y, 1), made.GetImageAdr(0, y, 2)};
            walk.MakeRow(rowOf, planes[0], planes[1], planes[2]);
            for (float* const plane : planes) {
                KeepBlanks(isBlank, mosaic.GetImageAdr(0, y, 0, 1), width, plane);
            }
        }
    };
    {
        Stage stage(run, "Making colours of the mosaic...", height);
        WalkBlocks(RowBlocks({0, 0, width, height}, 1, kBand), made, {&mosaic}, stage, 1, makeBlock);
    }
    colour.Swap(&made);
}

} // namespace corvane
