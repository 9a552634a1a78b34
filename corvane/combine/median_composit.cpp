#include "corvane/combine/median_composit.h"

#include <algorithm>
#include <vector>

#include "corvane/core/aligned_row.h"
#include "corvane/core/blank.h"
#include "corvane/core/sigma_clipping.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

constexpr int kSlots = 10; // the row store begins with as many and grows by as many

/// Marks blank samples as not usable. From the first sample outside on, a frame that used no blanks uses them.
void MarkBlanks(CStlImage& frame, const double* values, int* valid, int count)
{
    int from = 0;
    if (frame.IsBlankUsed() == 0) {
        from = static_cast<int>(std::find(valid, valid + count, 0) - valid);
        if (from == count) {
            return;
        }
        frame.SetBlankUsed(1);
    }
    const BlankTest isBlank(frame);
    for (int x = from; x < count; ++x) {
        valid[x] &= isBlank(values[x]) ? 0 : 1;
    }
}

} // namespace

CImgMedianComposit::CImgMedianComposit(CStlImage* target) : target_(target)
{
    lines_.SetSize(kSlots, kSlots);
    target_->ShowProgressInit(1, IDS_MEDIAN_COMPOSITE, target_->GetHeight());
}

CImgMedianComposit::~CImgMedianComposit()
{
    target_->ShowProgressEnd(nullptr);
    ForgetLines();
}

void CImgMedianComposit::Store(CStlImage* frame, int row, double dx, double dy, double angle)
{
    if (frameCount_ >= lines_.GetSize()) {
        lines_.SetSize(lines_.GetSize() + kSlots, kSlots);
    }
    const int width = target_->GetWidth();
    auto line = std::make_unique<CLineData>(width * target_->GetPlanes());
    const Alignment alignment = Alignment::Turned(dx, dy, angle, frame->GetStdCtr());
    const double outside = UndefinedValue(*frame);
    for (int plane = 0; plane < target_->GetPlanes(); ++plane) {
        double* const values = line->Values() + static_cast<std::ptrdiff_t>(plane) * width;
        int* const valid = line->Flags() + static_cast<std::ptrdiff_t>(plane) * width;
        const int framePlane = frame->IsColor() ? std::min(plane, frame->GetPlanes() - 1) : 0;
        SampleAlignedRow(*frame, framePlane, alignment, row, width, outside, values, valid);
        MarkBlanks(*frame, values, valid, width);
    }
    lines_[frameCount_++] = line.release();
    row_ = row;
}

void CImgMedianComposit::Calc()
{
    Combine(CombineMethod::kMedian);
}

void CImgMedianComposit::CalcClipping()
{
    Combine(CombineMethod::kClippedMedian);
}

void CImgMedianComposit::AddAvrCalcClipping()
{
    Combine(CombineMethod::kClippedMean);
}

void CImgMedianComposit::Combine(CombineMethod method)
{
    const auto frames = static_cast<std::size_t>(frameCount_);
    if (combiner_ == nullptr || method_ != method || combiner_->Frames() != frames) {
        method_ = method;
        combiner_ = std::make_unique<RowCombiner>(method, Coverage::kAll, std::vector(frames, 1.0), 0.0);
    }
    const int width = target_->GetWidth();
    std::vector<CombineLine> lines(frames);
    for (int i = 0; i < frameCount_; ++i) {
        lines[static_cast<std::size_t>(i)] = {lines_[i]->Values(), lines_[i]->Flags()};
    }
    for (int plane = 0; plane < target_->GetPlanes(); ++plane) {
        combiner_->Combine(lines.data(), width, {target_->GetImageAdr(0, row_, plane)});
        for (CombineLine& line : lines) {
            line.values += width;
            line.valid += width;
        }
    }
    ForgetLines();
    lines_.SetSize(kSlots, kSlots);
    target_->ShowProgress(1);
}

void CImgMedianComposit::ForgetLines()
{
    for (int i = 0; i < frameCount_; ++i) {
        delete lines_[i];
    }
    frameCount_ = 0;
    lines_.RemoveAll();
}

void CImgMedianComposit::SigmaClipping(int& count, double* values)
{
    if (count < 1) {
        return;
    }
    std::vector<WeightedValue> sorted;
    for (int i = 0; i < count; ++i) {
        sorted.push_back({values[i]});
    }
    const ClipBounds kept = SortAndClip(sorted);
    std::transform(sorted.begin(), sorted.end(), values, [](const WeightedValue& v) { return v.value; });
    count = static_cast<int>(std::remove_if(values, values + count, [&](double v) { return !kept.Has(v); }) - values);
}
