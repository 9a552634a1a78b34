#include "corvane/restore/wiener.h"

#include <numeric>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/restore/wiener_filter.h"

using namespace corvane;

namespace {

double Sum(const std::vector<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0);
}

} // namespace

double corvane::WienerBytes(int width, int height, int planes)
{
    return WienerFilterBytes(width, height, planes);
}

double corvane::WienerGain(double sigma, int width, int height)
{
    return kWienerPeak * Sum(WienerProfile(WienerExtent(width), sigma)) *
           Sum(WienerProfile(WienerExtent(height), sigma));
}

int CImgWiener::Do(double sigma, double noise, CRect* rect, int showProgress)
{
    return OrNothing([&] {
        Do(sigma, noise, rect, WindowRun(*this, showProgress));
        return 1;
    });
}

void CImgWiener::Do(double sigma, double noise, const CRect* rect, const Run& run)
{
    FilterByWiener(
        *this, rect, [=](WienerFilter& filter) { filter.Blur(sigma); }, noise, false, run);
}
