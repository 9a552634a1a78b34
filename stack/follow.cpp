#include "stack/follow.h"

#include <algorithm>
#include <cstdio>

#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "io/metadata.h"

namespace corvane::stack {

namespace {

/// Where and when something was seen, on the reference.
struct Sighting {
    Position at;
    double time; ///< [s]
};

Sighting SightingOf(const FollowedPlace& place, const Plan& plan, const CfPoint& centre,
                    const std::vector<FrameReport>& reports)
{
    const auto named = std::find_if(reports.begin(), reports.end(),
                                    [&](const FrameReport& report) { return report.file == place.light; });
    if (named == reports.end()) {
        throw ParameterError("follow", ToText(place), "it takes places in lights, by the names that they have there");
    }
    if (!named->used) {
        throw ParameterError("follow", ToText(place), "the light is left out: " + named->reason);
    }
    const bool isInside = place.x >= 0.0 && place.x < plan.width && place.y >= 0.0 && place.y < plan.height;
    if (!isInside) {
        throw ParameterError("follow", ToText(place),
                             "must lie within the light, " + SizeText(plan.width, plan.height) + " pixels");
    }
    const auto light = static_cast<int>(named - reports.begin());
    const double y = plan.lights.IsUpsideDown(light) ? plan.height - 1.0 - place.y : place.y;
    return {named->MappingAbout(centre).Inverse({place.x, y}), *io::MiddleTime(plan.lights.Info(light).header)};
}

} // namespace

FollowedPlace ReadFollowedPlace(const std::string& text)
{
    FollowedPlace place;
    int read = 0;
    if (std::sscanf(text.c_str(), "%lf,%lf@%n", &place.x, &place.y, &read) != 2 || read == 0 ||
        text.size() == static_cast<std::size_t>(read)) {
        throw ParameterError("follow", text, "must be X,Y@FILE, a place in a light");
    }
    place.light = text.substr(static_cast<std::size_t>(read));
    return place;
}

std::string ToText(const FollowedPlace& place)
{
    return NumberText(place.x) + "," + NumberText(place.y) + "@" + place.light;
}

Motion FollowMotion(const Options& options, const Plan& plan, int referenceLight, const CfPoint& centre,
                    std::vector<FrameReport>& reports)
{
    const auto timeOf = [&](int light) { return io::MiddleTime(plan.lights.Info(light).header); };
    for (int i = 0; i < plan.lights.Count(); ++i) {
        FrameReport& report = reports[static_cast<std::size_t>(i)];
        if (report.used && !timeOf(i)) {
            report.LeaveOut("its header does not say when it was taken, and the stack follows what moves");
        }
    }
    if (!timeOf(referenceLight)) {
        throw FileError(plan.lights.Path(referenceLight), "the reference does not say when it was taken");
    }
    const Sighting first = SightingOf(options.follow[0], plan, centre, reports);
    const Sighting second = SightingOf(options.follow[1], plan, centre, reports);
    const double between = second.time - first.time;
    if (between == 0.0) {
        throw ParameterError("follow", ToText(options.follow[1]), "both lights are of one time");
    }
    Motion motion{{(second.at.x - first.at.x) / between, (second.at.y - first.at.y) / between}, {}};
    for (int i = 0; i < plan.lights.Count(); ++i) {
        const double since = timeOf(i).value_or(*timeOf(referenceLight)) - *timeOf(referenceLight);
        motion.since.push_back({motion.perSecond.x * since, motion.perSecond.y * since});
    }
    return motion;
}

} // namespace corvane::stack
