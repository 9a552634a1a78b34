// Prints a checksum of what every operation makes of the same images. compare.sh runs it once with each variant of the
// library: a line that differs names the operation whose arithmetic depends on the processor.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "corvane/combine/covered_rows.h"
#include "corvane/corvane.h"

namespace {

constexpr CRect* whole = nullptr;

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

/// Prints what an operation makes of an image.
template <class Operation, class Result, class... Parameters, class... Arguments>
void PrintOf(const char* name, CStlImage& image, Result (Operation::*member)(Parameters...), Arguments... arguments)
{
    Operation operation(image);
    (operation.*member)(arguments...);
    Print(name, operation);
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
    CImgPixelInfo info(image);
    std::vector<double> region(12);
    info.Calc(CRect(-3, 5, 400, 300), &region[0], &region[3], &region[6], &region[9]);
    Print("pixel statistics", HashOf(region.data(), region.size()));
    PrintOf("vignetting", image, &CImgFlat::Do, &image, CPoint(250, 90), -1e-6, 1.0, whole, 0);
    PrintOf("overscan", image, &CImgOverScan::Do, 0, 20, 5, 190, 1);
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

/// The rows of an image as those of frames, of which each lacks some pixels.
void CoveredRows(const CStlImage& image)
{
    const int width = image.GetWidth();
    std::vector<double> values;
    std::vector<int> valid;
    std::vector<double> weights;
    for (int y = 0; y < 13; ++y) {
        values.insert(values.end(), image.GetImageAdr(0, y, 0, 1), image.GetImageAdr(0, y, 0, 1) + width);
        valid.insert(valid.end(), static_cast<std::size_t>(width), 1);
        valid[valid.size() - static_cast<std::size_t>(y) - 1] = 0;
        weights.push_back(1.0 / (1 + y));
    }
    std::vector<corvane::CombineLine> lines;
    for (std::ptrdiff_t y = 0; y < 13; ++y) {
        lines.push_back({values.data() + y * width, valid.data() + y * width});
    }
    for (const auto method : {corvane::CombineMethod::kClippedMedian, corvane::CombineMethod::kClippedMean}) {
        std::vector<float> row(static_cast<std::size_t>(width));
        corvane::CoveredCombiner(method, corvane::Coverage::kAny, weights, -1.0)
            .Combine(lines.data(), width, {row.data()});
        Print("covered rows", HashOf(row.data(), row.size()));
    }
}

void Pairs(CStlImage first, CStlImage second)
{
    second.SetDefaultCenter();
    first.CalcMinMax();
    second.CalcMinMax();
    for (const int display : {0, 1}) {
        for (int mode = 0; mode < 10; ++mode) {
            CImgComposit composite(first); // its Do has two forms
            composite.Do(&first, &second, 3.3, -2.6, 0.7, mode, 0.4, display, 1, 0.8, 2, whole, 0, -1);
            Print("composite", composite);
        }
        for (int mode = 0; mode < 5; ++mode) {
            float key[] = {5000.0F, 6000.0F, 7000.0F};
            PrintOf("mosaic", first, &CImgMosic::Do, &first, 5, -7, &second, 40.3, 20.6, 3.1, mode, key, nullptr,
                    display, 0, whole, 0);
        }
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

void Tones(CStlImage image)
{
    PrintOf("brightness", image, &CImgBright::Do, 20.0, 64.0, 128.0, &image, whole, 0);
    PrintOf("colour balance", image, &CImgColorBalance::Do, 12.5, -3.0, 40.0, &image, whole, 0);
    PrintOf("tone reduction", image, &CImgReduceTone::Do, 12, &image, whole, 0);
    std::vector<float> curve;
    for (int i = 0; i < 1001; ++i) {
        curve.push_back(static_cast<float>(i * i) * 1e-6F);
    }
    const float* curves[] = {curve.data(), curve.data(), curve.data(), curve.data()};
    PrintOf("tone curve", image, &CImgToneCurve::Do, curves, 1001, &image, whole, 0);
    CStlImage colour(image);
    colour.ToColor(&image, 0);
    for (const int kind : {0, 1, 2, 3, 4}) {
        PrintOf("calculation", image, &CImgCalculation::Do, 1003.7, kind, 1, &image, whole, 0);
        PrintOf("false colour", colour, &CImgFalseColor::Do, 2000.0, 40000.0, kind, 2, &image, whole, 0);
    }
}

void Filters(CStlImage image)
{
    using Filter = CImgFilter;
    CStlImage* const source = &image;
    for (const int type : {0, 1, 2}) {
        PrintOf("mean", image, &Filter::MeanFilter, type, 0.7, source, whole, 0);
        PrintOf("mean without edge", image, &Filter::MeanWithoutEdgeFilter, type, 0.7, source, whole, 0);
        PrintOf("median", image, &Filter::MedianFilter, type, source, whole, 0);
        PrintOf("rank", image, &Filter::MinMaxFilter, type, 3, source, whole, 0);
        PrintOf("star sharpening", image, &Filter::StarSharpFilter, type, 2.3, 0.1, 0, source, whole, 0);
        PrintOf("sharpen", image, &Filter::SharpFilter, type, 0.9, source, whole, 0);
        PrintOf("sharpen edges", image, &Filter::SharpEdgeFilter, type, 1.7, source, whole, 0);
        PrintOf("laplacian", image, &Filter::LaplacianFilter, type, source, whole, 0);
        PrintOf("unsharp mask", image, &Filter::UnSharpMask, 1.3, type, 0.7, 0.1, source, whole, 0);
        PrintOf("background", image, &Filter::BkgSmooth, 30000.0, type, 0.8, source, whole, 0);
        PrintOf("hot pixels", image, &Filter::NoiseCut, type, 0.3, 1, 1, source, whole, 0);
    }
    for (const double sigma : {0.7, 2.0, 5.0}) {
        PrintOf("gaussian", image, &Filter::GaussianFilter, sigma, source, whole, 0);
    }
    int selector = 3;
    PrintOf("development", image, &Filter::DigitalDvlp, 9000.0, 0.9, source, &selector, whole, 0);
    PrintOf("posterize", image, &Filter::AAPosterizationFilter, 11, source, whole, 0);
    PrintOf("contour", image, &Filter::ContourFilter, 11, 1, source, whole, 0);
}

void Geometry(CStlImage image)
{
    double background[] = {1.0, 2.0, 3.0};
    float shown[] = {0.0F, 99.9F, 255.0F};
    PrintOf("flip", image, &CImgFlip::Do, 1, &image, 0);
    PrintOf("turn", image, &CImgRotate::Do, 33.3, background, &image, 1, 0);
    PrintOf("quarter turn", image, &CImgRotate::Do90, 0, &image, 0);
    PrintOf("resolution", image, &CImgResolution::Do, &image, 611, 150, 0);
    PrintOf("binning", image, &CImgSoftBinning::Do, 3, 2, 1, 1, &image, 0);
    PrintOf("canvas", image, &CImgResize::Do, 600, 150, 5, shown, &image, 0);
    PrintOf("scroll", image, &CImgScroll::Do, -70, 33, &image, 0);
    PrintOf("expansion", image, &CImgExpansion::Do, 3, 2, &image, 0);
}

void Mosaics(const CStlImage& mosaic)
{
    for (const auto method : {corvane::DemosaicMethod::kBilinear, corvane::DemosaicMethod::kEdgeAware}) {
        CStlImage colour;
        corvane::Demosaic(mosaic, corvane::BayerPattern::kGrbg, method, colour, 0);
        Print("colours of a mosaic", colour);
    }
}

void LabColours(CStlImage image)
{
    const std::unique_ptr<CStlImage> lightness(image.MakeLPlane());
    Print("L plane", *lightness);
    const std::unique_ptr<CStlImage> lab(image.MakeLabPlane());
    Print("Lab planes", *lab);
    CImgLabColorEnhance enhanced(image); // its Do has two forms
    enhanced.Do(lab.get(), 1.3, 0.8, 1.1, -0.2, whole, 0);
    Print("Lab enhancement", enhanced);
}

void ColourComposites(const CStlImage& colour, CStlImage r, CStlImage g, CStlImage b)
{
    int* const planes = nullptr;
    g.SetDefaultCenter();
    CStlImage source(colour);
    PrintOf("RGB composite", source, &CImgRgbCmpst::Do, &r, 0.0, 0.0, 0.0, &g, 2.3, -1.7, 0.6, &b, 3.0, 5.0, 0.0, whole,
            7, planes, 0);
    PrintOf("CMY composite", source, &CImgCmyComposit::Do, &r, 0.0, 0.0, 0.0, &g, 2.3, -1.7, 0.6, &b, 3.0, 5.0, 0.0,
            whole, 7, 0);
    for (const int average : {0, 1}) {
        PrintOf("LRGB composite", source, &CImgLrgbCmpst::DoLrgb, &g, 0.0, 0.0, 0.6, &source, 1.0, 1.5, 0.0, 0.9, whole,
                average, 0);
    }
    for (int component = 0; component < 6; ++component) {
        PrintOf("separation", r, &CImgSeparation::Do, &source, component, 0);
    }
}

void Restorations(CStlImage image)
{
    PrintOf("Lucy", image, &CImgLucy::Do, 1.3, 0.7, 20.0, 3, whole, 0);
    PrintOf("maximum entropy", image, &CImgMem::Do, 1.3, 5000.0, 3, whole, 0);
    PrintOf("Wiener", image, &CImgWiener::Do, 1.3, 0.01, whole, 0);
}

void AllOf(int planes)
{
    std::printf("%d plane(s)\n", planes);
    CStlImage image = Noise(planes, 7);
    PrintOf("invert", image, &CImgInvert::Do, &image, whole, 0);
    Tones(image);
    LabColours(image);
    PrintOf("automatic levels", image, &CImgAutoLevel::Do, 0.2, 1.0, 1, whole);
    CStlImage changed(image);
    planes == 1 ? changed.ToColor(&image, 0) : changed.ToGray(&image, 0);
    Print("planes", changed);
    PrintDib("bitmap 8", image, 8);
    PrintDib("bitmap 24", image, 24);
    Measurements(image);
    Calibration(image, Noise(1, 9));
    Composites(planes);
    CoveredRows(image);
    Pairs(image, Noise(4 - planes, 8));
    Matching(image);
    Geometry(image);
    Filters(image);
    Mosaics(image);
    Restorations(image);
}

} // namespace

int main()
{
    AllOf(1);
    AllOf(3);
    ColourComposites(Noise(3, 11), Noise(1, 12), Noise(1, 13), Noise(1, 14));
    return 0;
}
