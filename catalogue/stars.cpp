#include "catalogue/stars.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "catalogue/numbers.h"
#include "catalogue/operations.h"
#include "catalogue/plane.h"
#include "catalogue/psf.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"

namespace corvane::catalogue {
namespace {

constexpr const char* kPlaces = "X,Y,...";

/// The samples that places are in.
std::vector<CPoint> PixelsOf(const CStlImage& image, const Arguments& arguments)
{
    const std::vector<double>& at = arguments.Numbers("at");
    std::vector<CPoint> pixels;
    for (std::size_t i = 0; i < at.size(); i += 2) {
        const double x = std::floor(at[i] + 0.5);
        const double y = std::floor(at[i + 1] + 0.5);
        if (x < 0 || y < 0 || x >= image.GetWidth() || y >= image.GetHeight()) {
            throw ParameterError("at", NumbersText({at[i], at[i + 1]}),
                                 "must lie within the image, 0,0 to " +
                                     NumbersText({image.GetWidth() - 1.0, image.GetHeight() - 1.0}));
        }
        pixels.emplace_back(static_cast<int>(x), static_cast<int>(y));
    }
    return pixels;
}

std::string FaultsText(const stars::FieldWidths& widths, const Arguments& arguments)
{
    constexpr std::size_t kMostTold = 3;
    std::string faults;
    for (std::size_t i = 0; i < std::min(widths.stars.size(), kMostTold); ++i) {
        faults += "; " + FaultOf(widths, i, arguments);
    }
    return faults + (widths.stars.size() > kMostTold ? "; ..." : "");
}

Outputs RunFindStars(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    const SeenStars seen = FindStars(inputs["image"].front().image, arguments, run);
    return {{"stars", StarTable(seen)}, {"field", FieldTable(seen)}};
}

Outputs RunStars(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    const SeenWidths seen = MeasureStars(inputs["image"].front().image, arguments, run);
    return {{"stars", StarTable(seen)}, {"field", FieldTable(seen)}};
}

std::vector<Parameter> SearchParameters(double sigmas, int limit)
{
    Parameter plane = PlaneParameter("the plane to look at");
    plane.whenAbsent = "green of a colour image";
    return {NumberParameter("sigmas", "how far a star rises above the sky, in standard deviations of the sky", "",
                            {1.0, 1000.0}, sigmas),
            WholeParameter("limit", "find the brightest stars, at most this many", "", {1.0, 1e6}, limit),
            std::move(plane)};
}

Operation FindStarsOperation()
{
    const stars::FindOptions usual;
    std::vector<Parameter> parameters = SearchParameters(usual.sigmas, static_cast<int>(usual.limit));
    parameters.push_back(NumberParameter("saturation", "samples from this value on are saturated", "counts", kAnyNumber,
                                         "judged by the image"));
    return {.name = "find-stars",
            .summary = "find the stars of an image and list what is known of each",
            .help = "Columns and rows count from 0 in the middle of the file's first sample. Flags tell what speaks "
                    "against measuring with a star: saturated, hot (a hot pixel or a particle's hit), elongated, edge, "
                    "crowded.",
            .inputs = {{.summary = "the image to look at"}},
            .parameters = std::move(parameters),
            .outputs = {{"stars", OutputKind::Table, "place, light, sky, width and flags of each star"},
                        {"field", OutputKind::Numbers, "plane, sky, noise, width of the stars, how many there are"}},
            .run = RunFindStars};
}

Operation StarsOperation()
{
    constexpr double kSigmas = 10.0; // noise makes widths of fainter stars uncertain by a tenth and more
    constexpr int kLimit = 500;      // whose widths tell those of all
    std::vector<Parameter> parameters = SearchParameters(kSigmas, kLimit);
    parameters.push_back({.name = "at",
                          .kind = Kind::Numbers,
                          .summary = "roughly where the stars are",
                          .unit = "pixels",
                          .choices = {kPlaces},
                          .whenAbsent = "they are found"});
    return {.name = "stars",
            .summary = "measure how wide the stars of an image are",
            .help =
                "FWHM is the full width at half maximum along the row and the column of a star's peak, to which the "
                "samples rise from the place that is named. Columns and rows count from 0 in the middle of the "
                "file's first sample; x and y are the centroid.",
            .inputs = {{.summary = "the image to look at"}},
            .parameters = std::move(parameters),
            .outputs = {{"stars", OutputKind::Table, "place, light, sky and width of each star, or why it has none"},
                        {"field", OutputKind::Numbers, "plane, stars that count, mean and median of their widths"}},
            .run = RunStars};
}

} // namespace

int SeenStars::Usable() const
{
    return static_cast<int>(std::count_if(field.stars.begin(), field.stars.end(),
                                          [](const stars::FieldStar& star) { return star.IsUsable(); }));
}

SeenStars FindStars(const CStlImage& image, const Arguments& arguments, const Run& run)
{
    stars::FindOptions options{.sigmas = arguments.Number("sigmas"),
                               .limit = static_cast<std::size_t>(arguments.Whole("limit"))};
    if (arguments.Has("saturation")) {
        options.fullWell = arguments.Number("saturation");
    }
    const int plane = PlaneOfStars(arguments, image);
    SeenStars seen{plane, stars::FindFieldStars(image, plane, options, run)};
    if (seen.field.stars.empty()) {
        throw InputError("image", "no star rises " + NumberText(options.sigmas) + " standard deviations above the sky");
    }
    return seen;
}

SeenWidths MeasureStars(const CStlImage& image, const Arguments& arguments, const Run& run)
{
    const double sigmas = arguments.Number("sigmas");
    const int plane = PlaneOfStars(arguments, image);
    SeenWidths seen{plane,
                    arguments.Has("at")
                        ? stars::MeasureStars(image, plane, PixelsOf(image, arguments), sigmas, run)
                        : stars::MeasureStars(image, plane, FindStars(image, arguments, run).field.stars, sigmas, run)};
    if (seen.widths.used == 0) {
        throw InputError("image", "no star could be measured" + FaultsText(seen.widths, arguments));
    }
    return seen;
}

std::string FaultOf(const stars::FieldWidths& widths, std::size_t i, const Arguments& arguments)
{
    const stars::MeasuredStar& star = widths.stars[i];
    const bool isNamed = arguments.Has("at");
    const std::string place = isNamed
                                  ? NumbersText({arguments.Numbers("at")[2 * i], arguments.Numbers("at")[2 * i + 1]})
                                  : NumberText(star.x, 1) + "," + NumberText(star.y, 1);
    return "star at " + place + ": " + star.fault;
}

Table StarTable(const SeenStars& seen)
{
    Table table{.columns = {{"star", 0},
                            {"x", 2},
                            {"y", 2},
                            {"peak"},
                            {"sky"},
                            {"noise"},
                            {"flux"},
                            {"fwhm", 2},
                            {"elongation", 2},
                            {"flags", kWords}}};
    for (const stars::FieldStar& star : seen.field.stars) {
        table.rows.push_back({static_cast<double>(table.rows.size() + 1), star.x, star.y, star.peak, star.sky,
                              star.noise, star.flux, star.fwhm, star.elongation, stars::FlagWords(star)});
    }
    return table;
}

Table StarTable(const SeenWidths& seen)
{
    Table table{
        .columns = {{"star", 0}, {"x", 2}, {"y", 2}, {"peak"}, {"sky"}, {"flux"}, {"fwhm", 2}, {"fault", kWords}}};
    for (const stars::MeasuredStar& star : seen.widths.stars) {
        const auto ifMeasured = [&](double value) { return star.fwhm > 0.0 ? Cell(value) : Cell(); };
        table.rows.push_back({static_cast<double>(table.rows.size() + 1), star.x, star.y, star.peak, star.sky,
                              ifMeasured(star.flux), ifMeasured(star.fwhm), star.fault});
    }
    return table;
}

Table FieldTable(const SeenStars& seen)
{
    return {.columns = {{"plane", 0}, {"sky"}, {"noise"}, {"fwhm", 2}, {"found", 0}, {"usable", 0}},
            .rows = {{static_cast<double>(seen.plane), seen.field.sky, seen.field.noise, seen.field.fwhm,
                      static_cast<double>(seen.field.stars.size()), static_cast<double>(seen.Usable())}}};
}

Table FieldTable(const SeenWidths& seen)
{
    return {.columns = {{"plane", 0}, {"used", 0}, {"mean_fwhm", 2}, {"median_fwhm", 2}},
            .rows = {{static_cast<double>(seen.plane), static_cast<double>(seen.widths.used), seen.widths.meanFwhm,
                      seen.widths.medianFwhm}}};
}

std::vector<Operation> StarOperations()
{
    return {StarsOperation(), FindStarsOperation(), PsfOperation()};
}

} // namespace corvane::catalogue
