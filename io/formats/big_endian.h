#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace corvane::io {

/// A value with its high byte first, as FITS has it, from one in the machine's order, or the other way round.
template <class T>
T BigEndian(T value)
{
    if constexpr (std::endian::native == std::endian::big || sizeof(T) == 1) {
        return value;
    } else if constexpr (sizeof(T) == 2) {
        return std::bit_cast<T>(__builtin_bswap16(std::bit_cast<std::uint16_t>(value)));
    } else if constexpr (sizeof(T) == 4) {
        return std::bit_cast<T>(__builtin_bswap32(std::bit_cast<std::uint32_t>(value)));
    } else {
        return std::bit_cast<T>(__builtin_bswap64(std::bit_cast<std::uint64_t>(value)));
    }
}

/// The value that begins at a byte, of whatever alignment.
template <class T>
T LoadBigEndian(const unsigned char* bytes)
{
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return BigEndian(value);
}

} // namespace corvane::io
