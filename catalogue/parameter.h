#pragma once

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "catalogue/points.h"
#include "corvane/platform/export.h"
#include "corvane/platform/rect.h"

namespace corvane::io {
struct Frame;
}

namespace corvane::catalogue {

/// What the value of a parameter looks like.
enum class Kind {
    Number, ///< a finite number, held as double; or one of its words, held as text
    Whole,  ///< a whole number, held as int
    Choice, ///< one of a few words, held as text
    Flag,   ///< yes or no, held as bool
    Text,   ///< printable ASCII characters, held as text
    /// Finite numbers with commas between, as X,Y; one of the parameter's forms says how many, X,Y,... any number of
    /// pairs.
    Numbers,
    Image,     ///< an image: the name of its file, held as text; or one in memory
    CurveFile, ///< the name of a text file with a curve, held as text; see `ReadPoints`
    Output,    ///< an image that is written besides: the name of its file, held as text
    Matrix,    ///< one of its words, or the name of a text file with a matrix, held as text; see `ReadMixMatrix`
    Curve,     ///< x:y/x:y/... with at least two points within 0 and 1, x rising
    Rectangle, ///< left:top:right:bottom in pixels, right and bottom exclusive, never empty
};

/// An image in memory.
using SharedFrame = std::shared_ptr<const io::Frame>;

/// The value of a parameter, of the type that its kind says.
using Value = std::variant<double, int, bool, std::string, std::vector<double>, Points, CRect, SharedFrame>;

/// One parameter of an operation, described as data. A parameter with neither a default nor words for its absence
/// must be given.
struct Parameter {
    std::string name;
    Kind kind = Kind::Number;
    std::string summary;                               ///< what it does, in one line
    std::string unit{};                                ///< empty when it has none
    double min = std::numeric_limits<float>::lowest(); ///< smallest value of a number that is allowed
    double max = std::numeric_limits<float>::max();    ///< largest value of a number that is allowed
    /// The words of a choice, or those that a number, an image or a matrix may be given by; the forms of numbers, as
    /// X,Y.
    std::vector<std::string> choices{};
    std::optional<Value> defaultValue{};
    std::string whenAbsent{};           ///< what an optional parameter without a default means when it is not given
    Value (*readSetting)() = nullptr;   ///< where the user's settings stand before the default: reads them
    std::vector<std::string> aliases{}; ///< other names that are accepted
    bool isWord = false;                ///< commands take it as a word before the images, not as an option
    bool isShown = true;                ///< false: accepted, but it changes nothing that a person would choose
    bool isCommon = false;              ///< many operations have it: pages tell of it once

    bool IsRequired() const { return !defaultValue && whenAbsent.empty(); }
    /// True for any number of pairs, X,Y,...
    bool IsList() const { return kind == Kind::Numbers && choices.front().ends_with(",..."); }
};

/// The rectangle that an operation keeps to; the whole image when it is not given.
CORVANE_VISIBLE Parameter RectangleParameter();

/// The smallest and the largest number that is allowed.
struct Range {
    double min;
    double max;
};

/// Any number that a sample can hold.
inline constexpr Range kAnyNumber{std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max()};

/// @name A parameter that is a number or a whole number, with a default or with words for what counts without it
/// @{
CORVANE_VISIBLE Parameter NumberParameter(const std::string& name, const std::string& summary, const std::string& unit,
                                          const Range& range, double defaultValue);
CORVANE_VISIBLE Parameter NumberParameter(const std::string& name, const std::string& summary, const std::string& unit,
                                          const Range& range, const std::string& whenAbsent);
CORVANE_VISIBLE Parameter WholeParameter(const std::string& name, const std::string& summary, const std::string& unit,
                                         const Range& range, int defaultValue);
CORVANE_VISIBLE Parameter WholeParameter(const std::string& name, const std::string& summary, const std::string& unit,
                                         const Range& range, const std::string& whenAbsent);
/// @}

/// A parameter that is yes or no.
CORVANE_VISIBLE Parameter FlagParameter(const std::string& name, const std::string& summary, bool defaultValue);

/// A parameter that is one of a few words.
CORVANE_VISIBLE Parameter ChoiceParameter(const std::string& name, const std::string& summary,
                                          const std::vector<std::string>& choices, const std::string& defaultValue);

/// Reads a value as a person writes it. Throws Error when it is none of the parameter's kind or not allowed.
CORVANE_VISIBLE Value ParseValue(const Parameter& parameter, std::string_view text);

/// The same for a value that a program gives: whole numbers serve as numbers, and words as choices.
CORVANE_VISIBLE Value CheckedValue(const Parameter& parameter, const Value& value);

/// The value as `ParseValue` reads it back, numbers in the fewest digits that give the same number. An image in memory
/// is called as the file that it came from.
CORVANE_VISIBLE std::string ToText(const Value& value);

/// The value that counts when none is given: the user's setting, or the default, or nothing.
/// Throws Error when the setting is not allowed.
CORVANE_VISIBLE std::optional<Value> DefaultValue(const Parameter& parameter);

/// What is allowed, in words: "0 to 100", "at least 0", "any number", "left:top:right:bottom".
CORVANE_VISIBLE std::string AllowedText(const Parameter& parameter);

/// All of it in one text: "how far to look [4 to 1024, pixels; default 64]".
CORVANE_VISIBLE std::string DescriptionOf(const Parameter& parameter);

} // namespace corvane::catalogue
