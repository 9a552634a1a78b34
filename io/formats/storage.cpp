#include "io/formats/storage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "corvane/core/error.h"
#include "corvane/core/reductions.h"

namespace corvane::io {
namespace {

/// What a look at every sample tells about how an image can be stored.
struct SampleSurvey {
    bool undefined = false; ///< some are NaN or blank
    bool fractions = false; ///< some are no whole numbers
    Extremes extremes;

    void Add(const float* row, int width, const UndefinedTest& isUndefined)
    {
        for (int x = 0; x < width; ++x) {
            if (isUndefined(row[x])) {
                undefined = true;
                continue;
            }
            fractions |= std::nearbyint(row[x]) != row[x];
            extremes.Add(row[x]);
        }
    }

    bool IsWithin(double low, double high) const { return extremes.Min() >= low && extremes.Max() <= high; }
};

SampleSurvey Survey(const CImage& image)
{
    SampleSurvey survey;
    const UndefinedTest isUndefined(image);
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int y = 0; y < image.GetHeight(); ++y) {
            survey.Add(RowOf(image, y, plane), image.GetWidth(), isUndefined);
        }
    }
    return survey;
}

std::string Short(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

std::string Range(const SampleSurvey& survey)
{
    char text[64];
    std::snprintf(text, sizeof text, "the samples are %.6g to %.6g", survey.extremes.Min(), survey.extremes.Max());
    return text;
}

/// The samples that the lowest and the highest count stand for.
struct Span {
    double low;
    double high;
};

Span LevelSpan(const CStlImage& image)
{
    Span span{image.GetLevelMin(0), image.GetLevelMax(0)};
    for (int plane = 1; plane < image.GetPlanes(); ++plane) {
        span.low = std::min(span.low, image.GetLevelMin(plane));
        span.high = std::max(span.high, image.GetLevelMax(plane));
    }
    return span;
}

/// The span that a scale asks for.
Span ChooseSpan(const std::string& path, const CStlImage& image, const SampleSurvey& survey, SampleScale scale)
{
    if (scale == SampleScale::kUnit) {
        if (!survey.IsWithin(0.0, 1.0)) {
            throw FileError(path, "the scale `unit` takes samples from 0 to 1, " + Range(survey));
        }
        return {0.0, 1.0};
    }
    const Span span =
        scale == SampleScale::kLevels ? LevelSpan(image) : Span{survey.extremes.Min(), survey.extremes.Max()};
    if (!std::isfinite(span.low) || !std::isfinite(span.high)) {
        throw FileError(path, "cannot be scaled: " + Range(survey));
    }
    return {span.low, span.high > span.low ? span.high : span.low + 1.0};
}

/// Counts are what the samples must be; data on another scale would be lost without a word.
void CheckCounts(const std::string& path, const SampleSurvey& survey, int bits, double most, const std::string& format)
{
    if (!survey.IsWithin(0.0, most) || (survey.extremes.Max() <= 1.0 && survey.fractions)) {
        throw FileError(path, "a " + format + " of " + std::to_string(bits) + " bits holds counts from 0 to " +
                                  Short(most) + ", " + Range(survey) +
                                  "; save as FITS or TIFF of floats, or say what becomes of them: --bits-scale levels, "
                                  "minmax, unit or none");
    }
}

} // namespace

Storage ChooseStorage(const std::string& path, const CStlImage& image, const SaveOptions& options,
                      const IntegerFormat& format)
{
    Storage storage{options.bits, UndefinedTest(image)};
    if (options.bits < 0) {
        return storage;
    }
    const SampleSurvey survey = Survey(image);
    if (survey.undefined && !format.isPhysical) {
        throw FileError(path, std::string(format.name) +
                                  " of integers cannot hold undefined samples (NaN or blank), of which the image "
                                  "has some; fill them with the step fill, save as FITS or 32-bit float "
                                  "TIFF, or make a picture with `corvane render`");
    }
    const bool isEmpty = survey.extremes.Empty();
    const double most = std::ldexp(1.0, options.bits) - 1.0;
    storage.hasBlank = survey.undefined;
    storage.isScaled = !isEmpty && options.scale != SampleScale::kCounts && options.scale != SampleScale::kNone;
    if (storage.isScaled) {
        const Span span = ChooseSpan(path, image, survey, options.scale);
        storage.step = (span.high - span.low) / (most - storage.Low());
        storage.zero = span.low - storage.step * storage.Low();
    } else if (!isEmpty && options.scale == SampleScale::kCounts) {
        CheckCounts(path, survey, options.bits, most, format.name);
    }
    return storage;
}

void CheckScale(const std::string& path, const SaveOptions& options)
{
    if (options.bits < 0 && options.scale != SampleScale::kCounts && options.scale != SampleScale::kNone) {
        throw FileError(path, "has float samples, which keep their values; a scale is for --bits 8, 16 or 32");
    }
}

} // namespace corvane::io
