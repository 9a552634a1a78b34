#pragma once

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "corvane/core/blank.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane::stack {

/// What is known of a frame before its samples.
struct FrameFacts {
    int width = 0;
    int height = 0;
    int planes = 0;
    std::optional<int> blank{}; ///< the value that means nothing, if it declares one

    BlankTest IsBlank() const { return blank ? BlankTest(*blank) : BlankTest(); }
};

/// Frames, in files or in memory, of which rows are read on demand: where a run has several threads, different frames
/// from several of them at a time, but each frame from one.
class CORVANE_VISIBLE FrameSource {
public:
    virtual ~FrameSource() = default;
    virtual FrameFacts Facts(int frame) const = 0;
    /// Reads rows of all planes of a frame; plane p begins at samples + p * planeStride. Throws Error.
    virtual void Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) = 0;
};

/// Images in memory as frames.
class CORVANE_VISIBLE ImageSource : public FrameSource {
public:
    /// The images must outlive this.
    explicit ImageSource(std::vector<const CStlImage*> images) : images_(std::move(images)) {}

    FrameFacts Facts(int frame) const override;
    void Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) override;

private:
    std::vector<const CStlImage*> images_;
};

} // namespace corvane::stack
