#pragma once

#include <vector>

#include "io/formats/bytes.h"
#include "io/formats/unpacked.h"

namespace corvane::io {

/// Unpacks a gzip file, of one member or several, through zlib (RFC 1951, RFC 1952).
class GzipStream : public UnpackingStream {
public:
    explicit GzipStream(ByteSource& packed);
    ~GzipStream() override;
    std::size_t Next(MutableBytes bytes) override;

private:
    struct State;
    void Refill();
    bool BeginNextMember();

    ByteSource& packed_;
    std::uint64_t read_ = 0;
    std::vector<unsigned char> input_;
    std::unique_ptr<State> state_;
    bool ended_ = false;
};

/// Unpacks gzip or zlib data into `bytes` and returns how many there are. Throws DamagedData, also when there are more
/// than find room.
std::size_t Inflate(Bytes packed, MutableBytes bytes);

} // namespace corvane::io
