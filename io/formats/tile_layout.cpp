#include "io/formats/tile_layout.h"

#include <charconv>
#include <limits>
#include <map>

#include "corvane/core/error.h"

namespace corvane::io {
namespace {

/// Parameters of the code: ZNAMEi and ZVALi.
std::map<std::string, std::string> ReadParameters(const FitsKeys& keys)
{
    constexpr int kMost = 999;
    std::map<std::string, std::string> parameters; // by name: the keyword of the value
    for (int i = 1; i <= kMost && keys.Has(Numbered("ZNAME", i)); ++i) {
        parameters.try_emplace(keys.Text(Numbered("ZNAME", i)), Numbered("ZVAL", i));
    }
    return parameters;
}

void ReadCode(const FitsKeys& keys, TileLayout& layout)
{
    static const std::map<std::string, TileCode> kCodes{
        {"RICE_1", TileCode::kRice},         {"RICE_ONE", TileCode::kRice}, {"GZIP_1", TileCode::kGzip},
        {"GZIP_2", TileCode::kShuffledGzip}, {"PLIO_1", TileCode::kPlio},   {"HCOMPRESS_1", TileCode::kHcompress},
        {"NOCOMPRESS", TileCode::kNone}};
    const auto code = kCodes.find(keys.Text("ZCMPTYPE"));
    if (code == kCodes.end()) {
        keys.Fail("ZCMPTYPE", "RICE_1, GZIP_1, GZIP_2, PLIO_1, HCOMPRESS_1 or NOCOMPRESS");
    }
    layout.code = code->second;
    const auto parameters = ReadParameters(keys);
    const auto value = [&](const char* name, long long min, long long max, long long absent) {
        const auto found = parameters.find(name);
        return static_cast<int>(found == parameters.end() ? absent : keys.Whole(found->second, min, max, absent));
    };
    if (layout.code == TileCode::kRice) {
        layout.blockSize = value("BLOCKSIZE", 1, 4096, layout.blockSize);
        layout.valueBytes = value("BYTEPIX", 1, 4, layout.valueBytes);
        if (layout.valueBytes == 3) {
            keys.Fail(parameters.at("BYTEPIX"), "1, 2 or 4");
        }
    }
    layout.smooth = value("SMOOTH", 0, 1, 0) != 0;
}

/// The tiles of each axis, whose number must be that of the table's rows.
void ReadTiles(const FitsKeys& keys, TileLayout& layout)
{
    double count = 1.0;
    for (std::size_t i = 0; i < layout.image.sizes.size(); ++i) {
        const long long size = layout.image.sizes[i];
        const long long tile = keys.Whole(Numbered("ZTILE", static_cast<long long>(i) + 1), 1, kAny, i == 0 ? size : 1);
        layout.tile.push_back(std::min(tile, size));
        layout.tiles.push_back((size - 1) / layout.tile.back() + 1);
        count *= static_cast<double>(layout.tiles.back());
    }
    const long long rows = keys.Whole("NAXIS2", 0, kAny);
    if (count != static_cast<double>(rows)) {
        throw FileError(keys.Name(), "NAXIS2 is " + std::to_string(rows) + ", but an image of " +
                                         SizesText(layout.image.sizes) + " in tiles of " + SizesText(layout.tile) +
                                         " has another number of tiles");
    }
}

/// Bytes of a value of a table's type; 0 for those that stand for no number.
std::uint64_t ValueBytes(char type)
{
    const std::map<char, std::uint64_t> bytes{{'L', 1}, {'B', 1}, {'A', 1}, {'I', 2}, {'J', 4},  {'E', 4},
                                              {'K', 8}, {'D', 8}, {'C', 8}, {'P', 8}, {'M', 16}, {'Q', 16}};
    const auto found = bytes.find(type);
    return found == bytes.end() ? 0 : found->second;
}

/// A field and how many bytes it takes in a row.
struct Field {
    TileColumn column;
    std::uint64_t bytes;
};

Field ReadField(const FitsKeys& keys, const std::string& keyword)
{
    const std::string form = keys.Text(keyword);
    std::uint64_t repeat = 1;
    const char* const end = form.data() + form.size();
    const char* const type = std::from_chars(form.data(), end, repeat).ptr;
    constexpr std::uint64_t kMost = 1U << 30U;
    if (type == end || repeat > kMost || (ValueBytes(*type) == 0 && *type != 'X')) {
        keys.Fail(keyword, "a format of a binary table, as 1PB(100) or 1D");
    }
    Field field{{0, *type, ' '}, *type == 'X' ? (repeat + 7) / 8 : repeat * ValueBytes(*type)};
    if (*type == 'P' || *type == 'Q') {
        field.column.descriptor = *type;
        field.column.type = type + 1 == end ? ' ' : type[1];
        if (repeat > 1 || ValueBytes(field.column.type) == 0) {
            keys.Fail(keyword, "a format of a binary table, as 1PB(100) or 1D");
        }
    }
    return field;
}

void ReadColumns(const FitsKeys& keys, TileLayout& layout)
{
    const std::map<std::string, std::pair<std::optional<TileColumn>*, std::string>> known{
        {"COMPRESSED_DATA", {&layout.compressed, "BIJ"}},
        {"GZIP_COMPRESSED_DATA", {&layout.gzipped, "B"}},
        {"UNCOMPRESSED_DATA", {&layout.uncompressed, "BIJKED"}},
        {"ZSCALE", {&layout.scaleColumn, "BIJED"}},
        {"ZZERO", {&layout.zeroColumn, "BIJED"}},
        {"ZBLANK", {&layout.undefinedColumn, "BIJK"}}};
    std::uint64_t offset = 0;
    for (long long i = 1; i <= keys.Whole("TFIELDS", 1, 999); ++i) {
        const std::string form = Numbered("TFORM", i);
        Field field = ReadField(keys, form);
        field.column.offset = offset;
        offset += field.bytes;
        const auto found = known.find(keys.Text(Numbered("TTYPE", i)));
        if (found == known.end() || field.bytes == 0) {
            continue;
        }
        const auto& [column, types] = found->second;
        const bool isData = column == &layout.compressed || column == &layout.gzipped || column == &layout.uncompressed;
        if (types.find(field.column.type) == types.npos || isData == (field.column.descriptor == ' ')) {
            keys.Fail(form, isData ? "an array in the heap, as 1PB(100)" : "one number, as 1D");
        }
        *column = field.column;
    }
    if (offset != layout.rowBytes) {
        throw FileError(keys.Name(), "NAXIS1 is " + std::to_string(layout.rowBytes) + ", but its columns have " +
                                         std::to_string(offset) + " bytes");
    }
    if (!layout.compressed && !layout.uncompressed) {
        throw FileError(keys.Name(), "its table of tiles has no column COMPRESSED_DATA");
    }
}

void ReadTable(const FitsHdu& hdu, TileLayout& layout)
{
    const FitsKeys& keys = hdu.keys;
    layout.rows = hdu.data;
    layout.rowBytes = static_cast<std::uint64_t>(keys.Whole("NAXIS1", 1, 1 << 20));
    const auto tableBytes = static_cast<long long>(layout.rowBytes) * keys.Whole("NAXIS2", 0, kAny >> 21U);
    const long long more = keys.Whole("PCOUNT", 0, kAny - tableBytes, 0);
    const long long heap = keys.Whole("THEAP", tableBytes, tableBytes + more, tableBytes);
    layout.heap = hdu.data + static_cast<std::uint64_t>(heap);
    layout.heapBytes = static_cast<std::uint64_t>(tableBytes + more - heap);
    ReadColumns(keys, layout);
}

void ReadQuantisation(const FitsKeys& keys, TileLayout& layout)
{
    layout.scale = keys.Number("ZSCALE", layout.scale);
    layout.zero = keys.Number("ZZERO", layout.zero);
    layout.undefined = keys.Integer(keys.Has("ZBLANK") ? "ZBLANK" : "BLANK");
    if (layout.image.bits > 0) {
        return;
    }
    const std::string method = keys.Text("ZQUANTIZ");
    if (!method.empty() && method != "NONE" && method != "NO_DITHER" && !method.starts_with("SUBTRACTIVE_DITHER_")) {
        keys.Fail("ZQUANTIZ", "NO_DITHER, SUBTRACTIVE_DITHER_1 or SUBTRACTIVE_DITHER_2");
    }
    layout.isQuantised = method != "NONE" && (layout.scaleColumn || keys.Has("ZSCALE"));
    layout.keepsZero = method.ends_with("_2");
    layout.isDithered = layout.keepsZero || method.ends_with("_1");
    layout.ditherStart = keys.Whole("ZDITHER0", 1, 10000, layout.ditherStart);
    const bool holdsFloats =
        layout.code == TileCode::kGzip || layout.code == TileCode::kShuffledGzip || layout.code == TileCode::kNone;
    if (!layout.isQuantised && !holdsFloats) {
        throw FileError(keys.Name(), "ZSCALE is missing; ZCMPTYPE '" + keys.Text("ZCMPTYPE") + "' holds no floats");
    }
}

} // namespace

std::size_t TileLayout::TileSamples() const
{
    double samples = 1.0;
    for (const long long size : tile) {
        samples *= static_cast<double>(size);
    }
    return samples < 9e18 ? static_cast<std::size_t>(samples) : std::numeric_limits<std::size_t>::max();
}

TileLayout ReadTileLayout(const FitsHdu& hdu)
{
    TileLayout layout;
    layout.image = DescribeImage(hdu);
    ReadCode(hdu.keys, layout);
    ReadTiles(hdu.keys, layout);
    ReadTable(hdu, layout);
    ReadQuantisation(hdu.keys, layout);
    return layout;
}

} // namespace corvane::io
