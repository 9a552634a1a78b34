#include "io/formats/srgb_profile.h"

#include <array>
#include <cmath>
#include <map>

#include "io/formats/big_endian.h"
#include "tests/io/files.h"

namespace corvane::io {
namespace {

std::uint32_t NumberAt(const std::string& bytes, std::size_t at)
{
    return LoadBigEndian<std::uint32_t>(reinterpret_cast<const unsigned char*>(bytes.data()) + at);
}

/// The elements of a profile by their signatures, and what must hold for any.
std::map<std::string, std::string> ElementsOf(const std::string& profile)
{
    EXPECT_EQ(NumberAt(profile, 0), profile.size());
    EXPECT_EQ(profile.substr(36, 4), "acsp");
    std::map<std::string, std::string> elements;
    for (std::size_t at = 132; at < 132 + 12 * NumberAt(profile, 128); at += 12) {
        EXPECT_EQ(NumberAt(profile, at + 4) % 4, 0U);
        EXPECT_LE(NumberAt(profile, at + 4) + NumberAt(profile, at + 8), profile.size());
        elements[profile.substr(at, 4)] = profile.substr(NumberAt(profile, at + 4), NumberAt(profile, at + 8));
    }
    return elements;
}

double FixedAt(const std::string& element, std::size_t i)
{
    return static_cast<std::int32_t>(NumberAt(element, 8 + 4 * i)) / 65536.0;
}

int CurveAt(const std::string& curve, double sample)
{
    const auto at = 12 + 2 * static_cast<std::size_t>(std::lround(sample * (NumberAt(curve, 8) - 1)));
    return LoadBigEndian<std::uint16_t>(reinterpret_cast<const unsigned char*>(curve.data()) + at);
}

// The columns are those that IEC 61966-2-1 comes to in the light D50, as B. Lindbloom lists them
// for a white that differs in the fourth digit.
TEST(SrgbProfile, HoldsTheColoursAndTheCurveOfTheStandard)
{
    auto colour = ElementsOf(SrgbProfile(3));
    const std::pair<const char*, std::array<double, 3>> columns[] = {{"rXYZ", {0.4360747, 0.2225045, 0.0139322}},
                                                                     {"gXYZ", {0.3850649, 0.7168786, 0.0971045}},
                                                                     {"bXYZ", {0.1430804, 0.0606169, 0.7141733}}};
    for (std::size_t i = 0; i < 3; ++i) {
        double white = 0.0;
        for (const auto& [name, column] : columns) {
            EXPECT_NEAR(FixedAt(colour[name], i), column[i], 3e-4) << name;
            white += FixedAt(colour[name], i);
        }
        EXPECT_NEAR(white, (std::array{0.9642, 1.0, 0.8249}[i]), 5e-5);
    }
    auto grey = ElementsOf(SrgbProfile(1));
    EXPECT_EQ(grey["kTRC"], colour["gTRC"]);
    EXPECT_EQ(grey.count("rXYZ"), 0U);
    for (const auto& [sample, light] : {std::pair{0.0, 0.0}, {0.02, 0.02 / 12.92}, {0.5, 0.21404}, {1.0, 1.0}}) {
        EXPECT_NEAR(CurveAt(grey["kTRC"], sample), 65535.0 * light, 65.0) << "to half a step";
    }
}

} // namespace
} // namespace corvane::io
