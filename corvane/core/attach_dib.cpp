// Taking over a device-independent bitmap as the samples of an image.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#include "corvane/core/walk.h"
#include "corvane/platform/global_memory.h"
#include "corvane/platform/memory_exception.h"

namespace {

/// A packed bitmap as it lies in its block: every size has been checked against the block's.
struct PackedDib {
    const unsigned char* table = nullptr;
    const unsigned char* rows = nullptr;
    int width = 0;
    int height = 0;
    bool topDown = false;
    int bitCount = 0;
    int colours = 0;
    std::uint64_t stride = 0;

    const unsigned char* Row(int y) const
    {
        return rows + static_cast<std::uint64_t>(topDown ? y : height - 1 - y) * stride;
    }
};

/// Keeps a global block locked while it is read.
class LockedBlock {
public:
    explicit LockedBlock(HGLOBAL block) : block_(block), data_(block == nullptr ? nullptr : GlobalLock(block)) {}
    ~LockedBlock()
    {
        if (data_ != nullptr) {
            GlobalUnlock(block_);
        }
    }
    LockedBlock(const LockedBlock&) = delete;
    LockedBlock& operator=(const LockedBlock&) = delete;

    const unsigned char* Data() const { return static_cast<const unsigned char*>(data_); }
    std::uint64_t Size() const { return data_ == nullptr ? 0 : GlobalSize(block_); }

private:
    HGLOBAL block_;
    void* data_;
};

bool Parse(const LockedBlock& block, PackedDib& dib)
{
    BITMAPINFOHEADER header;
    if (block.Size() < sizeof header) {
        return false;
    }
    std::memcpy(&header, block.Data(), sizeof header);
    const bool known = header.biBitCount == 1 || header.biBitCount == 4 || header.biBitCount == 8 ||
                       header.biBitCount == 24 || header.biBitCount == 32;
    if (!known || header.biCompression != BI_RGB || header.biSize < sizeof header || header.biWidth < 1 ||
        header.biHeight == 0 || header.biHeight == std::numeric_limits<LONG>::min()) {
        return false;
    }
    dib.width = static_cast<int>(header.biWidth);
    dib.topDown = header.biHeight < 0;
    dib.height = static_cast<int>(dib.topDown ? -header.biHeight : header.biHeight);
    dib.bitCount = header.biBitCount;
    const DWORD most = dib.bitCount <= 8 ? DWORD{1} << dib.bitCount : 0;
    const DWORD colours = header.biClrUsed == 0 ? most : header.biClrUsed;
    if (most != 0 && colours > most) {
        return false;
    }
    dib.colours = static_cast<int>(most == 0 ? 0 : colours);
    dib.stride = (static_cast<std::uint64_t>(dib.width) * static_cast<std::uint64_t>(dib.bitCount) + 31) / 32 * 4;
    const std::uint64_t front = std::uint64_t{header.biSize} + std::uint64_t{colours} * sizeof(RGBQUAD);
    dib.table = block.Data() + header.biSize;
    dib.rows = block.Data() + front;
    return front <= block.Size() && dib.stride <= (block.Size() - front) / static_cast<std::uint64_t>(dib.height);
}

RGBQUAD PixelAt(const PackedDib& dib, const std::array<RGBQUAD, 256>& table, const unsigned char* row, int x)
{
    if (dib.bitCount >= 24) {
        const unsigned char* const pixel =
            row + static_cast<std::size_t>(x) * static_cast<std::size_t>(dib.bitCount / 8);
        return {pixel[0], pixel[1], pixel[2], 0};
    }
    const int perByte = 8 / dib.bitCount;
    const int shift = (perByte - 1 - x % perByte) * dib.bitCount;
    return table[(row[x / perByte] >> shift) & ((1 << dib.bitCount) - 1)];
}

/// The colour table of a bitmap of up to 8 bits; entries that the file leaves out are black.
std::array<RGBQUAD, 256> ReadTable(const PackedDib& dib)
{
    std::array<RGBQUAD, 256> table{};
    std::memcpy(table.data(), dib.table, static_cast<std::size_t>(dib.colours) * sizeof(RGBQUAD));
    return table;
}

/// One plane is enough for a bitmap whose colour table holds greys alone.
int PlanesNeeded(const PackedDib& dib, const std::array<RGBQUAD, 256>& table)
{
    const auto isGrey = [](const RGBQUAD& c) { return c.rgbRed == c.rgbGreen && c.rgbGreen == c.rgbBlue; };
    return dib.bitCount <= 8 && std::all_of(table.begin(), table.end(), isGrey) ? 1 : 3;
}

void ReadRow(const PackedDib& dib, const std::array<RGBQUAD, 256>& table, int y, CImage& read)
{
    std::array<unsigned char*, 3> out{};
    for (int p = 0; p < read.GetPlanes(); ++p) {
        out[static_cast<std::size_t>(p)] = read.GetImageAdr(0, y, p);
    }
    for (int x = 0; x < dib.width; ++x) {
        const RGBQUAD c = PixelAt(dib, table, dib.Row(y), x);
        const std::array<unsigned char, 3> values{c.rgbRed, c.rgbGreen, c.rgbBlue};
        for (std::size_t p = 0; p < static_cast<std::size_t>(read.GetPlanes()); ++p) {
            out[p][x] = values[p];
        }
    }
}

bool ReadDib(HDIB handle, CImage& image)
{
    const LockedBlock block(handle);
    PackedDib dib;
    if (!Parse(block, dib)) {
        return false;
    }
    const auto table = ReadTable(dib);
    CImage read(8, dib.width, dib.height, PlanesNeeded(dib, table), 1.0, 0.0, 1);
    read.SetSigned(0);
    const corvane::RowBlocks blocks({0, 0, dib.width, dib.height});
    corvane::ForRowBlocks(blocks, corvane::ThreadsOn(read, {}), [&](const corvane::RowBlock& rows) {
        for (int y = rows.first; y < rows.end; ++y) {
            ReadRow(dib, table, y, read);
        }
    });
    image.Swap(&read);
    return true;
}

} // namespace

int CImage::AttachDIB(HDIB dib)
{
    const bool isRead = corvane::OrNothing([&] { return ReadDib(dib, *this); });
    if (isRead) {
        GlobalFree(dib);
    }
    return isRead ? 1 : 0;
}
