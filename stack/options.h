#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "corvane/colour/demosaic.h"
#include "corvane/combine/drop.h"
#include "corvane/combine/row_combiner.h"
#include "corvane/core/interpolation.h"
#include "corvane/platform/export.h"
#include "stack/combine/normalise.h"
#include "stack/combine/rule.h"
#include "stack/combine/weights.h"
#include "stars/fit_map.h"

namespace corvane::stack {

/// How lights are brought onto each other.
enum class AlignMethod {
    kNone,  ///< they are combined as they lie
    kShift, ///< a patch of the reference is found in the others; shifts to a tenth of a pixel
    kStars, ///< their stars are matched with those of the reference; shift and turn, to a part of a pixel
};

/// What becomes of lights that are mosaics of colour filters.
enum class MosaicUse {
    kAuto,    ///< colours are made of those whose headers name a pattern, unless they are combined as they lie
    kKeep,    ///< they stay mosaics
    kPattern, ///< all are mosaics of a given pattern, whatever their headers say
};

/// A sample's place: column and row from the first sample in the file's order of rows.
struct PixelPlace {
    int x;
    int y;
};

/// Which part of the sky the stack shows.
enum class Canvas {
    kReference, ///< that of the reference
    kUnion,     ///< all that a light shows
    kCommon,    ///< what all lights show
};

/// Where something that moves among the stars is in a light.
struct FollowedPlace {
    double x = 0.0; ///< in pixels from the middle of the first sample in the file's order of rows
    double y = 0.0;
    std::string light{}; ///< by the name that it has among the lights
};

/// @name Ranges and defaults of the options
/// @{
inline constexpr int kMinPatchSize = 8;      ///< smallest patch [pixels]
inline constexpr int kMaxPatchSize = 256;    ///< largest patch [pixels]
inline constexpr int kDefaultPatchSize = 32; ///< [pixels]
inline constexpr int kMaxSearch = 2048;      ///< farthest that a patch is looked for [pixels]
inline constexpr int kDefaultSearch = 64;    ///< [pixels]
inline constexpr double kMaxPedestal = 1e9;  ///< largest pedestal [raw units]
inline constexpr double kMaxReject = 1000.0; ///< largest limit of a measured quantity, or of a value [sigmas]
inline constexpr int kMaxIterations = 100;   ///< most rounds of rejection
inline constexpr int kMaxGrow = 10;          ///< farthest growth of what is rejected [pixels]
inline constexpr double kMinDrizzle = 0.5;   ///< coarsest grid [pixels to one of a light]
inline constexpr double kMaxDrizzle = 4.0;   ///< finest grid [pixels to one of a light]
inline constexpr double kMinDrop = 0.1;      ///< smallest drop [pixels of a light]
inline constexpr double kDefaultDrop = 0.7;  ///< [pixels of a light]
/// @}

/// The calibration frames of lights. Several of a kind are combined by median, one is used as it is.
struct CalibrationSet {
    std::vector<std::string> bias{};
    std::vector<std::string> darks{};
    std::vector<std::string> flats{};
    std::vector<std::string> flatDarks{};
    bool flatsAreCalibrated = false; ///< the flats have lost their bias before: nothing is taken off them

