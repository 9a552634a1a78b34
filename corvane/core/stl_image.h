#pragma once

#include <memory>

#include "corvane/core/image.h"
#include "corvane/core/point.h"
#include "corvane/platform/array.h"
#include "corvane/platform/rect.h"

namespace corvane {
struct Run;
}

/// The working image: 32-bit float samples with display levels, reference points and a progress channel.
///
/// Rules that hold for every member unless it says otherwise:
/// - Value scales of a sample s of plane p with level min m, level max M and range r: Raw is s; Gray is s - m; 256f is
///   (s - m) / r * 255, not clamped; 256 is that as a byte, 0 for s <= m and 255 for s >= M (and for NaN). Back to raw:
///   r * value * 0.00392156862745098 + m. A range of 0 gives infinities or NaN.
/// - Integer coordinates are clamped into the image; planes are not checked, but nothing outside the store is read.
/// - Rectangles have exclusive right and bottom edges; null means the whole image.
/// - A sample is blank when the image uses a blank value and the sample, truncated towards zero, equals it. NaN and
///   infinities are never blank.
/// - Memory that cannot be had raises CMemoryException.
/// One image belongs to one thread at a time.
class CORVANE_API CStlImage : public CImage {
public:
    /// An empty image that reports progress to the main window of the current thread.
    CStlImage();
    /// An image of width x height x planes zero samples; operations pass bits -32, bscale 1, bzero 0 and flag 1.
    CStlImage(int bits, int width, int height, int planes, double bscale, double bzero, int flag, HWND window = nullptr,
              const char* text = nullptr);
    /// A deep copy, with the source's progress window and reference points. The cached minimum and maximum, the saved
    /// levels and the progress state are not taken over: compute or set them before they are read.
    CStlImage(const CStlImage& source, HWND window = nullptr, const char* text = nullptr);
    /// An image of samples that are there already, floats without levels of their own (0 to 255), which reports
    /// progress to the main window of the current thread. Throws std::invalid_argument for samples of another kind.
    explicit CStlImage(std::shared_ptr<CVmImage> samples);
    /// Takes everything over; the other may then only be assigned to or destroyed.
    CStlImage(CStlImage&& other) noexcept = default;
    CStlImage& operator=(CStlImage&& other) noexcept = default; // NOLINT(readability-identifier-naming): clang's own
    ~CStlImage() override;
    /// This image once more, with levels and points of its own over the same samples: nothing is copied, what is
    /// written through one is seen through the other, and the samples live as long as either. Both belong to one
    /// thread at a time.
    CStlImage Shared() const;
    /// `CopyImage` without window and text.
    CStlImage& operator=(const CStlImage& source);

    /// Takes the source's progress window, reference points, record and samples. When CMemoryException is thrown, this
    /// image has the first two, and its own record and samples.
    CStlImage& CopyImage(const CStlImage& source, HWND window = nullptr, const char* text = nullptr);
    /// Takes the source's progress window, reference points and record, with zero samples; 0 when there is no room:
    /// then it has the first two.
    int Create(const CStlImage& source, HWND window = nullptr, const char* text = nullptr);
    /// Exchanges progress windows, reference points, records and samples.
    void Swap(CStlImage* other);
    /// Takes over a device-independent bitmap, as `CImage::AttachDIB`, and makes its samples floats. 0 when it is none
    /// and stays the caller's, or when there is no room for floats: then the block has been freed all the same, and the
    /// image keeps its 8-bit samples.
    int AttachDIB(HDIB dib);
    /// Sets the progress window to the main window of the current thread, the cached minimum and maximum to 0, and the
    /// reference points to unset.
    void Init();
    /// Chooses the window that gets the progress messages; null for none.
    void SetProgressHandle(HWND window);
    HWND GetProgressHandle() const { return progressWindow_; } ///< The window that gets the progress messages.

    /// @name Levels
    /// @{

