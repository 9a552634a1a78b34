#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "corvane/core/image.h"
#include "io/reader.h"

namespace corvane::stack {

/// Frames on disk that are read by turns, band after band.
///
/// The first ones stay open from one band to the next, as many as 256 and the system allow; the others until they are
/// released. So any number of frames can be read, and memory does not grow with their samples. Several threads may read
/// at a time; those that read one frame take turns.
class FrameSet {
public:
    /// Opens a frame to learn what it is, and closes it again. Throws Error.
    void Add(const std::string& file);

    /// From now on the frame's rows come in the other order, and its header says so.
    void TurnUpsideDown(int frame);
    bool IsUpsideDown(int frame) const { return isTurned_[static_cast<std::size_t>(frame)]; }

    int Count() const { return static_cast<int>(readers_.size()); }
    bool IsEmpty() const { return readers_.empty(); }
    /// True while no frame has to be opened again for each band.
    bool StaysOpen() const { return Count() <= keptOpen_; }
    /// Bytes that rows of all of them may take together: no more than is of use as long as they stay open.
    std::uint64_t BandMemory() const;
    const io::FrameReader& Reader(int frame) const { return *readers_[static_cast<std::size_t>(frame)]; }
    const io::FrameInfo& Info(int frame) const { return Reader(frame).Info(); }
    const std::string& Path(int frame) const { return Reader(frame).Path(); }
    /// What the frame's file says, without samples.
    void Describe(int frame, CImage& record) const { Reader(frame).Describe(record); }

    /// Reads rows of all planes of a frame; plane p begins at samples + p * planeStride. Throws Error.
    void Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);
    /// Closes a frame that does not stay open, once nothing more is read of it for a while.
    void Release(int frame);

    /// Releases all files.
    void Close();

private:
    bool TryRead(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);
    void ReadPlanes(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);

    std::vector<std::unique_ptr<io::FrameReader>> readers_;
    std::vector<bool> isTurned_;
    std::deque<std::mutex> turns_; ///< one for each reader
    int keptOpen_ = 256;
    std::unique_ptr<std::shared_mutex> reading_ = std::make_unique<std::shared_mutex>(); ///< one closes, others read
};

} // namespace corvane::stack
