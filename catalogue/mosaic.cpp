#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/filter_mosaic.h"
#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/placement.h"
#include "catalogue/row_order.h"
#include "corvane/combine/mosic.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/error.h"
#include "corvane/core/turn.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::catalogue {
namespace {

constexpr const char* kSecondPoints = "second-points";
constexpr int kMaxCanvas = 65535; // longest side [pixels]

/// The place of a word is the number of the mode.
const std::vector<std::string> kMosaicModes = {"over", "key", "lighter", "darker", "under"};

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
struct JoinedCanvas {
    Span columns;
    Span rows;

    JoinedCanvas(const CStlImage& first, const CStlImage& second, const Fit& fit)
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

void CheckJoinedCanvas(const JoinedCanvas& canvas)
{
    if (canvas.columns.Size() > kMaxCanvas || canvas.rows.Size() > kMaxCanvas) {
        throw InputError("second", "lies so far away that the mosaic would be " + ToText(Value(canvas.columns.Size())) +
                                       " x " + ToText(Value(canvas.rows.Size())) + " pixels; at most " +
                                       std::to_string(kMaxCanvas) + " are allowed either way");
    }
}

int MosaicModeOf(const Arguments& arguments)
{
    return PlaceOf(arguments.Text("mode"), kMosaicModes);
}

void CheckMosaic(const Arguments& arguments)
{
    if ((MosaicModeOf(arguments) == kMosaicKey) != arguments.Has("key")) {
        throw arguments.Refusal("key", "belongs to mode = key, which needs it: the sample that lets FIRST through");
    }
    if (arguments.Has("background") && !arguments.Flag("display")) {
        throw arguments.Refusal("background", "needs display; otherwise what no image covers becomes 0");
    }
    CheckPlacement(arguments, kSecondPoints);
}

/// One for each plane.
std::array<float, 3> KeyOf(const Arguments& arguments)
{
    std::array<float, 3> key{};
    for (std::size_t plane = 0; plane < key.size() && arguments.Has("key"); ++plane) {
        const std::vector<double>& given = arguments.Numbers("key");
        key[plane] = static_cast<float>(given[std::min(plane, given.size() - 1)]);
    }
    return key;
}

/// Joins both images on a canvas that the first one's record describes.
void Join(CStlImage& first, const CStlImage& second, const Arguments& arguments, const Fit& fit,
          const JoinedCanvas& canvas, const Run& run)
{
    const int ox = static_cast<int>(-canvas.columns.low);
    const int oy = static_cast<int>(-canvas.rows.low);
    CImgMosic mosaic(first);
    if (mosaic.ChangeSize(static_cast<int>(canvas.columns.Size()), static_cast<int>(canvas.rows.Size())) == 0) {
        AfxThrowMemoryException();
    }
    const float outside = arguments.Has("background") ? static_cast<float>(arguments.Number("background")) : 0.0F;
    mosaic.Do(first, ox, oy, second, fit.dx, fit.dy, fit.angle, MosaicModeOf(arguments), KeyOf(arguments).data(),
              &outside, arguments.Flag("display"), arguments.Flag("average"), nullptr, run);
    if (mosaic.IsWCS() != 0) {
        mosaic.TranslatePhysicalCoords(ox, oy);
    }
    first = std::move(mosaic);
}

Outputs RunMosaic(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    io::Frame& first = inputs["first"].front();
    io::Frame& second = inputs["second"].front();
    Placement placement = PlacementOf(arguments, kSecondPoints);
    BringToOrderOf(first, second, run, &placement.secondPoints);
    const Fit fit = FitOnto(first, second, placement);
    const JoinedCanvas canvas(first.image, second.image, fit);
    CheckJoinedCanvas(canvas);
    Join(first.image, second.image, arguments, fit, canvas, run);
    DropMosaic(first.header); // no filter mosaic goes on across the seam
    return PairOutputs(first, fit);
}

std::vector<Parameter> MosaicParameters()
{
    return PlacementParameters(
        {ChoiceParameter("mode",
                         "what shows where both are: SECOND (over), FIRST (under), or FIRST where SECOND is key",
                         kMosaicModes, kMosaicModes.front()),
         {.name = "key",
          .kind = Kind::Numbers,
          .summary = "mode = key: the sample of SECOND that lets FIRST through",
          .unit = "counts",
          .choices = {"N", "R,G,B"},
          .whenAbsent = "none"},
         FlagParameter("average",
                       "make every pixel the mean of both; where one image is missing, of the other and the background",
                       false),
         FlagParameter("display", "join what the display levels show, 0 to 255, instead of the samples as they are",
                       false),
         NumberParameter("background", "with display: what shows where no image is", "display value", {0.0, 255.0},
                         "0")},
        kSecondPoints, "FIRST", "SECOND");
}

} // namespace

std::vector<Operation> MosaicOperations()
{
    return {{.name = "mosaic",
             .summary = "join two images on a canvas that holds both",
             .help = "The result has the planes and header of FIRST; its world coordinates move along. over and under "
                     "put SECOND on or below FIRST. Without stars the turn is about the middle of SECOND, with stars "
                     "about the first. Two stars give the turn as exactly as their centres are measured.",
             .inputs = {{.name = "first", .summary = "the image that the other is placed on"},
                        {.name = "second", .summary = "the image that is placed on it"}},
             .parameters = MosaicParameters(),
             .outputs = PairOutputs(),
             .check = CheckMosaic,
             .run = RunMosaic}};
}

} // namespace corvane::catalogue
