#pragma once

#include <memory>
#include <vector>

#include "corvane/core/vm_image.h"
#include "corvane/core/world_coordinates.h"
#include "corvane/platform/cstring.h"
#include "corvane/platform/export.h"
#include "corvane/platform/matrix.h"
#include "corvane/platform/types.h"

namespace corvane {

/// Everything that an image knows about itself besides its samples.
struct ImageRecord {
    int bitsPixel = -32;
    int isSigned = 1;
    int dimension = 2;
    int width = 0;
    int height = 0;
    int planes = 0;
    double bscale = 1.0;
    double bzero = 0.0;
    int blankUsed = 0;
    int blank = 0;
    int extend = 0;
    WorldCoordinates coordinates;
    std::vector<double> levelMin{0.0, 0.0, 0.0};
    std::vector<double> levelMax{255.0, 255.0, 255.0};
    std::vector<double> levelRange{255.0, 255.0, 255.0};
    std::vector<double> orgDefaultLevelMin{0.0, 0.0, 0.0};
    std::vector<double> orgDefaultLevelMax{255.0, 255.0, 255.0};
    int ownLevel = 0;
    int saveableFormat = 0;
    int saveableFile = 0;
    int overwriteAllowed = 0;
    int siTypeRgb = 0;
    CString orgFileName;
    CString orgFileFormat;
    int orgBitsPixel = -32;
    int orgPlanes = 0;
    CString undoDialogName;
    int undoMode = 0;
    int contourMap = 0;
    int firstFitsHeight = 0;
    int firstFits = 0;
    int tovakiPc = 0;
    int logScale = 0;
};

} // namespace corvane

/// The base image record: format, size, display levels, file and undo bookkeeping, world coordinates, and the samples
/// in their paged store.
///
/// Level arrays hold an entry for each plane and never fewer than three, so a colour reader may look at a monochrome
/// image. A new image has levels 0 to 255 on every plane. Members that take a window and a text send the progress
/// messages of `corvane::ProgressWord` to the window; either may be null.
class CORVANE_API CImage {
public:
    /// An empty record without samples.
    CImage();
    /// Makes width x height x planes samples of `bits` bits (FITS BITPIX), zero or with flag 0 undefined. No planes
    /// make an empty image. Throws CMemoryException when there is no room.
    CImage(int bits, int width, int height, int planes, double bscale, double bzero, int flag, HWND window = nullptr,
           const char* text = nullptr);
    /// A deep copy: record and samples.
    CImage(const CImage& other, HWND window = nullptr, const char* text = nullptr);
    /// An image of samples that are there already; as many bits as their bytes say, floats for 4. Levels 0 to 255.
    explicit CImage(std::shared_ptr<CVmImage> samples);
    /// Takes record and samples over; the other may then only be assigned to or destroyed.
    CImage(CImage&& other) noexcept;
    CImage& operator=(CImage&& other) noexcept;
    virtual ~CImage();
    /// Replaces record and samples by a deep copy; nothing changes when there is no memory for it.
    CImage& operator=(const CImage& other);

    /// Replaces record and samples by a deep copy; nothing changes when CMemoryException is thrown.
    CImage& CopyImage(const CImage& other, HWND window = nullptr, const char* text = nullptr);
    /// Takes the other's record (format, size, levels, coordinates, bookkeeping) with a fresh store of zero samples.
    /// Returns 0, with nothing changed, when there is no room.
    int Create(const CImage& other, HWND window = nullptr, const char* text = nullptr);
    /// `Create` with another size and samples that are undefined until the caller writes them, every one.
    int CreateCanvas(const CImage& other, int width, int height, HWND window = nullptr, const char* text = nullptr);
    /// Exchanges records and stores.
    void Swap(CImage* other);
    /// Takes over an uncompressed device-independent bitmap of 1, 4, 8, 24 or 32 bits as 8-bit samples: one plane when
    /// it has a colour table of greys alone, otherwise three (R, G, B). On success the block belongs to the image and
    /// has been freed; 0 when it is no such bitmap or there is no room.
    int AttachDIB(HDIB dib);
    /// Changes the size. Samples inside both sizes stay where they are, new ones are 0; levels, blank settings and
    /// coordinates stay. Returns 0, with nothing changed, when a size is below 1 or there is no room.
    int ChangeSize(int width, int height, HWND window = nullptr, const char* text = nullptr);
    /// Changes the number of planes [1 or 3]. New planes are copies of plane 0 and take its levels. 0 on failure.
    int ChangePlanes(int planes, HWND window = nullptr, const char* text = nullptr);
    /// Converts the samples to another bits per pixel [8, 16, 32, -32, -64]. With `physical` they become physical
    /// values (bscale and bzero are applied and reset), otherwise stored values are kept. With `saturate` integer
    /// results are rounded and cut to their range, otherwise truncated and wrapped. NaN becomes 0, or the blank value
    /// where one is declared. 0 on failure.
    int ChangeBits(int bits, int physical, int saturate, HWND window = nullptr, const char* text = nullptr);

