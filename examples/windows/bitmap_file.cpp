#include "bitmap_file.h"

#include <cstdint>
#include <fstream>

#include "dib_block.h"

namespace example {
namespace {

constexpr WORD kSignature = 0x4D42; // "BM"

/// What a file says about itself, and how long it really is.
struct Headers {
    BITMAPFILEHEADER file{};
    BITMAPINFOHEADER info{};
    std::uint64_t fileBytes = 0;
};

template <class Header>
void Read(std::istream& file, Header& header)
{
    file.read(reinterpret_cast<char*>(&header), sizeof header);
}

bool IsKnownKind(const BITMAPINFOHEADER& info)
{
    const WORD bits = info.biBitCount;
    return info.biSize >= sizeof info && info.biCompression == BI_RGB &&
           (bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32);
}

/// The bytes of header and colour table, with which the packed form begins.
std::uint64_t FrontBytes(const BITMAPINFOHEADER& info)
{
    const std::uint64_t all = info.biBitCount <= 8 ? std::uint64_t{1} << info.biBitCount : 0;
    return info.biSize + (info.biClrUsed == 0 ? all : info.biClrUsed) * sizeof(RGBQUAD);
}

std::uint64_t RowBytes(const BITMAPINFOHEADER& info)
{
    return (static_cast<std::uint64_t>(info.biWidth) * info.biBitCount + 31) / 32 * 4;
}

std::uint64_t Rows(const BITMAPINFOHEADER& info)
{
    return static_cast<std::uint64_t>(std::llabs(info.biHeight)); // negative when the first row comes first
}

/// Throws unless colour table and pixels lie within the file. Nothing is allocated before that is known.
void Judge(const Headers& headers)
{
    const auto& [file, info, fileBytes] = headers;
    if (file.bfType != kSignature) {
        throw BitmapError("This is not a bitmap file.");
    }
    if (!IsKnownKind(info)) {
        throw BitmapError("Only plain bitmaps of 1, 4, 8, 24 or 32 bits can be opened: no compression, no masks.");
    }
    if (info.biWidth < 1 || info.biHeight == 0) {
        throw BitmapError("The bitmap is damaged: it has no pixels.");
    }
    if (file.bfOffBits < sizeof file + FrontBytes(info)) {
        throw BitmapError("The bitmap is damaged: its pixels begin within its colours.");
    }
    if (file.bfOffBits > fileBytes || RowBytes(info) > (fileBytes - file.bfOffBits) / Rows(info)) {
        throw BitmapError("The file ends before the bitmap does.");
    }
}

Headers ReadHeaders(std::istream& file, std::uint64_t fileBytes)
{
    Headers headers{.fileBytes = fileBytes};
    Read(file, headers.file);
    Read(file, headers.info);
    if (!file) {
        throw BitmapError("This is not a bitmap file.");
    }
    Judge(headers);
    return headers;
}

/// Header, colours and pixels without the gaps that a file may have between them.
DibBlock ReadPacked(std::istream& file, const Headers& headers)
{
    const auto front = static_cast<std::size_t>(FrontBytes(headers.info));
    const auto pixels = static_cast<std::size_t>(RowBytes(headers.info) * Rows(headers.info));
    DibBlock block(GlobalAlloc(GMEM_MOVEABLE, front + pixels));
    if (block == nullptr) {
        AfxThrowMemoryException();
    }
    const LockedDib dib(block.get());
    file.seekg(sizeof headers.file);
    file.read(dib.Bytes(), static_cast<std::streamsize>(front));
    file.seekg(headers.file.bfOffBits);
    file.read(dib.Bytes() + front, static_cast<std::streamsize>(pixels));
    if (!file) {
        throw BitmapError("The file cannot be read.");
    }
    return block;
}

} // namespace

CStlImage ReadBitmapFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::error_code error;
    const std::uint64_t fileBytes = std::filesystem::file_size(path, error);
    if (!file || error) {
        throw BitmapError("The file cannot be opened.");
    }
    DibBlock block = ReadPacked(file, ReadHeaders(file, fileBytes));
    CStlImage image;
    const bool isAttached = image.AttachDIB(block.get()) != 0;
    if (image.GetPixelCount() > 0) {
        block.release(); // the image has freed it, even if the memory for its float samples was lacking
    }
    if (!isAttached) {
        throw BitmapError("The bitmap is damaged, or larger than the memory.");
    }
    return image;
}

} // namespace example
