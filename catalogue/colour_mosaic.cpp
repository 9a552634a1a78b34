#include <algorithm>
#include <optional>
#include <string>

#include "catalogue/filter_mosaic.h"
#include "catalogue/operations.h"
#include "corvane/colour/demosaic.h"
#include "corvane/core/error.h"
#include "io/bayer.h"

namespace corvane::catalogue {
namespace {

/// The pattern of the samples in the order of storage, by the header.
std::string StatedPattern(const io::Frame& frame)
{
    const auto named = io::BayerPattern(frame.header);
    if (const auto hinted = io::HintedBayerPattern(frame.header)) {
        throw ParameterError("pattern", "auto",
                             "the header names no pattern (BAYERPAT), but FILTER = " + *hinted +
                                 " looks like one; give pattern=" + *hinted);
    }
    if (!named) {
        throw ParameterError("pattern", "auto",
                             "the header names no pattern (BAYERPAT); give pattern=RGGB, GRBG, GBRG or BGGR if "
                             "this is a mosaic");
    }
    return io::StoredBayerPattern(frame.header, frame.image.GetHeight()).value_or(*named);
}

BayerPattern ChosenPattern(const io::Frame& frame, const std::string& choice)
{
    const std::string pattern = choice == "auto" ? StatedPattern(frame) : choice;
    const std::optional<BayerPattern> found = NamedBayerPattern(pattern);
    if (!found) {
        throw ParameterError("pattern", "auto",
                             "the mosaic of this frame is " + pattern + ", which is no Bayer pattern");
    }
    return *found;
}

DemosaicMethod ChosenMethod(const Arguments& arguments)
{
    const std::string& name = arguments.Text("method");
    return std::find_if(kDemosaicNames.begin(), kDemosaicNames.end(),
                        [&](const auto& each) { return each.first == name; })
        ->second;
}

void RunDebayer(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const BayerPattern pattern = ChosenPattern(frame, arguments.Text("pattern"));
    Demosaic(frame.image, pattern, ChosenMethod(arguments), frame.image, run);
    DropMosaic(frame.header);
}

// What is undefined is made of the nearest samples of its row that are not, however far away. A pattern that is read
// from the header moves with the corner of a cut.
Footprint DebayerFootprint(const Arguments& arguments)
{
    return {.columns = Footprint::kWhole,
            .rows = DemosaicMargin(ChosenMethod(arguments)),
            .period = arguments.Text("pattern") == "auto" ? 1 : 2,
            .makesPlanes = true};
}

} // namespace

std::vector<Operation> ColourMosaicOperations()
{
    return {
        {.name = "debayer",
         .summary = "make a colour image of a frame with a Bayer mosaic",
         .help = "Each pixel of such a frame has a filter of one colour; the others are made from its neighbours. Do "
                 "it after calibration, before anything that moves or mixes samples. auto goes by BAYERPAT, XBAYROFF, "
                 "YBAYROFF and ROWORDER; a pattern that is given counts from the first row of the file. Colours are "
                 "not balanced. The three planes take the display levels of the one; the cards that describe the "
                 "mosaic are taken away.",
         .inputs = {{.planes = Planes::Mono}},
         .parameters = {ChoiceParameter("pattern",
                                        "the filters of the first two pixels of the first row, then of the second",
                                        {"auto", "RGGB", "GRBG", "GBRG", "BGGR"}, "auto"),
                        ChoiceParameter(
                            "method",
                            "edge-aware keeps stars sharp and round; linear keeps their light to a thousandth, but "
                            "leaves coloured rings about narrow ones; bilinear is softer",
                            {"edge-aware", "linear", "bilinear"}, "edge-aware")},
         .footprint = DebayerFootprint,
         .aliases = {"demosaic"},
         .run = RunDebayer},
    };
}

} // namespace corvane::catalogue
