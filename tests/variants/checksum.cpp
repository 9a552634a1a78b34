// Prints a checksum of what every operation makes of the same images, so that a line which differs elsewhere names the
// operation whose arithmetic depends on the processor or the system: first members of the library that no step of the
// catalogue reaches, then the steps.

#include "tests/variants/checksum.h"

#include <cstdio>
#include <memory>
#include <vector>

#include "corvane/combine/row_combiner.h"
#include "corvane/corvane.h"

namespace {

constexpr CRect* whole = nullptr;
constexpr int kFrames = 13;

void Print(const char* name, std::uint64_t hash)
{
    std::printf("%-24s %016llx\n", name, static_cast<unsigned long long>(hash));
}

/// Prints what an operation makes of an image.
template <class Operation, class Work>
void PrintOf(const char* name, const CStlImage& image, Work work)
{
    Operation operation(image);
    work(operation);
    Print(name, HashOf(operation));
}

void Measurements(CStlImage image)
{
    std::vector<int> counts(5000);
    image.GetHistGram(counts.data(), 5000, 123.4, 60000.5, -1, nullptr, 0, 0);
    image.CalcMinMax();
    std::vector<double> values(12);
    CImgPixelInfo(image).Calc(CRect(-3, 5, 400, 300), &values[0], &values[3], &values[6], &values[9]);
    values.insert(values.end(), {image.GetMinPixel(0), image.GetMaxPixel(0), image.GetAvrGrayRaw(0), 0.0, 0.0});
    image.GetCenterOfGravity(values[15], values[16], nullptr);
    Print("measurements", HashOf(values.data(), values.size(), HashOf(counts.data(), counts.size())));
    Print("L plane", HashOf(*std::unique_ptr<CStlImage>(image.MakeLPlane())));
    for (const int bitCount : {8, 24}) {
        const HDIB dib = image.GetDib(bitCount);
        Print("bitmap", HashOf(static_cast<const unsigned char*>(GlobalLock(dib)), GlobalSize(dib)));
        GlobalUnlock(dib);
        GlobalFree(dib);
    }
}

void Composites(int planes)
{
    CStlImage frame = Noise(planes, 100);
    using Composite = CImgMedianComposit;
    for (const auto combine : {&Composite::Calc, &Composite::CalcClipping, &Composite::AddAvrCalcClipping}) {
        CStlImage target = Noise(planes, 1);
        Composite composite(&target);
        for (int y = 0; y < target.GetHeight(); ++y) {
            for (int i = 0; i < kFrames; ++i) {
                composite.Store(&frame, y, i * 0.3, -0.7 * i, i < 7 ? 0.0 : 0.1 * i);
            }
            (composite.*combine)();
        }
        Print("median composite", HashOf(target));
    }
}

/// The rows of an image as those of frames, which lack some pixels.
void CoveredRows(const CStlImage& image)
{
    const int width = image.GetWidth();
    std::vector<double> values;
    std::vector<int> valid;
    for (int i = 0; i < kFrames * width; ++i) {
        values.push_back(image.GetPixelGrayRaw(i % width, i / width, 0));
        valid.push_back(i % 19 == 0 ? 0 : 1);
    }
    std::vector<double> weights;
    std::vector<corvane::CombineLine> lines;
    for (std::ptrdiff_t i = 0; i < kFrames; ++i) {
        weights.push_back(1.0 / (1.0 + static_cast<double>(i)));
        lines.push_back({values.data() + i * width, valid.data() + i * width});
    }
    for (const auto method : {corvane::CombineMethod::kClippedMedian, corvane::CombineMethod::kClippedMean}) {
        std::vector<float> row(static_cast<std::size_t>(width));
        corvane::RowCombiner combiner(method, corvane::Coverage::kAny, weights, -1.0);
        combiner.Combine(lines.data(), width, {row.data()});
        Print("covered rows", HashOf(row.data(), row.size()));
    }
}

void Pairs(CStlImage first, CStlImage second)
{
    second.SetDefaultCenter();
    first.CalcMinMax();
    second.CalcMinMax();
    float key[] = {5000.0F, 6000.0F, 7000.0F};
    for (int i = 0; i < 20; ++i) {
        PrintOf<CImgComposit>("composite", first, [&](auto& result) {
            result.Do(&first, &second, 3.3, -2.6, 0.7, i % 10, 0.4, i / 10, 1, 0.8, 2, whole, 0, -1);
        });
        PrintOf<CImgMosic>("mosaic", first, [&](auto& result) {
            result.Do(&first, 5, -7, &second, 40.3, 20.6, 3.1, i % 5, key, nullptr, i / 10, 0, whole, 0);
        });
    }
}

void Matching(CStlImage image)
{
    CStlImage patch(-32, 31, 29, image.GetPlanes(), 1.0, 0.0, 1);
    patch.PixelBlt(0, 0, 31, 29, &image, 100, 80, 0);
    CImgMatching search(image);
    double found[]{103.0, 77.0, 0.0, 0.0};
    found[2] = search.Do(&patch, &found[0], &found[1], 20, 1, 0);
    const double gains[]{0.9, 1.0, 1.1};
    found[3] = search.CalcValue(&patch, 100.3, 80.6, gains);
    Print("matching", HashOf(found, 4));
}

void ColourComposites(CStlImage colour, CStlImage r, CStlImage g, CStlImage b)
{
    g.SetDefaultCenter();
    PrintOf<CImgRgbCmpst>("RGB composite", colour, [&](auto& result) {
        result.Do(&r, 0.0, 0.0, 0.0, &g, 2.3, -1.7, 0.6, &b, 3.0, 5.0, 0.0, whole, 7, nullptr, 0);
    });
    PrintOf<CImgCmyComposit>("CMY composite", colour, [&](auto& result) {
        result.Do(&r, 0.0, 0.0, 0.0, &g, 2.3, -1.7, 0.6, &b, 3.0, 5.0, 0.0, whole, 7, 0);
    });
    for (const int average : {0, 1}) {
        PrintOf<CImgLrgbCmpst>("LRGB composite", colour, [&](auto& result) {
            result.DoLrgb(&g, 0.0, 0.0, 0.6, &colour, 1.0, 1.5, 0.0, 0.9, whole, average, 0);
        });
    }
    for (int component = 0; component < 6; ++component) {
        PrintOf<CImgSeparation>("separation", r, [&](auto& result) { result.Do(&colour, component, 0); });
    }
}

} // namespace

int main()
{
    for (const int planes : {1, 3}) {
        CStlImage image = Noise(planes, 7);
        Measurements(image);
        Composites(planes);
        CoveredRows(image);
        Pairs(image, Noise(4 - planes, 8));
        Matching(image);
    }
    ColourComposites(Noise(3, 11), Noise(1, 12), Noise(1, 13), Noise(1, 14));
    return PrintSteps() ? 0 : 1;
}
