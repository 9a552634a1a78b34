#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "stack/options.h"

namespace corvane::stack {

/// The words by which the command and HISTORY call the values of options; each list in the order of its values.
/// @{
template <class Value, std::size_t count>
using Names = std::array<std::pair<const char*, Value>, count>;

inline constexpr Names<CombineMethod, 3> kMethodNames{{{"median", CombineMethod::kMedian},
                                                       {"clipped-median", CombineMethod::kClippedMedian},
                                                       {"clipped-mean", CombineMethod::kClippedMean}}};
inline constexpr Names<AlignMethod, 3> kAlignNames{
    {{"stars", AlignMethod::kStars}, {"shift", AlignMethod::kShift}, {"none", AlignMethod::kNone}}};
inline constexpr Names<std::optional<stars::MapModel>, 5> kTransformNames{
    {{"auto", std::nullopt},
     {"similarity", stars::MapModel::kSimilarity},
     {"affine", stars::MapModel::kAffine},
     {"homography", stars::MapModel::kHomography},
     {"distortion", stars::MapModel::kDistortion}}};
inline constexpr Names<NormaliseMethod, 5> kNormaliseNames{{{"none", NormaliseMethod::kNone},
                                                            {"offset", NormaliseMethod::kOffset},
                                                            {"scale", NormaliseMethod::kScale},
                                                            {"both", NormaliseMethod::kBoth},
                                                            {"local", NormaliseMethod::kLocal}}};
inline constexpr Names<CombineBy, 5> kCombineNames{{{"mean", CombineBy::kMean},
                                                    {"median", CombineBy::kMedian},
                                                    {"sum", CombineBy::kSum},
                                                    {"max", CombineBy::kMax},
                                                    {"min", CombineBy::kMin}}};
inline constexpr Names<RejectMethod, 8> kRejectNames{{{"auto", RejectMethod::kAuto},
                                                      {"none", RejectMethod::kNone},
                                                      {"sigma", RejectMethod::kSigma},
                                                      {"winsorized", RejectMethod::kWinsorized},
                                                      {"linear-fit", RejectMethod::kLinearFit},
                                                      {"esd", RejectMethod::kEsd},
                                                      {"mad", RejectMethod::kMad},
                                                      {"minmax", RejectMethod::kMinMax}}};
inline constexpr Names<WeightMethod, 5> kWeightNames{{{"none", WeightMethod::kNone},
                                                      {"noise", WeightMethod::kNoise},
                                                      {"fwhm", WeightMethod::kFwhm},
                                                      {"stars", WeightMethod::kStars},
                                                      {"snr", WeightMethod::kSnr}}};
inline constexpr Names<Coverage, 2> kCoverageNames{{{"any", Coverage::kAny}, {"all", Coverage::kAll}}};
inline constexpr Names<Canvas, 3> kCanvasNames{
    {{"reference", Canvas::kReference}, {"union", Canvas::kUnion}, {"common", Canvas::kCommon}}};
inline constexpr Names<Interpolation, 4> kInterpolationNames{{{"bilinear", Interpolation::kBilinear},
                                                              {"bicubic", Interpolation::kBicubic},
                                                              {"lanczos3", Interpolation::kLanczos3},
                                                              {"lanczos4", Interpolation::kLanczos4}}};
inline constexpr Names<DropKernel, 2> kDropNames{{{"square", DropKernel::kSquare}, {"point", DropKernel::kPoint}}};
/// @}

/// The value for a word; nothing for another word.
template <class Value, std::size_t count>
std::optional<Value> ValueOf(const Names<Value, count>& names, std::string_view word)
{
    for (const auto& [name, meaning] : names) {
        if (name == word) {
            return meaning;
        }
    }
    return std::nullopt;
}

/// The word for a value.
template <class Value, std::size_t count>
const char* NameOf(const Names<Value, count>& names, Value value)
{
    for (const auto& [name, meaning] : names) {
        if (meaning == value) {
            return name;
        }
    }
    return "";
}

} // namespace corvane::stack
