#include "stack/calibrate/frame_set.h"

#include <algorithm>
#include <utility>

#include "corvane/core/error.h"
#include "io/turned_reader.h"

namespace corvane::stack {

void FrameSet::Add(const std::string& file)
{
    readers_.push_back(io::OpenFrame(file));
    readers_.back()->Close();
}

void FrameSet::TurnUpsideDown(int frame)
{
    std::unique_ptr<io::FrameReader>& reader = readers_[static_cast<std::size_t>(frame)];
    reader = io::TurnedUpsideDown(std::move(reader));
}

void FrameSet::Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    try {
        ReadPlanes(frame, firstRow, rowCount, samples, planeStride);
    } catch (const Error&) {
        // The system may have no more files to give: with half of them it must work, or the error is the frame's own.
        if (frame == 0 || keptOpen_ == 0) {
            throw;
        }
        Close();
        keptOpen_ = std::min(frame, keptOpen_) / 2;
        ReadPlanes(frame, firstRow, rowCount, samples, planeStride);
    }
    if (frame >= keptOpen_) {
        readers_[static_cast<std::size_t>(frame)]->Close();
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
    io::FrameReader& reader = *readers_[static_cast<std::size_t>(frame)];
    for (int plane = 0; plane < reader.Planes(); ++plane) {
        reader.ReadRows(plane, firstRow, rowCount, samples + plane * planeStride);
    }
}

} // namespace corvane::stack
