#include "stars/place_field.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "stars/choose_map.h"

namespace corvane::stars {

namespace {

constexpr double kLeastMotion = 1.0 / 30.0; // pixels
constexpr const char* kMirror = "it shows the reference in a mirror; flip it first";

Area WholeArea(const PlacedField& field)
{
    return {0.0, 0.0, field.width - 1.0, field.height - 1.0};
}

/// True when no corner of the reference lies elsewhere in the frame, but for what the places of stars scatter.
bool MovesNothing(const Mapping& mapping, const Area& area)
{
    const Position corners[] = {
        {area.left, area.top}, {area.right, area.top}, {area.left, area.bottom}, {area.right, area.bottom}};
    return std::all_of(std::begin(corners), std::end(corners), [&](const Position& corner) {
        const Position at = mapping.Map(corner.x, corner.y);
        return std::hypot(at.x - corner.x, at.y - corner.y) < kLeastMotion;
    });
}

FieldMatch MatchAtScale(bool scale, const PlacedField& reference, const PlacedField& frame, const CfPoint& centre,
                        const Run& run)
{
    FieldMatch match = MatchFields(reference.stars, frame.stars, centre, {scale, true}, run);
    if (match.isMirrored) {
        match.reason = kMirror;
    }
    return match;
}

} // namespace

FieldPlace PlaceField(const PlacedField& reference, const PlacedField& frame, const CfPoint& centre, const Run& run)
{
    FieldPlace place;
    place.match = MatchAtScale(false, reference, frame, centre, run);
    const bool hasScale = !place.match.reason.empty();
    if (hasScale) {
        place.match = MatchAtScale(true, reference, frame, centre, run);
    }
    const FieldMatch& match = place.match;
    if (!match.reason.empty()) {
        return place;
    }
    Alignment alignment = Alignment::Turned(match.dx, match.dy, match.angle, centre);
    alignment.scale = match.scale;
    const Area area = CommonArea(WholeArea(frame), WholeArea(reference), alignment);
    const ChosenMap chosen = ChooseMap(reference.stars, frame.stars, alignment, {{}, hasScale, area});
    place.isBent = chosen.map.has_value();
    place.mapping = place.isBent ? Mapping(*chosen.map) : Mapping(alignment);
    if (MovesNothing(place.mapping, WholeArea(reference))) {
        place.mapping = {};
    }
    place.stars = place.isBent ? chosen.stars : match.stars;
    place.residual = place.isBent ? chosen.residual : match.residual;
    return place;
}

} // namespace corvane::stars
