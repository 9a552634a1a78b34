#include "corvane/colour/separation.h"

#include <string>

#include "catalogue/colour_header.h"
#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/undefined.h"
#include "corvane/core/ascii.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::catalogue {
namespace {

/// The place of a word is the number of the component.
const std::vector<std::string>& Components()
{
    static const std::vector<std::string> words = {"r", "g", "b", "c", "m", "y"};
    return words;
}

void RunSplit(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const std::string& component = arguments.Text("component");
    MarkUndefined(frame);
    CImgSeparation result(frame.image);
    if (result.ToGray() == 0) {
        AfxThrowMemoryException();
    }
    result.Do(frame.image, PlaceOf(component, Components()), run);
    frame.image = std::move(result);
    const std::string filter = Upper(component);
    frame.header.Set("FILTER", filter, "component of a colour image");
    DropExtremes(frame.header);
}

} // namespace

std::vector<Operation> SeparationOperations()
{
    return {{.name = "split",
             .summary = "take one component out of a colour image",
             .help =
                 "c is (G + B) / 2, m (R + B) / 2, y (R + G) / 2. The result has one plane, the header of the image "
                 "and the component as its FILTER; its display level is that of the plane, or the mean of two (of "
                 "y as of m). Undefined samples become NaN.",
             .inputs = {{.planes = Planes::Colour}},
             .parameters = {{.name = "component",
                             .kind = Kind::Choice,
                             .summary = "which; c, m and y are the means of two planes",
                             .choices = Components()}},
             .footprint = Always(
                 {.statistics = true, .makesPlanes = true}), // it refuses an image without any sample that is defined
             .run = RunSplit}};
}

} // namespace corvane::catalogue
