#include "catalogue/groups.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "corvane/core/ascii.h"

namespace corvane::catalogue {
namespace {

constexpr std::size_t kLeastWord = 3; // letters; fewer are in every other summary

// What people call what they look for, and the names of the operations that serve.
constexpr std::pair<const char*, const char*> kMeanings[] = {
    {"stretch asinh log gamma sqrt screen-stretch", "autostretch asinh mtf ghs curve ddp"},
    {"histogram", "equalise auto-levels curve"},
    {"black white range window normalize normalise scale-levels", "auto-levels levels clip"},
    {"blur smooth denoise noise noise-reduction", "gaussian mean median"},
    {"convolve lowpass box average boxcar", "gaussian mean"},
    {"deconvolution deconv restore restoration deblur rl richardson", "lucy maxent wiener"},
    {"point-spread pointspread seeing", "psf stars find-stars"},
    {"sharpening detail highpass usm", "unsharp sharpen lucy"},
    {"edge edges sobel gradient", "laplacian sharpen-edges"},
    {"hot cold dead cosmetic cosmic cosmics defect pixel-defects", "hot-pixels median"},
    {"erode erosion", "minimum"},
    {"dilate dilation", "maximum"},
    {"calibrate calibration bias offset pedestal", "dark overscan subtract flat"},
    {"vignetting", "vignette flat"},
    {"background sky gradient gradients gradient-removal flatten", "background smooth-background subtract"},
    {"grayscale greyscale grey gray mono monochrome luminance", "to-grey"},
    {"rgb colour color", "to-color balance saturate"},
    {"white-balance wb", "white-balance neutral-sky balance"},
    {"green green-removal", "scnr"},
    {"saturation vibrance", "saturate"},
    {"bayer cfa rggb mosaic", "debayer"},
    {"negative", "invert"},
    {"mirror flop", "flip"},
    {"turn derotate", "rotate rotate90 rotate180"},
    {"scale zoom resample shrink enlarge", "resize bin expand"},
    {"binning superpixel", "bin"},
    {"trim cut cutout subframe", "crop canvas"},
    {"pad border frame", "canvas"},
    {"shift translate move roll", "scroll"},
    {"isophote lines levels-lines", "contour"},
    {"narrowband narrow-band sho hoo hos bicolour bicolor hubble", "palette"},
    {"halpha h-alpha continuum-subtraction", "continuum"},
    {"lut colormap pseudocolor pseudocolour heatmap", "false-color"},
    {"multiplication times scale-by", "multiply divide"},
    {"plus sum", "add"},
    {"minus", "subtract"},
    {"threshold cutoff limit", "clip"},
    {"nan undefined blank gap gaps hole inpaint interpolate", "fill"},
    {"mask masks protect protection starmask", "star-mask"},
    {"label annotate annotation caption arrow", "draw-text draw-line"},
};

std::vector<std::string> WordsOf(const char* text)
{
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

bool Holds(const Operation& operation, const std::string& word)
{
    return operation.name.find(word) != std::string::npos || operation.summary.find(word) != std::string::npos;
}

} // namespace

const std::vector<Group>& Groups()
{
    static const std::vector<Group> groups{{"Levels", ToneOperations},
                                           {"Stretches", StretchOperations},
                                           {"Brightness and numbers", AdjustOperations},
                                           {"Calibration", CalibrationOperations},
                                           {"Calibration", MeasureOperations},
                                           {"Colour", ColourOperations},
                                           {"Colour", ColourMosaicOperations},
                                           {"Colour", SeparationOperations},
                                           {"Smoothing and neighbourhoods", SmoothOperations},
                                           {"Sharpening", SharpenOperations},
                                           {"Undoing the blur", RestoreOperations},
                                           {"Development and lines", DevelopOperations},
                                           {"Masks", MaskOperations},
                                           {"Drawing", DrawOperations},
                                           {"Size and place", GeometryOperations},
                                           {"Several images: commands of their own", CompositeOperations},
                                           {"Several images: commands of their own", MosaicOperations},
                                           {"Several images: commands of their own", MatchOperations},
                                           {"Several images: commands of their own", ColourCompositeOperations},
                                           {"Several images: commands of their own", PaletteOperations},
                                           {"Several images: commands of their own", ContinuumOperations},
                                           {"Measuring: commands of their own", StatsOperations},
                                           {"Measuring: commands of their own", StarOperations}};
    return groups;
}

std::vector<const Operation*> OperationsFor(std::string_view word)
{
    const std::string wanted = Lower(std::string(word));
    std::vector<const Operation*> found;
    for (const auto& [words, names] : kMeanings) {
        const std::vector<std::string> meanings = WordsOf(words);
        if (std::find(meanings.begin(), meanings.end(), wanted) != meanings.end()) {
            for (const std::string& name : WordsOf(names)) {
                found.push_back(FindNamed(Operations(), name));
            }
        }
    }
    if (found.empty() && wanted.size() >= kLeastWord) {
        for (const Operation& operation : Operations()) {
            if (Holds(operation, wanted)) {
                found.push_back(&operation);
            }
        }
    }
    return found;
}

} // namespace corvane::catalogue
