#include "catalogue/plane.h"

#include "corvane/core/error.h"
#include "stars/find_stars.h"

namespace corvane::catalogue {

Parameter PlaneParameter(const char* summary)
{
    return WholeParameter("plane", std::string(summary) + ": 0 red or the only one, 1 green, 2 blue", "", {0.0, 2.0},
                          "every plane");
}

int GivenPlane(const Arguments& arguments, const CImage& image)
{
    const int plane = arguments.Has("plane") ? arguments.Whole("plane") : -1;
    if (plane >= image.GetPlanes()) {
        throw arguments.Refusal("plane", "must be 0, since the image has 1 plane");
    }
    return plane;
}

int PlaneOfStars(const Arguments& arguments, const CImage& image)
{
    const int given = GivenPlane(arguments, image);
    return given < 0 ? stars::StarPlane(image) : given;
}

} // namespace corvane::catalogue
