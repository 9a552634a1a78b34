#include <string>

#include "catalogue/image_beside.h"
#include "catalogue/operations.h"
#include "corvane/core/calibration_rows.h"
#include "corvane/core/gaps.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"
#include "io/frame.h"

namespace corvane::catalogue {
namespace {

// A calibration frame of one plane serves every plane of a colour image.
io::Frame FittingFrame(const Arguments& arguments, const io::Frame& frame, const Run& run)
{
    return FittingImage("file", frame.image.GetPlanes(), frame, arguments, run);
}

void RunDark(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    frame.image.DarkClbrtn(FittingFrame(arguments, frame, run).image, run);
}

/// Divides by a flat some of whose samples, now NaN, are undefined.
void DivideBesideGaps(CStlImage& image, const CStlImage& flat, const Run& run)
{
    const double mean = MeanBesideGaps(flat, 0);
    const BlankRule rule(flat, image);
    WalkRows(image, flat, nullptr, run, IDS_FLAT, [&](int) {
        return [&](const float* from, float* row, int count) {
            DivideFlatRow(row, from, count, mean, rule);
            CopyGaps(from, row, count);
        };
    });
}

void RunFlat(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    io::Frame flat = FittingFrame(arguments, frame, run);
    const long long gaps = MarkGaps(flat.image);
    if (gaps == static_cast<long long>(flat.image.GetPixelCount()) * flat.image.GetPlanes()) {
        throw arguments.Refusal("file", "has no sample that is defined");
    }
    if (gaps == 0) {
        frame.image.FlatClbrtn(flat.image, run);
        return;
    }
    DivideBesideGaps(frame.image, flat.image, run);
    run.TellNote(arguments.InWords("file") + ": undefined samples: " + std::to_string(gaps) +
                 "; the result is undefined there");
}

Parameter FileParameter(const std::string& summary)
{
    return {.name = "file", .kind = Kind::Image, .summary = summary, .aliases = {"frame"}};
}

} // namespace

std::vector<Operation> CalibrationOperations()
{
    return {
        {.name = "dark",
         .summary = "take a dark frame off",
         .help = "What would fall below 0 becomes 0. The dark must have the image's size, and one plane or as many; a "
                 "dark of the other order of rows (ROWORDER) is turned.",
         .parameters = {FileParameter("the dark frame")},
         .footprint = Always({}),
         .run = RunDark},
        {.name = "flat",
         .summary = "divide by a flat field",
         .help = "The result keeps its scale: samples are multiplied by the mean of the flat's first plane. Where the "
                 "flat is 0 or less they stay as they are; where it is undefined they become so, and the mean is that "
                 "of the others. The flat must have the image's size, and one plane or as many; a flat of the other "
                 "order of rows (ROWORDER) is turned. Take its bias off before.",
         .parameters = {FileParameter("the flat field")},
         .footprint = Always({.statistics = true}), // the mean of the flat
         .run = RunFlat},
    };
}

} // namespace corvane::catalogue
