#pragma once

#include <cstdint>
#include <string>

#include <fitsio.h>

#include "corvane/core/fits_extension.h"
#include "io/header.h"

namespace corvane::io {

/// The image in the HDU that a FITS file stands at.
struct FitsImage {
    int hdu = 1; ///< counted from 1, as CFITSIO does
    int bits = 0;
    int axes = 0;
    LONGLONG sizes[3] = {0, 0, 0};
    bool compressed = false;

    bool HasSamples() const;
    std::string Sizes() const; ///< "721 x 720 x 3"
};

/// An open FITS file, whose name has no meaning beyond being a name. Members throw Error.
class FitsFile {
public:
    /// `name` stands in errors for the file.
    FitsFile(std::string name, const std::string& file);
    ~FitsFile();
    FitsFile(const FitsFile&) = delete;
    FitsFile& operator=(const FitsFile&) = delete;

    fitsfile* Get() const { return file_; }
    /// Throws when CFITSIO reported a failure: `action`, and why.
    void Check(int status, const std::string& action) const;

    /// Goes to an HDU, counted from 1; false when there is none of that number.
    bool MoveTo(int hdu);
    /// Why the last `MoveTo` failed; empty when the file just ends there.
    const std::string& Trouble() const { return trouble_; }
    /// The image of the present HDU; one without axes when it holds a table.
    FitsImage DescribeHdu();
    /// One word or two about the present HDU, for errors: "0: no samples".
    std::string HduText();
    /// Bytes of the file that the present HDU needs, to the end of the last block of its samples.
    std::uint64_t NeededBytes(const FitsImage& image);
    /// Throws when the data of the present HDU do not have the sum that its DATASUM states, if it has one.
    void CheckDataSum();
    /// Cards of the present HDU that are carried over.
    Header ReadCards();
    /// The present HDU with all of its cards.
    CFitsExtension ReadExtension();

private:
    std::string CardText();
    LONGLONG Key(const char* keyword);

    std::string name_;
    std::string trouble_;
    fitsfile* file_ = nullptr;
};

} // namespace corvane::io
