#pragma once

#include <memory>

#include "corvane/combine/row_combiner.h"
#include "corvane/core/line_data.h"
#include "corvane/core/stl_image.h"

/// Stacks aligned frames into a target image, a row at a time: for each row, `Store` every frame, then call one of
/// `Calc`, `CalcClipping` and `AddAvrCalcClipping`, which writes the row and forgets the frames' samples. Memory stays
/// at one row a frame.
///
/// Where a frame has nothing at a pixel (outside or blank) the pixel becomes that frame's undefined value. Where a
/// frame has NaN the pixel becomes NaN. The target must have its final size and planes; its progress reports
/// "Processing median composite..." from construction to destruction and cannot be cancelled.
class CORVANE_API CImgMedianComposit : public CStlImage {
public:
    /// Opens the target's progress. The target is not owned and must outlive this object.
    explicit CImgMedianComposit(CStlImage* target);
    ~CImgMedianComposit() override;
    CImgMedianComposit(const CImgMedianComposit&) = delete;
    CImgMedianComposit& operator=(const CImgMedianComposit&) = delete;

    /// Samples one target row of a frame that is placed with a shift [pixels] and a turn [degrees, clockwise on screen]
    /// about the frame's standard centre. A frame that uses no blanks and does not reach every pixel of the row is
    /// made to use them from there on.
    void Store(CStlImage* frame, int row, double dx, double dy, double angle);
    /// Writes the median; of an even number of frames the upper of the two middle values.
    void Calc();
    /// Writes the median of what lies within 3 sigma of the median; the smallest value when nothing does.
    void CalcClipping();
    /// Writes the mean of what lies within 3 sigma of the median; NaN when nothing does.
    void AddAvrCalcClipping();

    /// Sorts `count` values and keeps those strictly within 3 standard deviations (of all values about their mean) of
    /// the median, in sorted order at the front; count becomes their number. With none left, count becomes 0 and the
    /// values stay sorted.
    static void SigmaClipping(int& count, double* values);

private:
    void Combine(corvane::CombineMethod method);
    void ForgetLines();

    CStlImage* target_;
    CArray<CLineData*, CLineData*> lines_;
    int frameCount_ = 0;
    int row_ = 0;
    corvane::CombineMethod method_ = corvane::CombineMethod::kMedian;
    std::unique_ptr<corvane::RowCombiner> combiner_; // made anew when method or number of frames changes
};
