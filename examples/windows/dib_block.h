#pragma once

#include <memory>

#include <corvane/corvane.h>

namespace example {

/// Gives a block back to the system.
struct FreeBlock {
    void operator()(HGLOBAL block) const { GlobalFree(block); }
};

/// Owns a global memory block that holds a packed bitmap, or nothing.
using DibBlock = std::unique_ptr<void, FreeBlock>;

/// Keeps a block locked, so that its bytes have an address.
class LockedDib {
public:
    explicit LockedDib(HGLOBAL block) : block_(block), bytes_(GlobalLock(block)) {}
    ~LockedDib() { GlobalUnlock(block_); }
    LockedDib(const LockedDib&) = delete;
    LockedDib& operator=(const LockedDib&) = delete;

    /// The first byte of the block.
    char* Bytes() const { return static_cast<char*>(bytes_); }
    /// The bitmap's header, with which the block begins.
    const BITMAPINFO& Info() const { return *static_cast<const BITMAPINFO*>(bytes_); }
    /// The pixels of a bitmap without a colour table, which are all that `GetDib(24)` makes.
    const void* Pixels() const { return Bytes() + sizeof(BITMAPINFOHEADER); }

private:
    HGLOBAL block_;
    void* bytes_;
};

} // namespace example
