#include "corvane/core/calibration_rows.h"

namespace corvane {

BlankRule::BlankRule(const CImage& frame, CImage& image)
{
    const bool frameBlank = frame.IsBlankUsed() != 0;
    const bool imageBlank = image.IsBlankUsed() != 0;
    if (frameBlank && !imageBlank) {
        image.SetBlankUsed(1);
        image.SetBlank(frame.GetBlank());
    }
    mode_ = frameBlank ? (imageBlank ? 1 : 2) : (imageBlank ? 3 : 4);
    frameTest_ = BlankTest(frame);
    imageTest_ = imageBlank ? BlankTest(image) : BlankTest();
    blank_ = mode_ == 4 ? 0 : image.GetBlank();
}

void SubtractDarkRow(float* samples, const float* dark, int count, const BlankRule& rule)
{
    if (rule.Mode() == 4) {
        for (int x = 0; x < count; ++x) {
            const float left = static_cast<float>(static_cast<double>(samples[x]) - dark[x]);
            samples[x] = left <= 0.0F ? 0.0F : left;
        }
        return;
    }
    const BlankTest frameTest = rule.FrameTest();
    const BlankTest imageTest = rule.ImageTest();
    const double blank = rule.Blank();
    for (int x = 0; x < count; ++x) {
        const double s = samples[x];
        const double d = dark[x];
        const bool isBlank = frameTest(d) | imageTest(s);
        const double left = isBlank ? blank : s - d;
        samples[x] = static_cast<float>(left <= 0.0 ? 0.0 : left);
    }
}

void DivideFlatRow(float* samples, const float* flat, int count, double mean, const BlankRule& rule)
{
    if (rule.Mode() == 4) {
        for (int x = 0; x < count; ++x) {
            const double divided = samples[x] * mean / flat[x];
            samples[x] = flat[x] > 0.0F ? static_cast<float>(divided) : samples[x];
        }
        return;
    }
    const BlankTest frameTest = rule.FrameTest();
    const BlankTest imageTest = rule.ImageTest();
    const double blank = rule.Blank();
    for (int x = 0; x < count; ++x) {
        const double s = samples[x];
        const double f = flat[x];
        const bool isBlank = frameTest(f) | imageTest(s);
        const double divided = isBlank ? blank : s * mean / f;
        samples[x] = f > 0.0 ? static_cast<float>(divided) : samples[x];
    }
}

} // namespace corvane
