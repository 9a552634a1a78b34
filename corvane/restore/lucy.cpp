#include "corvane/restore/lucy.h"

#include <memory>
#include <new>

#include "corvane/resources/string_table.h"
#include "corvane/restore/gauss_psf.h"
#include "corvane/restore/lucy_engine.h"

using namespace corvane;

namespace {

constexpr int kPsfSize = 64;

} // namespace

int CImgLucy::Do(double sigma, double gain, double readNoise, int iterations, CRect* rect, int showProgress)
{
    try {
        const Run run = WindowRun(*this, showProgress, EscapeKey::kEnds);
        const Restored end = Do(sigma, gain, readNoise, iterations, rect, run);
        TellFailure(end, IDS_LUCY_NO_MEMORY, IDS_LUCY_CANCELLED);
        return HasStopped(end) ? 0 : 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

Restored CImgLucy::Do(double sigma, double gain, double readNoise, int iterations, const CRect* rect, const Run& run)
{
    const std::unique_ptr<float[]> psf(MakeGauss(sigma, kPsfSize, kPsfSize));
    const LucyJob job{.psf = psf.get(),
                      .psfWidth = kPsfSize,
                      .psfHeight = kPsfSize,
                      .iterations = iterations,
                      .gain = gain,
                      .readNoise = readNoise};
    return RestoreLucy(*this, rect, job, run);
}

float* CImgLucy::MakeGauss(double sigma, int width, int height)
{
    return MakeGaussPsf(sigma, width, height);
}
