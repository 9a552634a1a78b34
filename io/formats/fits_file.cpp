#include "io/formats/fits_file.h"

#include <array>
#include <cmath>
#include <filesystem>

#include "io/error.h"
#include "io/formats/cards.h"

namespace corvane::io {
namespace {

constexpr std::uint64_t kBlockBytes = 2880; // a file ends with a whole block

/// CFITSIO's own words for a failure; its stack of messages is left empty.
std::string FailureText(int status)
{
    std::array<char, FLEN_STATUS> text{};
    fits_get_errstatus(status, text.data());
    std::string reason(text.data());
    std::array<char, FLEN_ERRMSG> message{};
    if (fits_read_errmsg(message.data()) != 0) {
        reason += std::string(" (") + message.data() + ")";
    }
    fits_clear_errmsg();
    return reason;
}

} // namespace

bool FitsImage::HasSamples() const
{
    return axes > 0 && sizes[0] > 0 && (axes < 2 || sizes[1] > 0) && (axes < 3 || sizes[2] > 0);
}

std::string FitsImage::Sizes() const
{
    std::string text = std::to_string(sizes[0]);
    for (int i = 1; i < axes && i < 3; ++i) {
        text += " x " + std::to_string(sizes[i]);
    }
    return axes > 3 ? text + " x ..." : text;
}

FitsFile::FitsFile(std::string name, const std::string& file) : name_(std::move(name))
{
    int status = 0;
    // The absolute form keeps a leading '~' from meaning a home folder.
    const std::string absolute = std::filesystem::absolute(file).string();
    fits_open_diskfile(&file_, absolute.c_str(), READONLY, &status);
    Check(status, "cannot be opened as FITS");
}

FitsFile::~FitsFile()
{
    int status = 0;
    fits_close_file(file_, &status);
    fits_clear_errmsg();
}

void FitsFile::Check(int status, const std::string& action) const
{
    if (status != 0) {
        throw Error(name_, action + ": " + FailureText(status));
    }
}

bool FitsFile::MoveTo(int hdu)
{
    int status = 0;
    fits_movabs_hdu(file_, hdu, nullptr, &status);
    trouble_ = status == 0 || status == END_OF_FILE ? "" : FailureText(status);
    fits_clear_errmsg();
    return status == 0;
}

FitsImage FitsFile::DescribeHdu()
{
    int status = 0;
    int type = 0;
    FitsImage image;
    fits_get_hdu_num(file_, &image.hdu);
    fits_get_hdu_type(file_, &type, &status);
    image.compressed = fits_is_compressed_image(file_, &status) != 0;
    if (type == IMAGE_HDU || image.compressed) {
        fits_get_img_paramll(file_, 3, &image.bits, &image.axes, image.sizes, &status);
    }
    Check(status, "the header cannot be read");
    return image;
}

std::string FitsFile::HduText()
{
    const FitsImage image = DescribeHdu();
    std::array<char, FLEN_VALUE> name{};
    int status = 0;
    fits_read_key(file_, TSTRING, "EXTNAME", name.data(), nullptr, &status);
    fits_clear_errmsg();
    int type = 0;
    status = 0;
    fits_get_hdu_type(file_, &type, &status);
    const bool table = type != IMAGE_HDU && !image.compressed;
    const std::string label = std::to_string(image.hdu - 1) + (name[0] == '\0' ? "" : std::string(" ") + name.data());
    return label + (table ? ": a table" : image.axes == 0 ? ": NAXIS = 0" : ": " + image.Sizes());
}

LONGLONG FitsFile::Key(const char* keyword)
{
    int status = 0;
    LONGLONG value = 0;
    fits_read_key(file_, TLONGLONG, keyword, &value, nullptr, &status);
    Check(status, std::string(keyword) + " cannot be read");
    return value;
}

void FitsFile::CheckDataSum()
{
    int status = 0;
    int dataSum = 0;
    int hduSum = 0;
    fits_verify_chksum(file_, &dataSum, &hduSum, &status);
    Check(status, "cannot be read");
    if (dataSum < 0) {
        throw Error(name_, "is damaged: its data do not have the sum that DATASUM states");
    }
}

std::uint64_t FitsFile::NeededBytes(const FitsImage& image)
{
    int status = 0;
    LONGLONG start = 0;
    fits_get_hduaddrll(file_, nullptr, &start, nullptr, &status);
    Check(status, "the header cannot be read");
    // Sizes come from a file that may say anything: the product is taken in floating point, where it cannot wrap.
    double bytes = static_cast<double>(start);
    if (image.compressed) {
        bytes += static_cast<double>(Key("NAXIS1")) * static_cast<double>(Key("NAXIS2")) +
                 static_cast<double>(Key("PCOUNT"));
    } else {
        double samples = 1.0;
        for (int i = 0; i < image.axes; ++i) {
            samples *= static_cast<double>(image.sizes[i]);
        }
        bytes += samples * std::abs(image.bits) / 8;
    }
    return bytes < 9e18 ? (static_cast<std::uint64_t>(bytes) + kBlockBytes - 1) / kBlockBytes * kBlockBytes
                        : UINT64_MAX;
}

std::string FitsFile::CardText()
{
    int status = 0;
    int count = 0;
    char* text = nullptr;
    fits_hdr2str(file_, 0, nullptr, 0, &text, &count, &status);
    Check(status, "the header cannot be read");
    std::string cards(text);
    fits_free_memory(text, &status);
    return cards;
}

Header FitsFile::ReadCards()
{
    Header header;
    AddCards(header, CardText());
    return header;
}

CFitsExtension FitsFile::ReadExtension()
{
    constexpr std::size_t kCardLength = 80;
    const std::string text = CardText();
    Header all;
    CFitsExtension extension;
    for (std::size_t i = 0; i < text.size() && text.compare(i, 8, "END     ") != 0; i += kCardLength) {
        all.AddCard(std::string_view(text).substr(i, kCardLength));
        extension.AddCard(all.Cards().back().c_str());
    }
    int hdu = 1;
    fits_get_hdu_num(file_, &hdu);
    extension.SetNumber(hdu - 1);
    extension.SetName(all.Text("EXTNAME").value_or("").c_str());
    const double version = all.Number("EXTVER").value_or(1.0);
    extension.SetVersion(std::abs(version) < 1e9 ? static_cast<int>(version) : 1);
    return extension;
}

} // namespace corvane::io
