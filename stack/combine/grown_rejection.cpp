#include "stack/combine/grown_rejection.h"

#include <algorithm>
#include <limits>

namespace corvane::stack {

namespace {

/// A word of a row as it is once all columns moved to the left by -63 to 63.
std::uint64_t MovedWord(const std::uint64_t* row, std::size_t words, std::size_t i, int by)
{
    if (by == 0) {
        return row[i];
    }
    if (by > 0) {
        return row[i] >> by | (i + 1 < words ? row[i + 1] << (64 - by) : 0);
    }
    return row[i] << -by | (i > 0 ? row[i - 1] >> (64 + by) : 0);
}

} // namespace

GrownRejection::GrownRejection(const CombinePlan& plan, int planes)
    : grow_(plan.rule.rejection != nullptr ? plan.grow : 0), height_(plan.grid.height), frames_(plan.frames.size()),
      planes_(static_cast<std::size_t>(planes)), words_((static_cast<std::size_t>(plan.grid.width) + 63) / 64),
      nothing_(words_)
{}

RowSpan GrownRejection::Around(const RowSpan& rows) const
{
    return {std::max(rows.first - Reach(), 0), std::min(rows.end + Reach(), height_)};
}

void GrownRejection::Begin(const RowSpan& rows)
{
    rows_ = rows;
    high_.assign(Grows() ? frames_ * planes_ * words_ * (rows.end - rows.first) : 0, 0);
}

const std::uint64_t* GrownRejection::Row(std::size_t frame, int plane, int row) const
{
    const std::size_t rows = rows_.end - rows_.first;
    const bool isThere = row >= rows_.first && row < rows_.end;
    return isThere ? high_.data() + ((frame * planes_ + plane) * rows + (row - rows_.first)) * words_ : nothing_.data();
}

void GrownRejection::Enter(const Stretch& stretch, const std::vector<CombineLine>& lines, const double* high)
{
    for (int k = 0; k < stretch.count && Grows(); ++k) {
        if (high[k] == std::numeric_limits<double>::infinity()) {
            continue;
        }
        const int x = stretch.x + k;
        for (std::size_t i = 0; i < frames_; ++i) {
            if (lines[i].valid[k] != 0 && lines[i].values[k] > high[k]) {
                const std::size_t word = Row(i, stretch.plane, stretch.row) - high_.data() + x / 64;
                high_[word] |= std::uint64_t{1} << (x % 64);
            }
        }
    }
}

/// The columns of a word at which what was rejected belongs to a structure, given the rows from 2 above to 2 below.
/// Counts 64 columns at a time: a bit of each number, and one that stays once 4 are reached.
std::uint64_t GrownRejection::InStructures(const std::uint64_t* const* near, std::size_t word) const
{
    const std::uint64_t rejected = near[kNear][word];
    if (rejected == 0) {
        return 0;
    }
    std::uint64_t ones = 0;
    std::uint64_t twos = 0;
    std::uint64_t fourOrMore = 0;
    for (int dy = -kNear; dy <= kNear; ++dy) {
        for (int dx = -kNear; dx <= kNear; ++dx) {
            const std::uint64_t one = MovedWord(near[kNear + dy], words_, word, dx);
            const std::uint64_t two = ones & one;
            ones ^= one;
            fourOrMore |= twos & two;
            twos ^= two;
        }
    }
    return rejected & fourOrMore;
}

bool GrownRejection::Find(std::size_t frame, int plane, int row, ColumnBits& columns) const
{
    ColumnBits found(words_); // what belongs to structures, of all rows that are near enough
    for (int y = row - grow_; y <= row + grow_; ++y) {
        const std::uint64_t* near[2 * kNear + 1];
        for (int dy = -kNear; dy <= kNear; ++dy) {
            near[kNear + dy] = Row(frame, plane, y + dy);
        }
        for (std::size_t word = 0; word < words_; ++word) {
            found[word] |= InStructures(near, word);
        }
    }
    columns.assign(words_, 0);
    const bool isAny = std::any_of(found.begin(), found.end(), [](std::uint64_t word) { return word != 0; });
    for (std::size_t word = 0; word < words_ && isAny; ++word) {
        for (int dx = -grow_; dx <= grow_; ++dx) {
            columns[word] |= MovedWord(found.data(), words_, word, dx);
        }
    }
    return isAny;
}

} // namespace corvane::stack
