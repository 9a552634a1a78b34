#include "io/formats/fits_file.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "io/card.h"
#include "io/formats/cards.h"

namespace corvane::io {
namespace {

constexpr int kMostAxes = 999;

/// Headers of more are no headers. Cards take about twice the room of their text.
std::uint64_t MostHeaderBytes()
{
    return std::clamp<std::uint64_t>(MemoryBudget() / 8, 1U << 20U, 8U << 20U);
}

int ReadBits(const FitsKeys& keys, const char* keyword)
{
    const auto bits = keys.Integer(keyword).value_or(0);
    if (bits != 8 && bits != 16 && bits != 32 && bits != 64 && bits != -32 && bits != -64) {
        keys.Fail(keyword, "8, 16, 32, 64, -32 or -64");
    }
    return static_cast<int>(bits);
}

FitsImage ReadImage(const FitsKeys& keys, const std::string& prefix)
{
    FitsImage image;
    image.bits = ReadBits(keys, (prefix + "BITPIX").c_str());
    image.sizes.resize(static_cast<std::size_t>(keys.Whole(prefix + "NAXIS", 0, kMostAxes)));
    for (std::size_t i = 0; i < image.sizes.size(); ++i) {
        image.sizes[i] = keys.Whole(prefix + "NAXIS" + std::to_string(i + 1), 0, kAny);
    }
    return image;
}

/// Sizes come from a file that may say anything: the product is taken in floating point, where it cannot wrap.
std::uint64_t CountDataBytes(const FitsKeys& keys)
{
    const FitsImage layout = ReadImage(keys, "");
    if (layout.sizes.empty()) {
        return 0;
    }
    const bool isPrimary = keys.Has("SIMPLE");
    const bool hasGroups = isPrimary && keys.IsTrue("GROUPS") && layout.sizes[0] == 0;
    double samples = 1.0;
    for (std::size_t i = hasGroups ? 1 : 0; i < layout.sizes.size(); ++i) {
        samples *= static_cast<double>(layout.sizes[i]);
    }
    if (!isPrimary || hasGroups) {
        samples += static_cast<double>(keys.Whole("PCOUNT", 0, kAny, 0));
        samples *= static_cast<double>(keys.Whole("GCOUNT", 0, kAny, 1));
    }
    const double bytes = samples * std::abs(layout.bits) / 8;
    return bytes < 9e18 ? static_cast<std::uint64_t>(bytes) : std::numeric_limits<std::uint64_t>::max();
}

bool IsEnd(std::string_view card)
{
    return card.starts_with("END") && card.find_first_not_of(' ', 3) == card.npos;
}

} // namespace

bool FitsHdu::IsCompressedImage() const
{
    return keys.Text("XTENSION") == "BINTABLE" && keys.IsTrue("ZIMAGE");
}

std::uint64_t FitsHdu::End() const
{
    const std::uint64_t left = std::numeric_limits<std::uint64_t>::max() - data;
    return dataBytes > left - kBlockBytes ? std::numeric_limits<std::uint64_t>::max()
                                          : data + (dataBytes + kBlockBytes - 1) / kBlockBytes * kBlockBytes;
}

std::string FitsHdu::Label() const
{
    const std::string extension = keys.Text("EXTNAME");
    std::string what;
    try {
        const std::string xtension = keys.Text("XTENSION");
        const bool table = (xtension == "BINTABLE" || xtension == "TABLE") && !IsCompressedImage();
        const FitsImage image = DescribeImage(*this);
        what = table ? "a table" : image.sizes.empty() ? "NAXIS = 0" : SizesText(image.sizes);
    } catch (const Error& error) {
        what = error.Reason();
    }
    return std::to_string(number) + (extension.empty() ? "" : " " + extension) + ": " + what;
}

Header FitsHdu::CarriedCards() const
{
    Header header;
    AddCards(header, cards);
    return header;
}

CFitsExtension FitsHdu::Extension() const
{
    Header all; // in which every card is printable
    for (std::size_t i = 0; i < cards.size(); i += kCardLength) {
        all.AddCard(std::string_view(cards).substr(i, kCardLength));
    }
    CFitsExtension extension;
    extension.SetNumber(number);
    extension.SetName(all.Text("EXTNAME").value_or("").c_str());
    const double version = all.Number("EXTVER").value_or(1.0);
    extension.SetVersion(std::abs(version) < 1e9 ? static_cast<int>(version) : 1);
    for (const std::string& card : all.Cards()) {
        extension.AddCard(card.c_str());
    }
    return extension;
}

double FitsImage::Planes() const
{
    double planes = 1.0;
    for (std::size_t i = 2; i < sizes.size(); ++i) {
        planes *= static_cast<double>(sizes[i]);
    }
    return planes;
}

bool FitsImage::HasSamples() const
{
    return sizes.size() >= 2 && std::find(sizes.begin(), sizes.end(), 0) == sizes.end();
}

FitsImage DescribeImage(const FitsHdu& hdu)
{
    if (hdu.IsCompressedImage()) {
        return ReadImage(hdu.keys, "Z");
    }
    const std::string kind = hdu.keys.Text("XTENSION");
    return hdu.keys.Has("SIMPLE") || kind == "IMAGE" || kind == "IUEIMAGE" ? ReadImage(hdu.keys, "") : FitsImage{};
}

std::string SizesText(const std::vector<long long>& sizes)
{
    constexpr std::size_t kMostShown = 8;
    std::string text;
    for (std::size_t i = 0; i < std::min(sizes.size(), kMostShown); ++i) {
        text += (i == 0 ? "" : " x ") + std::to_string(sizes[i]);
    }
    return sizes.size() > kMostShown ? text + " x ..." : text;
}

FitsFile::FitsFile(std::string name, const std::string& path) : name_(std::move(name)), source_(OpenBytes(name_, path))
{
    if (!ReadHdu(0, 0)) {
        throw FileError(name_, "cannot be opened as FITS: " + (trouble_.empty() ? "it holds nothing" : trouble_));
    }
}

/// The cards of the header that begins at `start`, up to END; none where the file ends or something else begins.
std::string FitsFile::ReadCards(std::uint64_t start)
{
    std::string cards;
    std::string block(kBlockBytes, '\0');
    for (;;) {
        const std::size_t got =
            source_->Read(start + cards.size(), {reinterpret_cast<unsigned char*>(block.data()), kBlockBytes});
        if (cards.empty() && (got == 0 || !(block.starts_with("SIMPLE ") || block.starts_with("XTENSION")))) {
            trouble_ = got == 0 ? "" : "bytes that are no HDU";
            return {};
        }
        for (std::size_t i = 0; i + kCardLength <= got; i += kCardLength) {
            if (IsEnd(std::string_view(block).substr(i, kCardLength))) {
                return cards.append(block, 0, i);
            }
        }
        cards.append(block, 0, got);
        if (got < kBlockBytes || cards.size() > MostHeaderBytes()) {
            trouble_ = got < kBlockBytes ? "a header without END"
                                         : "a header of more than " + std::to_string(MostHeaderBytes()) + " bytes";
            return {};
        }
    }
}

bool FitsFile::ReadHdu(std::uint64_t start, int number)
{
    trouble_.clear();
    std::string cards = ReadCards(start);
    if (cards.empty()) {
        return false;
    }
    hdu_.number = number;
    hdu_.start = start;
    hdu_.data = start + (cards.size() + kCardLength + kBlockBytes - 1) / kBlockBytes * kBlockBytes;
    hdu_.keys = FitsKeys(name_, cards);
    hdu_.cards = std::move(cards);
    hdu_.dataBytes = CountDataBytes(hdu_.keys);
    return true;
}

bool FitsFile::MoveTo(int number)
{
    trouble_.clear();
    if (number < hdu_.number && !ReadHdu(0, 0)) {
        return false;
    }
    while (hdu_.number < number) {
        if (!ReadHdu(hdu_.End(), hdu_.number + 1)) {
            return false;
        }
    }
    return true;
}

bool FitsFile::MoveTo(const std::string& extension, long long version)
{
    for (bool found = MoveTo(0); found; found = MoveTo(hdu_.number + 1)) {
        if (SameWord(hdu_.keys.Text("EXTNAME"), extension) &&
            (version == 0 || hdu_.keys.Integer("EXTVER").value_or(1) == version)) {
            return true;
        }
    }
    return false;
}

} // namespace corvane::io
