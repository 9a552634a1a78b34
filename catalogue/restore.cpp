// Restoration of blurred images.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/mask.h"
#include "catalogue/operations.h"
#include "catalogue/psf.h"
#include "catalogue/restoration.h"
#include "corvane/core/error.h"
#include "corvane/core/run.h"
#include "corvane/core/walk.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/restore/gauss_psf.h"
#include "corvane/restore/lucy.h"
#include "corvane/restore/lucy_engine.h"
#include "corvane/restore/mem.h"
#include "corvane/restore/mem_engine.h"
#include "corvane/restore/wiener.h"
#include "corvane/restore/wiener_filter.h"

namespace corvane::catalogue {
namespace {

constexpr double kLeastSigma = 0.3;
constexpr double kMostSigma = 9.0; // from about 9.9 on the function of a restoration has a false peak in a corner
constexpr double kSqrt2 = 1.414213562373095;

void Tell(const Run& run, const char* what, double value, const char* unit)
{
    char line[100];
    std::snprintf(line, sizeof line, "%s %.4g %s", what, value, unit);
    run.TellFinding(line);
}

/// The blur, as it was given or as stars have it.
double SigmaOf(const Arguments& arguments, const CStlImage& image, const Run& run)
{
    if (arguments.Has("sigma")) {
        return arguments.Number("sigma");
    }
    if (arguments.Has("fwhm") && !arguments.IsWord("fwhm")) {
        return arguments.Number("fwhm") / kFwhmOfSigma;
    }
    const double sigma = MeasureStarSigma(image, {.cancelled = run.cancelled, .threads = run.threads});
    Tell(run, "FWHM of the stars", sigma * kFwhmOfSigma, "pixels");
    if (sigma < kLeastSigma || sigma > kMostSigma) {
        throw ParameterError("fwhm", "auto",
                             "the stars are " + ToText(Value(sigma * kFwhmOfSigma)) + " pixels wide; it takes " +
                                 ToText(Value(kLeastSigma * kFwhmOfSigma)) + " to " +
                                 ToText(Value(kMostSigma * kFwhmOfSigma)));
    }
    return sigma;
}

void CheckBlur(const Arguments& arguments)
{
    const char* first = nullptr;
    for (const char* name : {"sigma", "fwhm", "psf"}) {
        if (arguments.Has(name) && first != nullptr) {
            throw arguments.Refusal(name, std::string(first) + " says the same; give one of them");
        }
        first = arguments.Has(name) ? name : first;
    }
}

/// A Gaussian as an image.
PsfImage GaussianPsf(double sigma)
{
    constexpr int kSize = 64;
    const std::unique_ptr<float[]> samples(MakeGaussPsf(sigma, kSize, kSize));
    return {kSize, kSize, std::vector<float>(samples.get(), samples.get() + kSize * kSize)};
}

void ThrowUnlessDone(Restored end)
{
    if (end == Restored::kCancelled) {
        throw Cancelled();
    }
    if (end == Restored::kNoMemory) {
        AfxThrowMemoryException();
    }
    if (end == Restored::kNotANumber) {
        throw InputError("image",
                         "gives a chi-square that is not a number: its samples, gain or noise are too large or "
                         "too small to calculate with");
    }
}

/// A frame's image as one of the interface's classes; the frame has it back however the work ends.
template <class Image>
class Lent {
public:
    explicit Lent(io::Frame& frame) : frame_(frame) { image_.Swap(&frame_.image); }
    ~Lent() { image_.Swap(&frame_.image); }
    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;

