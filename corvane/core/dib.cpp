// Device-independent bitmaps: the packed block that a screen takes, made from the samples through the levels.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "corvane/core/display_scale.h"
#include "corvane/core/fold.h"
#include "corvane/core/palette.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/global_memory.h"
#include "corvane/platform/memory_exception.h"

using namespace corvane;

namespace {

constexpr std::uint64_t kColourTableBytes = 256 * sizeof(RGBQUAD);

std::uint64_t Stride(std::uint64_t width, int bitCount)
{
    return (static_cast<std::uint64_t>(bitCount / 8) * width + 3) / 4 * 4;
}

unsigned char* ColourTable(BITMAPINFOHEADER* header)
{
    return reinterpret_cast<unsigned char*>(header) + header->biSize;
}

/// The row of the block that shows image row y: rows are stored from the bottom up.
unsigned char* DibRow(BITMAPINFOHEADER* header, int y)
{
    const std::uint64_t table = header->biBitCount == 8 ? kColourTableBytes : 0;
    const std::uint64_t row = static_cast<std::uint64_t>(header->biHeight - 1 - y);
    return ColourTable(header) + table + row * Stride(static_cast<std::uint64_t>(header->biWidth), header->biBitCount);
}

void ZeroPadding(BITMAPINFOHEADER* header, unsigned char* row)
{
    const std::uint64_t used = static_cast<std::uint64_t>(header->biWidth) * (header->biBitCount / 8);
    std::memset(row + used, 0, Stride(static_cast<std::uint64_t>(header->biWidth), header->biBitCount) - used);
}

/// Writes the byte of each sample of a row: 0 at or below level min, 255 at or above level max and for NaN.
void ToBytes(const CImage& image, int plane, const float* __restrict row, int count, unsigned char* __restrict bytes)
{
    const DisplayScale scale(image, plane);
    const double max = image.GetLevelMax(plane);
    for (int x = 0; x < count; ++x) {
        const double v = row[x];
        const double within = v < max ? scale.To256(v) : 255.0;
        const double clamped = v <= scale.min ? 0.0 : within;
        bytes[x] = static_cast<unsigned char>(static_cast<int>(clamped));
    }
}

void Interleave(const unsigned char* __restrict blue, const unsigned char* __restrict green,
                const unsigned char* __restrict red, int count, unsigned char* __restrict pixels)
{
    for (int x = 0; x < count; ++x) {
        pixels[x * 3] = blue[x];
        pixels[x * 3 + 1] = green[x];
        pixels[x * 3 + 2] = red[x];
    }
}

/// The bytes of a row of each plane.
class ByteRows {
public:
    ByteRows(const CStlImage& image, int planes) : image_(image), planes_(static_cast<std::size_t>(planes))
    {
        for (auto& plane : planes_) {
            plane.resize(static_cast<std::size_t>(std::max(image.GetWidth(), 0)));
        }
    }

    void Read(int y)
    {
        for (int p = 0; p < static_cast<int>(planes_.size()); ++p) {
            ToBytes(image_, p, image_.GetImageAdr(0, y, p, 1), image_.GetWidth(), planes_[p].data());
        }
    }

    const unsigned char* Plane(int p) const { return planes_[p].data(); }

    std::size_t Cell(int x) const
    {
        return static_cast<std::size_t>(ColourCell(planes_[0][x], planes_[1][x], planes_[2][x]));
    }

private:
    const CStlImage& image_;
    std::vector<std::vector<unsigned char>> planes_;
};

/// Writes what the cells of the colours of a row hold.
void WriteCells(const ByteRows& colours, const std::uint32_t* __restrict cells, int count,
                unsigned char* __restrict row)
{
    const unsigned char* __restrict const red = colours.Plane(0);
    const unsigned char* __restrict const green = colours.Plane(1);
    const unsigned char* __restrict const blue = colours.Plane(2);
    for (int x = 0; x < count; ++x) {
        row[x] = static_cast<unsigned char>(cells[ColourCell(red[x], green[x], blue[x])]);
    }
}

/// Calls write(bytes, y, row) for every row of the bitmap, on the workers, with room for the bytes of so many planes.
template <class Write>
void WriteDibRows(const CStlImage& image, BITMAPINFOHEADER* header, int planes, Write write)
{
    ForRowBlocks(RowBlocks(WorkingArea(image, nullptr)), Threads(), [&](const RowBlock& block) {
        ByteRows bytes(image, planes);
        for (int y = block.first; y < block.end; ++y) {
            unsigned char* const row = DibRow(header, y);
            write(bytes, y, row);
            ZeroPadding(header, row);
        }
    });
}

/// How many pixels of a colour image fall on each cell.
std::vector<std::uint32_t> CountCells(const CStlImage& image)
{
    const auto count = [&](std::uint32_t* cells, const RowBlock& block) {
        ByteRows colours(image, 3);
        for (int y = block.first; y < block.end; ++y) {
            colours.Read(y);
            for (int x = 0; x < image.GetWidth(); ++x) {
                ++cells[colours.Cell(x)];
            }
        }
    };
    return CountBlocks<std::uint32_t>(RowBlocks(WorkingArea(image, nullptr)), kColourCells, count);
}

} // namespace

