#include "stack/parts/band_file.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <utility>

#include "corvane/core/error.h"
#include "io/frame.h"
#include "io/reader.h"

namespace corvane::stack {

namespace {

constexpr const char* kPlanCard = "PLANKEY";
constexpr const char* kRowCard = "BANDROW";
constexpr const char* kJudgedCard = "BANDJUDG";
constexpr const char* kBlankCard = "BANDBLNK";
constexpr const char* kBlankValueCard = "BANDVAL";
constexpr const char* kLightsName = "LIGHTS";
constexpr const char* kPlacesName = "REJPLACE";

/// What is known of each sample, by the names of extensions.
struct BandMap {
    const char* name;
    CStlImage Band::*image;
    bool isJudged; ///< it has the rows on which values are judged
};

constexpr BandMap kBandMaps[] = {{"COVERAGE", &Band::coverage, false},
                                 {"NOISE", &Band::noise, false},
                                 {"WEIGHTS", &Band::weights, false},
                                 {"REJECTED", &Band::rejected, true}};

/// Counts of a light, each in two rows: floats hold no whole number beyond 2^24.
constexpr long long RejectedValues::*kCounts[] = {&RejectedValues::values, &RejectedValues::low, &RejectedValues::high};
constexpr long long kCountBase = 1 << 20;
constexpr double kMostRows = 1e9; // any int
constexpr float kLargestExact = 16777216.0F;
constexpr int kRowsOfLights = 7; // whether it shows something, and three counts

CStlImage LightsImage(const Band& band)
{
    CStlImage image(-32, static_cast<int>(band.shows.size()), kRowsOfLights, 1, 1.0, 0.0, 1);
    for (std::size_t i = 0; i < band.shows.size(); ++i) {
        const int light = static_cast<int>(i);
        const auto set = [&](int row, long long value) {
            image.SetPixelGrayRaw(light, row, static_cast<float>(value), 0);
        };
        set(0, band.shows[i]);
        int row = 1;
        for (const auto count : kCounts) {
            const long long value = band.rejectedOf.empty() ? 0 : band.rejectedOf[i].*count;
            set(row++, value / kCountBase);
            set(row++, value % kCountBase);
        }
    }
    return image;
}

void AddLights(const CStlImage& image, Band& whole)
{
    for (std::size_t i = 0; i < whole.shows.size(); ++i) {
        const int light = static_cast<int>(i);
        const auto get = [&](int row) {
            const float v = image.GetPixelGrayRaw(light, row, 0);
            return v >= 0.0F && v <= kLargestExact ? static_cast<long long>(v) : 0;
        };
        whole.shows[i] = whole.shows[i] != 0 || get(0) != 0 ? 1 : 0;
        int row = 1;
        for (const auto count : kCounts) {
            if (!whole.rejectedOf.empty()) {
                whole.rejectedOf[i].*count += get(row) * kCountBase + get(row + 1);
            }
            row += 2;
        }
    }
}

void AddSamples(const CStlImage& from, CStlImage& to)
{
    for (int y = 0; y < to.GetHeight(); ++y) {
        float* const sums = to.GetImageAdr(0, y, 0);
        std::transform(sums, sums + to.GetWidth(), from.GetImageAdr(0, y, 0, 1), sums, std::plus<>());
    }
}

/// A file that says it is a band.
struct BandFile {
    std::string path;
    int firstRow;
    int endRow;
    int firstJudged;
};

BandFile OpenBand(const std::string& path, const std::string& planKey, const Band& whole)
{
    const std::unique_ptr<io::FrameReader> reader = io::OpenFrame(path);
    const io::Header& header = reader->GetHeader();
    const std::optional<std::string> key = header.Text(kPlanCard);
    const std::optional<double> row = header.Number(kRowCard);
    const std::optional<double> judged = header.Number(kJudgedCard);
    if (!key || !row || !judged) {
        throw FileError(path, "is no band of a stack");
    }
    if (*key != planKey) {
        throw FileError(path, "is a band of another plan");
    }
    const CStlImage& image = whole.image;
    const bool fits = reader->Width() == image.GetWidth() && reader->Planes() == image.GetPlanes() && *row >= 0.0 &&
                      *row + reader->Height() <= image.GetHeight() && *judged >= 0.0 && *judged <= kMostRows;
    if (!fits) {
        throw FileError(path, "does not fit the stack of its plan");
    }
    const int first = static_cast<int>(*row);
    return {path, first, first + reader->Height(), static_cast<int>(*judged)};
}

std::string RowsText(int first, int end)
{
    return "rows " + std::to_string(first) + " to " + std::to_string(end - 1) + " of the stack";
}

/// Bands from the first row to the last, of which none is missing and none comes twice.
std::vector<BandFile> InOrder(std::vector<BandFile> bands, int rows)
{
    std::sort(bands.begin(), bands.end(), [](const BandFile& a, const BandFile& b) { return a.firstRow < b.firstRow; });
    int end = 0;
    for (const BandFile& band : bands) {
        if (band.firstRow > end) {
            break;
        }
        if (band.firstRow < end) {
            throw FileError(band.path,
                            RowsText(band.firstRow, std::min(band.endRow, end)) + " are in another band, too");
        }
        end = band.endRow;
    }
    if (end < rows) {
        const auto after = [&](const BandFile& band) { return band.firstRow > end; };
        const auto next = std::find_if(bands.begin(), bands.end(), after);
        throw InputError("band", RowsText(end, next == bands.end() ? rows : next->firstRow) + " are in none");
    }
    return bands;
}

/// Reads the samples of a part of a band to their rows; returns its header.
io::Header ReadPartTo(const std::string& name, int firstRow, CStlImage& image)
{
    const std::unique_ptr<io::FrameReader> reader = io::OpenFrame(name);
    const bool fits = reader->Width() == image.GetWidth() && reader->Planes() == image.GetPlanes() &&
                      reader->Height() <= image.GetHeight() - firstRow;
    if (!fits) {
        throw FileError(name, "does not fit the stack of its plan");
    }
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int row = 0; row < reader->Height(); ++row) {
            reader->ReadRows(plane, row, 1, image.GetImageAdr(0, firstRow + row, plane));
        }
    }
    return reader->GetHeader();
}

