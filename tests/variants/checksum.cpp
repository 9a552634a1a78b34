// Prints a checksum of what every operation makes of the same images. compare.sh runs it once with each variant of the
// library: a line that differs names the operation whose arithmetic depends on the processor.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "corvane/corvane.h"

namespace {

std::uint64_t Mix(std::uint64_t hash, std::uint64_t value)
{
    hash = (hash ^ value) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 29);
}

template <class T>
std::uint64_t HashOf(const T* values, std::size_t count, std::uint64_t hash = 1)
{
    for (std::size_t i = 0; i < count; ++i) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, values + i, sizeof(T));
        hash = Mix(hash, bits);
    }
    return hash;
}

void Print(const char* name, std::uint64_t hash)
{
    std::printf("%-24s %016llx\n", name, static_cast<unsigned long long>(hash));
}

void Print(const char* name, const CStlImage& image)
{
    std::uint64_t hash = 1;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int y = 0; y < image.GetHeight(); ++y) {
            hash = HashOf(image.GetImageAdr(0, y, plane, 1), static_cast<std::size_t>(image.GetWidth()), hash);
        }
        hash = Mix(hash, HashOf(std::vector{image.GetLevelMin(plane), image.GetLevelMax(plane)}.data(), 2));
    }
    Print(name, hash);
}

/// An image of noise between 0 and 65536 that is not made of whole numbers, with levels of its own on each plane.
CStlImage Noise(int planes, std::uint64_t seed)
{
    CStlImage image(-32, 517, 203, planes, 1.0, 0.0, 1);
    for (int plane = 0; plane < planes; ++plane) {
        image.SetLevel(plane, 1000.1 + plane, 50000.7 - 333.3 * plane);
        for (int y = 0; y < image.GetHeight(); ++y) {
            for (int x = 0; x < image.GetWidth(); ++x) {
                seed = Mix(seed, 0xC0FFEE);
                image.SetPixelGrayRaw(x, y, static_cast<float>(seed >> 40) / 257.0F, plane);
            }
        }
    }
    return image;
}

void PrintDib(const char* name, const CStlImage& image, int bitCount)
{
    const HDIB dib = image.GetDib(bitCount);
    Print(name, HashOf(static_cast<const unsigned char*>(GlobalLock(dib)), GlobalSize(dib)));
    GlobalUnlock(dib);
    GlobalFree(dib);
}

void Measurements(CStlImage image)
{
    std::vector<int> counts(5000);
    image.GetHistGram(counts.data(), 5000, 123.4, 60000.5, -1, nullptr, 0, 0);
    Print("histogram", HashOf(counts.data(), counts.size()));
    image.CalcMinMax();
    std::vector<double> values{image.GetMinPixel(0), image.GetMaxPixel(0), image.GetAvrGrayRaw(0), 0.0, 0.0, 0.0, 0.0};
    image.GetMinMax(0, &values[3], &values[4]);
    image.GetCenterOfGravity(values[5], values[6], nullptr);
    Print("measurements", HashOf(values.data(), values.size()));
}

void Calibration(const CStlImage& image, CStlImage frame)
{
    CStlImage calibrated(image);
    calibrated.DarkClbrtn(&frame, 0);
    Print("dark", calibrated);
    calibrated.FlatClbrtn(&frame, 0);
    Print("flat", calibrated);
    calibrated.CutOutOfLevel();
    Print("cut", calibrated);
    frame.SetBlankUsed(1);
    frame.SetBlank(4321);
    calibrated.FlatClbrtn(&frame, 0);
    Print("flat with blanks", calibrated);
}

void Composites(int planes)
{
    using Combine = void (CImgMedianComposit::*)();
    const std::vector<std::pair<const char*, Combine>> methods{
        {"median", &CImgMedianComposit::Calc},
        {"clipped median", &CImgMedianComposit::CalcClipping},
        {"clipped mean", &CImgMedianComposit::AddAvrCalcClipping}};
    for (const auto& [name, combine] : methods) {
        CStlImage target = Noise(planes, 1);
        std::vector<CStlImage> frames;
        for (int i = 0; i < 13; ++i) {
            frames.push_back(Noise(planes, 100 + static_cast<std::uint64_t>(i)));
        }
        CImgMedianComposit composite(&target);
        for (int y = 0; y < target.GetHeight(); ++y) {
            for (int i = 0; i < 13; ++i) {
                composite.Store(&frames[static_cast<std::size_t>(i)], y, i * 0.3, -0.7 * i, i < 7 ? 0.0 : 0.1 * i);
            }
            (composite.*combine)();
        }
        Print(name, target);
    }
}

void Matching(CStlImage image)
{
    CStlImage patch(-32, 31, 29, image.GetPlanes(), 1.0, 0.0, 1);
    patch.PixelBlt(0, 0, 31, 29, &image, 100, 80, 0);
    CImgMatching search(image);
    std::vector<double> found{103.0, 77.0, 0.0};
    found[2] = search.Do(&patch, &found[0], &found[1], 20, 1, 0);
    const std::vector<double> gains{0.9, 1.0, 1.1};
    found.push_back(search.CalcValue(&patch, 100.3, 80.6, gains.data()));
    Print("matching", HashOf(found.data(), found.size()));
}

void AllOf(int planes)
{
    std::printf("%d plane(s)\n", planes);
    CStlImage image = Noise(planes, 7);
    CImgInvert inverted(image);
    inverted.Do(&image, nullptr, 0);
    Print("invert", inverted);
    CImgAutoLevel levels(image);
    levels.Do(0.2, 1.0, 1, nullptr);
    Print("automatic levels", levels);
    CStlImage changed(image);
    planes == 1 ? changed.ToColor(&image, 0) : changed.ToGray(&image, 0);
    Print("planes", changed);
    PrintDib("bitmap 8", image, 8);
    PrintDib("bitmap 24", image, 24);
    Measurements(image);
    Calibration(image, Noise(1, 9));
    Composites(planes);
    Matching(image);
}

} // namespace

int main()
{
    AllOf(1);
    AllOf(3);
    return 0;
}
