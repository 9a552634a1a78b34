#pragma once

#include <optional>
#include <string>
#include <vector>

#include "corvane/core/run.h"
#include "stack/sort/header_facts.h"
#include "stack/sort/sort.h"

namespace corvane::stack {

/// A frame that was named, or lies in a folder that was.
struct FoundFrame {
    HeaderFacts facts;
    std::optional<FrameKind> role; ///< what it, or its folder, is named for; none among the lights
    bool isNamed = false;          ///< as a file

    /// True when it is named for what it is to be used as, so that it must be.
    bool IsDemanded() const { return isNamed && role; }
};

/// Opens all frames that options name, each once, and those of folders in the order of their names. Files that are
/// named come before those of folders, and lights that are named twice stay twice. One among the lights that an option
/// names for what it is counts once. What cannot be opened in a folder
/// goes to `night`.
std::vector<FoundFrame> FindFrames(const Options& asked, const std::vector<std::string>& skip, const Run& run,
                                   SortedNight& night);

} // namespace corvane::stack
