#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "corvane/platform/export.h"

namespace corvane::platform {

/// Memory of the machine in bytes.
CORVANE_VISIBLE std::uint64_t PhysicalMemory();

/// Size of the system's pages in bytes, a power of two.
CORVANE_VISIBLE std::size_t PageSize();

/// Zeroed memory for this process alone, aligned to pages; null when there is none and for 0 bytes.
/// Where the system gives large pages to ordinary programs, 2 MiB or more are aligned to 2 MiB and use them.
CORVANE_VISIBLE void* AllocatePages(std::size_t bytes);

/// Gives memory from AllocatePages back; `bytes` as it was asked for. Null is ignored.
CORVANE_VISIBLE void FreePages(void* memory, std::size_t bytes) noexcept;

/// Says that the contents are no longer needed: the system may take the frames back until they are next written.
/// The memory stays usable; whole pages inside the range lose their contents, bytes around it keep theirs.
CORVANE_VISIBLE void OfferPages(void* memory, std::size_t bytes) noexcept;

/// The system's folder for temporary files, in UTF-8 where the system has wide names.
CORVANE_VISIBLE std::string TemporaryFolder();

/// A temporary file, mapped whole as one contiguous range of zeroed bytes. It is gone with the object, or the process;
/// where the system has files without names, it has none.
class CORVANE_VISIBLE SpillFile {
public:
    /// Makes the file in `folder`, named as `TemporaryFolder` is, with space for `bytes` (at least 1) allocated on the
    /// disk. Throws CMemoryException when the folder, the space or the address range is not to be had.
    SpillFile(const std::string& folder, std::uint64_t bytes);
    ~SpillFile();
    SpillFile(const SpillFile&) = delete;
    SpillFile& operator=(const SpillFile&) = delete;

    unsigned char* Data() const { return data_; }
    std::uint64_t Size() const { return size_; }

    /// Starts to write a part back and lets go of its frames. Addresses and contents stay: a later access reads the
    /// file. The part is cut to the file and widened to whole pages.
    void Release(std::uint64_t offset, std::uint64_t bytes) noexcept;

private:
    void ReleasePages(std::size_t offset, std::size_t bytes) noexcept;

    std::intptr_t file_;
    unsigned char* data_;
    std::uint64_t size_;
};

} // namespace corvane::platform
