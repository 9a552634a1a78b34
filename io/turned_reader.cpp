#include "io/turned_reader.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "io/formats/cards.h"
#include "io/row_order.h"

namespace corvane::io {
namespace {

FrameInfo Turned(FrameInfo info)
{
    Frame frame;
    frame.header = std::move(info.header);
    ReadCoordinates(frame.header, frame.image);
    DescribeUpsideDown(info.height, frame, frame.image);
    WriteCoordinates(frame.image, frame.header);
    info.header = std::move(frame.header);
    return info;
}

class TurnedReader final : public FrameReader {
public:
    explicit TurnedReader(std::unique_ptr<FrameReader> reader)
        : FrameReader(Turned(reader->Info())), reader_(std::move(reader))
    {}

    void Close() override { reader_->Close(); }

private:
    void Read(int plane, int firstRow, int rowCount, float* samples) override
    {
        reader_->ReadRows(plane, Height() - firstRow - rowCount, rowCount, samples);
        const auto width = static_cast<std::ptrdiff_t>(Width());
        float* low = samples;
        for (float* high = samples + (rowCount - 1) * width; low < high; low += width, high -= width) {
            std::swap_ranges(low, low + width, high);
        }
    }

    std::unique_ptr<FrameReader> reader_;
};

} // namespace

std::unique_ptr<FrameReader> TurnedUpsideDown(std::unique_ptr<FrameReader> reader)
{
    return std::make_unique<TurnedReader>(std::move(reader));
}

} // namespace corvane::io
