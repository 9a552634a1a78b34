#include <algorithm>
#include <cmath>

#include "corvane/core/error.h"
#include "corvane/core/truncate.h"
#include "io/formats/cards.h"
#include "io/formats/fits_choice.h"
#include "io/formats/fits_samples.h"
#include "io/formats/fits_sums.h"
#include "io/formats/formats.h"
#include "io/formats/limits.h"
#include "io/formats/tiled_samples.h"

namespace corvane::io {
namespace {

/// What of a FITS file is read.
struct FitsView {
    int hdu = 0;
    FitsImage image;
    long long firstPlane = 0;
    StoredScale scale;
};

/// Undefined samples get the physical value of BLANK when it names them alone, see FrameReader; that value, or nothing.
std::optional<int> BlankValue(long long stored, const StoredScale& scale)
{
    const double physical = static_cast<double>(stored) * scale.scale + scale.zero;
    const int whole = Truncate(physical);
    const bool exact = whole == physical && static_cast<double>(static_cast<float>(physical)) == physical;
    return exact && std::abs(scale.scale) >= 1.0 ? std::optional(whole) : std::nullopt;
}

/// BLANK of integers; a text there, as some programs write, says nothing.
std::optional<long long> StoredBlank(const FitsHdu& hdu, const FitsImage& image)
{
    const bool isOfTiles = hdu.IsCompressedImage() && hdu.keys.Has("ZBLANK");
    return image.bits > 0 ? hdu.keys.Integer(isOfTiles ? "ZBLANK" : "BLANK") : std::nullopt;
}

StoredScale ReadScale(const FitsKeys& keys)
{
    StoredScale scale{keys.Number("BSCALE", 1.0), keys.Number("BZERO", 0.0), {}};
    if (scale.scale == 0.0) {
        keys.Fail("BSCALE", "a number other than 0");
    }
    return scale;
}

/// The labels of the first HDUs.
std::vector<std::string> LabelHdus(FitsFile& file)
{
    constexpr int kMost = 12;
    std::vector<std::string> labels;
    for (int hdu = 0; hdu < kMost && file.MoveTo(hdu); ++hdu) {
        labels.push_back(file.Hdu().Label());
    }
    if (!file.Trouble().empty()) {
        labels.push_back("then " + file.Trouble());
    }
    return labels;
}

std::string ListHdus(FitsFile& file)
{
    std::string list;
    for (const std::string& label : LabelHdus(file)) {
        list += (list.empty() ? "" : "; ") + label;
    }
    return list;
}

class FitsReader : public FrameReader {
public:
    FitsReader(FrameInfo info, std::string path, FitsView view, std::unique_ptr<FitsFile> file)
        : FrameReader(std::move(info)), path_(std::move(path)), view_(std::move(view)), file_(std::move(file))
    {
        OpenSamples();
    }

    std::string Contradiction() override
    {
        if (file_ == nullptr) {
            Reopen();
        }
        switch (CompareSums(*file_)) {
        case Sums::kHold:
            return {};
        case Sums::kHeaderDiffers:
            return "the header does not fit the sum in CHECKSUM; the data fit theirs";
        default:
            return "the data do not have the sum that the header states";
        }
    }

    std::vector<std::string> Parts() override
    {
        FitsFile file(Path(), path_);
        std::vector<std::string> labels = LabelHdus(file);
        return labels.size() > 1 ? labels : std::vector<std::string>();
    }

    void Close() override
    {
        samples_.reset();
        file_.reset();
    }

private:
    void Read(int plane, int firstRow, int rowCount, float* samples) override
    {
        if (file_ == nullptr) {
            Reopen();
        }
        samples_->Read(view_.firstPlane + plane, firstRow, rowCount, samples);
    }

    void Reopen()
    {
        auto file = std::make_unique<FitsFile>(Path(), path_);
        if (!file->MoveTo(view_.hdu) || DescribeImage(file->Hdu()) != view_.image) {
            throw FileError(Path(), "has changed since it was opened");
        }
        file_ = std::move(file);
        OpenSamples();
    }

    void OpenSamples()
    {
        samples_ = file_->Hdu().IsCompressedImage() ? OpenTiledSamples(*file_, view_.scale)
                                                    : OpenPlainSamples(*file_, view_.image, view_.scale);
    }

