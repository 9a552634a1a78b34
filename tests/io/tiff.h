#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/io/files.h"

namespace corvane::test {

/// The low bytes of a number, the lowest first.
inline std::string Little(std::size_t number, std::size_t count)
{
    return Bytes<std::size_t>({number}, false).substr(0, count);
}

/// Values of TIFF tags, after their type: 1 byte, 2 text, 3 short, 4 long.
using TiffTags = std::map<int, std::pair<int, std::vector<unsigned>>>;

/// A TIFF file whose samples begin at byte 8. Tags that are not given are those of 3 x 2 samples of 16 bits in a strip.
inline std::string Tiff(TiffTags tags, const std::string& samples)
{
    const auto size = static_cast<unsigned>(samples.size());
    tags.insert({{256, {4, {3}}}, {257, {4, {2}}}, {258, {3, {16}}}, {259, {3, {1}}}, {262, {3, {1}}}});
    tags.insert({{273, {4, {8}}}, {277, {3, {1}}}, {278, {4, {2}}}, {279, {4, {size}}}});
    std::string file = "II*" + Little(0, 1) + Little(8 + size, 4) + samples + Little(tags.size(), 2);
    const std::size_t end = file.size() + 12 * tags.size() + 4;
    std::string tail;
    for (const auto& [tag, typed] : tags) {
        std::string bytes;
        for (const unsigned value : typed.second) {
            bytes += Little(value, typed.first < 3 ? 1 : typed.first == 3 ? 2 : 4);
        }
        if (bytes.size() > 4) {
            tail += bytes;
            bytes = Little(end + tail.size() - bytes.size(), 4);
        }
        bytes.resize(4);
        file += Little(tag, 2) + Little(typed.first, 2) + Little(typed.second.size(), 4) + bytes;
    }
    return file + Little(0, 4) + tail;
}

inline std::vector<unsigned> Letters(const std::string& text)
{
    std::vector<unsigned> letters(text.begin(), text.end());
    letters.push_back(0);
    return letters;
}

/// A camera's raw file of 16-bit counts.
inline std::string Dng(unsigned width, unsigned height, const std::vector<float>& counts)
{
    return Tiff({{254, {4, {0}}},
                 {256, {4, {width}}},
                 {257, {4, {height}}},
                 {262, {3, {32803}}},
                 {271, {2, Letters("Maker")}},
                 {272, {2, Letters("Camera 1")}},
                 {278, {4, {height}}},
                 {33421, {3, {2, 2}}},
                 {33422, {1, {1, 2, 0, 1}}},
                 {50706, {1, {1, 4, 0, 0}}},
                 {50717, {4, {4095}}}},
                Bytes(std::vector<std::uint16_t>(counts.begin(), counts.end()), false));
}

} // namespace corvane::test
