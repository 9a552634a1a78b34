#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "io/reader.h"

namespace corvane::io {

/// Whole samples of a decoded frame: row after row, the planes' samples of a pixel side by side.
using DecodedSamples = std::vector<std::uint16_t>;

/// A reader of a format that cannot be read by bands: the frame is decoded as a whole.
///
/// Decoded frames of all readers are kept while they take no more than MostBytes together; the last one always is. As
/// many again are decoded at a time, one at least.
class DecodedReader : public FrameReader {
public:
    ~DecodedReader() override;
    void Close() override;

    /// A quarter of the memory budget.
    static std::uint64_t MostBytes();

protected:
    explicit DecodedReader(FrameInfo info) : FrameReader(std::move(info)) {}

private:
    void Read(int plane, int firstRow, int rowCount, float* samples) override;
    virtual DecodedSamples Decode() = 0;
    std::shared_ptr<const DecodedSamples> Decoded();
};

} // namespace corvane::io
