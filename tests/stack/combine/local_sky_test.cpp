#include "stack/combine/local_sky.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "stars/sky_blocks.h"
#include "tests/stack/test_night.h"

namespace corvane::stack {

namespace {

/// The cubic spline about 0.
double Bell(double t)
{
    const double d = std::fabs(t);
    return d < 1.0 ? 2.0 / 3.0 - d * d + d * d * d / 2.0 : std::pow(std::max(2.0 - d, 0.0), 3) / 6.0;
}

double Plane(double x, double y)
{
    return 300.0 - 0.4 * x + 0.7 * y;
}

/// Faint light that fills much of a frame, about (210, 140).
double Nebula(double x, double y)
{
    return 400.0 * std::exp(-(std::pow(x - 210.0, 2) + std::pow(y - 140.0, 2)) / (2.0 * 80.0 * 80.0));
}

} // namespace

TEST(OffsetField, IsAPlaneAndASplineOfTheRest)
{
    stars::CellGrid cells(640, 400, 120);       // 5 x 3
    const auto wave = [](int column, int row) { // that no plane takes a part of
        const int c = std::clamp(column, 0, 4) - 2;
        const int r = std::clamp(row, 0, 2) - 1;
        return 3.0 * (c * c - 2) * (3 * r * r - 2);
    };
    const auto smooth = [&](int c, int r) {
        double sum = 0.0;
        for (int i = 0; i < 9; ++i) {
            const int x = std::clamp(c, 0, 4) + i % 3 - 1;
            const int y = std::clamp(r, 0, 2) + i / 3 - 1;
            sum += wave(x, y) * (i % 3 == 1 ? 2.0 : 1.0) * (i / 3 == 1 ? 2.0 : 1.0) / 16.0;
        }
        return sum;
    };
    const auto fill = [&](double height) {
        for (int i = 0; i < 15; ++i) {
            const double plane = Plane(63.5 + 128.0 * (i % 5), (i / 5 + 0.5) * 400.0 / 3.0 - 0.5);
            cells.Value(i % 5, i / 5) = static_cast<float>(plane + height * wave(i % 5, i / 5));
        }
        return cells;
    };
    const OffsetField waved(fill(1.0));
    fill(0.0).Value(1, 1) += 900.0F; // a galaxy in it
    cells.Value(4, 2) = cells.Value(4, 1) = NAN;
    const OffsetField flat(cells);
    for (const double y : {-200.0, 0.0, 131.7, 250.0, 399.0, 700.0}) {
        const double places[] = {-90.5, 0.0, 1.0, 300.25, 301.0, 555.5, 800.0};
        double row[std::size(places)];
        waved.FillRow(y, places, static_cast<int>(std::size(places)), row);
        for (std::size_t k = 0; k < std::size(places); ++k) {
            const double x = places[k];
            double expected = Plane(x, y);
            for (int i = 0; i < 400; ++i) {
                const int c = i % 20 - 8;
                const int r = i / 20 - 8;
                const double share = Bell((x + 0.5) / 128.0 - 0.5 - c) * Bell((y + 0.5) * 3.0 / 400.0 - 0.5 - r);
                expected += share * smooth(c, r);
            }
            ASSERT_NEAR(row[k], expected, 1e-3) << x << ' ' << y;
            ASSERT_EQ(row[k], waved.At(x, y));
            ASSERT_NEAR(flat.At(x, y), Plane(x, y), 1e-3) << x << ' ' << y;
        }
    }
}

TEST(OffsetsBetween, TakesTheGradientAndLeavesTheNebula)
{
    const CfPoint centre(200, 150);
    constexpr double kFactor = 1.25;
    const auto light = [&](const Mapping& mapping, double gradient) {
        const CStlImage image = test::Make(400, 300, 1, [&](int x, int y, int) {
            const Position at = mapping.Inverse({1.0 * x, 1.0 * y});
            const double star = 60000.0 * std::exp(-(std::pow(at.x - 90.0, 2) + std::pow(at.y - 77.0, 2)) / 4.0);
            return x < 20 ? NAN : (500.0 + Nebula(at.x, at.y) + star + gradient * Plane(at.x, at.y)) / kFactor;
        });
        return stars::MeasureSkyBlocks(image, 0);
    };
    FieldMap bent{.x = {207, 180, 3, 0, 0, 4}, .y = {139, -2, 180, 5}, .x0 = 200, .y0 = 150, .size = 180};
    const Mapping still;
    for (const Mapping& mapping : {still, Mapping(Alignment::Turned(7.6, -5.3, 0.0, centre)),
                                   Mapping(Alignment::Turned(3.3, 4.9, 180.0, centre)),
                                   Mapping(Alignment::Turned(-9.0, 8.0, 31.0, centre)), Mapping(bent)}) {
        const stars::CellGrid target = light(still, 0.0);
        const stars::CellGrid seen = light(mapping, 1.0);
        const auto field = OffsetsBetween({target, still}, {seen, mapping}, 1.0, 400, 300);
        const auto scaled = OffsetsBetween({target, still}, {seen, mapping}, 2.0, 400, 300);
        for (const auto& [x, y] : {std::pair{210, 140}, {90, 77}, {0, 0}, {399, 150}, {300, 299}}) {
            EXPECT_NEAR(field->At(x, y), -Plane(x, y) / kFactor, 0.002 * 400.0 / kFactor) << x << ' ' << y;
            EXPECT_LT(scaled->At(x, y), field->At(x, y) - 300.0);
        }
    }
    const stars::CellGrid small = stars::MeasureSkyBlocks(test::Make(9, 5, 1, [](int x, int, int) { return x; }), 0);
    EXPECT_NEAR(OffsetsBetween({small, still}, {small, still}, 0.5, 9, 5)->At(3, 3), 2.0, 1e-6);
    EXPECT_EQ(OffsetsBetween({small, still}, {small, Alignment::Turned(90, 0, 0, centre)}, 1.0, 9, 5), nullptr);
}

using LocalSkyTest = Night;

TEST_F(LocalSkyTest, ANightOfGradientsComesOutAsFlatAsTheReference)
{
    std::vector<Place> places;
    for (int i = 0; i < 24; ++i) {
        places.push_back({30.0 + i * i * 89 % 341, 25.0 + i * i * i * 57 % 251, 3000.0 + 500.0 * (i % 5)});
    }
    Options options;
    for (int i = 0; i < 6; ++i) { // the others through haze, below moonlight that turns about
        const double haze = i == 0 ? 1.0 : 0.8;
        const CStlImage sky = Sky(400, 300, 1, places, 1.3 * i, -0.7 * i);
        const CStlImage light = Make(400, 300, 1, [&](int x, int y, int) {
            return haze * sky.GetPixelGrayRaw(x, y, 0) + i * 0.2 * (x * std::cos(i) + y * std::sin(i));
        });
        options.lights.push_back(Save(std::to_string(i) + ".fits", light));
    }
    options.referenceFile = options.lights.front();
    for (const auto& [method, drizzle, canvas] : {std::tuple{NormaliseMethod::kBoth, 1.0, Canvas::kReference},
                                                  {NormaliseMethod::kLocal, 1.0, Canvas::kUnion},
                                                  {NormaliseMethod::kLocal, 1.5, Canvas::kReference}}) {
        options.normalise = method;
        options.drizzle = drizzle == 1.0 ? std::nullopt : std::optional(drizzle);
        options.canvas = canvas;
        const Result result = stack::Stack(options);
        const stars::CellGrid blocks = stars::MeasureSkyBlocks(result.image, 0);
        std::vector<double> off;
        for (int i = 0; i < blocks.Columns() * blocks.Rows(); ++i) {
            off.push_back(std::fabs(blocks.Value(i % blocks.Columns(), i / blocks.Columns()) - 200.0));
        }
        std::erase_if(off, [](double v) { return std::isnan(v); });
        std::sort(off.begin(), off.end());
        const double most = off[off.size() * 4 / 5]; // the others are those that hold stars
        EXPECT_EQ(most < 0.2, method == NormaliseMethod::kLocal) << most << ' ' << drizzle; // a tenth of the noise
    }
}

} // namespace corvane::stack