    /// Sets the level min and max of a plane. Plane -1 of a colour image moves every plane's levels by the same
    /// fractions of its own range that plane 0 is moved by; of a monochrome image it is plane 0.
    void SetLevel(int plane, double min, double max);
    /// Finds the smallest and largest sample of every plane, by plain comparison beginning with sample (0, 0).
    void CalcMinMax();
    /// The minimum that the last `CalcMinMax` found, 0 before the first.
    double GetMinPixel(int plane) const { return minPixel_[plane]; }
    /// The maximum that the last `CalcMinMax` found, 0 before the first.
    double GetMaxPixel(int plane) const { return maxPixel_[plane]; }
    /// Saves the levels; a monochrome image saves plane 0's three times.
    void SetOrgLevel();
    /// Puts the saved levels back, plane by plane.
    void RestoreOrgLevel();
    /// Clamps every sample into its plane's levels; NaN becomes the level max.
    void CutOutOfLevel();
    /// Raw to 256f.
    double To256(double v, int plane) const { return (v - GetLevelMin(plane)) / GetLevelRange(plane) * 255.0; }
    /// Raw to 256f, rounded to float.
    float To256(float v, int plane) const { return static_cast<float>(To256(static_cast<double>(v), plane)); }
    /// 256f to raw.
    double ToRaw(double d, int plane) const
    {
        return GetLevelRange(plane) * d * 0.00392156862745098 + GetLevelMin(plane);
    }
    /// 256f to raw, rounded to float.
    float ToRaw(float d, int plane) const { return static_cast<float>(ToRaw(static_cast<double>(d), plane)); }
    /// @}

    /// @name Progress
    /// Messages go to the progress window with the codes of `corvane::ProgressWord`; ids are string table ids.
    /// @{

    /// Opens the channel in counted mode: `total` steps, about fifty messages. Nothing is sent when show is 0.
    void ShowProgressInit(int show, const char* text, int total);
    void ShowProgressInit(int show, int id, int total); ///< The same with the text of an id.
    /// Opens the channel in direct mode: `ShowProgress` sends its argument as it is.
    void ShowProgressInit(const char* text);
    void ShowProgressInit(int id); ///< The same with the text of an id.
    /// Counts n steps (or forwards n), lets windows repaint, and returns 0 when ESC was pressed, otherwise 1.
    /// Other keys pressed meanwhile are dropped. Returns 1 at once while the channel is not active.
    int ShowProgress(int n);
    /// Sends a text to show while running, whether or not the channel is active.
    void ShowProgressMsg(const char* text);
    void ShowProgressMsg(int id); ///< The same with the text of an id.
    /// Closes the channel, sending a closing text or null if it was active.
    void ShowProgressEnd(const char* text);
    void ShowProgressEnd(int id); ///< The same with the text of an id.
    /// @}

    /// The address of sample (x, y, plane), clamped into the image. Flags as in `CImage::GetImageAdr`.
    float* GetImageAdr(int x, int y, int plane, int flags = 0, void** lockHandle = nullptr) const;

    /// @name Reading one sample, through a pointer or by whole coordinates
    /// @{
    float GetPixelGrayRaw(const float* p) const { return *p; }
    float GetPixelGrayRaw(int x, int y, int plane) const { return *Read(x, y, plane); }
    /// Posterised raw value: m at or below m, M at or above M, else m + trunc((s - m) / step) * step.
    float GetPixelGrayRaw(const float* p, int plane, int step) const;
    float GetPixelGray(const float* p, int plane) const { return static_cast<float>(*p - GetLevelMin(plane)); }
    float GetPixelGray(int x, int y, int plane) const { return GetPixelGray(Read(x, y, plane), plane); }
    unsigned char GetPixelGray256(const float* p, int plane) const;
    unsigned char GetPixelGray256(int x, int y, int plane) const { return GetPixelGray256(Read(x, y, plane), plane); }
    /// The 256 byte with bounds and factor = 255 / range of the caller's.
    unsigned char GetPixelGray256(const float* p, float min, float max, float factor) const;
    float GetPixelGray256f(const float* p, int plane) const { return To256(*p, plane); }
    float GetPixelGray256f(int x, int y, int plane) const { return To256(*Read(x, y, plane), plane); }
    /// 256f with a minimum and factor = 255 / range of the caller's.
    float GetPixelGray256f(const float* p, float min, float factor) const { return (*p - min) * factor; }
    /// @}

