#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <vector>

#include "corvane/core/truncate.h"
#include "io/error.h"
#include "io/formats/cards.h"
#include "io/formats/fits_file.h"
#include "io/formats/formats.h"
#include "io/formats/limits.h"

namespace corvane::io {
namespace {

/// How BLANK shows in float samples.
struct BlankRule {
    std::optional<int> value; ///< the image's blank value
    bool asNan = false;
};

/// Undefined samples get the physical value of BLANK when it names them alone; see FrameReader.
BlankRule ChooseBlank(double stored, double scale, double zero)
{
    const double physical = stored * scale + zero;
    const int whole = Truncate(physical);
    const bool exact = whole == physical && static_cast<double>(static_cast<float>(physical)) == physical;
    return exact && std::abs(scale) >= 1.0 ? BlankRule{whole, false} : BlankRule{std::nullopt, true};
}

BlankRule ReadBlank(const FitsFile& file, const FitsImage& image)
{
    int status = 0;
    LONGLONG stored = 0;
    fits_read_key(file.Get(), TLONGLONG, image.compressed ? "ZBLANK" : "BLANK", &stored, nullptr, &status);
    if (status != 0 && image.compressed) {
        status = 0;
        fits_read_key(file.Get(), TLONGLONG, "BLANK", &stored, nullptr, &status);
    }
    double scale = 1.0;
    double zero = 0.0;
    int none = 0;
    fits_read_key(file.Get(), TDOUBLE, "BSCALE", &scale, nullptr, &none);
    none = 0;
    fits_read_key(file.Get(), TDOUBLE, "BZERO", &zero, nullptr, &none);
    fits_clear_errmsg();
    if (image.bits < 0) {
        // Quantised floats mark undefined samples in their own way; plain ones are NaN as they are.
        return {std::nullopt, image.compressed};
    }
    return status == 0 ? ChooseBlank(static_cast<double>(stored), scale, zero) : BlankRule{};
}

class FitsReader : public FrameReader {
public:
    FitsReader(FrameInfo info, std::string path, const FitsImage& image, bool blankAsNan,
               std::unique_ptr<FitsFile> file)
        : FrameReader(std::move(info)), path_(std::move(path)), image_(image), blankAsNan_(blankAsNan),
          file_(std::move(file))
    {}

    void Close() override { file_.reset(); }

private:
    void Read(int plane, int firstRow, int rowCount, float* samples) override
    {
        if (file_ == nullptr) {
            Reopen();
        }
        LONGLONG first[] = {1, firstRow + 1, plane + 1};
        const LONGLONG count = static_cast<LONGLONG>(Width()) * rowCount;
        const int status = image_.bits == -64 && !image_.compressed ? ReadDoubles(first, count, samples)
                                                                    : ReadFloats(first, count, samples);
        file_->Check(status, "rows from " + std::to_string(firstRow) + " on cannot be read");
    }

    void Reopen()
    {
        auto file = std::make_unique<FitsFile>(Path(), path_);
        const FitsImage now = file->MoveTo(image_.hdu) ? file->DescribeHdu() : FitsImage{};
        if (now.bits != image_.bits || !std::equal(std::begin(now.sizes), std::end(now.sizes), image_.sizes)) {
            throw Error(Path(), "has changed since it was opened");
        }
        file_ = std::move(file);
    }

    int ReadFloats(LONGLONG* first, LONGLONG count, float* samples)
    {
        // With a value for undefined samples CFITSIO would also turn infinities into it and denormals into 0.
        float nan = std::numeric_limits<float>::quiet_NaN();
        int any = 0;
        int status = 0;
        fits_read_pixll(file_->Get(), TFLOAT, first, count, blankAsNan_ ? &nan : nullptr, samples, &any, &status);
        return status;
    }

    /// CFITSIO would cut doubles to the range of float and call that an error.
    int ReadDoubles(LONGLONG* first, LONGLONG count, float* samples)
    {
        doubles_.resize(static_cast<std::size_t>(Width()));
        int status = 0;
        for (LONGLONG done = 0; done < count && status == 0; done += Width(), ++first[1]) {
            int any = 0;
            fits_read_pixll(file_->Get(), TDOUBLE, first, Width(), nullptr, doubles_.data(), &any, &status);
            std::transform(doubles_.begin(), doubles_.end(), samples + done,
                           [](double v) { return static_cast<float>(v); });
        }
        return status;
    }

