#include "stack/calibrate/calibrate.h"

#include <vector>

#include "corvane/core/gaps.h"

namespace corvane::stack {

namespace {

/// A row of a master; one plane serves all.
const float* MasterRow(const CStlImage& master, int plane, int row)
{
    return master.GetImageAdr(0, row, master.IsColor() != 0 ? plane : 0, 1);
}

void CopyBlank(const CImage& from, CImage& to)
{
    to.SetBlankUsed(from.IsBlankUsed());
    to.SetBlank(from.GetBlank());
}

/// What is taken off as it is: the dark, or else the bias; null for neither.
const CStlImage* PlainDark(const Masters& masters)
{
    return masters.dark != nullptr ? masters.dark.get() : masters.bias.get();
}

/// The blank setting of what is taken off. A scaled dark is blank where its bias is, too.
void DescribeDark(const Masters& masters, bool isScaled, CImage& record)
{
    const bool hasOwn = PlainDark(masters)->IsBlankUsed() != 0;
    CopyBlank(isScaled && !hasOwn ? *masters.bias : *PlainDark(masters), record);
}

/// bias + (dark - bias) * scale, blank where either is.
void ScaleDarkRow(const Masters& masters, double scale, int plane, int row, std::vector<float>& scaled)
{
    const float* dark = MasterRow(*masters.dark, plane, row);
    const float* bias = MasterRow(*masters.bias, plane, row);
    const BlankTest isDarkBlank(*masters.dark);
    const BlankTest isBiasBlank(*masters.bias);
    const double blank = masters.dark->IsBlankUsed() != 0 ? masters.dark->GetBlank() : masters.bias->GetBlank();
    for (std::size_t x = 0; x < scaled.size(); ++x) {
        const double b = bias[x];
        const double d = dark[x];
        const double both = isBiasBlank(b) ? blank : b + (d - b) * scale;
        scaled[x] = static_cast<float>(isDarkBlank(d) ? blank : both);
    }
}

void AddPedestal(float* samples, int count, double pedestal, const BlankTest& isBlank)
{
    for (int x = 0; x < count; ++x) {
        const double s = samples[x];
        samples[x] = static_cast<float>(isBlank(s) ? s : s + pedestal);
    }
}

} // namespace

FrameCalibration PrepareFrame(const CImage& record, const Masters& masters, double pedestal, double darkScale)
{
    FrameCalibration frame;
    frame.isBlank = BlankTest(record);
    frame.pedestal = pedestal;
    frame.darkScale = darkScale;
    frame.isDarkScaled = masters.dark != nullptr && masters.bias != nullptr && darkScale != 1.0;
    CImage image;
    CopyBlank(record, image);
    if (PlainDark(masters) != nullptr) {
        CImage dark;
        DescribeDark(masters, frame.isDarkScaled, dark);
        frame.darkRule = BlankRule(dark, image);
    }
    if (masters.flat != nullptr) {
        frame.flatRule = BlankRule(*masters.flat, image);
    }
    if (image.IsBlankUsed() != 0) {
        frame.blank = image.GetBlank();
    }
    return frame;
}

void CalibrateRows(const FrameCalibration& frame, const Masters& masters, int plane, int firstRow, int rowCount,
                   int width, float* samples)
{
    const CStlImage* plainDark = PlainDark(masters);
    std::vector<float> scaled(frame.isDarkScaled ? width : 0);
    for (int row = firstRow; row < firstRow + rowCount; ++row, samples += width) {
        if (frame.pedestal != 0.0) {
            AddPedestal(samples, width, frame.pedestal, frame.isBlank);
        }
        if (frame.isDarkScaled) {
            ScaleDarkRow(masters, frame.darkScale, plane, row, scaled);
        }
        if (plainDark != nullptr) {
            const float* dark = frame.isDarkScaled ? scaled.data() : MasterRow(*plainDark, plane, row);
            SubtractDarkRow(samples, dark, width, frame.darkRule);
        }
        if (masters.flat != nullptr) {
            const float* flat = MasterRow(*masters.flat, plane, row);
            DivideFlatRow(samples, flat, width, masters.flatMean, frame.flatRule);
            if (masters.flatGaps > 0) {
                CopyGaps(flat, samples, width);
            }
        }
    }
}

} // namespace corvane::stack
