#pragma once

#include <optional>
#include <string>

#include "io/header.h"

namespace corvane::io {

/// @name What capture programs write under several names
/// Each function looks at the names it lists, in that order, and gives the first value that it can make sense of.
/// @{

/// Exposure time of one frame [s]: EXPTIME, EXPOSURE, EXP_TIME.
CORVANE_VISIBLE std::optional<double> ExposureSeconds(const Header& header);
/// What a header says of the exposure time that is no number, as "EXPTIME = NaN"; empty when `ExposureSeconds` finds
/// one, or nothing is said at all.
CORVANE_VISIBLE std::optional<std::string> UnreadableExposure(const Header& header);
/// Sensor temperature [degrees Celsius]: CCD-TEMP, CCDTEMP, CCD_TEMP, SENSTEMP, DET-TEMP, then the temperature aimed
/// at, SET-TEMP.
CORVANE_VISIBLE std::optional<double> CcdTemperature(const Header& header);
/// The camera's gain setting, in its own units: GAIN, ISOSPEED.
CORVANE_VISIBLE std::optional<double> Gain(const Header& header);
/// Electrons per count: EGAIN.
CORVANE_VISIBLE std::optional<double> ElectronsPerCount(const Header& header);
/// Pixel size [micrometres]: XPIXSZ, PIXSIZE1, XPIXELSZ.
CORVANE_VISIBLE std::optional<double> PixelSize(const Header& header);
/// Multiplies the pixel size that a header states, and that along y: YPIXSZ, PIXSIZE2, YPIXELSZ.
CORVANE_VISIBLE void ScalePixelSize(Header& header, double x, double y);
/// Name of the filter: FILTER, FILTER1, FILTNAM.
CORVANE_VISIBLE std::optional<std::string> Filter(const Header& header);
/// @}

/// The order of rows that a header states: ROWORDER, if it is "TOP-DOWN" or "BOTTOM-UP".
CORVANE_VISIBLE std::optional<std::string> StatedRowOrder(const Header& header);
/// Where the first row belongs on the screen, from ROWORDER: "TOP-DOWN" or "BOTTOM-UP". A header that does not say is
/// bottom-up, as FITS has it; frames from TIFF, PNG and camera raw files say TOP-DOWN.
CORVANE_VISIBLE std::string RowOrder(const Header& header);
/// True when the first row belongs at the bottom.
CORVANE_VISIBLE bool IsBottomUp(const Header& header);

/// Start of the exposure [s since 1970-01-01T00:00:00 UTC, without leap seconds]: DATE-OBS (DATE_OBS), with its time of
/// day or that of TIME-OBS, TIME_OBS, UT, UTC, UTSTART, UTC-OBS; also `dd/mm/yy` of the years 1900 to 1999; else
/// MJD-OBS. A date without time of day counts as midnight.
CORVANE_VISIBLE std::optional<double> ObservationTime(const Header& header);
/// Middle of the exposure [s]: DATE-AVG, else half the exposure after its start. Empty when neither is told; the start
/// serves where the exposure is not.
CORVANE_VISIBLE std::optional<double> MiddleTime(const Header& header);
/// The start as text, `2024-07-30T22:44:36.000`.
CORVANE_VISIBLE std::optional<std::string> DateObs(const Header& header);
/// A time [s since 1970, finite; cut to the years 0 to 9999] as text with milliseconds, `2024-07-30T22:44:36.000`.
CORVANE_VISIBLE std::string FormatTime(double seconds);
/// Reads `2024-07-30`, `2024-07-30T22:44:36.5` (with `Z`, `-0700` or `+02:00` behind it, or nothing for UTC) or
/// `30/07/95`; empty when it is none of these.
CORVANE_VISIBLE std::optional<double> ParseTime(const std::string& text);

} // namespace corvane::io
