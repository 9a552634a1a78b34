#include "corvane/tone/reduce_tone.h"

#include <cmath>

#include "tests/tone/mapped.h"

using namespace corvane::test;

namespace {

double Reduced(double v, int p, int levels, const Plain& image)
{
    const double n = levels < 2 ? 1 : levels >= 256 ? 256 : levels;
    double s = image.To256(v, p);
    s = !(s > 0.0) ? 0.0 : s >= 255.0 ? 255.0 : s;
    return image.ToRaw(std::floor(n * s * 0.00390625) / n * 255.0, p);
}

} // namespace

TEST(ReduceTone, EqualsThePlainForm)
{
    for (const int levels : {-5, 1, 2, 7, 8, 51, 255, 256, 9999}) {
        SCOPED_TRACE(levels);
        const auto run = [=](CImgReduceTone& operation, CStlImage* source, CRect* rect) {
            operation.Do(levels, source, rect, 1);
        };
        const auto reduced = [=](double v, int p, const Plain& image) { return Reduced(v, p, levels, image); };
        ExpectMapped<CImgReduceTone>("Compressing grayscale...", run, reduced);
        ExpectSteps<CImgReduceTone>(levels * 255.0 / 256.0, run, reduced);
    }
}
