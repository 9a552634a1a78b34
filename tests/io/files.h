#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"
#include "io/error.h"
#include "tests/support/images.h"

namespace corvane::test {

/// A folder of its own for each test, gone afterwards.
class InFolder : public testing::Test {
protected:
    InFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "corvane-io-XXXXXX").string();
        folder_ = mkdtemp(name.data());
    }
    ~InFolder() override { std::filesystem::remove_all(folder_); }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    std::string Read(const std::string& name) const
    {
        std::ifstream file(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::size_t FileCount() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
    }

private:
    std::filesystem::path folder_;
};

/// Values as bytes, the high byte first as FITS has them or the low one as our TIFF files do.
template <class T>
std::string Bytes(const std::vector<T>& values, bool highFirst)
{
    std::string bytes;
    for (const T& value : values) {
        std::string one(sizeof value, '\0');
        std::memcpy(one.data(), &value, sizeof value);
        bytes += highFirst ? std::string(one.rbegin(), one.rend()) : one;
    }
    return bytes;
}

/// A FITS HDU of cards and samples, padded as the standard says.
inline std::string Hdu(const std::vector<std::string>& cards, const std::string& data, bool withEnd = true)
{
    std::string bytes;
    for (std::string card : cards) {
        card.resize(80, ' ');
        bytes += card;
    }
    bytes += withEnd ? "END" : "";
    bytes.resize((bytes.size() + 2879) / 2880 * 2880, ' ');
    bytes += data;
    bytes.resize((bytes.size() + 2879) / 2880 * 2880, '\0');
    return bytes;
}

inline std::vector<std::string> Cards(int bits, const std::vector<long long>& sizes,
                                      const std::vector<std::string>& more = {})
{
    std::vector<std::string> cards{"SIMPLE  =                    T", "BITPIX  = " + std::to_string(bits),
                                   "NAXIS   = " + std::to_string(sizes.size())};
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        cards.push_back("NAXIS" + std::to_string(i + 1) + "  = " + std::to_string(sizes[i]));
    }
    cards.insert(cards.end(), more.begin(), more.end());
    return cards;
}

/// One entry of a TIFF directory with a single number, or with a place for bytes.
struct TiffTag {
    int tag;
    int type; ///< 1 byte, 2 text, 3 short, 4 long
    std::uint32_t value;
    std::string bytes = {};
};

/// A TIFF file of one directory; its samples begin at byte 8.
inline std::string Tiff(const std::vector<TiffTag>& tags, std::string samples)
{
    samples.resize((samples.size() + 1) / 2 * 2);
    const auto start = static_cast<std::uint32_t>(8 + samples.size());
    auto extra = static_cast<std::uint32_t>(start + 2 + 12 * tags.size() + 4);
    std::string entries = Bytes<std::uint16_t>({static_cast<std::uint16_t>(tags.size())}, false);
    std::string tail;
    for (const TiffTag& tag : tags) {
        const bool inside = tag.bytes.size() <= 4;
        std::string value = tag.bytes.empty() ? Bytes<std::uint32_t>({tag.value}, false) : tag.bytes;
        if (!inside) {
            value = Bytes<std::uint32_t>({extra}, false);
            tail += tag.bytes;
            extra += static_cast<std::uint32_t>(tag.bytes.size());
        }
        value.resize(4);
        const std::size_t unit = tag.type == 3 ? 2 : tag.type == 4 ? 4 : 1;
        const auto count = static_cast<std::uint32_t>(tag.bytes.empty() ? 1 : tag.bytes.size() / unit);
        entries +=
            Bytes<std::uint16_t>({static_cast<std::uint16_t>(tag.tag), static_cast<std::uint16_t>(tag.type)}, false) +
            Bytes<std::uint32_t>({count}, false) + value;
    }
    return "II*" + std::string(1, '\0') + Bytes<std::uint32_t>({start}, false) + samples + entries +
           std::string(4, '\0') + tail;
}

/// An image whose samples tell their place, as whole numbers of at most `most`.
inline CStlImage Numbered(int width, int height, int planes, int most = 65535)
{
    CStlImage image(-32, width, height, planes, 1.0, 0.0, 1);
    for (int p = 0; p < planes; ++p) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                *image.GetImageAdr(x, y, p) = static_cast<float>((x + 7 * y * width + 1013 * p) % (most + 1));
            }
        }
    }
    return image;
}

/// Expects an Error that names the path and has `part` in its reason.
template <class Action>
void ExpectError(Action action, const std::string& path, const std::string& part)
{
    try {
        action();
        ADD_FAILURE() << path << ": no error, expected one with '" << part << "'";
    } catch (const io::Error& error) {
        EXPECT_EQ(error.Path(), path);
        EXPECT_NE(error.Reason().find(part), std::string::npos) << error.what();
    }
}

} // namespace corvane::test
