#include "catalogue/psf.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "catalogue/names.h"
#include "catalogue/plane.h"
#include "catalogue/row_order.h"
#include "corvane/core/defined.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "io/reader.h"
#include "stars/find_stars.h"
#include "stars/psf.h"

namespace corvane::catalogue {
namespace {

constexpr int kMostPsfSize = 255; // pixels
constexpr int kMostZones = 16;

/// The place of a word is the number of the model.
const std::vector<std::string> kPsfModels = {"gaussian", "moffat", "stars"};

std::string WidthsText(const stars::ZonePsf& zone)
{
    return NumberText(zone.widths.major.value, 2) + " x " + NumberText(zone.widths.minor.value, 2) + " pixels, of " +
           std::to_string(zone.stars) + " stars";
}

PsfImage MeasuredPsf(const CStlImage& image, const Run& run)
{
    const int plane = stars::StarPlane(image);
    const stars::FieldPsf psf =
        stars::MeasurePsf(image, plane, {}, {.cancelled = run.cancelled, .threads = run.threads});
    if (psf.zones.empty() || psf.zones.front().stars == 0) {
        throw ParameterError("psf", "auto", "there is no star to measure; give psf, sigma or fwhm");
    }
    run.TellFinding("FWHM of the stars " + WidthsText(psf.zones.front()));
    return {psf.size, psf.size, psf.zones.front().samples};
}

void CheckPsfShape(int width, int height, int planes, const CStlImage& image, const Arguments& arguments)
{
    if (planes != 1) {
        throw arguments.Refusal("psf", "must have 1 plane; it has " + std::to_string(planes));
    }
    if (width > image.GetWidth() || height > image.GetHeight()) {
        throw arguments.Refusal("psf", "must not be larger than the image, " +
                                           SizeText(image.GetWidth(), image.GetHeight()) + " pixels; it is " +
                                           SizeText(width, height));
    }
}

/// The samples of a file's function, which must be numbers and add up to something.
PsfImage SamplesOf(const CStlImage& image, const Arguments& arguments)
{
    PsfImage psf{image.GetWidth(), image.GetHeight()};
    const DefinedTest isDefined(image);
    double sum = 0.0;
    for (int y = 0; y < psf.height; ++y) {
        const float* const row = image.GetImageAdr(0, y, 0, 1);
        for (int x = 0; x < psf.width; ++x) {
            if (!isDefined(row[x])) {
                throw arguments.Refusal("psf", "has an undefined sample at column " + std::to_string(x) + ", row " +
                                                   std::to_string(y));
            }
            sum += row[x];
            psf.samples.push_back(row[x]);
        }
    }
    const auto isNormal = [=](float v) { return std::isfinite(static_cast<float>(v / sum)); };
    if (!(sum > 0.0) || !std::all_of(psf.samples.begin(), psf.samples.end(), isNormal)) {
        throw arguments.Refusal("psf", "must have samples whose sum is above 0; it is " + NumberText(sum));
    }
    std::transform(psf.samples.begin(), psf.samples.end(), psf.samples.begin(),
                   [=](float v) { return static_cast<float>(v / sum); });
    return psf;
}

/// The zones side by side, as they lie in the field; undefined where a zone has no stars.
CStlImage Tiled(const stars::FieldPsf& psf, int zones)
{
    const int side = psf.size * zones;
    CStlImage image(-32, side, side, 1, 1.0, 0.0, 1);
    float most = 0.0F;
    for (int y = 0; y < side; ++y) {
        float* const row = image.GetImageAdr(0, y, 0);
        for (int x = 0; x < side; ++x) {
            const int at = y / psf.size * zones + x / psf.size;
            const int place = y % psf.size * psf.size + x % psf.size;
            const stars::ZonePsf& zone = psf.zones[static_cast<std::size_t>(at)];
            row[x] = zone.stars == 0 ? std::numeric_limits<float>::quiet_NaN()
                                     : zone.samples[static_cast<std::size_t>(place)];
            most = zone.stars == 0 ? most : std::max(most, row[x]);
        }
    }
    image.SetLevel(0, 0.0, most);
    return image;
}

Table PsfTable(const stars::FieldPsf& psf, int zones)
{
    Table table{.columns = {{"column", 0},
                            {"row", 0},
                            {"stars", 0},
                            {"fwhm", 3},
                            {"major", 3},
                            {"major_error", 3},
                            {"minor", 3},
                            {"minor_error", 3},
                            {"angle", 1},
                            {"angle_error", 1},
                            {"beta", 2},
                            {"beta_error", 2},
                            {"residual", 4}}};
    for (std::size_t i = 0; i < psf.zones.size(); ++i) {
        const stars::ZonePsf& zone = psf.zones[i];
        const auto& [major, minor, angle, beta] = zone.widths;
        const auto ifAny = [&](bool is, double value) { return is && zone.stars > 0 ? Cell(value) : Cell(); };
        const bool hasBeta = beta.value > 0.0;
        const int column = static_cast<int>(i) % zones;
        const int row = static_cast<int>(i) / zones;
        table.rows.push_back({static_cast<double>(column), static_cast<double>(row), static_cast<double>(zone.stars),
                              ifAny(true, std::sqrt(major.value * minor.value)), ifAny(true, major.value),
                              ifAny(true, major.error), ifAny(true, minor.value), ifAny(true, minor.error),
                              ifAny(true, angle.value), ifAny(true, angle.error), ifAny(hasBeta, beta.value),
                              ifAny(hasBeta, beta.error), ifAny(true, zone.residual)});
    }
    return table;
}

/// What of a frame's header is true of its point-spread function.
io::Header HeaderOf(const io::Header& header)
{
    io::Header own;
    if (const auto order = header.Text("ROWORDER")) {
        own.Set("ROWORDER", *order);
    }
    own.AddHistory(header.History().back());
    return own;
}

Outputs RunPsf(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    const io::Frame& frame = inputs["image"].front();
    const CStlImage& image = frame.image;
    stars::PsfOptions options{.model = static_cast<stars::PsfModel>(PlaceOf(arguments.Text("model"), kPsfModels)),
                              .zones = arguments.Whole("zones")};
    if (arguments.Has("size")) {
        options.size = arguments.Whole("size");
    }
    if (arguments.Has("saturation")) {
        options.fullWell = arguments.Number("saturation");
    }
    const stars::FieldPsf psf = stars::MeasurePsf(image, PlaneOfStars(arguments, image), options, run);
    const bool isMeasured = std::any_of(psf.zones.begin(), psf.zones.end(), [](const auto& z) { return z.stars > 0; });
    if (!isMeasured) {
        throw InputError("image", "has no star to measure");
    }
    Outputs outputs;
    outputs.emplace("psf", io::Frame{Tiled(psf, options.zones), HeaderOf(frame.header)});
    outputs.emplace("zones", PsfTable(psf, options.zones));
    return outputs;
}

} // namespace

Parameter PsfParameter()
{
    return {.name = "psf",
            .kind = Kind::Image,
            .summary = "the blur as an image of a star without sky, or auto: measured as `corvane psf` does",
            .choices = {"auto"},
            .whenAbsent = "a Gaussian of sigma or fwhm"};
}

std::optional<PsfImage> GivenPsf(const io::Frame& frame, const Arguments& arguments, const Run& run)
{
    if (!arguments.Has("psf")) {
        return std::nullopt;
    }
    if (arguments.IsWord("psf") && arguments.Text("psf") == "auto") {
        return MeasuredPsf(frame.image, run);
    }
    if (arguments.IsWord("psf")) { // judged before its samples are read
        const io::FrameInfo info = io::OpenFrame(arguments.Text("psf"))->Info();
        CheckPsfShape(info.width, info.height, info.planes, frame.image, arguments);
    }
    io::Frame psf = arguments.Image("psf");
    CheckPsfShape(psf.image.GetWidth(), psf.image.GetHeight(), psf.image.GetPlanes(), frame.image, arguments);
    BringToOrderOf(frame, psf, run);
    return SamplesOf(psf.image, arguments);
}

Operation PsfOperation()
{
    Parameter plane = PlaneParameter("the plane to look at");
    plane.whenAbsent = "green of a colour image";
    return {
        .name = "psf",
        .summary = "measure what the stars of an image look like",
        .help =
            "Fits one profile to all stars that are neither saturated nor crowded, up to 200 of a zone, each with a "
            "place, a height and a sky of its own. The image that is written has the sum 1, its middle at column and "
            "row size / 2, and serves `lucy`, `maxent` and `wiener` as psf. `moffat` follows the wings of stars, "
            "`gaussian` widens where there are some; `stars` adds to `moffat` what the stars differ from it on "
            "average. With zones the functions stand side by side as the zones lie in the field, undefined where there "
            "are no stars. The table tells the full widths at half maximum along and across the longest axis [pixels], "
            "its angle from the direction of columns towards that of rows [degrees], beta of Moffat's profile, "
            "standard errors, and what the profile leaves of most stars (root mean square over the peak).",
        .inputs = {{.summary = "the image to look at"}},
        .parameters = {ChoiceParameter("model", "what it is made of", kPsfModels, "moffat"),
                       WholeParameter("zones", "as many along each axis, each with a function of its own", "",
                                      {1, kMostZones}, 1),
                       WholeParameter("size", "width and height of a function", "pixels", {3, kMostPsfSize},
                                      "ten widths of a star, an odd number"),
                       std::move(plane),
                       NumberParameter("saturation", "samples from this value on are saturated", "counts", kAnyNumber,
                                       "judged by the image")},
        .outputs = {{"psf", OutputKind::Image, "the function, or those of the zones side by side"},
                    {"zones", OutputKind::Table, "widths, angle and beta of each zone, and how many stars it has"}},
        .run = RunPsf};
}

} // namespace corvane::catalogue
