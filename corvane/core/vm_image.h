#pragma once

#include <cstdint>
#include <memory>

#include "corvane/core/sample_memory.h"
#include "corvane/platform/export.h"
#include "corvane/platform/types.h"

namespace corvane {
class Pager;
}

/// The samples of an image: plane after plane, row after row, one contiguous range of addresses.
///
/// Sample (x, y, plane) lies at byte offset ((plane * height + y) * width + x) * bytes per sample, and an address stays
/// good as long as the store lives. A store within the memory budget is plain memory. A larger one is kept in a file
/// and comes into memory by pages of whole rows; `GetImageAdr` is what tells it which page is in use. It stays within
/// the budget whether callers release each row, release all at the end, or never release anything.
class CORVANE_API CVmImage {
public:
    /// What the samples of a new store hold; undefined contents are for a caller who writes every one of them.
    using Contents = corvane::SampleMemory::Contents;

    /// Makes a store of width x height x planes samples. Sizes of zero or less make an empty one.
    /// Throws CMemoryException when neither memory nor the spill folder has room.
    CVmImage(int width, int height, int planes, int bytesPerSample, Contents contents = Contents::kZero);
    /// Uses memory that somebody else owns, at least width x height x planes samples in the order above, rows without
    /// gaps between them; it is not copied, not cleared, never paged, and not counted in the budget. It is let go when
    /// the store ends, by the pointer's own deleter.
    CVmImage(std::shared_ptr<unsigned char> memory, int width, int height, int planes, int bytesPerSample);
    /// Copies a store. With a window and a text, the window gets the messages of the progress channel.
    CVmImage(const CVmImage& other, HWND window = nullptr, const char* text = nullptr);
    ~CVmImage();
    CVmImage& operator=(const CVmImage&) = delete;

    /// @name Size
    /// @{
    int GetWidth() const { return width_; }
    int GetHeight() const { return height_; }
    int GetPlanes() const { return planes_; }
    int GetBytesSample() const { return bytesPerSample_; }
    std::uint64_t GetBytes() const { return bytes_; }
    /// @}

    /// The address of the byte at `byteOffset`; an offset behind the last sample gives the last sample.
    /// With hold = 2 its page is locked until `Unlock(handle)`, if there is a place for a handle, or `UnlockAll`: it
    /// stays in memory as long as the budget has room for pages besides. Null when empty. Threads may share it unheld.
    unsigned char* GetImageAdr(std::uint64_t byteOffset, int readOnly, int hold = 0, void** lockHandle = nullptr) const
    {
        if (byteOffset >= bytes_) {
            byteOffset = bytes_ - LastSampleBytes();
        }
        return pager_ == nullptr && hold == 0 ? data_ + byteOffset : GetHeldAdr(byteOffset, readOnly, hold, lockHandle);
    }

    /// Releases one lock, given its handle or any address of its page, which without paging is the whole store;
    /// non-zero when there was one.
    int Unlock(void* handle) const;
    /// Releases every lock.
    void UnlockAll() const;

    /// True when the samples are kept in a file.
    bool IsPaged() const { return pager_ != nullptr; }
    /// Bytes of the store that are in memory now.
    std::uint64_t GetResidentBytes() const;
    /// Rows that one page holds; all of them when the store is not paged.
    int GetRowsPerPage() const;

private:
    std::uint64_t LastSampleBytes() const
    {
        const auto sample = static_cast<std::uint64_t>(bytesPerSample_);
        return bytes_ < sample ? bytes_ : sample;
    }
    std::uint64_t RowBytes() const
    {
        return static_cast<std::uint64_t>(width_) * static_cast<std::uint64_t>(bytesPerSample_);
    }
    unsigned char* GetHeldAdr(std::uint64_t byteOffset, int readOnly, int hold, void** lockHandle) const;

    int width_;
    int height_;
    int planes_;
    int bytesPerSample_;
    std::uint64_t bytes_;
    corvane::SampleMemory memory_;
    std::shared_ptr<unsigned char> adopted_; ///< somebody else's memory; null otherwise
    std::unique_ptr<corvane::Pager> pager_;
    unsigned char* data_ = nullptr;
    mutable std::uint64_t locks_ = 0; ///< of a store that is not paged
};
