#include "corvane/restore/mem.h"

#include <memory>
#include <new>

#include "corvane/resources/string_table.h"
#include "corvane/restore/gauss_psf.h"
#include "corvane/restore/mem_engine.h"

using namespace corvane;

namespace {

constexpr int kOddPsfSize = 63; // an odd one has its centre between samples
constexpr int kPsfSizeOnGrid = 64;

} // namespace

int CImgMem::Do(double sigma, double noiseSigma, int iterations, CRect* rect, int showProgress)
{
    try {
        const Run run = WindowRun(*this, showProgress, EscapeKey::kEnds);
        const Restored end = Do(sigma, noiseSigma, iterations, rect, false, run);
        TellFailure(end, IDS_MEM_NO_MEMORY, IDS_MEM_CANCELLED);
        return HasStopped(end) ? 0 : 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

Restored CImgMem::Do(double sigma, double noiseSigma, int iterations, const CRect* rect, bool isOnGrid, const Run& run)
{
    const int size = isOnGrid ? kPsfSizeOnGrid : kOddPsfSize;
    const std::unique_ptr<float[]> psf(MakeGauss(sigma, size, size));
    const MemJob job{.psf = psf.get(),
                     .psfWidth = size,
                     .psfHeight = size,
                     .variance = noiseSigma * noiseSigma,
                     .iterations = iterations};
    return RestoreByEntropy(*this, rect, job, run);
}

float* CImgMem::MakeGauss(double sigma, int width, int height)
{
    return MakeGaussPsf(sigma, width, height);
}
