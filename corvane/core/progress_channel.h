#pragma once

#include "corvane/core/stl_image.h"

namespace corvane {

/// Keeps the progress channel of an image open, in counted mode, as long as it lives: however the work ends, with an
/// exception too, the window is told.
class ProgressChannel {
public:
    /// `text` is a string table id or the text itself.
    template <class Text>
    ProgressChannel(CStlImage& image, int show, Text text, int total) : image_(image)
    {
        image_.ShowProgressInit(show, text, total);
    }
    ~ProgressChannel() { image_.ShowProgressEnd(nullptr); }
    ProgressChannel(const ProgressChannel&) = delete;
    ProgressChannel& operator=(const ProgressChannel&) = delete;

    /// Counts steps, whatever keys are pressed.
    void Advance(int steps) const { image_.ShowProgress(steps); }

private:
    CStlImage& image_;
};

} // namespace corvane
