#include "catalogue/plane.h"

#include "corvane/core/error.h"

namespace corvane::catalogue {

Parameter PlaneParameter(const char* summary)
{
    return {.name = "plane",
            .kind = Kind::Whole,
            .summary = std::string(summary) + ": 0 red or the only one, 1 green, 2 blue",
            .min = 0.0,
            .max = 2.0,
            .whenAbsent = "every plane"};
}

int GivenPlane(const Arguments& arguments, const CImage& image)
{
    const int plane = arguments.Has("plane") ? arguments.Whole("plane") : -1;
    if (plane >= image.GetPlanes()) {
        throw arguments.Refusal("plane", "must be 0, since the image has 1 plane");
    }
    return plane;
}

} // namespace corvane::catalogue