    friend bool operator==(const CalibrationSet&, const CalibrationSet&) = default;
};

/// What to stack and how. File names are as `io::OpenFrame` takes them. The calibration frames are those of all lights,
/// unless `sets` has some for each.
struct Options : CalibrationSet {
    std::vector<std::string> lights{}; ///< one or more, all of one size
    /// @name Lights of other exposures, filters or nights, each with calibration frames of its own
    /// @{
    std::vector<CalibrationSet> sets{};    ///< in place of the frames for all
    std::vector<std::size_t> setOfLight{}; ///< index into `sets`, one for each light
    /// @}
    /// @name What is made of the values of a pixel
    /// @{
    std::optional<CombineMethod> method{}; ///< one of the composites' own; unset: as the next two tell
    std::optional<CombineBy> combine{};    ///< unset: the mean
    RejectOptions reject{};
    /// @}
    /// @name What `SortFrames` is asked for, whose names may be those of folders
    /// @{
    std::string filter{};    ///< stack the lights of this filter alone; empty: see there
    bool allowMixed = false; ///< take frames together that do not fit
    /// @}
    std::string mastersFolder{}; ///< where masters are kept, to be taken up again; empty: they are not; `MasterStore`
    /// @name Alignment
    /// @{
    AlignMethod align = AlignMethod::kStars;
    std::string referenceFile{}; ///< the light to place others on; empty: by stars the best, else the first
    bool alignsScale = false;    ///< by stars: look for lights of another scale, too
    std::string onto{}; ///< by stars: a frame from outside the night whose grid and place in the sky the stack gets
    std::vector<FollowedPlace>
        follow{};           ///< by stars: two places of what moves among them; empty: the stars are followed
    bool wantsBoth = false; ///< with `follow`: the stars are stacked, too
    Canvas canvas = Canvas::kReference;
    std::string registered{}; ///< folder for the lights on the grid of the stack; empty: they are not written
    std::optional<stars::MapModel> transform{}; ///< by stars: how a light may lie; unset: as its residuals say
    std::optional<PixelPlace> reference{};      ///< by shift: centre of the patch; unset: the brightest fit star
    int size = kDefaultPatchSize;               ///< by shift: width and height of that patch [pixels, 8..256]
    int search = kDefaultSearch;                ///< by shift: largest shift that is looked for [pixels, 0..2048]
    /// @}
    /// @name Lights to leave out: so many standard deviations farther than the median of all; unset: none [0..1000]
    /// @{
    std::optional<double> rejectFwhm{};       ///< stars wider
    std::optional<double> rejectStars{};      ///< fewer stars
    std::optional<double> rejectBackground{}; ///< brighter sky
    /// @}
    /// @name Mosaics of colour filters
    /// @{
    MosaicUse mosaic = MosaicUse::kAuto;
    BayerPattern pattern = BayerPattern::kRggb; ///< for `MosaicUse::kPattern`
    DemosaicMethod demosaic = DemosaicMethod::kEdgeAware;
    /// @}
    /// @name How lights are combined; see `CombineFrames`
    /// @{
    std::optional<NormaliseMethod> normalise{}; ///< unset: both with `AlignMethod::kStars`, which tells flux; else none
    std::optional<WeightMethod> weight{};       ///< unset: snr for the mean with `AlignMethod::kStars`, else none
    Coverage coverage = Coverage::kAny;
    Interpolation interpolation = Interpolation::kLanczos3; ///< of lights that are moved by parts of a pixel, or turned
    std::optional<double> drizzle{}; ///< pixels of the stack to one of the lights, which are dropped on it [0.5..4]
    double drop = kDefaultDrop;      ///< width of what is dropped [pixels of a light, 0.1..1]
    DropKernel dropShape = DropKernel::kSquare;
    bool wantsWeights = false;  ///< by drizzle: what has fallen into each pixel
    bool cosmetic = false;      ///< pixels that are hot in the darks are mended
    bool cosmic = false;        ///< what cosmic rays have hit in a single light is mended
    bool wantsCoverage = false; ///< count how many lights have each pixel
    bool wantsRejected = false; ///< count how many of their values the clipping drops
    bool wantsNoise = false;    ///< tell the noise of each pixel
    bool wantsReport = false;   ///< find out what else a report shows: see `Registration`
    /// @}
    double pedestal = 0.0; ///< added to the lights before a dark is taken off [raw units, 0..1e9]
};

/// The light that the options name as the reference: its index; 0 when they name none, -1 when it is no light.
int ReferenceIndex(const Options& options);

/// The sets of calibration frames: those of `sets`, or the one that serves all lights.
std::vector<CalibrationSet> SetsOf(const Options& options);

/// All files that are read.
CORVANE_VISIBLE std::vector<std::string> FilesOf(const Options& options);

/// For each light, the index of its set among these.
std::vector<std::size_t> SetOfEachLight(const Options& options);

/// One name for one file, whatever way leads there.
std::string FileKey(const std::string& path);

/// How lights are normalised.
NormaliseMethod NormaliseOf(const Options& options);

/// What is made of the values that count, where no method says.
CORVANE_VISIBLE CombineBy CombineOf(const Options& options);

/// What lights count by.
WeightMethod WeightOf(const Options& options);

/// Whether the noise of each pixel can be told: not that of a largest or smallest value, nor when ends are dropped,
/// which good values are, too.
CORVANE_VISIBLE bool TellsNoise(const Options& options);

/// Asks for all that can be known of each sample of such a stack.
CORVANE_VISIBLE void WantAllMaps(Options& options);

/// What becomes of the values of so many lights.
CombineRule RuleOf(const Options& options, int lights);

/// How far around trails and hits their values go, too [pixels].
int GrowthOf(const Options& options, int lights);

/// Checks what can be said without opening a file. Throws Error.
CORVANE_VISIBLE void CheckOptions(const Options& options);

} // namespace corvane::stack