/// An image that a band has besides, of a size.
CStlImage LoadPart(const BandFile& band, const char* part, int width, int height)
{
    const std::string name = band.path + "[" + part + "]";
    io::Frame frame = io::Load(name);
    if (frame.image.GetWidth() != width || frame.image.GetHeight() != height || frame.image.GetPlanes() != 1) {
        throw FileError(name, "does not fit the stack of its plan");
    }
    return std::move(frame.image);
}

void ReadOne(const BandFile& band, Band& whole)
{
    const io::Header header = ReadPartTo(band.path, band.firstRow, whole.image);
    if (header.Logical(kBlankCard).value_or(false)) {
        whole.image.SetBlankUsed(1);
        whole.image.SetBlank(static_cast<int>(header.Number(kBlankValueCard).value_or(0.0)));
    }
    for (const auto& [name, map, isJudged] : kBandMaps) {
        if ((whole.*map).GetPlanes() > 0) {
            ReadPartTo(band.path + "[" + name + "]", isJudged ? band.firstJudged : band.firstRow, whole.*map);
        }
    }
    AddLights(LoadPart(band, kLightsName, static_cast<int>(whole.shows.size()), kRowsOfLights), whole);
    if (CStlImage& places = whole.rejectedPlaces; places.GetPlanes() > 0) {
        AddSamples(LoadPart(band, kPlacesName, places.GetWidth(), places.GetHeight()), places);
    }
}

} // namespace

BandNumber ReadBandNumber(const std::string& text)
{
    BandNumber number{};
    int read = 0;
    const bool isRead = std::sscanf(text.c_str(), "%d/%d%n", &number.band, &number.of, &read) == 2 &&
                        text.size() == static_cast<std::size_t>(read);
    if (!isRead || number.band < 1 || number.band > number.of) {
        throw ParameterError("band", text, "must be NUMBER/OF, from 1/8 to 8/8 for 8 bands");
    }
    return number;
}

RowSpan RowsOf(const BandNumber& number, int rows)
{
    const auto [band, of] = number;
    if (band < 1 || band > of || of > rows) {
        throw ParameterError("band", std::to_string(band) + "/" + std::to_string(of),
                             "must be 1 to the number of bands, of which there are at most " + std::to_string(rows) +
                                 ", the rows of the stack");
    }
    const auto edge = [&, of = number.of](int i) { return static_cast<int>(static_cast<long long>(rows) * i / of); };
    return {edge(band - 1), edge(band)};
}

void WriteBand(const std::string& path, const Band& band, const std::string& planKey)
{
    io::Header header;
    header.Set(kPlanCard, planKey, "number for the plan of the stack");
    header.Set(kRowCard, band.firstRow, "first row of the band, from 0");
    header.Set(kJudgedCard, band.firstJudged, "first row of REJECTED, which has those of the lights");
    header.Set(kBlankCard, band.image.IsBlankUsed() != 0, "some pixels are in no light");
    header.Set(kBlankValueCard, band.image.GetBlank(), "sample of such a pixel");
    const CStlImage lights(LightsImage(band));
    std::vector<io::Extension> extensions;
    for (const auto& [name, map, isJudged] : kBandMaps) {
        if ((band.*map).GetPlanes() > 0) {
            extensions.push_back({name, band.*map});
        }
    }
    extensions.push_back({kLightsName, lights});
    if (band.rejectedPlaces.GetPlanes() > 0) {
        extensions.push_back({kPlacesName, band.rejectedPlaces});
    }
    CStlImage samples(band.image.Shared());
    samples.SetBlankUsed(0); // a blank is stored as what it is, not as NaN
    io::Save(path, samples, header, {-32}, extensions);
}

void ReadBands(const std::vector<std::string>& paths, const std::string& planKey, Band& whole, const Run& run)
{
    std::vector<BandFile> bands;
    for (const std::string& path : paths) {
        bands.push_back(OpenBand(path, planKey, whole));
    }
    bands = InOrder(std::move(bands), whole.image.GetHeight());
    Stage stage(run, "Joining bands...", static_cast<int>(bands.size()));
    for (const BandFile& band : bands) {
        ReadOne(band, whole);
        stage.Step();
    }
    whole.image.UnlockAll();
}

} // namespace corvane::stack
