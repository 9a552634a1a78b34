#include "catalogue/mosaic.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "catalogue/filter_mosaic.h"
#include "catalogue/names.h"
#include "catalogue/numbers.h"
#include "catalogue/row_order.h"
#include "corvane/combine/mosic.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/error.h"
#include "corvane/core/turn.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::catalogue {
namespace {

/// A span of columns or rows, both ends included.
struct Span {
    double low;
    double high;

    void Include(double v)
    {
        // What rounding alone puts beyond a whole pixel needs no pixel of its own.
        constexpr double kRounding = 1e-6;
        low = std::min(low, std::floor(v + kRounding));
        high = std::max(high, std::ceil(v - kRounding));
    }

    double Size() const { return high - low + 1.0; }
};

/// The columns and rows, counted from the first image's corner, that hold both images.
struct Canvas {
    Span columns;
    Span rows;

    Canvas(const CStlImage& first, const CStlImage& second, const Fit& fit)
        : columns{0.0, first.GetWidth() - 1.0}, rows{0.0, first.GetHeight() - 1.0}
    {
        for (const int x : {0, second.GetWidth() - 1}) {
            for (const int y : {0, second.GetHeight() - 1}) {
                Include(second.GetStdCtr(), fit, x, y);
            }
        }
    }

private:
    /// Where a sample of the second image comes to lie: the way back from what a sampler reads.
    void Include(const CfPoint& centre, const Fit& fit, int x, int y)
    {
        const auto [sine, cosine] = SineAndCosine(fit.angle * kDegree);
        const double p = x - centre.x;
        const double q = y - centre.y;
        columns.Include(p * cosine - q * sine + centre.x + fit.dx);
        rows.Include(p * sine + q * cosine + centre.y + fit.dy);
    }
};

void CheckCanvas(const Canvas& canvas, const io::Frame& second)
{
    if (canvas.columns.Size() > kMaxCanvas || canvas.rows.Size() > kMaxCanvas) {
        throw FileError(second.image.GetOrgFileName(), "lies so far away that the mosaic would be " +
                                                           ToText(Value(canvas.columns.Size())) + " x " +
                                                           ToText(Value(canvas.rows.Size())) + " pixels; at most " +
                                                           std::to_string(kMaxCanvas) + " are allowed either way");
    }
}

int ModeOf(const MosaicOptions& options)
{
    return PlaceOf(options.mode, MosaicModes());
}

void CheckKey(const MosaicOptions& options)
{
    if ((ModeOf(options) == kMosaicKey) != !options.key.empty()) {
        throw ParameterError(
            "--key and --mode key belong together: the key is the sample that lets the first image through");
    }
    if (options.key.size() == 2 || options.key.size() > 3) {
        throw ParameterError("--key = " + NumbersText(options.key) +
                             ": must be one sample, or one for each of three planes");
    }
    for (const double v : options.key) {
        CheckRange("--key", v, std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max());
    }
}

void CheckBackground(const MosaicOptions& options)
{
    if (options.background && !options.display) {
        throw ParameterError("--background = " + ToText(Value(*options.background)) +
                             ": needs --display; otherwise what no image covers becomes 0");
    }
    CheckRange("--background", options.background.value_or(0.0), 0.0, 255.0);
}

std::string CommandText(const io::Frame& first, const io::Frame& second, const MosaicOptions& options)
{
    std::string text = std::string("corvane mosaic ") + first.image.GetOrgFileName() + " " +
                       second.image.GetOrgFileName() + " --mode " + options.mode;
    text += options.key.empty() ? "" : " --key " + NumbersText(options.key);
    text += options.display ? " --display" : "";
    text += options.background ? " --background " + ToText(Value(*options.background)) : "";
    text += options.average ? " --average" : "";
    return text + ToText(options.placement, kSecondPoints);
}

/// Joins both images on a canvas that the first one's record describes.
void Join(CStlImage& first, CStlImage& second, const MosaicOptions& options, const Fit& fit, const Canvas& canvas,
          const Context& context)
{
    const int ox = static_cast<int>(-canvas.columns.low);
    const int oy = static_cast<int>(-canvas.rows.low);
    CImgMosic mosaic(first);
    if (mosaic.ChangeSize(static_cast<int>(canvas.columns.Size()), static_cast<int>(canvas.rows.Size())) == 0) {
        AfxThrowMemoryException();
    }
    float key[3] = {};
    for (std::size_t plane = 0; plane < std::size(key) && !options.key.empty(); ++plane) {
        key[plane] = static_cast<float>(options.key[std::min(plane, options.key.size() - 1)]);
    }
    float outside = static_cast<float>(options.background.value_or(0.0));
    mosaic.Do(&first, ox, oy, &second, fit.dx, fit.dy, fit.angle, ModeOf(options), key, &outside, options.display,
              options.average, nullptr, context.showProgress);
    if (mosaic.IsWCS() != 0) {
        mosaic.TranslatePhysicalCoords(ox, oy);
    }
    first.Swap(&mosaic);
}

} // namespace

const std::vector<std::string>& MosaicModes()
{
    static const std::vector<std::string> modes = {"over", "key", "lighter", "darker", "under"};
    return modes;
}

void CheckMosaic(const MosaicOptions& options)
{
    CheckWord("--mode", options.mode, MosaicModes());
    CheckKey(options);
    CheckBackground(options);
    CheckPlacement(options.placement, kSecondPoints);
}

Fit RunMosaic(io::Frame& first, io::Frame& second, const MosaicOptions& options, const Context& context)
{
    CheckMosaic(options);
    Placement placement = options.placement;
    BringToOrderOf(first, second, context, &placement.secondPoints);
    const Fit fit = FitOnto(first, second, placement);
    const Canvas canvas(first.image, second.image, fit);
    CheckCanvas(canvas, second);
    Join(first.image, second.image, options, fit, canvas, context);
    DropMosaic(first.header); // no filter mosaic goes on across the seam
    AddHistory(CommandText(first, second, options), fit, first.header);
    return fit;
}

} // namespace corvane::catalogue
