#include "stack/options.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "corvane/core/text.h"
#include "stack/names.h"

namespace corvane::stack {

namespace {

void CheckRange(const char* option, int value, int min, int max)
{
    if (value < min || value > max) {
        throw OptionError(option, std::to_string(value), std::to_string(min) + " to " + std::to_string(max));
    }
}

/// One name for one file, whatever way leads there.
std::string FileKey(const std::string& path)
{
    std::error_code ignored;
    const auto key = std::filesystem::weakly_canonical(std::filesystem::absolute(path), ignored);
    return key.empty() ? path : key.string();
}

void CheckRange(const char* option, const std::optional<double>& value, double max)
{
    const bool isAllowed = !value || (*value >= 0.0 && *value <= max); // NaN is not
    if (!isAllowed) {
        throw OptionError(option, NumberText(*value), "0 to " + NumberText(max));
    }
}

void CheckReference(const Options& options)
{
    if (ReferenceIndex(options) < 0) {
        throw OptionError("--reference", options.referenceFile, "one of the lights, by the name that it has there");
    }
}

/// Options that do nothing without another one.
void CheckCompany(const Options& options)
{
    if (options.reference && options.align != AlignMethod::kShift) {
        throw OptionError("--star", std::to_string(options.reference->x) + "," + std::to_string(options.reference->y),
                          "--align shift, which aligns by one star");
    }
    if (options.alignsScale && options.align != AlignMethod::kStars) {
        throw OptionError("--scale", "alone", "--align stars, which tell it");
    }
    if (options.weight != WeightMethod::kNone && options.method != CombineMethod::kClippedMean) {
        throw OptionError("--weight", NameOf(kWeightNames, options.weight),
                          "--method clipped-mean, since a median counts all lights the same");
    }
}

void CheckListedOnce(const std::vector<std::string>& lights)
{
    std::set<std::string> seen;
    for (const std::string& light : lights) {
        if (!seen.insert(FileKey(light)).second) {
            throw OptionError("LIGHT", light, "each light once, since one that counts twice spoils the statistics");
        }
    }
}

} // namespace

OptionError::OptionError(std::string name, const std::string& value, const std::string& allowed)
    : std::invalid_argument(name + ": " + value + " is not allowed; it takes " + allowed), option_(std::move(name))
{}

const char* Cancelled::what() const noexcept
{
    return "cancelled";
}

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
        throw OptionError("LIGHT", "no file", "one or more lights");
    }
    CheckRange("--size", options.size, kMinPatchSize, kMaxPatchSize);
    CheckRange("--search", options.search, 0, kMaxSearch);
    CheckRange("--pedestal", options.pedestal, kMaxPedestal);
    CheckRange("--reject-fwhm", options.rejectFwhm, kMaxReject);
    CheckRange("--reject-stars", options.rejectStars, kMaxReject);
    CheckRange("--reject-background", options.rejectBackground, kMaxReject);
    CheckReference(options);
    CheckCompany(options);
    if (options.cosmetic && options.darks.empty()) {
        throw OptionError("--cosmetic", "alone", "darks, which tell the hot pixels: add --dark");
    }
    if (!options.flatDarks.empty() && options.flats.empty()) {
        throw OptionError("--flat-dark", options.flatDarks.front(), "frames that belong to flats: add --flat");
    }
    CheckListedOnce(options.lights);
}

} // namespace corvane::stack
