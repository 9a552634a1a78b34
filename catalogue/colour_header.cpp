#include "catalogue/colour_header.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <string>

#include "catalogue/filter_mosaic.h"
#include "catalogue/parameter.h"
#include "io/metadata.h"

namespace corvane::catalogue {
namespace {

void Remove(std::initializer_list<const char*> keywords, io::Header& header)
{
    for (const char* keyword : keywords) {
        header.Remove(keyword);
    }
}

/// "m51_r.fits: filter R, 300 s, aligned by 1 star: dx 1.300, dy -0.200, angle 0.0000"
std::string Origin(const io::Frame& frame, const Fit& fit)
{
    const auto filter = io::Filter(frame.header);
    const auto seconds = io::ExposureSeconds(frame.header);
    std::string text;
    const auto add = [&](const std::string& what) { text.append(text.empty() ? ": " : ", ").append(what); };
    if (filter) {
        add(std::string("filter ").append(*filter));
    }
    if (seconds) {
        add(ToText(Value(*seconds)).append(" s"));
    }
    if (fit.stars > 0) {
        add(ToText(fit));
    }
    return text.empty() ? text : std::string(frame.image.GetOrgFileName()).append(text);
}

bool HaveOneExposure(const std::vector<io::Frame>& frames)
{
    const auto seconds = io::ExposureSeconds(frames[0].header);
    return std::all_of(frames.begin(), frames.end(),
                       [&](const io::Frame& frame) { return io::ExposureSeconds(frame.header) == seconds; });
}

} // namespace

void DescribeColour(std::vector<io::Frame>& frames, const std::vector<Fit>& fits)
{
    std::vector<std::string> origins;
    std::transform(frames.begin(), frames.end(), fits.begin(), std::back_inserter(origins), Origin);
    io::Header& header = frames[0].header;
    if (!HaveOneExposure(frames)) {
        Remove({"EXPTIME", "EXPOSURE", "EXP_TIME"}, header);
    }
    Remove({"FILTER", "FILTER1", "FILTNAM", "DATE", "DATE-END", "DATE_END", "TIME-END", "UTEND", "MJD-END"}, header);
    DropExtremes(header);
    DropMosaic(header);
    for (const std::string& origin : origins) {
        if (!origin.empty()) {
            header.AddHistory(origin);
        }
    }
}

bool HaveOwnLevels(const std::vector<io::Frame>& frames)
{
    return std::all_of(frames.begin(), frames.end(), [](const io::Frame& f) { return f.image.HasOwnLevel() != 0; });
}

void DropExtremes(io::Header& header)
{
    Remove({"DATAMIN", "DATAMAX"}, header);
}

} // namespace corvane::catalogue
