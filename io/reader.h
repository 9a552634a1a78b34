#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "corvane/core/fits_extension.h"
#include "corvane/core/image.h"
#include "corvane/platform/export.h"
#include "io/header.h"

namespace corvane::io {

/// The display levels of one plane.
struct Levels {
    double min;
    double max;
};

/// What a reader knows of its frame once it is open.
struct FrameInfo {
    std::string path;
    std::string format; ///< "FITS", "TIFF", "PNG" or "RAW"
    int width = 0;
    int height = 0;
    int planes = 0; ///< 1 or 3
    int bits = 0;   ///< bits per sample of the file as FITS BITPIX: 8, 16, 32, 64, -32, -64
    std::optional<int> blank;
    Header header;
    std::optional<CFitsExtension> extension{}; ///< the part of a FITS file that it comes from, with all its cards
    std::vector<long long> axes{};             ///< of a FITS image: the sizes of all its axes
    long long plane = 0;                       ///< which plane of a cube this is, from 1; 0 for a frame
};

/// What becomes of an image whose planes are neither 1 nor 3 and of which none is chosen.
enum class Cubes {
    kRefuse,
    kFirstPlane, ///< its first plane is opened, for a look at it
};

/// A frame on disk, read by bands of rows.
///
/// - Samples are floats in physical units (BSCALE and BZERO applied); rows come in the file's order. Values beyond the
///   range of float become infinite.
/// - An integer FITS sample that equals BLANK gives the physical value of BLANK, which then is the image's blank value,
///   if that is a whole number that an int and a float hold exactly and no other sample can be mistaken for it
///   (BSCALE at least 1); otherwise it gives NaN and the image uses no blank value. Undefined floats are NaN.
/// - Header cards that describe the file's layout (BITPIX, NAXISn, BSCALE, CHECKSUM and the like) are left out.
/// - A colour filter mosaic stays one plane of counts.
/// - FITS and TIFF read bands from the file; a tile-compressed FITS image decodes the tiles of a band. PNG and raw
///   frames are decoded as a whole at the first read; decoded frames of all readers together take at most a quarter of
///   the memory budget, the least recently used goes first and is decoded again when it is needed. A larger PNG is
///   decoded row by row, in bands.
/// - What a reader and the library that decodes for it take at once is no more than the memory budget; a file that asks
///   for more is refused when it is opened, before that memory is taken.
/// - A FITS file that is gzip- or LZW-compressed as a whole is unpacked into files without names in the folder for
///   images beyond the memory budget, as far as it is read, and again after `Close`.
/// - Tile-compressed data that do not have the sum which DATASUM states are an error; of plain data, whose sums go
///   stale when programs edit them, `Contradiction` tells it.
/// - A FITS or TIFF reader keeps its file open, one descriptor, from OpenFrame until it is closed or destroyed; a
///   closed one opens the file again when it is read. Members throw Error.
/// Readers of one thread may be used next to those of another; one reader belongs to one thread at a time. Many rows of
/// FITS are converted and decoded by as many threads as `corvane::Threads` says.
class CORVANE_VISIBLE FrameReader {
public:
    virtual ~FrameReader() = default;
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    const std::string& Path() const { return info_.path; }
    int Width() const { return info_.width; }
    int Height() const { return info_.height; }
    int Planes() const { return info_.planes; } ///< 1 or 3
    const FrameInfo& Info() const { return info_; }
    const Header& GetHeader() const { return info_.header; }

    /// Fills an image's record with what the file says: original bits, planes, name and format, blank value, world
    /// coordinates, and levels where they are known without reading the samples (8 bits, or stated by the file).
    /// Returns whether the levels were known. Size and samples are left alone.
    bool Describe(CImage& image) const;

    /// Reads rows firstRow to firstRow + rowCount - 1 of a plane, Width() samples each, one after the other.
    void ReadRows(int plane, int firstRow, int rowCount, float* samples);

    /// Reads the whole of the file and tells where it contradicts itself: sums that do not hold. Empty when it does
    /// not.
    virtual std::string Contradiction() { return {}; }

    /// What a file of several parts holds, part after part, as "1 NOISE: 721 x 720"; empty for a frame alone.
    virtual std::vector<std::string> Parts() { return {}; }

    /// Releases the file and all memory but the header; the next read opens it again.
    virtual void Close() = 0;

protected:
    explicit FrameReader(FrameInfo info) : info_(std::move(info)) {}

private:
    virtual void Read(int plane, int firstRow, int rowCount, float* samples) = 0;

    FrameInfo info_;
};

/// Opens a frame; its content, not its name, tells the format: FITS (also tile-compressed, gzipped, or .Z), TIFF, PNG,
/// camera raw.
///
/// The HDU of a FITS file is chosen by number or name, `m31.fits[1]` or `m31.fits[SCI]` or `m31.fits[SCI,2]`, unless a
/// file of just that name exists; without a choice it is the first that holds an image of 2 or more axes. One plane or
/// three are read, over all axes beyond the second; of any other number, a cube, one is chosen: `cube.fits[plane 3]`,
/// `cube.fits[SCI,2, plane 3]`. Planes are counted from 1 in the order of the file. Other special characters in a path
/// have no meaning. Throws Error.
CORVANE_VISIBLE std::unique_ptr<FrameReader> OpenFrame(const std::string& path, Cubes cubes = Cubes::kRefuse);

} // namespace corvane::io
