#pragma once

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "corvane/core/error.h"
#include "io/frame.h"
#include "tests/support/plain.h"

namespace corvane::test {

/// Expects an Error that names the path and has `part` in its reason.
template <class Action>
void ExpectError(Action action, const std::string& path, const std::string& part)
{
    try {
        action();
        ADD_FAILURE() << path << ": no error, expected one with '" << part << "'";
    } catch (const Error& error) {
        EXPECT_EQ(error.Subject(), path);
        EXPECT_NE(error.Reason().find(part), std::string::npos) << error.what();
    }
}

/// A file that cannot be read, and a part of the reason.
struct BadFile {
    const char* name;
    std::string bytes;
    const char* reason;
};

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

    void ExpectRefused(const std::vector<BadFile>& files) const
    {
        for (const BadFile& file : files) {
            SCOPED_TRACE(file.name);
            Write("bad", file.bytes);
            testing::internal::CaptureStderr();
            ExpectError([&] { io::Load(Path("bad")); }, Path("bad"), file.reason);
            EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "a library never prints";
        }
    }

private:
    std::filesystem::path folder_;
};

/// Samples that are the same, or both undefined.
inline bool SameSamples(const std::vector<float>& a, const std::vector<float>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](float x, float y) { return Near(x, y, 0); });
}

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
inline std::string Hdu(const std::vector<std::string>& cards, const std::string& data)
{
    std::string bytes;
    for (std::string card : cards) {
        card.resize(80, ' ');
        bytes += card;
    }
    bytes += "END";
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

/// An image whose samples tell their place, as whole numbers of at most `most`.
inline CStlImage Numbered(int width, int height, int planes, int most = 65535)
{
    return Make(width, height, planes,
                [=](int x, int y, int p) { return (x + 7 * y * width + 1013 * p) % (most + 1); });
}

} // namespace corvane::test
