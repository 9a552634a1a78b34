#include "io/formats/fits_sums.h"

#include <algorithm>
#include <vector>

#include "io/formats/big_endian.h"

namespace corvane::io {
namespace {

/// The sum of words of 32 bits in ones' complement; bytes beyond the file's end count as 0.
std::uint32_t SumWords(ByteSource& source, std::uint64_t first, std::uint64_t end)
{
    constexpr std::size_t kStretchBytes = std::size_t{256} << 10;
    std::vector<unsigned char> piece(kStretchBytes);
    std::uint64_t sum = 0; // has room for the carries of 16 EiB
    while (first < end) {
        const MutableBytes wanted(piece.data(),
                                  static_cast<std::size_t>(std::min<std::uint64_t>(kStretchBytes, end - first)));
        const std::size_t got = source.Read(first, wanted);
        std::fill(piece.begin() + static_cast<std::ptrdiff_t>(got), piece.end(), 0);
        for (std::size_t i = 0; i < got; i += 4) {
            sum += LoadBigEndian<std::uint32_t>(piece.data() + i);
        }
        sum = (sum & UINT32_MAX) + (sum >> 32U);
        first = got < wanted.size() ? end : first + got;
    }
    return static_cast<std::uint32_t>((sum & UINT32_MAX) + (sum >> 32U));
}

std::uint32_t AddSums(std::uint32_t a, std::uint32_t b)
{
    const std::uint64_t sum = std::uint64_t{a} + b;
    return static_cast<std::uint32_t>((sum & UINT32_MAX) + (sum >> 32U));
}

} // namespace

Sums CompareSums(FitsFile& file)
{
    const FitsHdu& hdu = file.Hdu();
    const auto stated = hdu.keys.Integer("DATASUM");
    const bool hasWhole = !hdu.keys.Text("CHECKSUM").empty();
    if (!stated && !hasWhole) {
        return Sums::kHold;
    }
    const std::uint32_t data = SumWords(file.Source(), hdu.data, hdu.End());
    if (stated && *stated != data) {
        return Sums::kDataDiffer;
    }
    const std::uint32_t whole = AddSums(SumWords(file.Source(), hdu.start, hdu.data), data);
    if (!hasWhole || whole == 0 || whole == UINT32_MAX) {
        return Sums::kHold;
    }
    return stated ? Sums::kHeaderDiffers : Sums::kDataDiffer;
}

} // namespace corvane::io
