#include "examples/night/colour_filters.h"

namespace corvane::night {

double WhiteShare(char filter)
{
    return filter == 'R' ? 0.65 : filter == 'B' ? 0.75 : 1.0;
}

double SkyShare(char filter)
{
    return WhiteShare(filter) * (filter == 'R' ? 1.3 : filter == 'B' ? 0.8 : 1.0);
}

double StarShare(char filter, double redness)
{
    return WhiteShare(filter) * (1.0 + 0.5 * (filter == 'R' ? redness : filter == 'B' ? -redness : 0.0));
}

void CopyBelow(char filter, const std::string& pattern, const Plane& from, Plane& to)
{
    for (int y = 0; y < to.height; ++y) {
        for (int x = 0; x < to.width; ++x) {
            if (FilterAt(pattern, x, y) == filter) {
                to.Row(y)[x] = from.Row(y)[x];
            }
        }
    }
}

} // namespace corvane::night
