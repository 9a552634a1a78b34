#include "catalogue/separation.h"

#include <cctype>

#include "catalogue/colour_header.h"
#include "catalogue/names.h"
#include "catalogue/undefined.h"
#include "corvane/colour/separation.h"
#include "corvane/core/error.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::catalogue {

const std::vector<std::string>& ComponentWords()
{
    static const std::vector<std::string> words = {"r", "g", "b", "c", "m", "y"};
    return words;
}

void CheckComponent(const std::string& component)
{
    CheckWord("--component", component, ComponentWords());
}

void RunSplit(io::Frame& frame, const std::string& component, const Context& context)
{
    CheckComponent(component);
    const std::string file = frame.image.GetOrgFileName();
    if (frame.image.GetPlanes() != 3) {
        throw FileError(file, "must have 3 planes to be split; it has " + std::to_string(frame.image.GetPlanes()));
    }
    MarkUndefined(frame);
    CImgSeparation result(frame.image);
    if (result.ToGray() == 0) {
        AfxThrowMemoryException();
    }
    result.Do(&frame.image, PlaceOf(component, ComponentWords()), context.showProgress);
    frame.image.Swap(&result);
    const std::string filter(1, static_cast<char>(std::toupper(static_cast<unsigned char>(component[0]))));
    frame.header.Set("FILTER", filter, "component of a colour image");
    DropExtremes(frame.header);
    frame.header.AddHistory("corvane split " + file + " --component " + component);
}

} // namespace corvane::catalogue
