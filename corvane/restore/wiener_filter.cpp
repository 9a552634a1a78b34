#include "corvane/restore/wiener_filter.h"

#include <algorithm>
#include <memory>
#include <numeric>

#include "corvane/core/display_scale.h"
#include "corvane/core/exponential.h"
#include "corvane/core/independent.h"
#include "corvane/core/memory_budget.h"
#include "corvane/core/reductions.h"
#include "corvane/core/walk.h"
#include "corvane/platform/memory.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/platform/workers.h"
#include "corvane/resources/string_table.h"
#include "corvane/restore/region.h"

namespace corvane {

namespace {

constexpr double kWienerWidth = 0.707106781373095; // of the function, for a sigma of 1; near the root of 1/2
constexpr int kStepsOfPlane = 100;

/// The area as an image of its own, with the levels of the whole.
std::unique_ptr<CStlImage> CutOut(const CStlImage& image, const Area& area, const Run& run)
{
    auto part = std::make_unique<CStlImage>(-32, area.width, area.height, image.GetPlanes(), 1.0, 0.0, 1);
    for (int p = 0; p < image.GetPlanes(); ++p) {
        part->SetLevel(p, image.GetLevelMin(p), image.GetLevelMax(p));
    }
    if (run.progress) {
        run.progress({.state = Progress::State::kMessage, .text = FindString(IDS_INITIALIZING)});
    }
    part->PixelBlt(0, 0, area.width, area.height, image, area.left, area.top, 0);
    return part;
}

/// Progress counts in shares of a plane.
void FilterPlanes(WienerFilter& filter, const MakeBlur& makeBlur, double noise, bool keepsFlux, CStlImage& image,
                  Stage& stage)
{
    stage.Step(5);
    makeBlur(filter);
    stage.Step(10);
    filter.Measure();
    stage.Step(10);
    for (int p = 0; p < image.GetPlanes(); ++p) {
        filter.Read(image, p);
        stage.Step(5);
        filter.Forward();
        stage.Step(25);
        filter.Divide(noise, keepsFlux);
        stage.Step(25);
        filter.Inverse();
        stage.Step(25);
        filter.Write(image, p);
        stage.Step(10);
    }
}

/// Systems promise more memory than they have: what the machine lacks would be missed in the middle of the work.
bool IsToBeHad(double bytes)
{
    return bytes <= static_cast<double>(platform::PhysicalMemory());
}

} // namespace

std::vector<double> WienerProfile(int size, double sigma)
{
    const double width = sigma * kWienerWidth;
    std::vector<double> profile;
    for (int i = 0; i < size; ++i) {
        const double d = i > size / 2 ? i - size : i;
        profile.push_back(Exp(-(d * d) * 0.5 / width / width));
    }
    return profile;
}

double WienerFilterBytes(int width, int height, int planes)
{
    const double columns = WienerExtent(width);
    const double rows = WienerExtent(height);
    const double spectrum = columns * (rows + 2.0 * kLanes);
    return sizeof(float) * (columns * rows + 2.0 * spectrum + static_cast<double>(width) * height * planes);
}

/// Calls work(y) for rows of the grid from `first` to before `end`.
template <class Work>
void WienerFilter::ForRows(int first, int end, int threads, Work work) const
{
    const auto body = [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            work(y);
        }
    };
    ForRowBlocks(RowBlocks(CRect(0, first, transform_.Width(), end)), threads, body);
}

void WienerFilter::Blur(double sigma)
{
    const std::vector<double> columns = WienerProfile(transform_.Width(), sigma);
    const std::vector<double> rows = WienerProfile(transform_.Height(), sigma);
    ForRows(0, transform_.Height(), threads_, [&](int y) {
        std::transform(columns.begin(), columns.end(), Row(y),
                       [height = rows[static_cast<std::size_t>(y)] * kWienerPeak](double column) {
                           return static_cast<float>(column * height);
                       });
    });
    transform_.Forward(samples_.data(), blur_.data());
}

void WienerFilter::Blur(const float* psf, int width, int height)
{
    const double sum = std::accumulate(psf, psf + static_cast<std::ptrdiff_t>(width) * height, 0.0);
    const auto around = [](int i, int size) { return (i % size + size) % size; };
    std::fill(samples_.begin(), samples_.end(), 0.0F);
    for (int y = 0; y < height; ++y) {
        float* const row = Row(around(y - height / 2, transform_.Height()));
        for (int x = 0; x < width; ++x) {
            row[around(x - width / 2, transform_.Width())] += static_cast<float>(*psf++ / sum);
        }
    }
    transform_.Forward(samples_.data(), blur_.data());
}

