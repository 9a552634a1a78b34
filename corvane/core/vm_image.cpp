#include "corvane/core/vm_image.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

#include "corvane/core/memory_budget.h"
#include "corvane/core/pager.h"
#include "corvane/core/progress_notice.h"
#include "corvane/core/threads.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/platform/workers.h"

namespace {

// Behind this, offsets within a store would no longer fit the difference of two addresses.
constexpr std::uint64_t kMostBytes = std::numeric_limits<std::int64_t>::max() / 2;

std::uint64_t StoreBytes(int width, int height, int planes, int bytesPerSample)
{
    std::uint64_t bytes = 1;
    for (const int factor : {width, height, planes, bytesPerSample}) {
        if (factor <= 0) {
            return 0;
        }
        if (bytes > kMostBytes / static_cast<std::uint64_t>(factor)) {
            AfxThrowMemoryException();
        }
        bytes *= static_cast<std::uint64_t>(factor);
    }
    return bytes;
}

/// Copies with several threads, a share for each: the larger it is, the sooner the system copies past the caches. A
/// copy comes out the same in any shares.
void CopyBytes(const unsigned char* from, std::uint64_t bytes, unsigned char* to)
{
    constexpr std::uint64_t kLeastShare = 1 << 22;
    const std::uint64_t most = std::max<std::uint64_t>(bytes / kLeastShare, 1);
    const std::uint64_t shares = std::min(static_cast<std::uint64_t>(corvane::Threads()), most);
    const auto copy = [=](int i) {
        const std::uint64_t first = bytes / shares * static_cast<std::uint64_t>(i);
        const bool isLast = static_cast<std::uint64_t>(i) + 1 == shares;
        std::memcpy(to + first, from + first, isLast ? bytes - first : bytes / shares);
    };
    const auto count = static_cast<int>(shares);
    corvane::platform::ForBlocks(count, count, copy, [](int) {});
}

} // namespace

CVmImage::CVmImage(int width, int height, int planes, int bytesPerSample, Contents contents)
    : width_(width), height_(height), planes_(planes), bytesPerSample_(bytesPerSample),
      bytes_(StoreBytes(width, height, planes, bytesPerSample)), memory_(bytes_, contents), data_(memory_.Data())
{
    if (data_ == nullptr && bytes_ > 0) {
        pager_ = std::make_unique<corvane::Pager>(corvane::SpillFolder(), bytes_, RowBytes());
    }
}

CVmImage::CVmImage(std::shared_ptr<unsigned char> memory, int width, int height, int planes, int bytesPerSample)
    : width_(width), height_(height), planes_(planes), bytesPerSample_(bytesPerSample),
      bytes_(StoreBytes(width, height, planes, bytesPerSample)), adopted_(std::move(memory)), data_(adopted_.get())
{}

CVmImage::CVmImage(const CVmImage& other, HWND window, const char* text)
    : CVmImage(other.width_, other.height_, other.planes_, other.bytesPerSample_, Contents::kUndefined)
{
    corvane::ProgressNotice notice(window, text, bytes_);
    if (bytes_ > 0 && pager_ == nullptr && other.pager_ == nullptr) {
        CopyBytes(other.data_, bytes_, data_);
        notice.Advance(bytes_);
        return;
    }
    std::uint64_t chunk = bytes_;
    for (const CVmImage* store : {&other, static_cast<const CVmImage*>(this)}) {
        if (store->pager_ != nullptr) {
            chunk = std::min(chunk, store->pager_->PageBytes());
        }
    }
    for (std::uint64_t offset = 0; offset < bytes_; offset += chunk) {
        const std::uint64_t count = std::min(chunk, bytes_ - offset);
        std::memcpy(GetImageAdr(offset, 0), other.GetImageAdr(offset, 1), count);
        notice.Advance(count);
    }
}

CVmImage::~CVmImage() = default;

int CVmImage::Unlock(void* handle) const
{
    if (pager_ != nullptr) {
        return pager_->Unhold(handle) ? 1 : 0;
    }
    const auto* const address = static_cast<const unsigned char*>(handle);
    const bool isHeld = locks_ > 0 && !std::less<>()(address, data_) && std::less<>()(address, data_ + bytes_);
    locks_ -= isHeld ? 1 : 0;
    return isHeld ? 1 : 0;
}

void CVmImage::UnlockAll() const
{
    if (pager_ != nullptr) {
        pager_->UnholdAll();
    }
    locks_ = 0;
}

std::uint64_t CVmImage::GetResidentBytes() const
{
    return pager_ == nullptr ? bytes_ : static_cast<std::uint64_t>(pager_->State().resident) * pager_->PageBytes();
}

int CVmImage::GetRowsPerPage() const
{
    return pager_ == nullptr ? height_ * planes_ : static_cast<int>(pager_->PageBytes() / RowBytes());
}

// Every page is written back before its memory is let go, so a page that is only read needs no path of its own.
unsigned char* CVmImage::GetHeldAdr(std::uint64_t byteOffset, int /*readOnly*/, int hold, void** lockHandle) const
{
    const bool held = hold == 2 && bytes_ > 0;
    unsigned char* const address = pager_ != nullptr ? pager_->Touch(byteOffset, held) : data_ + byteOffset;
    if (held) {
        ++locks_;
        if (lockHandle != nullptr) {
            *lockHandle = address;
        }
    }
    return address;
}