HDIB CStlImage::GetDib(int bitCount) const
{
    const bool colour = GetPlanes() >= 3;
    if (bitCount != 8 && bitCount != 24) {
        return nullptr;
    }
    const HDIB dib = MakeDib(bitCount);
    auto* const header = dib == nullptr ? nullptr : static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
    if (header == nullptr) {
        return nullptr;
    }
    const bool isFilled = OrNothing([&] {
        if (bitCount == 8) {
            colour ? GetDib8Color(header) : GetDib8Mono(header);
        } else {
            colour ? GetDib24Color(header) : GetDib24Mono(header);
        }
        return true;
    });
    GlobalUnlock(dib);
    return isFilled ? dib : GlobalFree(dib);
}

HDIB CStlImage::MakeDib(int bitCount) const
{
    const std::uint64_t table = bitCount == 8 ? kColourTableBytes : 0;
    const std::uint64_t stride = Stride(static_cast<std::uint64_t>(GetWidth()), bitCount);
    const std::uint64_t rows = stride * static_cast<std::uint64_t>(GetHeight());
    if (rows > std::numeric_limits<DWORD>::max()) {
        return nullptr; // the header has no room for the size
    }
    const HDIB dib = GlobalAlloc(GMEM_MOVEABLE, sizeof(BITMAPINFOHEADER) + table + rows);
    auto* const header = dib == nullptr ? nullptr : static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
    if (header == nullptr) {
        return nullptr;
    }
    *header = BITMAPINFOHEADER{};
    header->biSize = sizeof(BITMAPINFOHEADER);
    header->biWidth = GetWidth();
    header->biHeight = GetHeight();
    header->biPlanes = 1;
    header->biBitCount = static_cast<WORD>(bitCount);
    header->biCompression = BI_RGB;
    header->biSizeImage = static_cast<DWORD>(rows);
    GlobalUnlock(dib);
    return dib;
}

void CStlImage::GetDib8Mono(BITMAPINFOHEADER* header) const
{
    unsigned char* const table = ColourTable(header);
    for (int i = 0; i < 256; ++i) {
        const auto grey = static_cast<BYTE>(i);
        const RGBQUAD entry{grey, grey, grey, 0};
        std::memcpy(table + i * sizeof entry, &entry, sizeof entry);
    }
    WriteDibRows(*this, header, 0, [&](ByteRows&, int y, unsigned char* row) {
        ToBytes(*this, 0, GetImageAdr(0, y, 0, 1), GetWidth(), row);
    });
}

void CStlImage::GetDib24Mono(BITMAPINFOHEADER* header) const
{
    WriteDibRows(*this, header, 1, [&](ByteRows& bytes, int y, unsigned char* row) {
        bytes.Read(y);
        Interleave(bytes.Plane(0), bytes.Plane(0), bytes.Plane(0), GetWidth(), row);
    });
}

void CStlImage::GetDib24Color(BITMAPINFOHEADER* header) const
{
    WriteDibRows(*this, header, 3, [&](ByteRows& bytes, int y, unsigned char* row) {
        bytes.Read(y);
        Interleave(bytes.Plane(2), bytes.Plane(1), bytes.Plane(0), GetWidth(), row);
    });
}

void CStlImage::GetDib8Color(BITMAPINFOHEADER* header) const
{
    std::vector<std::uint32_t> cells = CountCells(*this);
    const auto palette = ChoosePalette(cells);
    std::memcpy(ColourTable(header), palette.data(), sizeof palette);
    WriteDibRows(*this, header, 3, [&](ByteRows& colours, int y, unsigned char* row) {
        colours.Read(y);
        WriteCells(colours, cells.data(), GetWidth(), row);
    });
}
