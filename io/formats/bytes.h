#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace corvane::io {

using Bytes = std::span<const unsigned char>;
using MutableBytes = std::span<unsigned char>;

/// Bytes that are read from any place: a file, or what a compressed file unpacks to. Members throw Error.
class ByteSource {
public:
    virtual ~ByteSource() = default;

    /// Fills `bytes` from `offset` on and returns how many there are: fewer where the source ends. Several threads may
    /// read at a time.
    virtual std::size_t Read(std::uint64_t offset, MutableBytes bytes) = 0;
    /// How many bytes there are, where that is known without reading them.
    virtual std::optional<std::uint64_t> Size() const = 0;
};

/// True when a file that begins as `start` is gzip- or LZW-compressed as a whole.
bool IsPacked(const std::string& start);

/// Opens an ordinary file, or one that is gzip- or LZW-compressed as a whole; `name` stands in errors for it.
///
/// What is unpacked is kept in files without names in the folder for images beyond the budget, as far as it has been
/// read: any amount takes little memory.
std::unique_ptr<ByteSource> OpenBytes(const std::string& name, const std::string& path);

} // namespace corvane::io
