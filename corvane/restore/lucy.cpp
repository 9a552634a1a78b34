#include "corvane/restore/lucy.h"

#include <memory>
#include <new>

#include "corvane/resources/string_table.h"
#include "corvane/restore/gauss_psf.h"
#include "corvane/restore/lucy_engine.h"
#include "corvane/restore/region.h"

using namespace corvane;

namespace {

constexpr int kPsfSize = 64;

} // namespace

int CImgLucy::Do(double sigma, double gain, double readNoise, int iterations, CRect* rect, int showProgress)
{
    try {
        const Restored end = Restore(sigma, gain, readNoise, iterations, rect, showProgress, {});
        TellFailure(end, IDS_LUCY_NO_MEMORY, IDS_LUCY_CANCELLED);
        return end == Restored::kDone ? 1 : 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

Restored CImgLucy::Restore(double sigma, double gain, double readNoise, int iterations, const CRect* rect,
                           int showProgress, const RestoreDetail& detail)
{
    Region region(*this, rect);
    const std::unique_ptr<float[]> psf(MakeGauss(sigma, kPsfSize, kPsfSize));
    const LucyJob job{.width = region.Width(),
                      .height = region.Height(),
                      .psf = psf.get(),
                      .psfWidth = kPsfSize,
                      .psfHeight = kPsfSize,
                      .iterations = iterations,
                      .gain = gain,
                      .readNoise = readNoise,
                      .detail = detail};
    for (int p = 0; p < region.Planes(); ++p) {
        const int number = region.Planes() == 1 ? 0 : p + 1;
        const Restored end = RestoreLucy(region.Plane(p), job, showProgress != 0 ? this : nullptr, number);
        if (end != Restored::kDone) {
            return end;
        }
    }
    region.Write(*this);
    return Restored::kDone;
}

float* CImgLucy::MakeGauss(double sigma, int width, int height)
{
    return MakeGaussPsf(sigma, width, height);
}
