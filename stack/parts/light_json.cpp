#include "stack/parts/light_json.h"

#include <algorithm>
#include <utility>

#include "stars/sky_blocks.h"

namespace corvane {

template <stack::Either<FieldMap> T, class Visit>
void ForEachField(T& map, Visit visit)
{
    visit("x", map.x);
    visit("y", map.y);
    visit("tilt_u", map.tiltU);
    visit("tilt_v", map.tiltV);
    visit("x0", map.x0);
    visit("y0", map.y0);
    visit("size", map.size);
}

} // namespace corvane

namespace corvane::stack {

template <Either<FrameLevel> T, class Visit>
void ForEachField(T& level, Visit visit)
{
    visit("background", level.background);
    visit("spread", level.spread);
    visit("noise", level.noise);
}

template <Either<FrameReport> T, class Visit>
void ForEachField(T& report, Visit visit)
{
    visit("file", report.file);
    visit("used", report.used);
    visit("reason", report.reason);
    visit("dx", report.dx);
    visit("dy", report.dy);
    visit("angle", report.angle);
    visit("scale", report.scale);
    visit("correlation", report.correlation);
    visit("residual", report.residual);
    visit("matched", report.matched);
    visit("model", report.model);
    visit("map", report.map);
    visit("stars", report.stars);
    visit("fwhm", report.fwhm);
    visit("background", report.background);
    visit("noise", report.noise);
    visit("flux_ratio", report.fluxRatio);
    visit("cosmic_hits", report.cosmicHits);
    visit("weight", report.weight);
}

namespace {

constexpr double kFarthestShift = 1e6; // [pixels]; no image is as large

constexpr double stars::FieldStar::*kNumbersOfStar[] = {
    &stars::FieldStar::x,     &stars::FieldStar::y,    &stars::FieldStar::peak, &stars::FieldStar::sky,
    &stars::FieldStar::noise, &stars::FieldStar::flux, &stars::FieldStar::fwhm, &stars::FieldStar::elongation};
constexpr bool stars::FieldStar::*kFlagsOfStar[] = {&stars::FieldStar::isSaturated, &stars::FieldStar::isHot,
                                                    &stars::FieldStar::isElongated, &stars::FieldStar::isAtEdge,
                                                    &stars::FieldStar::isCrowded};

/// Its numbers, then its flags: a light has hundreds, which names would make three times as long.
Json StarJson(const stars::FieldStar& star)
{
    Json values = Json::array();
    for (const auto number : kNumbersOfStar) {
        values.push_back(DoubleJson(star.*number));
    }
    for (const auto flag : kFlagsOfStar) {
        values.push_back(star.*flag);
    }
    return values;
}

stars::FieldStar StarOf(const Json& json)
{
    stars::FieldStar star;
    std::size_t at = 0;
    for (const auto number : kNumbersOfStar) {
        star.*number = DoubleOf(json.at(at++));
    }
    for (const auto flag : kFlagsOfStar) {
        star.*flag = json.at(at++).get<bool>();
    }
    return star;
}

/// Samples of a size, which JSON states.
struct PackedSamples {
    int width;
    int height;
    const std::string& digits;

