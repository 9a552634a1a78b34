#include "stack/options.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "stack/follow.h"
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

void CheckRange(const char* parameter, const std::optional<double>& value, double max)
{
    const bool isAllowed = !value || (*value >= 0.0 && *value <= max); // NaN is not
    if (!isAllowed) {
        throw ParameterError(parameter, NumberText(*value), "must be 0 to " + NumberText(max));
    }
}

/// True while it is not known which frames there are.
bool NamesFolder(const Options& options)
{
    const auto isFolder = [](const std::string& name) {
        std::error_code ignored;
        return std::filesystem::is_directory(name, ignored);
    };
    return std::any_of(options.lights.begin(), options.lights.end(), isFolder);
}

/// What drizzle takes, and what takes it.
void CheckDrizzle(const Options& options)
{
    const auto check = [](const char* name, double value, double min, double max) {
        const bool isAllowed = value >= min && value <= max; // NaN is not
        if (!isAllowed) {
            throw ParameterError(name, NumberText(value), "must be " + NumberText(min) + " to " + NumberText(max));
        }
    };
    check("drizzle", options.drizzle.value_or(1.0), kMinDrizzle, kMaxDrizzle);
    check("drop", options.drop, kMinDrop, 1.0);
    if (options.drizzle && options.coverage == Coverage::kAll) {
        throw ParameterError("coverage", "all", "drizzle fills what any light falls into: it takes coverage = any");
    }
    if (options.drizzle && CombineOf(options) != CombineBy::kMean) {
        throw ParameterError("combine", NameOf(kCombineNames, *options.combine),
                             "drizzle makes the mean of what falls into a pixel");
    }
    if (!options.drizzle && options.wantsWeights) {
        throw ParameterError("weight-map", "alone", "it takes drizzle, which tells how much falls into each pixel");
    }
}

void CheckReference(const Options& options)
{
    if (ReferenceIndex(options) < 0) {
        throw ParameterError("reference", options.referenceFile,
                             "it takes one of the lights, by the name that it has there");
    }
}

bool IsMean(const Options& options)
{
    return options.method ? *options.method == CombineMethod::kClippedMean : CombineOf(options) == CombineBy::kMean;
}

/// Refuses limits that are out of their range, or that the method of rejection does not ask for.
void CheckRejection(const Options& options)
{
    const RejectOptions& reject = options.reject;
    if (options.method && (reject.method || options.combine)) {
        throw ParameterError("method", NameOf(kMethodNames, *options.method),
                             "it stands in place of combine and reject");
    }
    const RejectMethod method = AskedRejection(reject, CombineOf(options)); // what auto chooses takes limits
    const bool takesLimits = !options.method && method != RejectMethod::kNone && method != RejectMethod::kEsd;
    const auto check = [&](const char* name, const std::optional<double>& limit) {
        CheckRange(name, limit, kMaxReject);
        if (limit && !takesLimits) {
            throw ParameterError(name, NumberText(*limit), "it takes a rejection by limits");
        }
        if (limit && method == RejectMethod::kMinMax && *limit != std::floor(*limit)) {
            throw ParameterError(name, NumberText(*limit), "it takes a whole number, of values, with reject = minmax");
        }
    };
    check("low", reject.low);
    check("high", reject.high);
    CheckRange("grow", reject.grow.value_or(0), 0, kMaxGrow);
    if (reject.grow.value_or(0) > 0 &&
        (options.method || method == RejectMethod::kNone || method == RejectMethod::kMinMax)) {
        throw ParameterError("grow", std::to_string(*reject.grow), "it takes a rejection of what stands out");
    }
    CheckRange("iterations", reject.iterations, 0, kMaxIterations);
    if (reject.iterations > 0 && (!takesLimits || method == RejectMethod::kMinMax)) {
        throw ParameterError("iterations", std::to_string(reject.iterations), "it takes a rejection in rounds");
    }
}

