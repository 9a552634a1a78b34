#pragma once

#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "corvane/combine/combine_rows.h"
#include "corvane/platform/export.h"
#include "corvane/platform/types.h"

namespace corvane::stack {

/// How lights are brought onto each other.
enum class AlignMethod {
    kNone,  ///< they are combined as they lie
    kShift, ///< a patch of the first light is found in the others; shifts to a tenth of a pixel
};

/// A sample's place: column and row from the first sample in the file's order of rows.
struct PixelPlace {
    int x;
    int y;
};

/// @name Ranges and defaults of the options
/// @{
inline constexpr int kMinPatchSize = 8;      ///< smallest patch [pixels]
inline constexpr int kMaxPatchSize = 256;    ///< largest patch [pixels]
inline constexpr int kDefaultPatchSize = 32; ///< [pixels]
inline constexpr int kMaxSearch = 2048;      ///< farthest that a patch is looked for [pixels]
inline constexpr int kDefaultSearch = 64;    ///< [pixels]
inline constexpr double kMaxPedestal = 1e9;  ///< largest pedestal [raw units]
/// @}

/// What to stack and how. File names are as `io::OpenFrame` takes them.
struct Options {
    std::vector<std::string> lights; ///< one or more, all of one size
    /// @name Calibration frames; several of a kind are combined by median, one is used as it is
    /// @{
    std::vector<std::string> bias;
    std::vector<std::string> darks;
    std::vector<std::string> flats;
    std::vector<std::string> flatDarks;
    /// @}
    CombineMethod method = CombineMethod::kMedian;
    AlignMethod align = AlignMethod::kNone;
    std::optional<PixelPlace> reference; ///< centre of the patch to find; unset: the brightest fit star of the first
    int size = kDefaultPatchSize;        ///< width and height of that patch [pixels, 8..256]
    int search = kDefaultSearch;         ///< largest shift that is looked for [pixels, 0..2048]
    double pedestal = 0.0;               ///< added to the lights before a dark is taken off [raw units, 0..1e9]
    HWND progressWindow = nullptr;       ///< gets the messages of the progress channel; may be null
};

/// An option that is wrong, with its value and what would be allowed.
class CORVANE_API OptionError : public std::invalid_argument {
public:
    OptionError(std::string name, const std::string& value, const std::string& allowed);

    /// The option as the command spells it, such as "--search"; "LIGHT" for the lights.
    const std::string& Option() const { return option_; }

private:
    std::string option_;
};

/// The user pressed ESC; nothing was made.
class CORVANE_API Cancelled : public std::exception {
public:
    const char* what() const noexcept override;
};

/// Checks what can be said without opening a file. Throws OptionError.
CORVANE_API void CheckOptions(const Options& options);

/// Checks that no output is one of the files to be read or named twice; links and dots in paths do not deceive it.
/// Throws io::Error naming the output.
CORVANE_API void CheckOutputs(const Options& options, const std::vector<std::string>& outputs);

} // namespace corvane::stack