    std::string path_;
    FitsImage image_;
    bool blankAsNan_;
    std::unique_ptr<FitsFile> file_;
    std::vector<double> doubles_;
};

std::string ListHdus(FitsFile& file)
{
    constexpr int kMost = 12;
    std::string list;
    for (int hdu = 1; hdu <= kMost && file.MoveTo(hdu); ++hdu) {
        list += (hdu == 1 ? "" : "; ") + file.HduText();
    }
    return file.Trouble().empty() ? list : list + "; then " + file.Trouble();
}

/// Goes to the first HDU that holds an image of two axes or more.
FitsImage FindFirstImage(FitsFile& file, const std::string& name)
{
    for (int hdu = 1; file.MoveTo(hdu); ++hdu) {
        const FitsImage image = file.DescribeHdu();
        if (image.axes >= 2 && image.HasSamples()) {
            return image;
        }
    }
    throw Error(name, "holds no image of two axes or more (HDU " + ListHdus(file) + ")");
}

bool MoveToNamed(FitsFile& file, const std::string& choice)
{
    const auto comma = choice.rfind(',');
    int version = 0; // any
    if (comma != choice.npos) {
        const auto [end, error] = std::from_chars(choice.data() + comma + 1, choice.data() + choice.size(), version);
        if (error != std::errc() || end != choice.data() + choice.size()) {
            return false;
        }
    }
    std::string extension = choice.substr(0, comma);
    int status = 0;
    fits_movnam_hdu(file.Get(), ANY_HDU, extension.data(), version, &status);
    fits_clear_errmsg();
    return status == 0;
}

FitsImage FindChosenImage(FitsFile& file, const std::string& name, const std::string& choice)
{
    int number = 0;
    const auto [end, error] = std::from_chars(choice.data(), choice.data() + choice.size(), number);
    const bool isNumber = error == std::errc() && end == choice.data() + choice.size();
    const bool found = isNumber ? number >= 0 && number < 100000 && file.MoveTo(number + 1) : MoveToNamed(file, choice);
    if (!found) {
        throw Error(name, "has no HDU '" + choice + "' (it has HDU " + ListHdus(file) + ")");
    }
    const FitsImage image = file.DescribeHdu();
    if (image.axes < 2 || !image.HasSamples()) {
        throw Error(name, "holds no image of two axes or more (HDU " + file.HduText() + ")");
    }
    return image;
}

void CheckImage(FitsFile& file, const FitsImage& image, const std::string& name, const std::string& path)
{
    if (image.axes > 3) {
        throw Error(name, "NAXIS is " + std::to_string(image.axes) + "; images of 2 or 3 axes are read");
    }
    CheckSize(name, path, {static_cast<double>(image.sizes[0]), static_cast<double>(image.sizes[1])},
              image.axes == 3 ? static_cast<double>(image.sizes[2]) : 1.0, std::abs(image.bits));
    const std::uint64_t needed = file.NeededBytes(image);
    const std::uint64_t present = std::filesystem::file_size(path);
    if (needed > present && !IsCompressedFile(path)) {
        throw Error(name, "is truncated: its header announces " + std::to_string(needed) + " bytes, there are " +
                              std::to_string(present));
    }
    if (image.compressed) {
        file.CheckDataSum(); // the decoders trust the data, damage could take the process down
    }
}

Header ReadHeader(FitsFile& file, int hdu)
{
    Header header = file.ReadCards();
    int inherit = 0;
    int status = 0;
    fits_read_key(file.Get(), TLOGICAL, "INHERIT", &inherit, nullptr, &status);
    fits_clear_errmsg();
    if (status == 0 && inherit != 0 && hdu > 1 && file.MoveTo(1)) {
        Inherit(header, file.ReadCards());
        file.MoveTo(hdu);
    }
    return header;
}

} // namespace

std::unique_ptr<FrameReader> OpenFits(const std::string& name, const std::string& path, const std::string& choice)
{
    auto file = std::make_unique<FitsFile>(name, path);
    const FitsImage image = choice.empty() ? FindFirstImage(*file, name) : FindChosenImage(*file, name, choice);
    CheckImage(*file, image, name, path);
    const BlankRule blank = ReadBlank(*file, image);
    FrameInfo info;
    info.path = name;
    info.format = "FITS";
    info.width = static_cast<int>(image.sizes[0]);
    info.height = static_cast<int>(image.sizes[1]);
    info.planes = image.axes == 3 ? static_cast<int>(image.sizes[2]) : 1;
    info.bits = image.bits;
    info.blank = blank.value;
    info.header = ReadHeader(*file, image.hdu);
    info.extension = file->ReadExtension();
    return std::make_unique<FitsReader>(std::move(info), path, image, blank.asNan, std::move(file));
}

} // namespace corvane::io
