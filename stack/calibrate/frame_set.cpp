#include "stack/calibrate/frame_set.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <utility>

#include "corvane/core/error.h"
#include "io/turned_reader.h"

namespace corvane::stack {

namespace {

constexpr std::uint64_t kBandOfOpenFrames = 128U << 20U;

} // namespace

void FrameSet::Add(const std::string& file)
{
    readers_.push_back(io::OpenFrame(file));
    readers_.back()->Close();
    isTurned_.push_back(false);
    turns_.emplace_back();
}

void FrameSet::TurnUpsideDown(int frame)
{
    std::unique_ptr<io::FrameReader>& reader = readers_[static_cast<std::size_t>(frame)];
    reader = io::TurnedUpsideDown(std::move(reader));
    isTurned_[static_cast<std::size_t>(frame)] = !IsUpsideDown(frame);
}

std::uint64_t FrameSet::BandMemory() const
{
    return StaysOpen() ? kBandOfOpenFrames : std::numeric_limits<std::uint64_t>::max();
}

void FrameSet::Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    if (TryRead(frame, firstRow, rowCount, samples, planeStride)) {
        return;
    }
    // The system may have no more files to give: alone it must work, or the error is the frame's own.
    const std::unique_lock alone(*reading_);
    Close();
    keptOpen_ = std::min(frame, keptOpen_) / 2;
    ReadPlanes(frame, firstRow, rowCount, samples, planeStride);
}

void FrameSet::Release(int frame)
{
    const std::shared_lock besideOthers(*reading_);
    if (frame >= keptOpen_) {
        const std::lock_guard turn(turns_[static_cast<std::size_t>(frame)]);
        readers_[static_cast<std::size_t>(frame)]->Close();
    }
}

/// Reads beside other threads; false where that fails.
bool FrameSet::TryRead(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    const std::shared_lock besideOthers(*reading_);
    try {
        ReadPlanes(frame, firstRow, rowCount, samples, planeStride);
        return true;
    } catch (const Error&) {
        return false;
    }
}

void FrameSet::Close()
{
    for (const auto& reader : readers_) {
        reader->Close();
    }
}

void FrameSet::ReadPlanes(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    const std::lock_guard turn(turns_[static_cast<std::size_t>(frame)]);
    io::FrameReader& reader = *readers_[static_cast<std::size_t>(frame)];
    for (int plane = 0; plane < reader.Planes(); ++plane) {
        reader.ReadRows(plane, firstRow, rowCount, samples + plane * planeStride);
    }
}

} // namespace corvane::stack
