#include "stack/options.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "stack/names.h"

namespace corvane::stack {

namespace {

void CheckRange(const char* parameter, int value, int min, int max)
{
    if (value < min || value > max) {
        throw ParameterError(parameter, std::to_string(value),
                             "must be " + std::to_string(min) + " to " + std::to_string(max));
    }
}

/// One name for one file, whatever way leads there.
std::string FileKey(const std::string& path)
{
    std::error_code ignored;
    const auto key = std::filesystem::weakly_canonical(std::filesystem::absolute(path), ignored);
    return key.empty() ? path : key.string();
}

void CheckRange(const char* parameter, const std::optional<double>& value, double max)
{
    const bool isAllowed = !value || (*value >= 0.0 && *value <= max); // NaN is not
    if (!isAllowed) {
        throw ParameterError(parameter, NumberText(*value), "must be 0 to " + NumberText(max));
    }
}

void CheckReference(const Options& options)
{
    if (ReferenceIndex(options) < 0) {
        throw ParameterError("reference", options.referenceFile,
                             "it takes one of the lights, by the name that it has there");
    }
}

/// Options that do nothing without another one.
void CheckCompany(const Options& options)
{
    if (options.reference && options.align != AlignMethod::kShift) {
        throw ParameterError("star", std::to_string(options.reference->x) + "," + std::to_string(options.reference->y),
                             "it takes align = shift, which aligns by one star");
    }
    if (options.alignsScale && options.align != AlignMethod::kStars) {
        throw ParameterError("scale", "alone", "it takes align = stars, which tell it");
    }
    if (options.weight != WeightMethod::kNone && options.method != CombineMethod::kClippedMean) {
        throw ParameterError("weight", NameOf(kWeightNames, options.weight),
                             "it takes method = clipped-mean, since a median counts all lights the same");
    }
}

void CheckListedOnce(const std::vector<std::string>& lights)
{
    std::set<std::string> seen;
    for (const std::string& light : lights) {
        if (!seen.insert(FileKey(light)).second) {
            throw ParameterError("LIGHT", light,
                                 "it takes each light once, since one that counts twice spoils the statistics");
        }
    }
}

} // namespace

int ReferenceIndex(const Options& options)
{
    if (options.referenceFile.empty()) {
        return 0;
    }
    const auto named = std::find(options.lights.begin(), options.lights.end(), options.referenceFile);
    return named == options.lights.end() ? -1 : static_cast<int>(named - options.lights.begin());
}

NormaliseMethod NormaliseOf(const Options& options)
{
    const bool tellsFlux = options.align == AlignMethod::kStars;
    return options.normalise.value_or(tellsFlux ? NormaliseMethod::kBoth : NormaliseMethod::kNone);
}

void CheckOptions(const Options& options)
{
    if (options.lights.empty()) {
        throw ParameterError("LIGHT", "no file", "it takes one or more lights");
    }
    CheckRange("size", options.size, kMinPatchSize, kMaxPatchSize);
    CheckRange("search", options.search, 0, kMaxSearch);
    CheckRange("pedestal", options.pedestal, kMaxPedestal);
    CheckRange("reject-fwhm", options.rejectFwhm, kMaxReject);
    CheckRange("reject-stars", options.rejectStars, kMaxReject);
    CheckRange("reject-background", options.rejectBackground, kMaxReject);
    CheckReference(options);
    CheckCompany(options);
    if (options.cosmetic && options.darks.empty()) {
        throw ParameterError("cosmetic", "alone", "it takes darks, which tell the hot pixels");
    }
    if (!options.flatDarks.empty() && options.flats.empty()) {
        throw ParameterError("flat-dark", options.flatDarks.front(), "it takes flats, which these belong to");
    }
    CheckListedOnce(options.lights);
}

} // namespace corvane::stack