    explicit PackedSamples(const Json& json)
        : width(json.at("width").get<int>()), height(json.at("height").get<int>()),
          digits(json.at("samples").get_ref<const std::string&>())
    {}
};

Json PackedJson(int width, int height, const std::vector<float>& samples)
{
    return {{"width", width}, {"height", height}, {"samples", PackFloats(samples)}};
}

Json SkyJson(const stars::CellGrid& sky)
{
    std::vector<float> values;
    for (int row = 0; row < sky.Rows(); ++row) {
        for (int column = 0; column < sky.Columns(); ++column) {
            values.push_back(sky.Value(column, row));
        }
    }
    return PackedJson(sky.Width(), sky.Height(), values);
}

stars::CellGrid SkyOf(const Json& json)
{
    const PackedSamples packed(json);
    const double pixels =
        1.0 * packed.width * packed.height; // there are digits for one block of 256, or this is no sky
    if (packed.width < 1 || packed.height < 1 || pixels > 256.0 * static_cast<double>(packed.digits.size())) {
        throw WrongValue("a sky has another size than it says");
    }
    stars::CellGrid sky = stars::UnknownSkyBlocks(packed.width, packed.height);
    const auto cells = static_cast<std::size_t>(sky.Rows()) * static_cast<std::size_t>(sky.Columns());
    auto value = UnpackFloats(packed.digits, cells);
    for (std::size_t i = 0; i < cells; ++i) {
        const auto columns = static_cast<std::size_t>(sky.Columns());
        sky.Value(static_cast<int>(i % columns), static_cast<int>(i / columns)) = value[i];
    }
    return sky;
}

Json ThumbnailJson(const CStlImage& image)
{
    const float* const samples = image.GetImageAdr(0, 0, 0, 1);
    return PackedJson(image.GetWidth(), image.GetHeight(),
                      {samples, samples + static_cast<std::ptrdiff_t>(image.GetWidth()) * image.GetHeight()});
}

CStlImage ThumbnailOf(const Json& json)
{
    const PackedSamples packed(json);
    if (packed.width < 1 || packed.height < 1) {
        throw WrongValue("a thumbnail has no size");
    }
    const auto count = static_cast<std::size_t>(packed.width) * static_cast<std::size_t>(packed.height);
    const std::vector<float> samples = UnpackFloats(packed.digits, count);
    CStlImage image(-32, packed.width, packed.height, 1, 1.0, 0.0, 1);
    std::copy(samples.begin(), samples.end(), image.GetImageAdr(0, 0, 0));
    return image;
}

Json HitsJson(const LightHits& hits)
{
    Json planes = Json::array();
    for (const std::vector<CosmicHit>& plane : hits) {
        std::vector<int> places;
        std::vector<float> mended;
        for (const CosmicHit& hit : plane) {
            places.insert(places.end(), {hit.x, hit.y});
            mended.push_back(hit.mended);
        }
        planes.push_back({{"places", places}, {"mended", PackFloats(mended)}});
    }
    return planes;
}

LightHits HitsOf(const Json& json)
{
    LightHits hits;
    for (const Json& plane : json) {
        const auto places = plane.at("places").get<std::vector<int>>();
        const std::vector<float> mended =
            UnpackFloats(plane.at("mended").get_ref<const std::string&>(), places.size() / 2);
        std::vector<CosmicHit>& of = hits.emplace_back();
        for (std::size_t i = 0; i < mended.size(); ++i) {
            of.push_back({places[2 * i], places[2 * i + 1], mended[i]});
        }
    }
    return hits;
}

/// Refuses a place that no light can have.
void CheckPlace(const FrameReport& report)
{
    const auto isFinite = [](double value) { return std::isfinite(value); };
    const bool isNear = std::fabs(report.dx) <= kFarthestShift && std::fabs(report.dy) <= kFarthestShift; // NaN is not
    const bool isPlaced = isNear && std::isfinite(report.angle) && std::isfinite(report.scale) && report.scale > 0.0;
    const bool hasMap = !report.map || (std::all_of(report.map->x.begin(), report.map->x.end(), isFinite) &&
                                        std::all_of(report.map->y.begin(), report.map->y.end(), isFinite) &&
                                        std::isfinite(report.map->size) && report.map->size > 0.0);
    const bool hasWeight = report.weight >= 0.0 && report.weight <= 1.0;
    if (!isPlaced || !hasMap || !hasWeight) {
        throw WrongValue("no light can lie as " + report.file);
    }
}

} // namespace

Json ToJson(const LightRecord& light)
{
    Json json{{"report", JsonOf(light.report)}, {"levels", JsonOf(light.seen.levels)}};
    for (const stars::FieldStar& star : light.seen.stars) {
        json["stars"].push_back(StarJson(star));
    }
    for (const stars::CellGrid& sky : light.seen.sky) {
        json["sky"].push_back(SkyJson(sky));
    }
    if (light.seen.thumbnail.GetPlanes() > 0) {
        json["thumbnail"] = ThumbnailJson(light.seen.thumbnail);
    }
    if (!light.hits.empty()) {
        json["hits"] = HitsJson(light.hits);
    }
    return json;
}

LightRecord LightOf(const Json& json)
{
    LightRecord light;
    FromJson(json.at("report"), light.report);
    CheckPlace(light.report);
    FromJson(json.at("levels"), light.seen.levels);
    for (const Json& star : json.value("stars", Json::array())) {
        light.seen.stars.push_back(StarOf(star));
    }
    for (const Json& sky : json.value("sky", Json::array())) {
        light.seen.sky.push_back(SkyOf(sky));
    }
    if (json.contains("thumbnail")) {
        light.seen.thumbnail = ThumbnailOf(json["thumbnail"]);
    }
    light.hits = HitsOf(json.value("hits", Json::array()));
    return light;
}

} // namespace corvane::stack
