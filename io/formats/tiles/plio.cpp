#include "io/formats/tiles/plio.h"

#include <algorithm>

#include "io/formats/big_endian.h"
#include "io/formats/damaged_data.h"

namespace corvane::io::tiles {
namespace {

enum Instruction : unsigned {
    kZeros = 0,
    kSetHigh = 1,
    kRaiseHigh = 2,
    kLowerHigh = 3,
    kHighs = 4,
    kZerosAndHigh = 5,
    kRaiseAndPut = 6,
    kLowerAndPut = 7,
};

class Words {
public:
    explicit Words(Bytes bytes) : bytes_(bytes) {}

    unsigned At(std::size_t i) const
    {
        if (i >= bytes_.size() / 2) {
            throw DamagedData("the list of runs ends too early");
        }
        return LoadBigEndian<std::uint16_t>(bytes_.data() + 2 * i);
    }

private:
    Bytes bytes_;
};

/// The words of a list that are instructions.
struct Extent {
    std::size_t first;
    std::size_t end;
};

/// The older form of a list has its length in the third word; there the newer one has a negative number, and its length
/// in the next two.
Extent FindInstructions(const Words& words)
{
    constexpr unsigned kNegative = 0x8000;
    const unsigned third = words.At(2);
    if (third != 0 && (third & kNegative) == 0) {
        return {3, third};
    }
    return {words.At(1),
            (static_cast<std::size_t>(words.At(4) & (kNegative - 1)) << 15U) + (words.At(3) & (kNegative - 1))};
}

/// Values that are put one run after the other.
class Runs {
public:
    explicit Runs(std::span<std::int32_t> values) : values_(values) {}

    void Put(std::size_t count, std::int32_t value)
    {
        count = std::min(count, values_.size() - done_);
        std::fill_n(values_.begin() + static_cast<std::ptrdiff_t>(done_), count, value);
        done_ += count;
    }

    bool AreComplete() const { return done_ == values_.size(); }

private:
    std::span<std::int32_t> values_;
    std::size_t done_ = 0;
};

} // namespace

void DecodePlio(Bytes packed, std::span<std::int32_t> values)
{
    const Words words(packed);
    const Extent extent = FindInstructions(words);
    Runs runs(values);
    std::uint32_t high = 1;
    for (std::size_t i = extent.first; i < extent.end && !runs.AreComplete(); ++i) {
        constexpr unsigned kOperandBits = 12;
        const unsigned operand = words.At(i) & ((1U << kOperandBits) - 1U);
        const unsigned instruction = words.At(i) >> kOperandBits;
        switch (instruction) {
        case kZeros:
        case kZerosAndHigh:
            runs.Put(instruction == kZeros || operand == 0 ? operand : operand - 1, 0);
            break;
        case kSetHigh:
            high = words.At(++i) << kOperandBits | operand;
            break;
        case kRaiseHigh:
        case kRaiseAndPut:
            high += operand;
            break;
        case kLowerHigh:
        case kLowerAndPut:
            high -= operand;
            break;
        case kHighs:
            break;
        default:
            throw DamagedData("the list of runs has an instruction " + std::to_string(instruction));
        }
        if (instruction >= kHighs) {
            runs.Put(instruction == kHighs ? operand : 1, static_cast<std::int32_t>(high));
        }
    }
    runs.Put(values.size(), 0);
}

} // namespace corvane::io::tiles
