#include "io/formats/tiles/quadtree.h"

#include <array>
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

struct PrefixCode {
    unsigned char node;
    unsigned char length;
};

/// The node that each six bits begin with: common ones have codes of three bits, none of all six.
constexpr std::array<PrefixCode, 64> PrefixCodes()
{
    constexpr unsigned char kNodes[] = {1, 2, 4, 8, 3, 5, 10, 12, 15, 6, 7, 9, 11, 13, 0, 14}; // in the order of codes
    constexpr unsigned char kLengths[] = {3, 3, 3, 3, 4, 4, 4, 4, 4, 5, 5, 5, 5, 5, 6, 6};
    std::array<PrefixCode, 64> codes{};
    std::size_t at = 0;
    for (std::size_t i = 0; i < std::size(kNodes); ++i) {
        for (const std::size_t end = at + (std::size_t{64} >> kLengths[i]); at < end; ++at) {
            codes[at] = {kNodes[i], kLengths[i]};
        }
    }
    return codes;
}

unsigned char TakeNode(BitReader& bits)
{
    static constexpr std::array<PrefixCode, 64> kCodes = PrefixCodes();
    const PrefixCode code = kCodes[bits.LookAtSix()];
    bits.TakeSeen(code.length);
    return code.node;
}

/// Nodes whose quarter above is empty are empty; the others have codes, the last one first.
Level TakeLevel(BitReader& bits, const Level& above, std::size_t rows, std::size_t columns)
{
    Level level(rows, columns);
    for (std::size_t row = rows; row-- > 0;) {
        const unsigned char* const parents = above.nodes.data() + row / 2 * above.columns;
        unsigned char* const nodes = level.nodes.data() + row * columns;
        const unsigned left = row % 2 == 0 ? 8 : 2; // the bit of the left quarter; that of the right one is half of it
        for (std::size_t column = columns; column-- > 0;) {
            if ((parents[column / 2] & left >> column % 2) != 0) {
                nodes[column] = TakeNode(bits);
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
    std::int64_t* const first = block.values + row * block.stride + column;
    const auto put = [&](std::int64_t* value, unsigned quarter) {
        *value |= static_cast<std::int64_t>(node >> (3 - quarter) & 1U) << bit;
    };
    const bool hasRight = column + 1 < block.columns;
    put(first, 0);
    if (hasRight) {
        put(first + 1, 1);
    }
    if (row + 1 < block.rows) {
        put(first + block.stride, 2);
        if (hasRight) {
            put(first + block.stride + 1, 3);
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