void CheckNoise(const Options& options)
{
    if (options.wantsNoise && !TellsNoise(options)) {
        const bool dropsEnds = options.reject.method == RejectMethod::kMinMax;
        throw ParameterError(dropsEnds ? "reject" : "combine",
                             dropsEnds ? NameOf(kRejectNames, RejectMethod::kMinMax)
                                       : NameOf(kCombineNames, CombineOf(options)),
                             "it leaves nothing to tell the noise by, which a map is asked of");
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
    if (!options.onto.empty() && options.align != AlignMethod::kStars) {
        throw ParameterError("onto", options.onto, "it takes align = stars, which lie on both");
    }
    if (!options.follow.empty() && options.align != AlignMethod::kStars) {
        throw ParameterError("follow", ToText(options.follow.front()), "it takes align = stars, which it moves among");
    }
    if (!options.follow.empty() && options.follow.size() != 2) {
        throw ParameterError("follow", ToText(options.follow.front()), "it takes two places");
    }
    if (options.wantsBoth && options.follow.empty()) {
        throw ParameterError("both", "alone", "it takes follow, beside which the stars are stacked");
    }
    if (options.transform && options.align != AlignMethod::kStars) {
        throw ParameterError("transform", NameOf(kTransformNames, options.transform),
                             "it takes align = stars, which tell it");
    }
    if (WeightOf(options) != WeightMethod::kNone && !IsMean(options)) {
        throw ParameterError("weight", NameOf(kWeightNames, *options.weight),
                             "it takes a mean, since nothing else counts lights by weights");
    }
}

/// Calibration frames that do nothing without others, and sets that are there for no light.
void CheckSets(const Options& options)
{
    const std::vector<CalibrationSet> sets = SetsOf(options);
    const auto hasDarks = [](const CalibrationSet& set) { return !set.darks.empty(); };
    if (options.cosmetic && std::none_of(sets.begin(), sets.end(), hasDarks)) {
        throw ParameterError("cosmetic", "alone", "it takes darks, which tell the hot pixels");
    }
    for (const CalibrationSet& set : sets) {
        if (!set.flatDarks.empty() && set.flats.empty()) {
            throw ParameterError("flat-dark", set.flatDarks.front(), "it takes flats, which these belong to");
        }
    }
    const std::vector<std::size_t> setOf = SetOfEachLight(options);
    const auto isThere = [&](std::size_t set) { return set < sets.size(); };
    if (setOf.size() != options.lights.size() || !std::all_of(setOf.begin(), setOf.end(), isThere)) {
        throw ParameterError("setOfLight", std::to_string(setOf.size()) + " numbers",
                             "it takes the number of a set for each light");
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

std::string FileKey(const std::string& path)
{
    std::error_code ignored;
    const auto key = std::filesystem::weakly_canonical(std::filesystem::absolute(path), ignored);
    return key.empty() ? path : key.string();
}

std::vector<CalibrationSet> SetsOf(const Options& options)
{
    return options.sets.empty() ? std::vector{static_cast<const CalibrationSet&>(options)} : options.sets;
}

std::vector<std::string> FilesOf(const Options& options)
{
    std::vector<std::string> files = options.lights;
    for (const CalibrationSet& set : SetsOf(options)) {
        for (const auto& kind : {set.bias, set.darks, set.flats, set.flatDarks}) {
            files.insert(files.end(), kind.begin(), kind.end());
        }
    }
    if (!options.onto.empty()) {
        files.push_back(options.onto);
    }
    return files;
}

std::vector<std::size_t> SetOfEachLight(const Options& options)
{
    return options.sets.empty() ? std::vector<std::size_t>(options.lights.size()) : options.setOfLight;
}

NormaliseMethod NormaliseOf(const Options& options)
{
    const bool tellsFlux = options.align == AlignMethod::kStars;
    return options.normalise.value_or(tellsFlux ? NormaliseMethod::kBoth : NormaliseMethod::kNone);
}

CombineBy CombineOf(const Options& options)
{
    return options.combine.value_or(CombineBy::kMean);
}

WeightMethod WeightOf(const Options& options)
{
    const bool tellsQuality = options.align == AlignMethod::kStars && !options.method && IsMean(options);
    return options.weight.value_or(tellsQuality ? WeightMethod::kSnr : WeightMethod::kNone);
}

bool TellsNoise(const Options& options)
{
    const CombineBy by = CombineOf(options);
    return options.method || (by != CombineBy::kMax && by != CombineBy::kMin &&
                              AskedRejection(options.reject, by) != RejectMethod::kMinMax);
}

void WantAllMaps(Options& options)
{
    options.wantsCoverage = true;
    options.wantsWeights = options.drizzle.has_value();
    options.wantsNoise = TellsNoise(options);
    options.wantsRejected = options.method ? *options.method != CombineMethod::kMedian
                                           : AskedRejection(options.reject, CombineOf(options)) != RejectMethod::kNone;
}

int GrowthOf(const Options& options, int lights)
{
    return options.method ? 0 : *SettledRejection(options.reject, CombineOf(options), lights).grow;
}

CombineRule RuleOf(const Options& options, int lights)
{
    return options.method ? CombineRule(*options.method) : MakeRule(options.reject, CombineOf(options), lights);
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
    CheckDrizzle(options);
    CheckCompany(options);
    CheckRejection(options);
    CheckNoise(options);
    if (!NamesFolder(options)) {
        CheckReference(options);
        CheckSets(options);
    }
    CheckListedOnce(options.lights);
}

} // namespace corvane::stack
