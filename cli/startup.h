#pragma once

namespace corvane::cli {

/// Ends the time before main, when the statics of the option parser are set up and nobody catches what they throw:
/// until then the process ends with a message and status 1 if there is not enough memory.
void EndStartup();

} // namespace corvane::cli
