// The mask of the stars of an image.

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/colour_header.h"
#include "catalogue/filter_mosaic.h"
#include "catalogue/operations.h"
#include "catalogue/plane.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "corvane/core/walk.h"
#include "stars/star_extent.h"

namespace corvane::catalogue {
namespace {

constexpr std::size_t kMostStars = 100000;

/// How the edge of what is covered looks.
struct MaskEdge {
    double grow; ///< how much further out it lies [pixels]
    double soft; ///< over how much it fades [pixels]
};

/// Covers what lies within a radius of a line: 1 there, and less and less beyond.
void Cover(const stars::StarExtent& extent, const MaskEdge& edge, CStlImage& mask)
{
    const double full = std::max(extent.radius + edge.grow, 0.0);
    const double reach = full + edge.soft;
    const auto from = [](double v) { return std::max(static_cast<int>(std::ceil(v)), 0); };
    const auto to = [](double v, int size) { return std::min(static_cast<int>(std::floor(v)), size - 1); };
    const double right = extent.x + extent.length;
    for (int y = from(extent.y - reach); y <= to(extent.y + reach, mask.GetHeight()); ++y) {
        float* const row = mask.GetImageAdr(0, y, 0);
        for (int x = from(extent.x - reach); x <= to(right + reach, mask.GetWidth()); ++x) {
            const double dx = x - std::clamp(static_cast<double>(x), extent.x, right);
            const double dy = y - extent.y;
            const double away = std::sqrt(dx * dx + dy * dy);
            const double part = away <= full ? 1.0 : std::max((reach - away) / edge.soft, 0.0);
            row[x] = std::max(row[x], static_cast<float>(part * part * (3.0 - 2.0 * part)));
        }
    }
}

/// What the stars of a plane cover, those of the size that is asked for.
std::vector<stars::StarExtent> ExtentsIn(const CStlImage& image, int plane, const Arguments& arguments, const Run& run)
{
    const stars::FindOptions options{.sigmas = arguments.Number("sigmas"), .limit = kMostStars};
    const stars::StarField field = stars::FindFieldStars(image, plane, options, run);
    std::vector<stars::StarExtent> extents = stars::MeasureExtents(image, plane, field, arguments.Number("limit"), run);
    const double least = arguments.Has("min") ? arguments.Number("min") : 0.0;
    const double most = arguments.Has("max") ? arguments.Number("max") : HUGE_VAL;
    std::erase_if(extents, [=](const stars::StarExtent& extent) {
        const double size = 2.0 * extent.radius + extent.length;
        return size < least || size > most;
    });
    return extents;
}

/// An image of zeros, of one plane and with the coordinates of another.
CStlImage EmptyMaskOf(const CStlImage& image)
{
    CStlImage mask(-32, image.GetWidth(), image.GetHeight(), 1, 1.0, 0.0, 1);
    mask.SetCoordinates(image.GetCoordinates());
    mask.SetOrgFileName(image.GetOrgFileName());
    mask.SetLevel(0, 0.0, 1.0);
    mask.SetOwnLevel(1);
    return mask;
}

void RunStarMask(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const CStlImage& image = frame.image;
    const int given = GivenPlane(arguments, image);
    const int end = given < 0 ? image.GetPlanes() : given + 1;
    CStlImage mask = EmptyMaskOf(image);
    const MaskEdge edge{arguments.Number("grow"), arguments.Number("soft")};
    bool isEmpty = true;
    for (int plane = std::max(given, 0); plane < end; ++plane) {
        for (const stars::StarExtent& extent : ExtentsIn(image, plane, arguments, run)) {
            Cover(extent, edge, mask);
            isEmpty = false;
        }
    }
    if (isEmpty) {
        throw InputError("image", "has no star of that kind; lower sigmas, or ask for other sizes");
    }
    if (arguments.Flag("invert")) {
        WriteRows(mask, 1, [&](float* row, int) {
            std::transform(row, row + mask.GetWidth(), row, [](float v) { return 1.0F - v; });
        });
    }
    frame.image = std::move(mask);
    DropExtremes(frame.header);
    DropMosaic(frame.header);
    frame.header.Remove("BUNIT");
}

void CheckSizes(const Arguments& arguments)
{
    if (arguments.Has("min") && arguments.Has("max") && arguments.Number("max") < arguments.Number("min")) {
        throw arguments.Refusal("max", "must be at least min, " + NumberText(arguments.Number("min")));
    }
}

Operation StarMask()
{
    constexpr Range kPixels{0.0, 1000.0};
    return {
        .name = "star-mask",
        .summary = "make a mask that is 1 on the stars and 0 elsewhere",
        .help = "Each star is covered out to where its light, ring by ring, is lost in the noise or in what it "
                "stands on: so bright stars are covered further out than faint ones, and saturated ones with their "
                "halos and trails. Galaxies and hot pixels are no stars. The mask has the size of the image; other "
                "steps take it by mask=FILE. With invert=yes they work beside the stars.",
        .parameters = {NumberParameter("sigmas", "how far a star rises above the sky, in its standard deviations", "",
                                       {1.0, 1000.0}, stars::FindOptions().sigmas),
                       NumberParameter("limit", "where the light of a star ends, in standard deviations of the sky", "",
                                       {0.05, 1000.0}, 1.0),
                       NumberParameter("grow", "covers so much more about each star; below 0 less", "pixels",
                                       {-100.0, 100.0}, 1.0),
                       NumberParameter("soft", "over which the edge fades", "pixels", {0.0, 100.0}, 3.0),
                       NumberParameter("min", "the least star, by the width of what it covers", "pixels", kPixels,
                                       "none is too small"),
                       NumberParameter("max", "the largest star, by the same", "pixels", kPixels, "none is too large"),
                       FlagParameter("invert", "0 on the stars and 1 elsewhere", false),
                       PlaneParameter("the plane in which stars are looked for")},
        .footprint = Always({.columns = Footprint::kWhole, .rows = Footprint::kWhole, .makesPlanes = true}),
        .check = CheckSizes,
        .run = RunStarMask};
}

} // namespace

std::vector<Operation> MaskOperations()
{
    return {StarMask()};
}

} // namespace corvane::catalogue
