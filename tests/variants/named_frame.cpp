#include "tests/variants/named_frame.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "tests/variants/checksum.h"

using namespace corvane;

namespace {

using Cards = std::vector<std::pair<const char*, double>>;

constexpr int kBlank = 4321;
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kUndefined[]{kBlank, std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity};
// The sky of frames of one plane turns by a matrix and bends; that of others turns by an angle.
const Cards kCards{{"CRPIX1", 61.3}, {"CRPIX2", 40.7}, {"CRVAL1", 83.82}, {"CRVAL2", -5.39}, {"XPIXSZ", 3.76}};
const Cards kMonoCards{{"CD1_1", -2.1e-4}, {"CD1_2", 3.3e-5}, {"CD2_1", 3.1e-5},  {"CD2_2", 2.2e-4},
                       {"A_ORDER", 2},     {"A_2_0", 1.3e-5}, {"A_1_1", -2.7e-6}, {"B_ORDER", 2},
                       {"B_0_2", 7.1e-6},  {"XBAYROFF", 1},   {"EGAIN", 0.83},    {"RDNOISE", 5.1}};
const Cards kColourCards{{"CDELT1", -2.1e-4}, {"CDELT2", 2.2e-4}, {"CROTA2", 12.3}, {"NCOMBINE", 3}};

bool Says(const std::string& name, const char* word)
{
    return name.find(word) != name.npos;
}

/// A sky with round stars, whose profile takes nothing but arithmetic.
float Sample(double noise, int x, int y, int plane)
{
    double v = 1000.0 + noise / 256.0;
    for (std::uint64_t star = 0; star < 16; ++star) {
        const double dx = x - static_cast<double>(Mix(star, 1) % 10000) * (kFrameWidth / 10000.0);
        const double dy = y - static_cast<double>(Mix(star, 2) % 10000) * (kFrameHeight / 10000.0);
        const double r = 1.0 + (dx * dx + dy * dy) / 10.3;
        v += 4000.7 * (3.0 + static_cast<double>(star)) * (1.0 - 0.2 * plane) / (r * r * r);
    }
    return static_cast<float>(v);
}

/// From 0 to 1, and often one of these.
float MaskSample(float noise)
{
    return std::clamp(noise / 40000.0F - 0.3F, 0.0F, 1.0F);
}

} // namespace

bool IsColourFrame(const std::string& name)
{
    return Says(name, "colour");
}

io::Frame MakeNamedFrame(const std::string& name)
{
    const bool isColour = IsColourFrame(name);
    const bool isUndefined = Says(name, "undefined");
    CStlImage image = Noise(isColour ? 3 : 1, HashOf(name.data(), name.size()), kFrameWidth, kFrameHeight);
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int i = 0; i < kFrameWidth * kFrameHeight; ++i) {
            float& sample = *image.GetImageAdr(i % kFrameWidth, i / kFrameWidth, plane);
            sample = Says(name, "mask") ? MaskSample(sample) : Sample(sample, i % kFrameWidth, i / kFrameWidth, plane);
        }
    }
    for (int i = 0; i < (isUndefined ? 60 : 0); ++i) {
        image.SetPixelGrayRaw(kFrameWidth - 1 - i % 7 * 5, i * 3 % kFrameHeight, kUndefined[i % 4],
                              i % image.GetPlanes());
    }
    image.SetBlankUsed(isUndefined ? 1 : 0);
    image.SetBlank(kBlank);
    image.SetOwnLevel(isUndefined ? 0 : 1);
    image.SetOrgFileName(name.c_str());
    io::Frame frame;
    frame.image.Swap(&image);
    frame.header.Set("CTYPE1", isColour ? "RA---TAN" : "RA---TAN-SIP");
    frame.header.Set("CTYPE2", isColour ? "DEC--TAN" : "DEC--TAN-SIP");
    frame.header.Set("BAYERPAT", "RGGB");
    frame.header.Set("ROWORDER", isUndefined ? "BOTTOM-UP" : "TOP-DOWN");
    for (const Cards& cards : {kCards, isColour ? kColourCards : kMonoCards}) {
        for (const auto& [keyword, value] : cards) {
            frame.header.Set(keyword, value);
        }
    }
    return frame;
}
