#pragma once

#include <mutex>
#include <vector>

#include "corvane/platform/memory.h"
#include "io/formats/bytes.h"

namespace corvane::io {

/// Bytes that come one after the other out of compressed ones.
class UnpackingStream {
public:
    virtual ~UnpackingStream() = default;
    /// Fills `bytes` and returns how many there were: fewer at the end. Throws DamagedData.
    virtual std::size_t Next(MutableBytes bytes) = 0;
};

/// The stream for a file for which `IsPacked` is true. Throws DamagedData.
std::unique_ptr<UnpackingStream> OpenUnpacking(const std::string& start, ByteSource& packed);

/// What a compressed file unpacks to, as far as it has been read.
class UnpackedBytes : public ByteSource {
public:
    UnpackedBytes(std::string name, std::unique_ptr<ByteSource> packed, std::unique_ptr<UnpackingStream> stream);

    std::size_t Read(std::uint64_t offset, MutableBytes bytes) override;
    std::optional<std::uint64_t> Size() const override { return std::nullopt; }

private:
    void UnpackNext();

    std::string name_;
    std::unique_ptr<ByteSource> packed_;
    std::unique_ptr<UnpackingStream> stream_; ///< null after its end
    std::vector<std::unique_ptr<platform::SpillFile>> parts_;
    std::uint64_t end_ = 0; ///< bytes that are unpacked
    std::mutex mutex_;
};

} // namespace corvane::io
