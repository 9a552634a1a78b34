#pragma once

#include <cstdint>
#include <string>

#include "corvane/platform/export.h"

namespace corvane {

/// The memory that the samples of all images of the process may take together, in bytes.
///
/// It starts as half of the physical memory, or as the environment variable CORVANE_MEMORY says: a number of bytes,
/// or one with K, M or G (powers of 1024); a text that is no such number does not count. An image that does not fit is
/// kept in a file and comes into memory by pages.
CORVANE_API std::uint64_t MemoryBudget();

/// Sets the budget for images made from now on [bytes, 1 MiB or more; less counts as 1 MiB].
CORVANE_API void SetMemoryBudget(std::uint64_t bytes);

/// Reads an amount of memory as CORVANE_MEMORY takes it: digits, then K, M, G or nothing. False if it is not one.
CORVANE_API bool ParseMemorySize(const std::string& text, std::uint64_t& bytes);

/// The folder for the files of images beyond the budget: CORVANE_SPILL_DIR, or the system's temporary folder.
CORVANE_API std::string SpillFolder();

/// Sets the folder for images made from now on; an empty name goes back to the default.
CORVANE_API void SetSpillFolder(const std::string& folder);

/// Bytes now in memory, of the samples of all images and of what is reserved besides.
CORVANE_API std::uint64_t MemoryInUse();

/// Counts memory that is no image's, such as work buffers, as in use as long as it lives: images made meanwhile go to a
/// file where the budget has no room for both. It refuses nothing itself, also beyond the budget.
class CORVANE_API Reservation {
public:
    explicit Reservation(std::uint64_t bytes);
    ~Reservation();
    Reservation(const Reservation&) = delete;
    Reservation& operator=(const Reservation&) = delete;

private:
    std::uint64_t bytes_;
};

} // namespace corvane
