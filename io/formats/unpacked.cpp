#include "io/formats/unpacked.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "io/formats/damaged_data.h"
#include "io/formats/inflate.h"
#include "io/formats/lzw.h"

namespace corvane::io {
namespace {

// Every part has the same size, so that a place tells its part.
constexpr std::size_t kPartBytes = std::size_t{8} << 20;

constexpr std::string_view kGzipStart = "\x1f\x8b";
constexpr std::string_view kLzw = "\x1f\x9d";

} // namespace

bool IsPacked(const std::string& start)
{
    return start.starts_with(kGzipStart) || start.starts_with(kLzw);
}

std::unique_ptr<UnpackingStream> OpenUnpacking(const std::string& start, ByteSource& packed)
{
    if (start.starts_with(kGzipStart)) {
        return std::make_unique<GzipStream>(packed);
    }
    return std::make_unique<LzwStream>(packed);
}

UnpackedBytes::UnpackedBytes(std::string name, std::unique_ptr<ByteSource> packed,
                             std::unique_ptr<UnpackingStream> stream)
    : name_(std::move(name)), packed_(std::move(packed)), stream_(std::move(stream))
{}

void UnpackedBytes::UnpackNext()
{
    try {
        if (end_ % kPartBytes == 0) {
            parts_.push_back(std::make_unique<platform::SpillFile>(SpillFolder(), kPartBytes));
        }
        constexpr std::size_t kStep = std::size_t{256} << 10; // of which a part is a multiple
        platform::SpillFile& part = *parts_.back();
        const std::size_t got = stream_->Next({part.Data() + end_ % kPartBytes, kStep});
        end_ += got;
        if (got < kStep) {
            stream_.reset();
        } else if (end_ % kPartBytes == 0) {
            part.Release(0, kPartBytes);
        }
    } catch (const DamagedData& damage) {
        throw FileError(name_, "cannot be unpacked: " + std::string(damage.what()));
    } catch (const std::bad_alloc&) {
        throw FileError(name_, "there is no room in the folder '" + SpillFolder() + "' to unpack it");
    }
}

std::size_t UnpackedBytes::Read(std::uint64_t offset, MutableBytes bytes)
{
    const std::lock_guard lock(mutex_);
    std::size_t done = 0;
    while (done < bytes.size()) {
        const std::uint64_t at = offset + done;
        if (at >= end_) {
            if (stream_ == nullptr) {
                break;
            }
            UnpackNext();
            continue;
        }
        const std::size_t inPart = at % kPartBytes;
        const std::size_t count =
            std::min({bytes.size() - done, kPartBytes - inPart, static_cast<std::size_t>(end_ - at)});
        std::memcpy(bytes.data() + done, parts_[at / kPartBytes]->Data() + inPart, count);
        done += count;
    }
    return done;
}

} // namespace corvane::io
