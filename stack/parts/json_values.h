#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <nlohmann/json.hpp>

#include "corvane/platform/export.h"
#include "stack/names.h"

/// Values in JSON, which come back with the bits that they had.
namespace corvane::stack {

/// JSON whose keys stay in the order in which they are set.
using Json = nlohmann::ordered_json;

/// What JSON holds is not what was to be read.
class WrongValue : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// @name The words for the values of an option
/// @{
inline constexpr Names<MosaicUse, 3> kMosaicUseNames{
    {{"auto", MosaicUse::kAuto}, {"keep", MosaicUse::kKeep}, {"pattern", MosaicUse::kPattern}}};
inline constexpr Names<BayerPattern, 4> kPatternNames{{{"RGGB", BayerPattern::kRggb},
                                                       {"GRBG", BayerPattern::kGrbg},
                                                       {"GBRG", BayerPattern::kGbrg},
                                                       {"BGGR", BayerPattern::kBggr}}};
inline constexpr Names<stars::MapModel, 4> kModelNames{{{"similarity", stars::MapModel::kSimilarity},
                                                        {"affine", stars::MapModel::kAffine},
                                                        {"homography", stars::MapModel::kHomography},
                                                        {"distortion", stars::MapModel::kDistortion}}};

constexpr const auto& WordsFor(CombineMethod)
{
    return kMethodNames;
}
constexpr const auto& WordsFor(CombineBy)
{
    return kCombineNames;
}
constexpr const auto& WordsFor(RejectMethod)
{
    return kRejectNames;
}
constexpr const auto& WordsFor(AlignMethod)
{
    return kAlignNames;
}
constexpr const auto& WordsFor(NormaliseMethod)
{
    return kNormaliseNames;
}
constexpr const auto& WordsFor(WeightMethod)
{
    return kWeightNames;
}
constexpr const auto& WordsFor(Coverage)
{
    return kCoverageNames;
}
constexpr const auto& WordsFor(Canvas)
{
    return kCanvasNames;
}
constexpr const auto& WordsFor(Interpolation)
{
    return kInterpolationNames;
}
constexpr const auto& WordsFor(DropKernel)
{
    return kDropNames;
}
constexpr const auto& WordsFor(DemosaicMethod)
{
    return kDemosaicNames;
}
constexpr const auto& WordsFor(MosaicUse)
{
    return kMosaicUseNames;
}
constexpr const auto& WordsFor(BayerPattern)
{
    return kPatternNames;
}
constexpr const auto& WordsFor(stars::MapModel)
{
    return kModelNames;
}
/// @}

/// A number, with the digits that make it this one, or a word for what JSON has no number for.
inline Json DoubleJson(double value)
{
    if (std::isfinite(value)) {
        return value;
    }
    return std::isnan(value) ? "nan" : value > 0.0 ? "inf" : "-inf";
}

inline double DoubleOf(const Json& json)
{
    if (json.is_number()) {
        return json.get<double>();
    }
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const auto word = json.get<std::string>();
    if (word != "nan" && word != "inf" && word != "-inf") {
        throw WrongValue("'" + word + "' is no number");
    }
    return word == "nan" ? std::numeric_limits<double>::quiet_NaN() : word == "inf" ? kInfinite : -kInfinite;
}

/// Many samples: eight hexadecimal digits for each.
CORVANE_VISIBLE std::string PackFloats(const std::vector<float>& values);
/// So many samples; throws WrongValue for another number of digits, and for what is none.
CORVANE_VISIBLE std::vector<float> UnpackFloats(const std::string& digits, std::size_t count);

template <class T>
struct IsList : std::false_type {};
template <class T>
struct IsList<std::vector<T>> : std::true_type {};
template <class T>
struct IsFixedList : std::false_type {};
template <class T, std::size_t count>
struct IsFixedList<std::array<T, count>> : std::true_type {};
template <class T>
struct IsMaybe : std::false_type {};
template <class T>
struct IsMaybe<std::optional<T>> : std::true_type {};

/// A type, or the same of what does not change.
template <class T, class Plain>
concept Either = std::is_same_v<std::remove_const_t<T>, Plain>;

/// Types whose fields `ForEachField` visits.
template <class T>
concept Record = requires(T& value) { ForEachField(value, [](const char*, auto&) {}); };

template <class T>
Json JsonOf(const T& value)
{
    if constexpr (std::is_same_v<T, double>) {
        return DoubleJson(value);
    } else if constexpr (std::is_enum_v<T>) {
        return NameOf(WordsFor(value), value);
    } else if constexpr (IsMaybe<T>::value) {
        return value ? JsonOf(*value) : Json();
    } else if constexpr (IsList<T>::value || IsFixedList<T>::value) {
        Json list = Json::array();
        for (const auto& item : value) {
            list.push_back(JsonOf(item));
        }
        return list;
    } else if constexpr (Record<const T>) {
        Json fields = Json::object();
        ForEachField(value, [&](const char* name, const auto& field) { fields[name] = JsonOf(field); });
        return fields;
    } else {
        return value;
    }
}

/// Reads what `JsonOf` has made. Throws WrongValue, and what the library throws for other kinds of values.
template <class T>
void FromJson(const Json& json, T& value)
{
    if constexpr (std::is_same_v<T, double>) {
        value = DoubleOf(json);
    } else if constexpr (std::is_enum_v<T>) {
        const std::optional<T> known = ValueOf(WordsFor(value), json.get<std::string>());
        value = known ? *known : throw WrongValue(json.dump() + " is not known");
    } else if constexpr (IsMaybe<T>::value) {
        value.reset();
        if (!json.is_null()) {
            FromJson(json, value.emplace());
        }
    } else if constexpr (IsList<T>::value) {
        value.clear();
        for (const Json& item : json.get_ref<const Json::array_t&>()) {
            FromJson(item, value.emplace_back());
        }
    } else if constexpr (IsFixedList<T>::value) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            FromJson(json.at(i), value[i]);
        }
    } else if constexpr (Record<T>) {
        ForEachField(value, [&](const char* name, auto& field) { FromJson(json.at(name), field); });
    } else {
        value = json.get<T>();
    }
}

} // namespace corvane::stack
