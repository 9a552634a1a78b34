#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>

namespace corvane::test {

/// A camera raw file of the least that a reader asks for: one directory, counts of 16 bits under an RGGB mosaic.
inline std::string SmallDng()
{
    constexpr std::uint32_t kWidth = 64;
    constexpr std::uint32_t kHeight = 48;
    enum Type : std::uint16_t { kByte = 1, kText = 2, kShort = 3, kLong = 4 };
    struct Entry {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        std::uint32_t value;
    };
    const auto text = [](std::string_view letters) { // three letters and the end of the text lie in the entry itself
        std::uint32_t value = 0;
        std::memcpy(&value, letters.data(), 3);
        return value;
    };
    constexpr std::uint32_t kEntries = 17;
    constexpr std::uint32_t kSamplesAt = 8 + 2 + kEntries * sizeof(Entry) + 4;
    const Entry entries[kEntries] = {
        {254, kLong, 1, 0}, // the full image
        {256, kLong, 1, kWidth},
        {257, kLong, 1, kHeight},
        {258, kShort, 1, 16},    // bits
        {259, kShort, 1, 1},     // not compressed
        {262, kShort, 1, 32803}, // a mosaic of filters
        {271, kText, 4, text("Cam")},
        {272, kText, 4, text("One")},
        {273, kLong, 1, kSamplesAt},
        {274, kShort, 1, 1}, // upright
        {277, kShort, 1, 1}, // a sample a pixel
        {278, kLong, 1, kHeight},
        {279, kLong, 1, 2 * kWidth * kHeight},
        {33421, kShort, 2, 0x00020002}, // the mosaic repeats after 2 x 2 pixels:
        {33422, kByte, 4, 0x02010100},  // red, green, green, blue
        {50706, kByte, 4, 0x00000401},  // version 1.4
        {50717, kLong, 1, 65535},       // white
    };
    std::string file("II*\0\10\0\0\0", 8);
    const auto add = [&file](const auto& value) { file.append(reinterpret_cast<const char*>(&value), sizeof value); };
    add(static_cast<std::uint16_t>(kEntries));
    add(entries);
    add(std::uint32_t{0}); // no other directory
    for (std::uint32_t i = 0; i < kWidth * kHeight; ++i) {
        add(static_cast<std::uint16_t>(500 + i * 7919 % 40000));
    }
    return file;
}

} // namespace corvane::test
