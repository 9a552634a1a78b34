#include "catalogue/statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "corvane/core/reductions.h"

namespace corvane::catalogue {
namespace {

constexpr int kBandRows = 64;

// Minimum, maximum and sum of samples as they come.
struct Tally {
    Extremes extremes;
    double sum = 0.0;
    long long counted = 0;
    long long blank = 0;
    long long infinite = 0;

    void Add(const std::vector<float>& samples, const BlankTest& isBlank)
    {
        for (const double v : samples) {
            if (isBlank(v)) {
                ++blank;
            } else if (!std::isfinite(v)) {
                ++infinite;
            } else {
                ++counted;
                sum += v;
                extremes.Add(v);
            }
        }
    }

    PlaneStatistics Result() const
    {
        PlaneStatistics result;
        result.blank = blank;
        result.infinite = infinite;
        if (counted > 0) {
            result.counted = counted;
            result.min = extremes.Min();
            result.max = extremes.Max();
            result.mean = sum / static_cast<double>(counted);
        }
        return result;
    }
};

PlaneStatistics ReadPlane(io::FrameReader& reader, int plane, const BlankTest& isBlank)
{
    Tally tally;
    std::vector<float> band;
    for (int y = 0; y < reader.Height(); y += kBandRows) {
        const int rows = std::min(kBandRows, reader.Height() - y);
        band.resize(static_cast<std::size_t>(reader.Width()) * static_cast<std::size_t>(rows));
        reader.ReadRows(plane, y, rows, band.data());
        tally.Add(band, isBlank);
    }
    return tally.Result();
}

} // namespace

std::vector<PlaneStatistics> ReadStatistics(io::FrameReader& reader)
{
    const std::optional<int> blank = reader.Info().blank;
    const BlankTest isBlank = blank ? BlankTest(*blank) : BlankTest();
    std::vector<PlaneStatistics> planes;
    for (int plane = 0; plane < reader.Planes(); ++plane) {
        planes.push_back(ReadPlane(reader, plane, isBlank));
    }
    return planes;
}

} // namespace corvane::catalogue
