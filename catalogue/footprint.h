#pragma once

#include <functional>
#include <limits>
#include <string>

#include "catalogue/arguments.h"
#include "corvane/platform/export.h"
#include "corvane/platform/rect.h"

namespace corvane::catalogue {

struct Operation;

/// What the display levels of an image are to the samples of a result.
enum class LevelUse {
    Unread, ///< nothing
    Read,   ///< samples depend on them
    Chosen, ///< the same; an image without levels of its own gets some by its statistics first
};

/// What an operation looks at to make one sample, with given arguments: whether, and how, an image may be worked on in
/// parts.
///
/// An image that `MayBeCut` is worked on like this, with the bits of the whole:
/// - The result is divided into tiles of any sizes.
/// - For each tile, `CutFor` says what is cut out of the image: the tile with a halo about it, as far as the image
///   goes. An edge of the image stays an edge of the cut, so what is mirrored there is mirrored in the cut. The cut has
///   the levels, the blank value and the header of the image: it is what the operation `crop` makes.
/// - Images that the arguments name (`Kind::Image`) are cut in the same place, counted in the image's order of rows.
/// - The operation runs on the cut with the arguments that `MovedInto` gives: rectangles count from the cut's corner.
/// - The tile is taken out of the middle of what comes out, which may have other planes and levels than the image.
struct Footprint {
    static constexpr int kWhole = std::numeric_limits<int>::max(); ///< a reach as far as the image goes

    int columns = 0; ///< how far to the left and right of its place a sample looks [pixels], or kWhole
    int rows = 0;    ///< how far above and below it looks
    int period = 1;  ///< cuts must begin at columns and rows that this divides: a mosaic repeats itself
    LevelUse levels = LevelUse::Unread; ///< what the display levels are to samples
    bool statistics = false;  ///< looks at all samples first: of the image, of a rectangle of it, or of another image
    bool placed = false;      ///< the result depends on where in the image a sample lies; arguments do not move along
    bool moves = false;       ///< samples come to other places; reaches say nothing
    bool resizes = false;     ///< the result has another width or height; reaches say nothing
    bool makesPlanes = false; ///< the result's planes are others: more, fewer or of another meaning
    bool levelsOnly = false;  ///< no sample changes

    /// True when each sample may depend on every other.
    bool IsWhole() const { return columns == kWhole && rows == kWhole; }
    /// True when tiles make the whole, of an image that has display levels of its own (`HasOwnLevel`) or not.
    bool MayBeCut(bool hasOwnLevels) const
    {
        return !IsWhole() && !statistics && !placed && !moves && !resizes &&
               (hasOwnLevels || levels != LevelUse::Chosen);
    }
    /// True when each sample of the result has one of the image to be mixed with.
    bool MayBeMixed() const { return !moves && !resizes && !makesPlanes && !levelsOnly; }
};

/// @name For entries of the catalogue
/// @{
inline constexpr Footprint kWholeImage{.columns = Footprint::kWhole, .rows = Footprint::kWhole};

constexpr Footprint Around(int radius, LevelUse levels = LevelUse::Unread)
{
    return {.columns = radius, .rows = radius, .levels = levels};
}

/// Of an operation that has the same one with all arguments.
inline std::function<Footprint(const Arguments&)> Always(const Footprint& footprint)
{
    return [footprint](const Arguments&) { return footprint; };
}
/// @}

/// That of an operation with arguments. One that tells nothing has all that stands in the way of cutting.
CORVANE_VISIBLE Footprint FootprintOf(const Operation& operation, const Arguments& arguments);

/// That of an operation with its defaults.
CORVANE_VISIBLE Footprint UsualFootprint(const Operation& operation);

/// In words: "samples up to 2 pixels away; the display levels".
CORVANE_VISIBLE std::string ToText(const Footprint& footprint);

/// What is cut out of an image of that size for a tile that lies in it.
CORVANE_VISIBLE CRect CutFor(const Footprint& footprint, const CRect& tile, int width, int height);

/// The arguments for a cut: of rectangles the part that lies in it, counted from its corner, or an empty one, in which
/// nothing is done.
CORVANE_VISIBLE Arguments MovedInto(const CRect& cut, const Arguments& arguments);

} // namespace corvane::catalogue
