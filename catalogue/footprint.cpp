#include "catalogue/footprint.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "catalogue/operation.h"

namespace corvane::catalogue {
namespace {

/// An interval of columns or of rows, with what lies so far about it in 0 .. size.
std::pair<int, int> WithHalo(LONG begin, LONG end, int reach, int period, int size)
{
    const auto first = static_cast<int>(begin) - std::min(static_cast<int>(begin), reach);
    const int room = size - static_cast<int>(end);
    return {first - first % period, static_cast<int>(end) + std::min(room, reach)};
}

/// The part of a rectangle that lies in a cut, counted from its corner.
CRect Inside(const CRect& rect, const CRect& cut)
{
    const CRect part(static_cast<int>(std::max(rect.left, cut.left) - cut.left),
                     static_cast<int>(std::max(rect.top, cut.top) - cut.top),
                     static_cast<int>(std::min(rect.right, cut.right) - cut.left),
                     static_cast<int>(std::min(rect.bottom, cut.bottom) - cut.top));
    return part.Width() > 0 && part.Height() > 0 ? part : CRect();
}

std::string ReachText(int reach, const char* across)
{
    return reach == Footprint::kWhole ? std::string("all ") + across : std::to_string(reach) + ' ' + across;
}

std::string AroundText(const Footprint& footprint)
{
    if (footprint.IsWhole()) {
        return "the whole image";
    }
    if (footprint.columns != footprint.rows) {
        return "samples up to " + ReachText(footprint.columns, "columns") + " and " +
               ReachText(footprint.rows, "rows") + " away";
    }
    return footprint.rows == 0 ? "each sample by itself"
                               : "samples up to " + std::to_string(footprint.rows) +
                                     (footprint.rows == 1 ? " pixel away" : " pixels away");
}

} // namespace

Footprint FootprintOf(const Operation& operation, const Arguments& arguments)
{
    if (operation.footprint) {
        return operation.footprint(arguments);
    }
    Footprint unknown = kWholeImage;
    unknown.levels = LevelUse::Chosen;
    unknown.statistics = unknown.placed = unknown.moves = unknown.resizes = true;
    return unknown;
}

Footprint UsualFootprint(const Operation& operation)
{
    Arguments defaults;
    for (const Parameter& parameter : operation.parameters) {
        if (parameter.defaultValue) { // not a setting, which may be none that is allowed
            defaults.Add({&parameter, *parameter.defaultValue, false});
        }
    }
    return FootprintOf(operation, defaults);
}

std::string ToText(const Footprint& footprint)
{
    const std::pair<bool, const char*> parts[]{{footprint.levels != LevelUse::Unread, "the display levels"},
                                               {footprint.statistics, "statistics of all samples"},
                                               {footprint.placed, "its place in the image"}};
    std::string text = footprint.moves || footprint.resizes ? "samples of other places" : AroundText(footprint);
    for (const auto& [isTrue, part] : parts) {
        text += isTrue ? std::string("; ") + part : "";
    }
    return text;
}

CRect CutFor(const Footprint& footprint, const CRect& tile, int width, int height)
{
    const auto [left, right] = WithHalo(tile.left, tile.right, footprint.columns, footprint.period, width);
    const auto [top, bottom] = WithHalo(tile.top, tile.bottom, footprint.rows, footprint.period, height);
    return {left, top, right, bottom};
}

Arguments MovedInto(const CRect& cut, const Arguments& arguments)
{
    Arguments moved;
    for (Argument argument : arguments.List()) {
        if (const CRect* const rect = std::get_if<CRect>(&argument.value)) {
            argument.value = Inside(*rect, cut);
        }
        moved.Add(std::move(argument));
    }
    return moved;
}

} // namespace corvane::catalogue
