#include "io/formats/lzw.h"

#include "io/formats/damaged_data.h"

namespace corvane::io {
namespace {

constexpr int kLeastBits = 9;
constexpr int kMostBits = 16;
constexpr int kClear = 256; // empties the table, if the file has such a code

} // namespace

LzwStream::LzwStream(ByteSource& packed) : packed_(packed), prefix_(kMostCodes), last_(kMostCodes)
{
    unsigned char start[3] = {};
    packed.Read(0, start);
    constexpr unsigned kBitsMask = 0x1f;
    constexpr unsigned kHasClear = 0x80;
    mostBits_ = static_cast<int>(start[2] & kBitsMask);
    if (mostBits_ < kLeastBits || mostBits_ > kMostBits) {
        throw DamagedData("its LZW codes have " + std::to_string(mostBits_) + " bits; 9 to 16 are possible");
    }
    first_ = (start[2] & kHasClear) != 0 ? kClear + 1 : kClear;
    used_ = first_;
    for (int i = 0; i < kClear; ++i) {
        last_[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i);
    }
}

bool LzwStream::FillGroup()
{
    const std::size_t got = packed_.Read(read_, {group_.data(), static_cast<std::size_t>(bits_)});
    read_ += got;
    groupBits_ = static_cast<int>(got) * 8;
    taken_ = 0;
    return groupBits_ >= bits_;
}

/// The next code, -1 at the end. When the length of codes changes, the rest of the group has no meaning.
int LzwStream::NextCode()
{
    const bool isFull = used_ >= 1 << bits_;
    if (isFull && bits_ < mostBits_) {
        ++bits_;
        taken_ = groupBits_;
    }
    if (groupBits_ - taken_ < bits_ && !FillGroup()) {
        return -1;
    }
    const auto byte = static_cast<std::size_t>(taken_ / 8);
    const unsigned window = group_[byte] | static_cast<unsigned>(group_[byte + 1]) << 8U |
                            (byte + 2 < group_.size() ? static_cast<unsigned>(group_[byte + 2]) << 16U : 0U);
    const auto code = static_cast<int>(window >> (taken_ % 8) & ((1U << bits_) - 1U));
    taken_ += bits_;
    return code;
}

/// Puts a code's string into `pending_`, and a new string into the table: the previous one and one byte.
void LzwStream::Expand(int code)
{
    const bool isNew = code == used_ && previous_ >= 0; // the string that this very step defines
    if (code >= used_ && !isNew) {
        throw DamagedData("an LZW code has no meaning");
    }
    if (isNew) {
        pending_.push_back(previousStart_);
    }
    int at = isNew ? previous_ : code;
    for (; at >= kClear; at = prefix_[static_cast<std::size_t>(at)]) {
        pending_.push_back(last_[static_cast<std::size_t>(at)]);
    }
    previousStart_ = static_cast<unsigned char>(at);
    pending_.push_back(previousStart_);
    if (previous_ >= 0 && used_ < 1 << mostBits_) {
        prefix_[static_cast<std::size_t>(used_)] = static_cast<std::uint16_t>(previous_);
        last_[static_cast<std::size_t>(used_)] = previousStart_;
        ++used_;
    }
    previous_ = code;
}

std::size_t LzwStream::Next(MutableBytes bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        if (!pending_.empty()) {
            bytes[done++] = pending_.back();
            pending_.pop_back();
            continue;
        }
        const int code = NextCode();
        if (code < 0) {
            break;
        }
        if (code == kClear && first_ > kClear) {
            used_ = first_;
            bits_ = kLeastBits;
            previous_ = -1;
            taken_ = groupBits_;
        } else {
            Expand(code);
        }
    }
    return done;
}

} // namespace corvane::io