    /// @name Writing one sample
    /// @{
    void SetPixelGrayRaw(float* p, float v) { *p = v; }
    void SetPixelGrayRaw(int x, int y, float v, int plane) { *GetImageAdr(x, y, plane) = v; }
    void SetPixelGray(float* p, float v, int plane) { *p = static_cast<float>(GetLevelMin(plane) + v); }
    void SetPixelGray(int x, int y, float v, int plane) { SetPixelGray(GetImageAdr(x, y, plane), v, plane); }
    void SetPixelGray256f(float* p, float v, int plane) { *p = ToRaw(v, plane); }
    void SetPixelGray256f(int x, int y, float v, int plane) { SetPixelGray256f(GetImageAdr(x, y, plane), v, plane); }
    /// @}

    /// @name Brightness: 0.299 R + 0.587 G + 0.114 B
    /// @{

    /// Added in the order green, red, blue.
    static float CalcBright(float r, float g, float b) { return 0.587F * g + 0.299F * r + 0.114F * b; }
    static double CalcBright(double r, double g, double b) { return 0.587 * g + 0.299 * r + 0.114 * b; }
    /// Brightness of the three samples on the 256f scale, each plane through its levels; monochrome: of the first.
    double GetPixelBright256f(const float* r, const float* g, const float* b) const;
    /// The previous value in raw units through plane 0's levels.
    double GetPixelBrightRaw(const float* r, const float* g, const float* b) const;
    /// Brightness of the raw samples of planes 0, 1, 2; for colour images only.
    double GetPixelBrightRaw(int x, int y) const;
    double GetPixelBright256f(int x, int y) const;
    /// Brightness on a raw scale whose ends are the brightness of the three level minima and maxima.
    double GetPixelBright(int x, int y) const;
    double GetPixelBrightRaw(double x, double y) const;  ///< The same with planes read between samples.
    double GetPixelBright256f(double x, double y) const; ///< The same with planes read between samples.
    double GetPixelBright(double x, double y) const;     ///< The same with planes read between samples.
    /// @}

    /// @name Reading between samples
    /// Bilinear between the four neighbours; a position outside is clamped to the edge, whole positions give the sample
    /// itself. The right-hand neighbour is the next sample in storage: right of the last column that is the first of
    /// the next row. Behind the last sample of the store it is that last sample.
    /// @{
    double GetPixelGrayRaw(double x, double y, int plane) const;
    double GetPixelGray(double x, double y, int plane) const;
    double GetPixelGray256f(double x, double y, int plane) const;
    /// Truncated to an int and cut to its low byte, without clamping: values outside the levels wrap around.
    unsigned char GetPixelGray256(double x, double y, int plane) const;
    /// @}

    /// @name Aligned sampling
    /// Reads what lies at pixel (x, y) of a frame onto which this image is placed with a shift (dx, dy) [pixels], a
    /// turn about this image's standard centre given as sine and cosine (positive turns clockwise on screen), and a
    /// scale. Outside the image the result is `outside` and *outOfImage is 1. (sx, sy) is the position in this image.
    /// Plane -1 of a colour image gives the brightness. Pointers may be null.
    /// @{
    double GetPixelGray256f(int x, int y, double dx, double dy, double sinA, double cosA, double scale, int plane,
                            double outside, int nearest, int* outOfImage, double* sx, double* sy) const;
    double GetPixelGray256f(int x, int y, int dx, int dy, double sinA, double cosA, double scale, int plane,
                            double outside, int nearest, int* outOfImage, double* sx, double* sy) const;
    double GetPixelGrayRaw(int x, int y, double dx, double dy, double sinA, double cosA, double scale, int plane,
                           double outside, int nearest, int* outOfImage, double* sx, double* sy) const;
    double GetPixelGrayRaw(int x, int y, int dx, int dy, double sinA, double cosA, double scale, int plane,
                           double outside, int nearest, int* outOfImage, double* sx, double* sy) const;
    void GetPixelRgb256f(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* r,
                         double* g, double* b, double outside, int* outOfImage, double* sx, double* sy) const;
    void GetPixelRgb256f(int x, int y, int dx, int dy, double sinA, double cosA, double scale, double* r, double* g,
                         double* b, double outside, int* outOfImage, double* sx, double* sy) const;
    void GetPixelRgbRaw(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* r,
                        double* g, double* b, double outside, int* outOfImage, double* sx, double* sy) const;
    void GetPixelRgbRaw(int x, int y, int dx, int dy, double sinA, double cosA, double scale, double* r, double* g,
                        double* b, double outside, int* outOfImage, double* sx, double* sy) const;
    /// @}