    /// Sets the level min and max of one plane and its range, max - min. Returns 0 for a plane without levels.
    int SetLevel(int plane, double min, double max);
    /// Smallest and largest sample of a plane, blanks and NaN passed over; both 0 when nothing is left.
    void GetMinMax(int plane, double* min, double* max) const;

    /// @name Size and format
    /// `SetPlanes`, `SetWidth`, `SetHeight` and `SetBitsPixel` change the record alone, not the store.
    /// @{
    int GetWidth() const { return record_.width; }
    void SetWidth(int width) { record_.width = width; }
    int GetHeight() const { return record_.height; }
    void SetHeight(int height) { record_.height = height; }
    int GetPlanes() const { return record_.planes; }
    void SetPlanes(int planes)
    {
        record_.planes = planes;
        record_.dimension = planes < 2 ? 2 : 3;
    }
    int GetDimension() const { return record_.dimension; }
    int IsColor() const { return record_.dimension > 2; }
    long long GetPixelCount() const { return static_cast<long long>(record_.planes) * record_.height * record_.width; }
    int GetBitsPixel() const { return record_.bitsPixel; }
    void SetBitsPixel(int bits) { record_.bitsPixel = bits; }
    int GetBytesPixel() const { return (record_.bitsPixel < 0 ? -record_.bitsPixel : record_.bitsPixel) / 8; }
    unsigned long long GetImageSize() const
    {
        return static_cast<unsigned long long>(GetPixelCount()) * static_cast<unsigned long long>(GetBytesPixel());
    }
    /// @}

    /// @name Meaning of the stored samples
    /// @{
    int IsSigned() const { return record_.isSigned; }
    void SetSigned(int isSigned) { record_.isSigned = isSigned; }
    double GetBscale() const { return record_.bscale; }
    void SetBscale(double bscale) { record_.bscale = bscale; }
    double GetBzero() const { return record_.bzero; }
    void SetBzero(double bzero) { record_.bzero = bzero; }
    int GetBlank() const { return record_.blank; }
    void SetBlank(int blank) { record_.blank = blank; }
    int IsBlankUsed() const { return record_.blankUsed; }
    void SetBlankUsed(int used) { record_.blankUsed = used; }
    int GetExtend() const { return record_.extend; }
    void SetExtend(int extend) { record_.extend = extend; }
    /// @}

    /// @name Display levels, in raw units; the plane is not checked
    /// @{
    double GetLevelMin(int plane) const { return record_.levelMin[Index(plane)]; }
    double GetLevelMax(int plane) const { return record_.levelMax[Index(plane)]; }
    double GetLevelRange(int plane) const { return record_.levelRange[Index(plane)]; }
    double GetOrgDefaultLevelMin(int plane) const { return record_.orgDefaultLevelMin[Index(plane)]; }
    double GetOrgDefaultLevelMax(int plane) const { return record_.orgDefaultLevelMax[Index(plane)]; }
    /// @}
    /// Sets the levels that the file was opened with; a plane without levels is ignored.
    void SetOrgDefaultLevel(int plane, double min, double max);

    /// @name File and undo bookkeeping
    /// @{
    int HasOwnLevel() const { return record_.ownLevel; }
    void SetOwnLevel(int own) { record_.ownLevel = own; }
    int IsSITypeRGB() const { return record_.siTypeRgb; }
    void SetSITypeRGB(int rgb) { record_.siTypeRgb = rgb; }
    int IsSaveableFormat() const { return record_.saveableFormat; }
    void SetSaveableFormat(int saveable) { record_.saveableFormat = saveable; }
    int IsSaveableFile() const { return record_.saveableFile; }
    void SetSaveableFile(int saveable) { record_.saveableFile = saveable; }
    int IsOverwriteAllowed() const { return record_.overwriteAllowed; }
    void SetOverwriteAllowed(int allowed) { record_.overwriteAllowed = allowed; }
    const char* GetOrgFileName() const { return record_.orgFileName; }
    void SetOrgFileName(const char* name) { record_.orgFileName = name; }
    const char* GetOrgFileFormat() const { return record_.orgFileFormat; }
    void SetOrgFileFormat(const char* format) { record_.orgFileFormat = format; }
    int GetOrgBitsPixel() const { return record_.orgBitsPixel; }
    void SetOrgBitsPixel(int bits) { record_.orgBitsPixel = bits; }
    int GetOrgPlanes() const { return record_.orgPlanes; }
    void SetOrgPlanes(int planes) { record_.orgPlanes = planes; }
    CString GetUndoDialogName() const { return record_.undoDialogName; }
    void SetUndoDialogName(CString name) { record_.undoDialogName = std::move(name); }
    int GetUndoMode() const { return record_.undoMode; }
    void SetUndoMode(int mode) { record_.undoMode = mode; }
    int GetContourMap() const { return record_.contourMap; }
    void SetContourMap(int map) { record_.contourMap = map; }
    int GetFirstFitsHeight() const { return record_.firstFitsHeight; }
    void SetFirstFitsHeight(int height) { record_.firstFitsHeight = height; }
    int GetFirstFits() const { return record_.firstFits; }
    void SetFirstFits(int first) { record_.firstFits = first; }
    int UsedTovakiPC() const { return record_.tovakiPc; }
    void SetTovakiPC(int used) { record_.tovakiPc = used; }
    int GetLogScale() const { return record_.logScale; }
    void SetLogScale(int log) { record_.logScale = log; }
    /// @}

