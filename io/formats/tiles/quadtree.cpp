#include "io/formats/tiles/quadtree.h"

#include <bit>
#include <vector>

namespace corvane::io::tiles {
namespace {

/// One level of the tree: a node's four bits tell which quarters of its square hold ones, row after row from the
/// highest bit.
struct Level {
    std::size_t rows = 0;
    std::size_t columns = 0;
    std::vector<unsigned char> nodes;

    Level() = default;
    Level(std::size_t r, std::size_t c) : rows(r), columns(c), nodes(r * c) {}
};

/// Bits of four by their prefix code; common ones have three bits, none of all six.
unsigned char TakeNode(BitReader& bits)
{
    static constexpr unsigned char kOfFourBits[] = {3, 5, 10, 12, 15}; // codes from 8 on
    static constexpr unsigned char kOfFiveBits[] = {6, 7, 9, 11, 13};  // codes from 26 on
    std::uint32_t code = bits.Take(3);
    if (code < 4) {
        return static_cast<unsigned char>(1U << code);
    }
    code = code << 1U | bits.Take(1);
    if (code < 13) {
        return kOfFourBits[code - 8];
    }
    code = code << 1U | bits.Take(1);
    if (code < 31) {
        return kOfFiveBits[code - 26];
    }
    return bits.Take(1) == 0 ? 0 : 14;
}

/// The bit of a node for the quarter at an even or odd row and column.
unsigned QuarterBit(const Level& level, std::size_t row, std::size_t column)
{
    const auto quarter = static_cast<unsigned>(row % 2 * 2 + column % 2);
    return level.nodes[row / 2 * level.columns + column / 2] >> (3U - quarter) & 1U;
}

/// Nodes whose quarter above is empty are empty; the others have codes, the last one first.
Level TakeLevel(BitReader& bits, const Level& above, std::size_t rows, std::size_t columns)
{
    Level level(rows, columns);
    for (std::size_t row = rows; row-- > 0;) {
        for (std::size_t column = columns; column-- > 0;) {
            if (QuarterBit(above, row, column) != 0) {
                level.nodes[row * columns + column] = TakeNode(bits);
            }
        }
    }
    return level;
}

/// The lowest level, whose quarters are single bits of the plane; empty when the plane is.
Level TakeTree(BitReader& bits, const Block& block)
{
    const auto height = static_cast<int>(std::bit_width(std::max(block.rows, block.columns) - 1));
    Level level(1, 1);
    level.nodes[0] = TakeNode(bits);
    if (level.nodes[0] == 0) {
        return {};
    }
    for (int side = height - 1; side > 0; --side) {
        const std::size_t round = (std::size_t{1} << side) - 1;
        level = TakeLevel(bits, level, (block.rows + round) >> side, (block.columns + round) >> side);
    }
    return level;
}

Level TakePlainLevel(BitReader& bits, const Block& block)
{
    Level level((block.rows + 1) / 2, (block.columns + 1) / 2);
    for (unsigned char& node : level.nodes) {
        node = static_cast<unsigned char>(bits.Take(4));
    }
    return level;
}

void PutNode(unsigned node, std::size_t row, std::size_t column, int bit, const Block& block)
{
    for (std::size_t quarter = 0; quarter < 4; ++quarter) {
        const std::size_t y = row + quarter / 2;
        const std::size_t x = column + quarter % 2;
        if ((node >> (3 - quarter) & 1U) != 0 && y < block.rows && x < block.columns) {
            block.values[y * block.stride + x] |= std::int64_t{1} << bit;
        }
    }
}

void PutPlane(const Level& level, int bit, const Block& block)
{
    for (std::size_t row = 0; row < level.rows; ++row) {
        for (std::size_t column = 0; column < level.columns; ++column) {
            if (const unsigned node = level.nodes[row * level.columns + column]; node != 0) {
                PutNode(node, 2 * row, 2 * column, bit, block);
            }
        }
    }
}

} // namespace

void DecodeBitPlanes(BitReader& bits, int planes, const Block& block)
{
    constexpr std::uint32_t kPlain = 0;
    constexpr std::uint32_t kTree = 15;
    for (int bit = planes - 1; bit >= 0; --bit) {
        const std::uint32_t method = bits.Take(4);
        if (method != kPlain && method != kTree) {
            throw DamagedData("a bit plane's code has no meaning");
        }
        PutPlane(method == kTree ? TakeTree(bits, block) : TakePlainLevel(bits, block), bit, block);
    }
}

} // namespace corvane::io::tiles
