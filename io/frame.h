#pragma once

#include <string>
#include <vector>

#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "io/header.h"

namespace corvane::io {

/// An image and what its file says about it.
struct Frame {
    CStlImage image;
    Header header;
};

/// Reads a frame. What `FrameReader` says of samples, record and header holds here.
///
/// The display levels become those of the file, or 0 to 255 for 8-bit samples, or else each plane's smallest and
/// largest sample (with a range of 1 when they are equal); the original default levels are the same. A frame beyond the
/// memory budget is read in bands, with bounded memory. Throws Error, also when there is no room for the samples.
CORVANE_VISIBLE Frame Load(const std::string& path);

/// Gives an image the levels of one that comes without: each plane's smallest and largest sample, or a range of 1.
CORVANE_VISIBLE void SetFullLevels(CStlImage& image);

/// What becomes of samples in a format of integers, whose counts run from 0 to 2^bits - 1.
///
/// A scale is one for all planes, so that colours stay as they are. In FITS it is stated (BSCALE, BZERO): whoever reads
/// the file gets the samples back, to half a step. TIFF and PNG hold the counts alone; a COMMENT says what they were
/// made from, and display levels in the header become counts, too.
enum class SampleScale {
    kCounts, ///< Samples are counts: what lies outside of the range, and fractions from 0 to 1, are refused.
    kNone,   ///< Samples are counts, and cut to the range, whatever is lost.
    kLevels, ///< From the lowest display level of all planes to the highest; what lies beyond is cut.
    kMinMax, ///< From the smallest sample to the largest.
    kUnit,   ///< From 0 to 1; samples outside are refused.
};

/// How samples are stored.
struct SaveOptions {
    /// Bits per sample: FITS and TIFF 8, 16, 32, -32 (float), -64 (double); PNG 8, 16. With 0 the format chooses:
    /// 32-bit floats, for PNG 16 bits. Integers are unsigned (in FITS by BZERO); counts are rounded to even.
    int bits = 0;
    /// Floats keep their values, so they take kCounts and kNone only.
    SampleScale scale = SampleScale::kCounts;
};

/// A further image of a FITS file.
struct Extension {
    std::string name; ///< by which it is opened: `m31.fits[NOISE]`
    const CStlImage& image;
    Header header{};
};

/// True for a path whose format holds further images.
CORVANE_VISIBLE bool HoldsExtensions(const std::string& path);

/// Writes a frame; the extension chooses the format: .fits, .fit, .fts; .tif, .tiff; .png.
///
/// - The file appears whole or not at all: see OutputFile. Throws Error.
/// - Rows keep their order in memory. A TIFF states it by its orientation; a PNG cannot, so that one of a bottom-up
///   frame shows upside down (`SavePicture` makes pictures for the screen).
/// - Undefined samples (NaN, and those that equal the image's blank value) are NaN in float files. FITS files of
///   integers reserve their lowest value for them (BLANK), if there are any. Integer TIFF and PNG have no such thing
///   and refuse them.
/// - Integers hold counts; samples that they would lose are refused unless SampleScale says what to do.
/// - World coordinates come from the image's record when it has any, otherwise cards stay as they are. Display levels
///   are written as CBLACK and CWHITE (CBLACK2, CWHITE2, CBLACK3, CWHITE3 for the other planes) when the image has its
///   own. All other cards are carried over, in TIFF and PNG as text of the image description, except those that
///   describe the layout of the file they came from.
/// - Further images follow the first as 32-bit floats, which all counts up to 2^24 are; other formats than FITS refuse
///   them.
CORVANE_VISIBLE void Save(const std::string& path, const CStlImage& image, const Header& header,
                          const SaveOptions& options = {}, const std::vector<Extension>& extensions = {});

/// @name A FITS file of floats that is written by parts, as `Save` would write the whole
/// The first bytes of the file, given some rows of the image, the first among them; then come the samples, plane after
/// plane, and zeros up to a multiple of 2880 bytes.
/// @{
CORVANE_VISIBLE std::string FitsHead(const CStlImage& part, const Header& header, int rows);
/// The bytes of all samples of a plane of a part.
CORVANE_VISIBLE std::string FitsPart(const CStlImage& part, int plane);
/// @}

/// Throws the Error that `Save` would throw for the path alone: its extension, bits that the format lacks, a scale for
/// floats, its folder.
/// For checking before work starts.
CORVANE_VISIBLE void CheckSave(const std::string& path, const SaveOptions& options = {});

} // namespace corvane::io
