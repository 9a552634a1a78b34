#pragma once

#include <memory>
#include <string>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "stack/calibrate/frame_set.h"

namespace corvane::stack {

/// What a master is made of.
struct MasterRecipe {
    std::string kind; ///< "bias", "dark", "flat", "flat-dark"
    const FrameSet& frames;
    const FrameSet* takenOff = nullptr; ///< from each frame; null for nothing
    std::string takenOffKind{};         ///< of these
};

/// A folder in which masters are kept, as FITS files of floats, from one run to the next.
///
/// Each says in its header what it is (IMAGETYP = 'Master Dark'), how many frames it is made of (NCOMBINE), what was
/// taken off (CALSTAT), and in MSTKEY a number for everything that it depends on: the version, the names, sizes and
/// times of the files, and the order of their rows. One frame alone is no master. One that declares a blank is not
/// kept, since floats in files have NaN alone.
class MasterStore {
public:
    /// Nothing is kept without a folder; one that is not there is made when a master is to be kept.
    MasterStore(std::string folder, const Run& run) : folder_(std::move(folder)), run_(run) {}

    /// The master that was kept, with the samples that it had; null when there is none of just these files.
    std::shared_ptr<CStlImage> Find(const MasterRecipe& recipe) const;
    /// Keeps a master. Throws Error.
    void Keep(const MasterRecipe& recipe, const CStlImage& master) const;

private:
    bool IsKept(const MasterRecipe& recipe) const { return !folder_.empty() && recipe.frames.Count() > 1; }
    std::string PathOf(const MasterRecipe& recipe, const std::string& key) const;

    std::string folder_;
    const Run& run_;
};

} // namespace corvane::stack
