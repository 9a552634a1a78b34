#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "corvane/core/fits_extension.h"
#include "io/formats/bytes.h"
#include "io/formats/fits_keys.h"
#include "io/header.h"

namespace corvane::io {

/// One header and the data behind it.
struct FitsHdu {
    int number = 0;    ///< counted from 0
    std::string cards; ///< all of them, 80 characters each, without END
    FitsKeys keys;
    std::uint64_t start = 0;     ///< where the header begins in the file
    std::uint64_t data = 0;      ///< where the data begin
    std::uint64_t dataBytes = 0; ///< without the filling of their last block; the largest number when beyond it

    /// True when the HDU is a table whose rows are the tiles of an image.
    bool IsCompressedImage() const;
    /// Where the next HDU begins.
    std::uint64_t End() const;
    /// Its number, name and sizes in a few words: "1 SCI: 721 x 720 x 3".
    std::string Label() const;
    /// Cards that are carried over.
    Header CarriedCards() const;
    /// The HDU with all of its cards.
    CFitsExtension Extension() const;
};

/// The image in an HDU.
struct FitsImage {
    int bits = 0;                 ///< BITPIX
    std::vector<long long> sizes; ///< along each axis; none when the HDU holds a table

    /// Planes of all axes beyond the second together.
    double Planes() const;
    bool HasSamples() const; ///< of two axes or more
    bool operator==(const FitsImage&) const = default;
};

/// Throws Error when the cards make no sense.
FitsImage DescribeImage(const FitsHdu& hdu);

/// "721 x 720 x 3"
std::string SizesText(const std::vector<long long>& sizes);

/// An open FITS file, plain or compressed as a whole. Members throw Error.
class FitsFile {
public:
    /// `name` stands in errors for the file.
    FitsFile(std::string name, const std::string& path);

    const std::string& Name() const { return name_; }
    ByteSource& Source() { return *source_; }
    const FitsHdu& Hdu() const { return hdu_; }

    /// Goes to an HDU, counted from 0; false when there is none of that number.
    bool MoveTo(int number);
    /// Goes to an HDU by EXTNAME, and by EXTVER unless `version` is 0.
    bool MoveTo(const std::string& extension, long long version);
    /// Why the last `MoveTo` failed; empty when the file just ends there.
    const std::string& Trouble() const { return trouble_; }

private:
    bool ReadHdu(std::uint64_t start, int number);
    std::string ReadCards(std::uint64_t start);

    std::string name_;
    std::unique_ptr<ByteSource> source_;
    FitsHdu hdu_;
    std::string trouble_;
};

} // namespace corvane::io
