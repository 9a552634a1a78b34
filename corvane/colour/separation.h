#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// What is taken out of a colour image.
enum ColourComponent : int {
    kComponentRed = 0,
    kComponentGreen = 1,
    kComponentBlue = 2,
    kComponentCyan = 3,    ///< (G + B) / 2
    kComponentMagenta = 4, ///< (R + B) / 2
    kComponentYellow = 5,  ///< (R + G) / 2
};

} // namespace corvane

/// Takes one component out of a colour image: a plane, or the mean of two. Blanks are samples like others; a NaN in a
/// plane that is read stays one.
class CORVANE_API CImgSeparation : public CStlImage {
public:
    CImgSeparation() = default;
    /// A copy of an image, which must be made one plane before `Do`.
    explicit CImgSeparation(const CStlImage& source) : CStlImage(source) {}

    /// Makes this image, which must have one plane, a component (see corvane::ColourComponent) of `source`, which must
    /// have three planes and the same size; otherwise nothing changes.
    ///
    /// The display level is that of the plane, or the mean of those of the two; yellow shows by the level of magenta
    /// (kept of old). Other components write nothing and set no level.
    /// Reports "Splitting RGB image", one step a row; ESC is ignored. When images do not fit, progress is opened and
    /// closed at once.
    void Do(CStlImage* source, int component, int showProgress);
    /// The same, as a part of a run.
    void Do(const CStlImage& source, int component, const corvane::Run& run);
};