void WienerFilter::Measure()
{
    const auto count = static_cast<int>(transform_.ImaginaryOffset());
    std::vector<Extremes> powers(blur_.size() / (2 * transform_.ImaginaryOffset()));
    const auto body = [&](int block) {
        const float* const re = blur_.data() + static_cast<std::ptrdiff_t>(2) * count * block;
        const auto powerOf = [=, im = re + count](int i) {
            const double r = re[i];
            const double m = im[i];
            return r * r + m * m;
        };
        powers[static_cast<std::size_t>(block)].Add(count, powerOf, [](double) { return false; });
    };
    const int threads = ThreadsFor(static_cast<long long>(blur_.size()), threads_);
    platform::ForBlocks(static_cast<int>(powers.size()), threads, body, [](int) {});
    for (const Extremes& power : powers) {
        mostPower_ = std::max(mostPower_, power.Max());
    }
}

/// Fills the grid with a plane, and what lies beyond it with its mirror image.
void WienerFilter::Read(const CStlImage& image, int plane)
{
    const DisplayScale scale(image, plane);
    const int gridWidth = transform_.Width();
    ForRows(0, height_, ThreadsOn(image, {}, threads_), [&](int y) {
        const float* in = image.GetImageAdr(0, y, plane, 1);
        float* out = Row(y);
        std::transform(in, in + width_, out, [=](float v) { return static_cast<float>(scale.To256(v)); });
        std::reverse_copy(out + 2 * width_ - gridWidth, out + width_, out + width_);
    });
    ForRows(height_, transform_.Height(), threads_,
            [&](int y) { std::copy_n(Row(2 * height_ - 1 - y), gridWidth, Row(y)); });
}

/// Multiplies by conj(H) / (|H|^2 + K).
void WienerFilter::Divide(double noise, bool keepsFlux)
{
    const double constant = mostPower_ * noise;
    const double gain = keepsFlux ? 1.0 + constant : 1.0;
    const std::size_t count = transform_.ImaginaryOffset();
    transform_.ChangeRows(spectrum_.data(), [&](Lanes block, std::size_t at) {
        float* const re = block.re;
        float* const im = block.im;
        const float* const blurRe = blur_.data() + at;
        const float* const blurIm = blurRe + count;
        CORVANE_INDEPENDENT
        for (std::size_t i = 0; i < count; ++i) {
            const double hr = blurRe[i];
            const double hi = blurIm[i];
            const double gr = re[i];
            const double gi = im[i];
            const double perPower = gain / (hr * hr + hi * hi + constant);
            re[i] = static_cast<float>((gi * hi + gr * hr) * perPower);
            im[i] = static_cast<float>((gi * hr - gr * hi) * perPower);
        }
    });
}

void WienerFilter::Write(CStlImage& image, int plane) const
{
    const DisplayScale scale(image, plane);
    ForRows(0, height_, ThreadsOn(image, {}, threads_), [&](int y) {
        const float* in = Row(y);
        std::transform(in, in + width_, image.GetImageAdr(0, y, plane),
                       [=](float v) { return static_cast<float>(v * scale.range * kPer255 + scale.min); });
    });
}

void FilterByWiener(CStlImage& image, const CRect* rect, const MakeBlur& makeBlur, double noise, bool keepsFlux,
                    const Run& run)
{
    const Area area(image, rect);
    if (area.IsEmpty() || image.GetImageSize() == 0) {
        return;
    }
    const bool isInPlace = area.isWhole && !run.cancelled;
    if (!IsToBeHad(WienerFilterBytes(area.width, area.height, isInPlace ? 0 : image.GetPlanes()))) {
        AfxThrowMemoryException();
    }
    const std::unique_ptr<CStlImage> part = isInPlace      ? nullptr
                                            : area.isWhole ? std::make_unique<CStlImage>(image)
                                                           : CutOut(image, area, run);
    const Reservation reservation(static_cast<std::uint64_t>(WienerFilterBytes(area.width, area.height, 0)));
    const platform::KeptThreads threads(ThreadsFor(static_cast<long long>(area.width) * area.height, run.Threads()));
    WienerFilter filter(area.width, area.height, run.Threads());
    Stage stage(run, IDS_WIENER, image.GetPlanes() * kStepsOfPlane);
    FilterPlanes(filter, makeBlur, noise, keepsFlux, isInPlace ? image : *part, stage);
    if (!isInPlace) {
        image.PixelBlt(area.left, area.top, area.width, area.height, *part, 0, 0, 0);
    }
}

void DeblurByWiener(CStlImage& image, const CRect* rect, const float* psf, int width, int height, double noise,
                    const Run& run)
{
    FilterByWiener(
        image, rect, [=](WienerFilter& filter) { filter.Blur(psf, width, height); }, noise, true, run);
}

} // namespace corvane