    /// @name Lightness and colour axes, CIE L*a*b* as `CColor` makes it of what the levels show
    /// An image of fewer than three planes is grey, with the values of plane 0; of more planes the first three count.
    /// Display values, 255 for white, are clamped to 0..5000, so what is brighter than white keeps an L above 100. NaN
    /// in a pixel makes all of its values NaN; blanks are samples like others.
    ///
    /// The new image belongs to the caller, who deletes it; it is null, before any progress, when there is no room. It
    /// has this image's size and standard centre. Progress is always shown, in this image's window; ESC is ignored.
    /// @{

    /// One plane: L, with the display levels of this image's plane 0. Reports "Creating L-channel...".
    CStlImage* MakeLPlane();
    /// Two planes: a and b. With `clipTo255` the display values of a colour image are clamped to 0..255. Reports
    /// "Creating ab-channel...".
    CStlImage* MakeAbPlane(int clipTo255);
    /// Three planes: L, a and b. Reports "Creating Lab channel...".
    CStlImage* MakeLabPlane();
    /// Aligned sampling, bilinear, of plane 0.
    float GetPixelL(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double outside) const;
    /// Aligned sampling, bilinear, of planes 0 and 1; an image of one plane gives that twice. Outside the image both
    /// are `outside`. Pointers may be null.
    void GetPixelAb(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* a, double* b,
                    double outside) const;
    /// The brightness that goes with a colour of display values, clamped to -5000..5000: 255 times the red that
    /// `CColor::RgbToXyz` makes of it, not its L. A NaN red stays NaN; a NaN green or blue leaves red as it is.
    static double CalcBrightL(double r, double g, double b);
    /// @}

    /// @name The same, as parts of a run; for want of room they throw CMemoryException
    /// @{
    std::unique_ptr<CStlImage> MakeLPlane(const corvane::Run& run) const;
    std::unique_ptr<CStlImage> MakeAbPlane(int clipTo255, const corvane::Run& run) const;
    std::unique_ptr<CStlImage> MakeLabPlane(const corvane::Run& run) const;
    /// @}

    /// A packed device-independent bitmap of the image through its levels: header, colour table for 8 bits, rows from
    /// the bottom up. The caller frees it. Bit counts are 8 and 24; others, and missing memory, give null.
    HDIB GetDib(int bitCount) const;

    /// @name Statistics
    /// @{

    /// Counts the samples in [lo, hi] of a rectangle into `bins` equal bins. Plane -1 of a colour image counts the
    /// brightness, with lo and hi in raw units. Blank samples are left out (of a colour pixel: when all three are). The
    /// rectangle is clamped into the image, edge by edge. Text id 0 means 3066. Returns twice the mean count per bin of
    /// the whole image, as a scale for drawing; 0 when there are no bins.
    int GetHistGram(int* hist, int bins, double lo, double hi, int plane, CRect* rect, int showProgress, int textId);
    /// The same, as a part of a run.
    int GetHistGram(int* hist, int bins, double lo, double hi, int plane, const CRect* rect, const corvane::Run& run,
                    int textId = 0) const;
    /// Mean raw sample of a plane. From the first blank sample on, the rest of its row is left out. NaN for nothing.
    float GetAvrGrayRaw(int plane) const;
    /// The mean on the Gray scale.
    float GetAvrGray(int plane) const;
    /// The mean on the 256f scale.
    float GetAvrGray256f(int plane) const;
    /// @}

    /// @name Reference points
    /// Two standard points and a standard centre, marked on stars to align frames; (-1, -1) is unset.
    /// @{
    void InitStdPt();
    /// Sets standard point i [0, 1]; point 0 sets the standard centre too. Other indices are ignored.
    void SetStdPt(int i, CfPoint p);
    CfPoint GetStdPt(int i) const; ///< Standard point i; an unset point for an index out of range.
    int IsValidStdPt(int i) const; ///< 1 when neither integer coordinate of point i is -1.
    int GetStdPtNum() const;       ///< Number of standard points that are set.
    CfPoint GetStdCtr() const { return stdCtr_; }
    void SetStdCtr(CfPoint p) { stdCtr_ = p; }
    void SetStdCtr(int x, int y) { stdCtr_.Set(x, y); }
    void SetStdCtr(double x, double y) { stdCtr_.Set(x, y); }
    int IsValidStdCtr() const; ///< 1 when neither integer coordinate of the centre is -1.
    void SetDefaultCenter();   ///< Sets the standard centre to (width / 2, height / 2), whole numbers.

