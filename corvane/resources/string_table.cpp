#include "corvane/resources/string_table.h"

#include <algorithm>
#include <array>

namespace corvane {
namespace {

struct Entry {
    StringId id;
    const char* text;
};

constexpr std::array kTable{
    Entry{IDS_TITLE, "Corvane"},
    Entry{IDS_MAKE_L, "Creating L-channel..."},
    Entry{IDS_MAKE_AB, "Creating ab-channel..."},
    Entry{IDS_LRGB_COMPOSITE, "Combining LRGB images..."},
    Entry{IDS_WIENER, "Applying Wiener filter..."},
    Entry{IDS_FLAT, "Processing flat field..."},
    Entry{IDS_DARK, "Processing dark frame..."},
    Entry{IDS_COMPOSITE, "Combining files..."},
    Entry{IDS_RGB_COMPOSITE, "Combining RGB files..."},
    Entry{IDS_CALCULATION, "Calculating..."},
    Entry{IDS_RESOLUTION, "Changing image resolution..."},
    Entry{IDS_CANVAS_SIZE, "Changing canvas size..."},
    Entry{IDS_ROTATE, "Rotating..."},
    Entry{IDS_LEVELS, "Adjusting levels..."},
    Entry{IDS_CURVES, "Adjusting Curves..."},
    Entry{IDS_BRIGHTNESS, "Processing brightness/contrast..."},
    Entry{IDS_DEVELOPMENT, "Applying digital development (DDP)..."},
    Entry{IDS_FALSE_COLOR, "Applying false color..."},
    Entry{IDS_COLOR_BALANCE, "Applying color balance..."},
    Entry{IDS_MEAN, "Applying mean filter..."},
    Entry{IDS_MEDIAN, "Applying median filter"},
    Entry{IDS_SHARPEN, "Applying sharpening filter"},
    Entry{IDS_UNSHARP_MASK, "Applying unsharp mask..."},
    Entry{IDS_BACKGROUND, "Applying background smoothing..."},
    Entry{IDS_INVERT, "Inverting..."},
    Entry{IDS_DEVELOPMENT_INIT, "Initializing digital development..."},
    Entry{IDS_FILTER_INIT, "Initializing filtering process..."},
    Entry{IDS_FLIP_VERTICAL, "Flipping image vertically..."},
    Entry{IDS_FLIP_HORIZONTAL, "Flipping image horizontally..."},
    Entry{IDS_TO_GRAY, "Converting image to B/W mode..."},
    Entry{IDS_TO_COLOR, "Converting image to Color mode..."},
    Entry{IDS_GAUSSIAN, "Applying Gaussian filter..."},
    Entry{IDS_SOFT_BINNING, "Applying software binning..."},
    Entry{IDS_MAKE_LAB, "Creating Lab channel..."},
    Entry{IDS_LAB_ENHANCE, "Enhancing Lab color..."},
    Entry{IDS_MOSAIC, "Creating mosaic..."},
    Entry{IDS_CMY_COMPOSITE, "Combining CMY images..."},
    Entry{IDS_SPLIT_RGB, "Splitting RGB image"},
    Entry{IDS_SPLIT_CMY, "Splitting CMY image"},
    Entry{IDS_VIGNETTING, "Applying vignetting correction..."},
    Entry{IDS_EXPANSION, "Expanding image..."},
    Entry{IDS_MEDIAN_COMPOSITE, "Processing median composite..."},
    Entry{IDS_EDGE_ENHANCE, "Applying edge enhancement..."},
    Entry{IDS_EDGE_DEFINE, "Defining edges..."},
    Entry{IDS_COMPRESS_GRAY, "Compressing grayscale..."},
    Entry{IDS_SCROLL, "Scrolling image..."},
    Entry{IDS_LUCY_NO_MEMORY, "Insufficient memory.  Close applications and re-execute command."},
    Entry{IDS_LUCY_CANCELLED, "Cancelled"},
    Entry{IDS_MEM_NO_MEMORY, "Insufficient memory.  Close applications and re-execute command"},
    Entry{IDS_MEM_CANCELLED, "Cancelled"},
    Entry{IDS_MATCHING, "Processing object matching..."},
    Entry{IDS_MINIMUM_MAXIMUM, "Applying minimum/maximum filtering..."},
    Entry{IDS_LUCY_INIT, "Initializing Lucy-Richardson processing (press ESC to cancel)"},
    Entry{IDS_LUCY_INIT_PLANES, "Initializing multiplane Lucy-Richardson processing (press ESC to cancel)"},
    Entry{IDS_LUCY, "Applying Lucy-Richardson: %d (press ESC to cancel)"},
    Entry{IDS_LUCY_PLANE, "Applying Lucy-Richardson for Plane %d:  %d (press ESC to cancel)"},
    Entry{IDS_MEM_START, "Starting Maximum Entropy processing"},
    Entry{IDS_MEM_START_PLANE, "Starting Maximum Entropy processing for Plane %d"},
    Entry{IDS_MEM, "Applying Maximum Entropy %d (press ESC to cancel)"},
    Entry{IDS_MEM_PLANE, "Applying Maximum Entropy for Plane %d: %d (press ESC to cancel)"},
    Entry{IDS_MEM_INIT, "Initializing Maximum Entropy processing (press ESC to cancel)"},
    Entry{IDS_MEM_INIT_PLANE, "Initializing Maximum Entropy processing for Plane %d (press ESC to cancel)"},
    Entry{IDS_HOT_COOL, "Removing hot/cool pixels..."},
    Entry{IDS_STAR_SHARPEN, "Sharpening stars..."},
    Entry{IDS_HISTOGRAM, "Calculating histogram..."},
    Entry{IDS_AUTO_LEVEL, "Calculating auto level values..."},
    Entry{IDS_AUTO_LEVEL_SETUP, "Setting up auto levels..."},
    Entry{IDS_INITIALIZING, "Initializing..."},
    Entry{IDS_CHANGE_PLANES, "Changing image planes..."},
};

constexpr bool Before(const Entry& entry, unsigned id)
{
    return static_cast<unsigned>(entry.id) < id;
}

static_assert(std::is_sorted(kTable.begin(), kTable.end(), [](const Entry& a, const Entry& b) { return a.id < b.id; }));

} // namespace

const char* FindString(unsigned id)
{
    const auto entry = std::lower_bound(kTable.begin(), kTable.end(), id, Before);
    return entry != kTable.end() && static_cast<unsigned>(entry->id) == id ? entry->text : nullptr;
}

} // namespace corvane