    /// @name World coordinates
    /// Axis 0 is x, 1 is y, 2 the planes. A getter returns non-zero when the keyword is present; otherwise it gives
    /// the value that FITS assumes (CRPIX 0, CDELT 1, CRVAL 0, an empty text, the identity). Other axes have none.
    /// @{
    int GetCRPix(int axis, double* value) const;
    void SetCRPix(int axis, double value);
    int GetCDelt(int axis, double* value) const;
    void SetCDelt(int axis, double value);
    int GetCRVal(int axis, double* value) const;
    void SetCRVal(int axis, double value);
    int GetCType(int axis, CString* type) const;
    int GetCUnit(int axis, CString* unit) const;
    void SetCUnit(int axis, const CString& unit);
    /// @}
    /// @name All world coordinates at once
    /// @{
    const corvane::WorldCoordinates& GetCoordinates() const { return record_.coordinates; }
    void SetCoordinates(const corvane::WorldCoordinates& coordinates) { record_.coordinates = coordinates; }
    /// @}
    /// Assigns the type (CTYPE) of an axis.
    void SetType(const CString& type, int axis);
    /// The linear transform; returns its kind (`corvane::LinearTransformKind`), 0 when there is none.
    int GetLTMtx(tagMATRIX2_2* matrix) const;
    /// Sets the linear transform and its kind; kind 0 takes it away.
    void SetLTMtx(tagMATRIX2_2* matrix, int kind);
    /// Non-zero when x and y axis both have a type and a reference value.
    int IsWCS() const;
    /// The dispersion axis of a spectrum (1 along x, 2 along y); non-zero when the keyword is present.
    int GetDispAxis(int* axis) const;
    /// Sets the dispersion axis.
    void SetDispAxis(int axis) { record_.coordinates.dispersionAxis = axis; }

    /// The address of sample (x, y, plane), not clamped; null when the image has no samples.
    /// Flags: bit 0 the sample will only be read, bit 1 hold its page until `Unlock(*lockHandle)`.
    unsigned char* GetImageAdr(int x, int y, int plane, int flags = 0, void** lockHandle = nullptr) const
    {
        return store_ == nullptr ? nullptr : store_->GetImageAdr(Offset(x, y, plane), flags & 1, flags & 2, lockHandle);
    }
    /// Releases one lock of the store; non-zero when there was one.
    int Unlock(void* ptr) const { return store_ == nullptr ? 0 : store_->Unlock(ptr); }
    /// Releases every lock of the store.
    void UnlockAll() const
    {
        if (store_ != nullptr) {
            store_->UnlockAll();
        }
    }
    /// @name The neighbouring sample in storage
    /// @{
    unsigned char* GetNextAdr(unsigned char* ptr) const { return ptr + GetBytesPixel(); }
    unsigned char* GetPrevAdr(unsigned char* ptr) const { return ptr - GetBytesPixel(); }
    float* GetNextAdr(float* ptr) const { return reinterpret_cast<float*>(GetNextAdr(Bytes(ptr))); }
    float* GetPrevAdr(float* ptr) const { return reinterpret_cast<float*>(GetPrevAdr(Bytes(ptr))); }
    /// @}
    /// The physical value of the stored sample at ptr: stored * bscale + bzero; 0 for unknown bits per pixel.
    double GetPixel(const unsigned char* ptr) const;
    /// The physical value of sample (x, y, plane), which must lie inside.
    double GetPixel(int x, int y, int plane) const { return GetPixel(GetImageAdr(x, y, plane, 1)); }

    /// The store of the samples; null when there are none.
    const CVmImage* GetStore() const { return store_.get(); }
    /// The store of the samples, which lives as long as somebody holds it; null when there are none.
    std::shared_ptr<CVmImage> ShareStore() const { return store_; }

protected:
    /// Takes over the record of another image, and its samples without copying them.
    void ShareWith(const CImage& other);

private:
    static std::size_t Index(int plane) { return static_cast<std::size_t>(plane); }
    static unsigned char* Bytes(float* ptr) { return reinterpret_cast<unsigned char*>(ptr); }
    std::uint64_t Offset(int x, int y, int plane) const
    {
        const long long row = static_cast<long long>(plane) * record_.height + y;
        return static_cast<std::uint64_t>((row * record_.width + x) * GetBytesPixel());
    }
    CImage(corvane::ImageRecord record, CVmImage::Contents contents);
    corvane::ImageRecord Resized(int width, int height) const;
    int Convert(int bits, int physical, int saturate, HWND window, const char* text);
    void CopyInto(CImage& resized, HWND window, const char* text) const;
    void CopyPlanes(CImage& changed, HWND window, const char* text) const;
    const corvane::AxisCoordinates* Axis(int axis) const;
    corvane::AxisCoordinates* Axis(int axis);

    std::shared_ptr<CVmImage> store_;
    corvane::ImageRecord record_;
};