    /// Centroid of what is brighter than the mean of a rectangle, weighted by the square of the excess, on the 256f
    /// scale. It is the rectangle's centre when it would lie outside or nothing is brighter. From a blank pixel on, the
    /// rest of its row is left out.
    void GetCenterOfGravity(double& cx, double& cy, CRect* rect) const;
    void GetCenterOfGravity(int& cx, int& cy, CRect* rect) const; ///< The same, rounded.
    /// The same within the region that `PtInRgn` inscribes in the rectangle.
    void GetCenterOfGravityCircle(double& cx, double& cy, CRect* rect, CArray<int, int>* halfWidths) const;
    void GetCenterOfGravityCircle(int& cx, int& cy, CRect* rect, CArray<int, int>* halfWidths) const; ///< Rounded.
    /// 1 when (x, y) lies in the region about (cx, cy) that is halfWidths[i] wide to either side in the rows i above
    /// and below the centre, and within the radii. Radii and centre are truncated. A missing half-width counts as none.
    static int PtInRgn(int x, int y, double cx, double cy, double rx, double ry, CArray<int, int>* halfWidths);

    /// How this image must be placed to fit `ref`, from the reference points of both: 0 not known, 1 shift only, 2
    /// shift and turn. Shift in pixels; angle in degrees, rounded down to a tenth. An unset centre of `ref` becomes
    /// its middle. With two coinciding points the turn is not known and the result is 1.
    int GetFitPrm(CStlImage* ref, double& dx, double& dy, double& angle) const;
    /// The same; then the given shift, and for result 2 the given angle, are added.
    int GetFitPrm(CStlImage* ref, double& dx, double& dy, double& angle, double ox, double oy, double oa) const;
    /// @}

    /// @name Calibration and planes
    /// @{

    /// Divides by a flat field: s * mean / f wherever f > 0, with the mean of the flat's plane 0 for every plane.
    /// Blanks of either image become this image's blank. A flat of one plane serves every plane; a smaller flat is
    /// extended by its edge.
    void FlatClbrtn(CStlImage* flat, int showProgress);
    void FlatClbrtn(const CStlImage& flat, const corvane::Run& run); ///< The same, as a part of a run.
    /// Takes off a dark frame: s - d, and 0 where that is 0 or less, also for blanks.
    void DarkClbrtn(CStlImage* dark, int showProgress);
    void DarkClbrtn(const CStlImage& dark, const corvane::Run& run); ///< The same, as a part of a run.
    /// Makes a colour image monochrome with plane 0's samples and levels; 0 when there is no room.
    int ToGray();
    /// Makes a monochrome image colour with three equal planes and levels; 0 when there is no room.
    int ToColor();
    /// Makes this copy of the colour image `source` its brightness, through the levels. 0 when there is no room, or
    /// when `source` is this image or has no three planes.
    int ToGray(CStlImage* source, int showProgress);
    int ToGray(const CStlImage& source, const corvane::Run& run); ///< The same, as a part of a run.
    /// Makes this image colour with the raw samples of `source`; 0 when there is no room.
    int ToColor(CStlImage* source, int showProgress);
    int ToColor(const CStlImage& source, const corvane::Run& run); ///< The same, as a part of a run.
    /// Copies the w x h block at (sx, sy) of `source` to (dx, dy) in every plane, as far as it lies in both images.
    /// With mapLevels it keeps its look under this image's levels. Nothing happens when the planes differ in number.
    int PixelBlt(int dx, int dy, int w, int h, CStlImage* source, int sx, int sy, int mapLevels);
    int PixelBlt(int dx, int dy, int w, int h, const CStlImage& source, int sx, int sy, int mapLevels); ///< The same.
    /// @}

    /// @name World coordinates follow the pixels
    /// @{
    void FlipHorzPhysicalCoords(); ///< Mirrors the x axis.
    void FlipVertPhysicalCoords(); ///< Mirrors the y axis.
    /// Turns by `angle` degrees about the standard centre's whole coordinates, then shifts by (dx, dy) pixels. An angle
    /// of 0 or NaN changes nothing, the shift included.
    void RotatePhysicalCoords(double angle, double dx, double dy);
    void TranslatePhysicalCoords(double dx, double dy); ///< Shifts the reference pixel.
    /// Changes the size of the pixel grid by the factors; an image without a matrix gains one.
    void ScalePhysicalCoords(double fx, double fy);
    /// @}

