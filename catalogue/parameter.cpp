#include "catalogue/parameter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "catalogue/names.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "io/frame.h"

namespace corvane::catalogue {
namespace {

constexpr const char* kCurveForm = "x:y/x:y/...";
constexpr const char* kRectangleForm = "left:top:right:bottom";

[[noreturn]] void Refuse(const Parameter& parameter, std::string_view value, const std::string& reason)
{
    throw ParameterError(parameter.name, std::string(value), reason);
}

// A limit that is a float's own is none that a person set.
std::string RangeText(const Parameter& parameter, const char* what)
{
    const bool below = parameter.min > std::numeric_limits<float>::lowest();
    const bool above = parameter.max < std::numeric_limits<float>::max();
    if (below && above) {
        return NumberText(parameter.min) + " to " + NumberText(parameter.max);
    }
    if (below) {
        return "at least " + NumberText(parameter.min);
    }
    return above ? "at most " + NumberText(parameter.max) : std::string("any ") + what;
}

// All of the text must be the number; a plus sign is a habit of people that from_chars does not share.
template <typename Number>
std::errc ReadNumber(std::string_view text, Number& number)
{
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end != text.data() + text.size() ? std::errc::invalid_argument : error;
}

template <typename Number>
Number ParseNumber(const Parameter& parameter, std::string_view text, const char* what)
{
    Number number{};
    const std::errc error = ReadNumber(text, number);
    if (error == std::errc::invalid_argument) {
        Refuse(parameter, text, std::string("is not ") + what);
    }
    if constexpr (std::is_floating_point_v<Number>) {
        if (error == std::errc() && !std::isfinite(number)) {
            Refuse(parameter, text, "is not a finite number");
        }
    }
    if (error != std::errc() || number < parameter.min || number > parameter.max) {
        Refuse(parameter, text, "must be " + RangeText(parameter, "number that a sample can hold"));
    }
    return number;
}

bool ParseFlag(const Parameter& parameter, std::string_view text)
{
    for (const std::string_view yes : {"yes", "on", "true", "1"}) {
        if (text == yes) {
            return true;
        }
    }
    for (const std::string_view no : {"no", "off", "false", "0"}) {
        if (text == no) {
            return false;
        }
    }
    Refuse(parameter, text, "must be " + AllowedText(parameter));
}

bool IsOneOf(const std::vector<std::string>& words, std::string_view text)
{
    return std::find(words.begin(), words.end(), text) != words.end();
}

std::string ParseChoice(const Parameter& parameter, std::string_view text)
{
    if (!IsOneOf(parameter.choices, text)) {
        Refuse(parameter, text, "must be " + AllowedText(parameter));
    }
    return std::string(text);
}

// Only these survive in a header, from which steps are read again.
std::string ParseLine(const Parameter& parameter, std::string_view text)
{
    if (!std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; })) {
        Refuse(parameter, text, "must be " + AllowedText(parameter));
    }
    return std::string(text);
}

std::vector<double> ParseNumbers(const Parameter& parameter, std::string_view text)
{
    std::vector<double> numbers;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        numbers.push_back(ParseNumber<double>(parameter, text.substr(begin, end - begin), "a number"));
        begin = end + 1;
    }
    const auto hasAsMany = [&](const std::string& form) {
        const auto commas = static_cast<std::size_t>(std::count(form.begin(), form.end(), ','));
        return parameter.IsList() ? numbers.size() % commas == 0 : numbers.size() == commas + 1;
    };
    if (std::none_of(parameter.choices.begin(), parameter.choices.end(), hasAsMany)) {
        Refuse(parameter, text, "must be " + AllowedText(parameter));
    }
    return numbers;
}

Points ParseCurve(const Parameter& parameter, std::string_view text)
{
    Points points;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view item = rest.substr(0, rest.find('/'));
        const std::size_t colon = item.find(':');
        Point& point = points.emplace_back();
        if (colon == std::string_view::npos || ReadNumber(item.substr(0, colon), point.x) != std::errc() ||
            ReadNumber(item.substr(colon + 1), point.y) != std::errc()) {
            Refuse(parameter, text, "must be " + AllowedText(parameter));
        }
        rest.remove_prefix(std::min(item.size() + 1, rest.size()));
    }
    if (const std::string fault = FaultOf(points); !fault.empty()) {
        Refuse(parameter, text, fault);
    }
    return points;
}

CRect ParseRectangle(const Parameter& parameter, std::string_view text)
{
    std::array<int, 4> edges{};
    std::string_view rest = text;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        const std::size_t colon = i + 1 < edges.size() ? rest.find(':') : rest.size();
        if (colon == std::string_view::npos || ReadNumber(rest.substr(0, colon), edges[i]) != std::errc()) {
            Refuse(parameter, text, std::string("must be ") + kRectangleForm + " in whole pixels");
        }
        rest.remove_prefix(std::min(colon + 1, rest.size()));
    }
    const CRect rect(edges[0], edges[1], edges[2], edges[3]);
    if (rect.right <= rect.left || rect.bottom <= rect.top) {
        Refuse(parameter, text, "is empty; right and bottom must lie beyond left and top");
    }
    return rect;
}

} // namespace

Parameter RectangleParameter()
{
    return {.name = "rect",
            .kind = Kind::Rectangle,
            .summary = "work inside this rectangle only; right and bottom are the first column and row outside",
            .unit = "pixels",
            .whenAbsent = "the whole image"};
}

Parameter NumberParameter(const std::string& name, const std::string& summary, const std::string& unit,
                          const Range& range, double defaultValue)
{
    return {.name = name,
            .summary = summary,
            .unit = unit,
            .min = range.min,
            .max = range.max,
            .defaultValue = defaultValue};
}

