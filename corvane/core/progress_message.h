#pragma once

#include "corvane/platform/types.h"

namespace corvane {

/// The window message that carries progress.
inline constexpr UINT kProgressMessage = WM_USER + 0x70;

/// Its word parameter: what the message says, and what its long parameter holds.
enum ProgressWord : int {
    kProgressStart = 0, ///< pointer to the text of the operation, good during the call
    kProgressStep = 1,  ///< percent done, or the caller's own value in direct mode
    kProgressEnd = 2,   ///< pointer to a closing text, or null
    kProgressText = 4,  ///< pointer to a text to show while running
};

} // namespace corvane