    /// @name Axes
    /// Axis 0 is x, 1 is y, 2 the planes; another has no type. Pointers may be null, but for `GetPhysicalValue`.
    /// @{

    /// What an axis stands for: its name in words ("Wavelength in air"; CTYPE itself when it is not known), its unit
    /// (CUNIT; when there is none what the FITS standard assumes for the type, as "deg") and its kind
    /// (`corvane::AxisKind`). The kind of a dispersion axis (DISPAXIS) whose type does not tell is that of its unit.
    /// Returns non-zero when the axis has a type.
    int GetAxisInfo(int axis, CString* name, CString* unit, int* kind) const;
    /// The world value of a pixel along an axis [in the unit of `GetAxisInfo`]: CRVAL + (pixel + 1 - CRPIX) * step,
    /// with pixel 0 the middle of the first sample and the step from CDELT, PC or CD. Returns 0, with the value 0, when
    /// the axis has no CRVAL, is turned against the others (an element off the matrix' diagonal), or is not linear (a
    /// projection as RA---TAN, an algorithm as WAVE-LOG).
    int GetPhysicalValue(int axis, double pixel, double* value) const;
    /// What a value in a unit is to be multiplied by to be in the unit without SI prefix, which becomes `base`: "nm"
    /// gives 1e-9 and "m". Units are those of the FITS standard 4.0, one at a time, with a whole power as in "cm-1":
    /// 100 and "m-1", also of "1/cm". 0 and an empty base for others.
    static double AnalyzeUnitPrefix(const char* unit, CString* base);
    /// Non-zero when the image is a spectrum: an axis of more than one sample is of wavelength, frequency, energy,
    /// wavenumber or velocity. The first such axis becomes `axis`.
    int IsSpectrum(int* axis = nullptr) const;
    /// Non-zero when the samples of a spectrum have wavelengths, and so colours: when kind and unit of its axis can be
    /// turned into metres by `AnalyzeUnitPrefix` and the conversions below. Velocities cannot.
    int IsSpectrumFalseColorSupported() const;
    /// @}

    /// @name Conversions, with the exact constants of the SI since 2019 (see `physical_constants.h`)
    /// Wavelengths are in vacuum. 0 gives an infinite wavelength.
    /// @{
    static double CalcAngstrom2m(double angstrom); ///< Angstrom to metres.
    static double CalcEV2J(double electronVolts);  ///< Electron volts to joule.
    static double CalcErg2J(double erg);           ///< Erg to joule.
    static double CalcFreq2WL(double hertz);       ///< The wavelength [m] of a frequency.
    static double CalcEner2WL(double joule);       ///< The wavelength [m] of a photon's energy.
    static double CalcWavn2WL(double perMetre);    ///< The wavelength [m] of a wavenumber [1/m].
    /// @}

private:
    const float* Read(int x, int y, int plane) const { return GetImageAdr(x, y, plane, 1); }
    double NextInStorage(const float* sample, int x, int y, int plane) const;
    double BrightnessToRaw(double bright) const;
    void TakePoints(const CStlImage& source);
    int ShowProgressContinue();
    void SendProgress(int word, const char* text) const;
    HDIB MakeDib(int bitCount) const;
    void GetDib8Mono(BITMAPINFOHEADER* header) const;
    void GetDib24Mono(BITMAPINFOHEADER* header) const;
    void GetDib24Color(BITMAPINFOHEADER* header) const;
    void GetDib8Color(BITMAPINFOHEADER* header) const;

    double minPixel_[3] = {};
    double maxPixel_[3] = {};
    double savedLevelMin_[3] = {};
    double savedLevelMax_[3] = {};
    CfPoint stdPt_[2];
    CfPoint stdCtr_;
    HWND progressWindow_ = nullptr;
    int progressActive_ = 0;
    int progressDirect_ = 0;
    int progressTotal_ = 0;
    int progressStep_ = 0;
    int progressCount_ = 0;
    int progressThreshold_ = 0;
};