    Image& operator*() { return image_; }
    Image* operator->() { return &image_; }

private:
    io::Frame& frame_;
    Image image_;
};

/// Lucy's job but for the function and its samples.
LucyJob LucyJobOf(const io::Frame& frame, const Arguments& arguments)
{
    constexpr double kLeastNoise = 1e-30; // of an image that shows none
    return {.isPsfCentred = true,
            .iterations = arguments.Whole("iterations"),
            .gain = arguments.Has("gain") ? arguments.Number("gain") : GainOf(frame.header),
            .readNoise = arguments.Has("read-noise") ? arguments.Number("read-noise") : ReadNoiseOf(frame.header),
            .damping = arguments.Number("damping"),
            .skyNoise = arguments.Flag("protect") ? std::max(MeasureNoise(frame.image), kLeastNoise) : 0.0};
}

/// From where on samples of each plane are saturated; none where that is not to count.
std::vector<double> CeilingsFor(const CStlImage& image, const Arguments& arguments, const Run& run)
{
    if (arguments.Has("saturation")) {
        return std::vector<double>(static_cast<std::size_t>(image.GetPlanes()), arguments.Number("saturation"));
    }
    return arguments.Flag("protect") ? MeasureCeilings(image, run) : std::vector<double>();
}

void SetPsf(const PsfImage& psf, LucyJob& job)
{
    job.psf = psf.samples.data();
    job.psfWidth = psf.width;
    job.psfHeight = psf.height;
}

void RunLucy(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const CRect* const rect = arguments.Rectangle("rect");
    std::optional<PsfImage> psf = GivenPsf(frame, arguments, run);
    LucyJob job = LucyJobOf(frame, arguments);
    SetPsf(psf.value_or(PsfImage()), job);
    CheckRestorable(frame.image, rect, NeedsOf(job));
    const double sigma = psf ? 0.0 : SigmaOf(arguments, frame.image, run);
    Tell(run, "gain", job.gain, "electrons per count");
    Tell(run, "read-out noise", job.readNoise, "electrons");
    const std::vector<double> ceilings = CeilingsFor(frame.image, arguments, run);
    if (!psf && job.damping == 0.0 && job.skyNoise == 0.0 && ceilings.empty()) {
        Lent<CImgLucy> image(frame);
        ThrowUnlessDone(image->Do(sigma, job.gain, job.readNoise, job.iterations, rect, run));
        return;
    }
    psf = psf ? psf : GaussianPsf(sigma);
    SetPsf(*psf, job);
    ThrowUnlessDone(RestoreLucy(frame.image, rect, job, run, ceilings));
}

/// Moves the reference pixel with samples that moved half a pixel to the left and upwards.
void MoveReferencePixel(CStlImage& image)
{
    double unused = 0.0;
    if (image.GetCRPix(0, &unused) != 0 || image.GetCRPix(1, &unused) != 0) {
        image.TranslatePhysicalCoords(-0.5, -0.5);
    }
}

void RunMaxent(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const CRect* const rect = arguments.Rectangle("rect");
    const std::optional<PsfImage> psf = GivenPsf(frame, arguments, run);
    CheckRestorable(frame.image, rect, psf ? RestorationNeeds::For(psf->width, psf->height) : RestorationNeeds());
    const double sigma = psf ? 0.0 : SigmaOf(arguments, frame.image, run);
    const double noise = arguments.Has("noise") ? arguments.Number("noise") : MeasureNoise(frame.image);
    Tell(run, "noise", noise, "counts");
    if (!(noise > 0.0)) {
        throw InputError("image", "shows no noise to measure; give noise");
    }
    if (psf) {
        const MemJob job{.psf = psf->samples.data(),
                         .psfWidth = psf->width,
                         .psfHeight = psf->height,
                         .isPsfCentred = true,
                         .variance = noise * noise,
                         .iterations = arguments.Whole("iterations")};
        ThrowUnlessDone(RestoreByEntropy(frame.image, rect, job, run));
        return;
    }
    const bool isOnGrid = arguments.Flag("resample") || rect != nullptr || IsMixed(arguments);
    Lent<CImgMem> image(frame);
    ThrowUnlessDone(image->Do(sigma, noise, arguments.Whole("iterations"), rect, isOnGrid, run));
    if (!isOnGrid) {
        MoveReferencePixel(*image);
    }
}

/// Multiplies the samples inside an area.
void Multiply(CStlImage& image, const CRect& area, double factor, int threads)
{
    const auto multiplyRows = [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            float* const row = image.GetImageAdr(0, y, block.plane);
            for (int x = static_cast<int>(area.left); x < area.right; ++x) {
                row[x] = static_cast<float>(row[x] * factor);
            }
        }
    };
    ForRowBlocks(RowBlocks(area, image.GetPlanes()), ThreadsOn(image, {}, threads), multiplyRows);
}

/// Display levels of 0 to 255, on which display values are the samples themselves, until it goes.
class PlainLevels {
public:
    explicit PlainLevels(CStlImage& image) : image_(image)
    {
        for (int plane = 0; plane < image.GetPlanes(); ++plane) {
            levels_.emplace_back(image.GetLevelMin(plane), image.GetLevelMax(plane));
            image.SetLevel(plane, 0.0, 255.0);
        }
    }
    ~PlainLevels()
    {
        for (int plane = 0; plane < image_.GetPlanes(); ++plane) {
            image_.SetLevel(plane, levels_[static_cast<std::size_t>(plane)].first,
                            levels_[static_cast<std::size_t>(plane)].second);
        }
    }
    PlainLevels(const PlainLevels&) = delete;
    PlainLevels& operator=(const PlainLevels&) = delete;

private:
    CStlImage& image_;
    std::vector<std::pair<double, double>> levels_;
};

// The filter dims what lies above black by its gain; black at 0 keeps the digits that would drown in a pedestal.
void RunWiener(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const CRect* const rect = arguments.Rectangle("rect");
    CheckRestorable(frame.image, rect, BytesOfRegion(WienerBytes));
    const double noise = arguments.Number("noise");
    if (const std::optional<PsfImage> psf = GivenPsf(frame, arguments, run)) {
        const PlainLevels levels(frame.image);
        DeblurByWiener(frame.image, rect, psf->samples.data(), psf->width, psf->height, noise, run);
        return;
    }
    const double sigma = SigmaOf(arguments, frame.image, run) * kSqrt2; // of which the filter takes 0.7071
    Lent<CImgWiener> image(frame);
    const CRect area = rect != nullptr ? *rect : CRect(0, 0, image->GetWidth(), image->GetHeight());
    {
        const PlainLevels levels(*image);
        image->Do(sigma, noise, rect, run);
    }
    Multiply(*image, area, WienerGain(sigma, area.Width(), area.Height()) * (1.0 + noise), run.Threads());
}

Parameter SigmaParameter()
{
    return NumberParameter("sigma", "how wide the blur is, as the standard deviation of a Gaussian", "pixels",
                           {kLeastSigma, kMostSigma}, "by fwhm");
}

Parameter FwhmParameter()
{
    return {.name = "fwhm",
            .summary = "how wide the blur is, as the full width of a star at half its height",
            .unit = "pixels",
            .min = 0.7,
            .max = 21.2,
            .choices = {"auto"},
            .whenAbsent = "auto: measured with the stars of the image"};
}

Parameter IterationsParameter(int defaultValue)
{
    return WholeParameter("iterations", "ends after so many, if it is not done before", "", {1, 10000}, defaultValue);
}

Operation Lucy()
{
    return {.name = "lucy",
            .summary = "sharpen by undoing the blur, after Richardson and Lucy",
            .help = "Finds the image that, blurred, fits the samples best for the noise of photons and of reading out. "
                    "It ends when the fit is as good as the noise allows (chi-square 1), or after the iterations; more "
                    "of them make stars narrower, and noise coarser. Samples should be counts with any pedestal taken "
                    "off; those far below 0 take no part. Of a mean of n frames, gain is n times that of the camera "
                    "and the read-out noise the root of n times; NCOMBINE of the header is seen to.",
            .parameters = {SigmaParameter(), FwhmParameter(),
                           NumberParameter("gain", "electrons that make one count", "electrons per count", {1e-6, 1e12},
                                           "EGAIN of the header, else 1; times NCOMBINE"),
                           NumberParameter("read-noise", "noise of reading out a pixel", "electrons", {0.0, 1e9},
                                           "RDNOISE of the header, else 0; times the root of NCOMBINE"),
                           IterationsParameter(20), RectangleParameter(), PsfParameter(),
                           NumberParameter("damping",
                                           "how much evenness counts against the fit; 0.002 to 0.02 keep noise from "
                                           "growing with the iterations",
                                           "", {0.0, 0.2}, 0.0),
                           FlagParameter("protect", "keep stars from getting dark rings and hollow cores", false),
                           NumberParameter("saturation",
                                           "samples from this value on are saturated: they tell nothing and stay",
                                           "counts", kAnyNumber, "with protect judged by the image")},
            .footprint = Always(kWholeImage),
            .aliases = {"richardson-lucy", "deconvolve"},
            .check = CheckBlur,
            .run = RunLucy};
}

Operation Maxent()
{
    return {.name = "maxent",
            .summary = "undo the blur, with the smoothest image that fits",
            .help =
                "Of all images above 0 that, blurred, agree with the samples to within the noise, it finds the one "
                "of greatest entropy: what the samples do not ask for stays even. The restored samples lie half a "
                "pixel to the left of and above those of the image; the reference pixel of world coordinates (CRPIX) "
                "follows, so that stars keep their right ascension and declination. With resample, with a mask or a "
                "strength below 1, and inside a rectangle, samples stay in their places instead.",
            .parameters = {SigmaParameter(), FwhmParameter(),
                           NumberParameter("noise", "standard deviation of the noise", "counts", {1e-30, 1e12},
                                           "measured from neighbouring samples"),
                           IterationsParameter(100),
                           FlagParameter("resample", "keep samples in their places, and the reference pixel as it is",
                                         false),
                           RectangleParameter(), PsfParameter()},
            .footprint = Always(kWholeImage),
            .aliases = {"maximum-entropy", "mem"},
            .check = CheckBlur,
            .run = RunMaxent};
}

Operation Wiener()
{
    return {.name = "wiener",
            .summary = "sharpen by undoing the blur, in one pass",
            .help =
                "Divides the blur out, frequency by frequency, as far as the noise allows. The quickest way, but "
                "bright stars get dark rings and samples may fall below 0. The filter itself makes an image fainter, "
                "by about 1000 sigma^2; this step gives the flux back. sigma is that of the blur.",
            .parameters = {SigmaParameter(), FwhmParameter(),
                           NumberParameter("noise", "power of the noise, over that of the image; more is smoother", "",
                                           {1e-9, 1.0}, 0.01),
                           RectangleParameter(), PsfParameter()},
            .footprint = Always(kWholeImage),
            .check = CheckBlur,
            .run = RunWiener};
}

} // namespace

std::vector<Operation> RestoreOperations()
{
    return {Lucy(), Maxent(), Wiener()};
}

} // namespace corvane::catalogue
