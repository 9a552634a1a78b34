#pragma once

#include <bit>
#include <cstdint>

#include "io/formats/big_endian.h"
#include "io/formats/bytes.h"
#include "io/formats/damaged_data.h"

namespace corvane::io::tiles {

/// Takes bits from the front of bytes, the high ones first. Throws DamagedData when there are too few.
class BitReader {
public:
    explicit BitReader(Bytes bytes) : next_(bytes.data()), end_(bytes.data() + bytes.size()) {}

    /// The next `count` bits [0..32] as a number.
    std::uint32_t Take(int count)
    {
        Fill();
        if (count > held_) {
            Fail();
        }
        const auto value = static_cast<std::uint32_t>(window_ >> 32U >> (32 - count));
        Drop(count);
        return value;
    }

    /// The next six bits without taking them, 0 for those behind the end.
    std::uint32_t LookAtSix()
    {
        Fill();
        return static_cast<std::uint32_t>(window_ >> 58U);
    }

    /// Takes bits that were looked at.
    void TakeSeen(int count)
    {
        if (count > held_) {
            Fail();
        }
        Drop(count);
    }

    /// How many zeros stand before the next one, which is taken too.
    std::uint32_t TakeZeros()
    {
        std::uint32_t zeros = 0;
        for (Fill(); window_ == 0; Fill()) {
            if (held_ == 0) {
                Fail();
            }
            zeros += static_cast<std::uint32_t>(held_);
            held_ = 0;
        }
        const int more = std::countl_zero(window_);
        Drop(more + 1);
        return zeros + static_cast<std::uint32_t>(more);
    }

    /// Leaves what is left of the present byte.
    void SkipToByte() { Drop(held_ % 8); }

private:
    /// Bits below those that are held are zero.
    void Fill()
    {
        constexpr int kEnough = 56;
        if (held_ > kEnough - 8) {
            return;
        }
        if (end_ - next_ >= 8) {
            const int bytes = (64 - held_) / 8;
            const std::uint64_t more = LoadBigEndian<std::uint64_t>(next_) & ~std::uint64_t{0} << (64 - 8 * bytes);
            window_ |= more >> held_;
            next_ += bytes;
            held_ += 8 * bytes;
            return;
        }
        for (; held_ <= kEnough && next_ != end_; held_ += 8) {
            window_ |= static_cast<std::uint64_t>(*next_++) << (kEnough - held_);
        }
    }

    void Drop(int count)
    {
        window_ = count < 64 ? window_ << count : 0;
        held_ -= count;
    }

    [[noreturn]] static void Fail() { throw DamagedData("the data end too early"); }

    const unsigned char* next_;
    const unsigned char* end_;
    std::uint64_t window_ = 0;
    int held_ = 0; ///< bits of the window
};

} // namespace corvane::io::tiles
