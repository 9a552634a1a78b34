#pragma once

#include <array>
#include <vector>

#include "io/formats/unpacked.h"

namespace corvane::io {

/// Unpacks a file of the Unix program compress (.Z): LZW codes of 9 to 16 bits (Welch 1984, Computer 17, 8).
class LzwStream : public UnpackingStream {
public:
    explicit LzwStream(ByteSource& packed);
    std::size_t Next(MutableBytes bytes) override;

private:
    bool FillGroup();
    int NextCode();
    void Expand(int code);

    static constexpr int kMostCodes = 1 << 16;

    ByteSource& packed_;
    std::uint64_t read_ = 3; ///< behind the magic number and the flags
    int mostBits_ = 0;
    int bits_ = 9;  ///< of a code
    int first_ = 0; ///< the first code that stands for a string
    int used_ = 0;  ///< codes that have a meaning
    int previous_ = -1;
    unsigned char previousStart_ = 0;
    std::array<unsigned char, 16> group_{}; ///< codes come in groups of eight, which are `bits_` bytes
    int groupBits_ = 0;
    int taken_ = 0; ///< bits of the group
    std::vector<std::uint16_t> prefix_;
    std::vector<unsigned char> last_;
    std::vector<unsigned char> pending_; ///< decoded, in reverse
};

} // namespace corvane::io
