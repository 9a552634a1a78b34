#pragma once

#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "catalogue/arguments.h"
#include "catalogue/footprint.h"
#include "catalogue/parameter.h"
#include "corvane/core/run.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// The images that an input accepts.
enum class Planes { Any, Mono, Colour };

/// How many images an input takes.
enum class Count {
    One,
    Several,
    Optional,
    Any, ///< several or none
};

/// The images that an operation works on. What it does so with, a dark frame for one, is a parameter.
struct Input {
    std::string name = "image";
    std::string summary = "the image to work on"; ///< what they are, in one line
    Planes planes = Planes::Any;
    Count count = Count::One;
};

/// What an output is.
enum class OutputKind {
    Image,
    Numbers, ///< a table of one row
    Table,
    Picture, ///< a drawing of the result
    Files,   ///< as many images as come in
};

/// What an operation makes.
struct Output {
    std::string name = "image";
    OutputKind kind = OutputKind::Image;
    std::string summary = "the result"; ///< what it is, in one line
};

/// @name Digits of a column that is not rounded behind the point
/// @{
inline constexpr int kSignificant = -1; ///< seven digits in all
inline constexpr int kWords = -2;       ///< no numbers but texts, yes or no, or lists of words
/// @}

/// A column of a table.
struct Column {
    std::string name;
    int digits = kSignificant; ///< behind the point, for people; 0 for whole numbers
};

/// What stands in one place of a table; it may be nothing.
using Cell = std::variant<std::monostate, bool, double, std::string, std::vector<std::string>>;

/// Rows of cells, one below each column.
struct Table {
    std::vector<Column> columns{};
    std::vector<std::vector<Cell>> rows{};
};

/// The frames of each input, by its name.
using Inputs = std::map<std::string, std::vector<io::Frame>, std::less<>>;

/// The names of files for each input, by its name.
using Files = std::map<std::string, std::vector<std::string>, std::less<>>;

/// What was made, by the names of the outputs.
using Outputs = std::map<std::string, std::variant<io::Frame, Table>, std::less<>>;

/// @name The forms in which an operation's work is written
/// The frames fit the inputs, and rectangles lie within the first one, when it is called; what else they must meet it
/// judges itself, with an Error before any work. A run that is cancelled ends it with Cancelled.
/// @{

/// Makes a new image of one image, which has samples of its own; the frame keeps its header.
using OnImage = CStlImage (*)(const CStlImage& image, const Arguments& arguments, const Run& run);
/// Changes one frame, header or levels too.
using OnFrame = void (*)(io::Frame& frame, const Arguments& arguments, const Run& run);
/// Makes the outputs of the frames of several inputs, which it may take over. Others may have their samples, too:
/// before it writes to them, it makes them its own (`OwnSamples`).
using OnInputs = Outputs (*)(Inputs& inputs, const Arguments& arguments, const Run& run);
/// @}

/// What becomes of the skies of a colour image's planes.
enum class Skies {
    Kept,    ///< they stay of one value if they were
    Joined,  ///< they are brought to one value
    Parted,  ///< they may differ, whatever they were
    Balanced ///< brought to one value, unless the parameter balance is none
};

/// One operation, described as data: everything that help, checks, the command and programs need to know of it.
struct Operation {
    std::string name;
    std::string summary; ///< what it does, in one line
    std::string help;    ///< what a person should know besides
    std::vector<Input> inputs{Input{}};
    std::vector<Parameter> parameters{};
    /// What it looks at, with such arguments. May be asked with the defaults alone; see `FootprintOf`.
    std::function<Footprint(const Arguments&)> footprint{};
    std::vector<Output> outputs{Output{}};
    std::vector<std::string> aliases{}; ///< other names that are accepted
    Skies skies = Skies::Kept;

    /// Throws Error when values that are allowed alone do not go together; empty when there is nothing to check.
    std::function<void(const Arguments&)> check{};
    std::variant<OnImage, OnFrame, OnInputs> run{}; ///< of a null OnInputs, the room that describes it does the work

    /// True for a step: it makes one image of one.
    bool IsStep() const { return !std::holds_alternative<OnInputs>(run); }
};

} // namespace corvane::catalogue