    std::string path_;
    FitsView view_;
    std::unique_ptr<FitsFile> file_;
    std::unique_ptr<FitsSamples> samples_; ///< of the file
};

/// Goes to the first HDU that holds an image of two axes or more.
FitsImage FindFirstImage(FitsFile& file)
{
    for (bool found = file.MoveTo(0); found; found = file.MoveTo(file.Hdu().number + 1)) {
        if (FitsImage image = DescribeImage(file.Hdu()); image.HasSamples()) {
            return image;
        }
    }
    throw FileError(file.Name(), "holds no image of two axes or more (HDU " + ListHdus(file) + ")");
}

FitsImage FindChosenImage(FitsFile& file, const FitsChoice& choice)
{
    constexpr long long kMost = 100000;
    const bool found =
        choice.number ? *choice.number >= 0 && *choice.number < kMost && file.MoveTo(static_cast<int>(*choice.number))
                      : file.MoveTo(choice.extension, choice.version);
    if (!found) {
        throw FileError(file.Name(), "has no HDU '" + choice.hdu + "' (it has HDU " + ListHdus(file) + ")");
    }
    FitsImage image = DescribeImage(file.Hdu());
    if (!image.HasSamples()) {
        throw FileError(file.Name(), "holds no image of two axes or more (HDU " + file.Hdu().Label() + ")");
    }
    return image;
}

/// The planes that are read: all of a frame, one of a cube.
void ChoosePlanes(const std::string& name, const FitsChoice& choice, Cubes cubes, const FitsImage& image,
                  FrameInfo& info)
{
    const double planes = image.Planes();
    const bool isFrame = planes == 1.0 || planes == 3.0;
    const std::string which = SizesText(image.sizes) + " samples";
    if (choice.plane && static_cast<double>(*choice.plane) > planes) {
        throw FileError(name, "has no plane " + std::to_string(*choice.plane) + " in its " + which);
    }
    if (!isFrame && !choice.plane && cubes == Cubes::kRefuse) {
        throw FileError(name, "has " + std::to_string(static_cast<long long>(planes)) + " planes in its " + which +
                                  "; frames of 1 or 3 planes are read, and of others one plane, as '" +
                                  WithPlane(name, choice.hdu, "1") + "'");
    }
    info.axes = image.sizes;
    info.plane = !isFrame || choice.plane ? choice.plane.value_or(1) : 0;
    info.planes = info.plane == 0 && planes == 3.0 ? 3 : 1;
}

void CheckImage(FitsFile& file, const FitsImage& image, int planes, const std::string& path)
{
    const std::string& name = file.Name();
    CheckSize(name, path, {static_cast<double>(image.sizes[0]), static_cast<double>(image.sizes[1])}, planes,
              std::abs(image.bits));
    const std::uint64_t needed = file.Hdu().End();
    if (const auto present = file.Source().Size(); present && needed > *present) {
        throw FileError(name, "is truncated: its header announces " + std::to_string(needed) + " bytes, there are " +
                                  std::to_string(*present));
    }
    if (file.Hdu().IsCompressedImage() && CompareSums(file) == Sums::kDataDiffer) {
        throw FileError(name, "is damaged: its data do not have the sum that DATASUM states");
    }
}

Header ReadHeader(FitsFile& file)
{
    const int hdu = file.Hdu().number;
    Header header = file.Hdu().CarriedCards();
    if (hdu > 0 && file.Hdu().keys.IsTrue("INHERIT") && file.MoveTo(0)) {
        Inherit(header, file.Hdu().CarriedCards());
        file.MoveTo(hdu);
    }
    return header;
}

} // namespace

std::unique_ptr<FrameReader> OpenFits(const std::string& name, const std::string& path, const std::string& chosen,
                                      Cubes cubes)
{
    const auto choice = ParseChoice(chosen);
    if (!choice) {
        throw FileError(name, "'" + chosen + "' names no plane; they are counted from 1, as in 'plane 1'");
    }
    auto file = std::make_unique<FitsFile>(name, path);
    FitsView view;
    view.image = choice->hdu.empty() ? FindFirstImage(*file) : FindChosenImage(*file, *choice);
    view.hdu = file->Hdu().number;
    FrameInfo info;
    ChoosePlanes(name, *choice, cubes, view.image, info);
    CheckImage(*file, view.image, info.planes, path);
    view.firstPlane = std::max(info.plane - 1, 0LL);
    view.scale = ReadScale(file->Hdu().keys);
    if (const auto stored = StoredBlank(file->Hdu(), view.image)) {
        info.blank = BlankValue(*stored, view.scale);
        view.scale.undefined = info.blank ? std::nullopt : stored;
    }
    info.path = name;
    info.format = "FITS";
    info.width = static_cast<int>(view.image.sizes[0]);
    info.height = static_cast<int>(view.image.sizes[1]);
    info.bits = view.image.bits;
    info.header = ReadHeader(*file);
    info.extension = file->Hdu().Extension();
    return std::make_unique<FitsReader>(std::move(info), path, std::move(view), std::move(file));
}

} // namespace corvane::io