Parameter NumberParameter(const std::string& name, const std::string& summary, const std::string& unit,
                          const Range& range, const std::string& whenAbsent)
{
    return {
        .name = name, .summary = summary, .unit = unit, .min = range.min, .max = range.max, .whenAbsent = whenAbsent};
}

Parameter WholeParameter(const std::string& name, const std::string& summary, const std::string& unit,
                         const Range& range, int defaultValue)
{
    Parameter parameter = NumberParameter(name, summary, unit, range, defaultValue);
    parameter.kind = Kind::Whole;
    parameter.defaultValue = defaultValue;
    return parameter;
}

Parameter WholeParameter(const std::string& name, const std::string& summary, const std::string& unit,
                         const Range& range, const std::string& whenAbsent)
{
    Parameter parameter = NumberParameter(name, summary, unit, range, whenAbsent);
    parameter.kind = Kind::Whole;
    return parameter;
}

Parameter FlagParameter(const std::string& name, const std::string& summary, bool defaultValue)
{
    return {.name = name, .kind = Kind::Flag, .summary = summary, .defaultValue = defaultValue};
}

Parameter ChoiceParameter(const std::string& name, const std::string& summary, const std::vector<std::string>& choices,
                          const std::string& defaultValue)
{
    return {.name = name, .kind = Kind::Choice, .summary = summary, .choices = choices, .defaultValue = defaultValue};
}

Value ParseValue(const Parameter& parameter, std::string_view text)
{
    if (text.empty()) {
        throw ParameterError(parameter.name, {}, "has no value; it must be " + AllowedText(parameter));
    }
    switch (parameter.kind) {
    case Kind::Number:
        if (IsOneOf(parameter.choices, text)) {
            break;
        }
        return ParseNumber<double>(parameter, text, "a number");
    case Kind::Whole:
        return ParseNumber<int>(parameter, text, "a whole number");
    case Kind::Choice:
        return ParseChoice(parameter, text);
    case Kind::Flag:
        return ParseFlag(parameter, text);
    case Kind::Text:
        return ParseLine(parameter, text);
    case Kind::Numbers:
        return ParseNumbers(parameter, text);
    case Kind::Curve:
        return ParseCurve(parameter, text);
    case Kind::Rectangle:
        return ParseRectangle(parameter, text);
    case Kind::Image:
    case Kind::CurveFile:
    case Kind::Matrix:
    case Kind::Output:
        break;
    }
    return std::string(text);
}

Value CheckedValue(const Parameter& parameter, const Value& value)
{
    const bool isInMemory = parameter.kind == Kind::Image && std::holds_alternative<SharedFrame>(value);
    return isInMemory ? value : ParseValue(parameter, ToText(value));
}

std::string ToText(const Value& value)
{
    struct Writer {
        std::string operator()(double number) const { return NumberText(number); }
        std::string operator()(int number) const { return std::to_string(number); }
        std::string operator()(bool flag) const { return flag ? "yes" : "no"; }
        std::string operator()(const std::string& text) const { return text; }
        std::string operator()(const SharedFrame& frame) const { return frame->image.GetOrgFileName(); }
        std::string operator()(const std::vector<double>& numbers) const
        {
            std::string text;
            for (const double number : numbers) {
                text.append(text.empty() ? "" : ",").append(NumberText(number));
            }
            return text;
        }
        std::string operator()(const Points& points) const
        {
            std::string text;
            for (const Point& point : points) {
                text.append(text.empty() ? "" : "/").append(NumberText(point.x) + ":" + NumberText(point.y));
            }
            return text;
        }
        std::string operator()(const CRect& rect) const
        {
            return std::to_string(rect.left) + ":" + std::to_string(rect.top) + ":" + std::to_string(rect.right) + ":" +
                   std::to_string(rect.bottom);
        }
    };
    return std::visit(Writer{}, value);
}

std::optional<Value> DefaultValue(const Parameter& parameter)
{
    if (parameter.readSetting == nullptr) {
        return parameter.defaultValue;
    }
    return ParseValue(parameter, ToText(parameter.readSetting()));
}

std::string AllowedText(const Parameter& parameter)
{
    switch (parameter.kind) {
    case Kind::Number:
        return RangeText(parameter, "number") + (parameter.choices.empty() ? "" : ", or " + Joined(parameter.choices));
    case Kind::Whole:
        return RangeText(parameter, "whole number");
    case Kind::Choice:
    case Kind::Numbers:
        return Joined(parameter.choices);
    case Kind::Flag:
        return "yes or no";
    case Kind::Text:
        return "printable ASCII characters";
    case Kind::Curve:
        return std::string(kCurveForm) + ", points from 0:0 to 1:1";
    case Kind::Rectangle:
        return kRectangleForm;
    case Kind::Matrix:
        return Joined(parameter.choices) + ", or the name of a file";
    case Kind::Image:
    case Kind::CurveFile:
    case Kind::Output:
        break;
    }
    return "the name of a file" + (parameter.choices.empty() ? "" : ", or " + Joined(parameter.choices));
}

std::string DescriptionOf(const Parameter& parameter)
{
    const std::optional<Value> value = DefaultValue(parameter);
    const std::string absent = value                    ? "default " + ToText(*value)
                               : parameter.IsRequired() ? "must be given"
                                                        : "default: " + parameter.whenAbsent;
    return parameter.summary + " [" + AllowedText(parameter) + (parameter.unit.empty() ? "" : ", " + parameter.unit) +
           "; " + absent + "]";
}

} // namespace corvane::catalogue
