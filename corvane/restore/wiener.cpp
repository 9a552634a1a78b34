#include "corvane/restore/wiener.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <numeric>
#include <vector>

#include "corvane/core/display_scale.h"
#include "corvane/core/exponential.h"
#include "corvane/core/image_transform.h"
#include "corvane/core/independent.h"
#include "corvane/core/memory_budget.h"
#include "corvane/core/reductions.h"
#include "corvane/core/run.h"
#include "corvane/core/walk.h"
#include "corvane/core/work_array.h"
#include "corvane/platform/memory.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/platform/workers.h"
#include "corvane/resources/string_table.h"
#include "corvane/restore/region.h"

using namespace corvane;

namespace {

constexpr double kWidth = 0.707106781373095; // of the function, for a sigma of 1; near the root of 1/2
constexpr double kPeak = 159.15507752443827;
constexpr int kStepsOfPlane = 100;

int PowerOfTwo(int size)
{
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(size)));
}

/// One axis of the point-spread function about the first sample of a circle of samples.
std::vector<double> Profile(int size, double width)
{
    std::vector<double> profile;
    for (int i = 0; i < size; ++i) {
        const double d = i > size / 2 ? i - size : i;
        profile.push_back(Exp(-(d * d) * 0.5 / width / width));
    }
    return profile;
}

double Sum(const std::vector<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0);
}

/// The filter for images of one size. Threads share the rows of an image that is not paged, and all that is done to the
/// grid.
class Filter {
public:
    Filter(int width, int height, int threads)
        : width_(width), height_(height), threads_(threads), transform_(PowerOfTwo(width), PowerOfTwo(height), threads),
          samples_(static_cast<std::size_t>(transform_.Width()) * transform_.Height()),
          blur_(transform_.SpectrumSize()), spectrum_(transform_.SpectrumSize())
    {}

    /// Makes the transfer function of the blur.
    void Blur(double sigma);
    /// Finds the greatest power of the blur.
    void Measure();
    /// @name The steps for one plane
    /// @{
    void Read(const CStlImage& image, int plane);
    void Forward() { transform_.ForwardColumns(samples_.data(), spectrum_.data()); }
    void Divide(double noise);
    void Inverse() { transform_.InverseColumns(spectrum_.data(), samples_.data()); }
    void Write(CStlImage& image, int plane) const;
    /// @}

private:
    template <class Work>
    void ForRows(int first, int end, int threads, Work work) const;
    float* Row(int y) { return samples_.data() + static_cast<std::ptrdiff_t>(y) * transform_.Width(); }
    const float* Row(int y) const { return samples_.data() + static_cast<std::ptrdiff_t>(y) * transform_.Width(); }

    int width_;
    int height_;
    int threads_;
    ImageTransform transform_;
    WorkArray samples_;
    WorkArray blur_;
    WorkArray spectrum_;
    double mostPower_ = 0.0;
};

/// Calls work(y) for rows of the grid from `first` to before `end`.
template <class Work>
void Filter::ForRows(int first, int end, int threads, Work work) const
{
    const auto body = [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            work(y);
        }
    };
    ForRowBlocks(RowBlocks(CRect(0, first, transform_.Width(), end)), threads, body);
}

void Filter::Blur(double sigma)
{
    const std::vector<double> columns = Profile(transform_.Width(), sigma * kWidth);
    const std::vector<double> rows = Profile(transform_.Height(), sigma * kWidth);
    ForRows(0, transform_.Height(), threads_, [&](int y) {
        std::transform(columns.begin(), columns.end(), Row(y),
                       [height = rows[static_cast<std::size_t>(y)] * kPeak](double column) {
                           return static_cast<float>(column * height);
                       });
    });
    transform_.Forward(samples_.data(), blur_.data());
}

void Filter::Measure()
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
void Filter::Read(const CStlImage& image, int plane)
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
void Filter::Divide(double noise)
{
    const double constant = mostPower_ * noise;
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
            const double perPower = 1.0 / (hr * hr + hi * hi + constant);
            re[i] = static_cast<float>((gi * hi + gr * hr) * perPower);
            im[i] = static_cast<float>((gi * hr - gr * hi) * perPower);
        }
    });
}

void Filter::Write(CStlImage& image, int plane) const
{
    const DisplayScale scale(image, plane);
    ForRows(0, height_, ThreadsOn(image, {}, threads_), [&](int y) {
        const float* in = Row(y);
        std::transform(in, in + width_, image.GetImageAdr(0, y, plane),
                       [=](float v) { return static_cast<float>(v * scale.range * kPer255 + scale.min); });
    });
}

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
void FilterPlanes(Filter& filter, double sigma, double noise, CStlImage& image, Stage& stage)
{
    stage.Step(5);
    filter.Blur(sigma);
    stage.Step(10);
    filter.Measure();
    stage.Step(10);
    for (int p = 0; p < image.GetPlanes(); ++p) {
        filter.Read(image, p);
        stage.Step(5);
        filter.Forward();
        stage.Step(25);
        filter.Divide(noise);
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

double corvane::WienerBytes(int width, int height, int planes)
{
    const double columns = PowerOfTwo(width);
    const double rows = PowerOfTwo(height);
    const double spectrum = columns * (rows + 2.0 * kLanes);
    return sizeof(float) * (columns * rows + 2.0 * spectrum + static_cast<double>(width) * height * planes);
}

double corvane::WienerGain(double sigma, int width, int height)
{
    return kPeak * Sum(Profile(PowerOfTwo(width), sigma * kWidth)) * Sum(Profile(PowerOfTwo(height), sigma * kWidth));
}

int CImgWiener::Do(double sigma, double noise, CRect* rect, int showProgress)
{
    return OrNothing([&] {
        Do(sigma, noise, rect, WindowRun(*this, showProgress));
        return 1;
    });
}

void CImgWiener::Do(double sigma, double noise, const CRect* rect, const Run& run)
{
    const Area area(*this, rect);
    if (area.IsEmpty() || GetImageSize() == 0) {
        return;
    }
    const bool isInPlace = area.isWhole && !run.cancelled;
    if (!IsToBeHad(WienerBytes(area.width, area.height, isInPlace ? 0 : GetPlanes()))) {
        AfxThrowMemoryException();
    }
    const std::unique_ptr<CStlImage> part = isInPlace      ? nullptr
                                            : area.isWhole ? std::make_unique<CStlImage>(*this)
                                                           : CutOut(*this, area, run);
    const Reservation reservation(static_cast<std::uint64_t>(WienerBytes(area.width, area.height, 0)));
    Filter filter(area.width, area.height, run.Threads());
    Stage stage(run, IDS_WIENER, GetPlanes() * kStepsOfPlane);
    FilterPlanes(filter, sigma, noise, isInPlace ? *this : *part, stage);
    if (!isInPlace) {
        PixelBlt(area.left, area.top, area.width, area.height, *part, 0, 0, 0);
    }
}
