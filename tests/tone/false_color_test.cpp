#include "corvane/tone/false_color.h"

#include <array>

#include "tests/tone/mapped.h"

using namespace corvane::test;

namespace {

using Colour = std::array<float, 3>;

const std::vector<Colour> kMaps[] = {
    {{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}},
    {{0, 0, 0}, {0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}, {255, 255, 255}},
    {{0, 0, 0}, {0, 0, 128}, {0, 0, 255}, {128, 128, 255}, {255, 255, 255}},
};

/// Between two control colours, or heat, or grey.
Colour PlainColour(float value, int map, int cycles)
{
    value = !(value > 0.0F) ? 0.0F : value >= 255.0F ? 255.0F : value;
    if (cycles > 0) {
        value = static_cast<float>(std::min(std::fmod(static_cast<float>(cycles) * value, 256.0), 255.0));
    }
    const double factor = map == 1 ? 0.023529411764705882 : map == 3 ? 1.0 : 0.01568627450980392;
    const double width = map == 1 ? 42.5 : map == 3 ? 1.0 : 63.75;
    const double k = std::trunc(value * factor);
    const double f = (value - k * width) * (map == 1 ? 0.015625 : factor);
    const auto control = [&](double index, std::size_t component) {
        if (map == 3) {
            return std::clamp(3.0 * (index - 85.0 * static_cast<double>(component)), 0.0, 255.0);
        }
        return static_cast<double>(kMaps[map][static_cast<std::size_t>(index)][component]);
    };
    Colour colour{value, value, value};
    for (std::size_t i = 0; map >= 0 && map < 4 && i < 3; ++i) {
        const bool isLast = k == (map == 1 ? 6.0 : map == 3 ? 255.0 : 4.0);
        colour[i] = static_cast<float>(isLast ? control(k, i) : control(k, i) * (1.0 - f) + control(k + 1.0, i) * f);
    }
    return colour;
}

Colour GetFalseColor(float value, int map, int cycles)
{
    Colour colour{};
    CImgFalseColor().GetFalseColor(value, map, cycles, &colour[0], &colour[1], &colour[2]);
    return colour;
}

/// The place of a pixel on the map.
float Place(const Plain& source, int x, int y, double low, double high)
{
    const double lo = static_cast<float>(source.To256(low, 0));
    const double span = static_cast<float>(source.To256(high, 0) - source.To256(low, 0));
    const auto place = [&](double shown) { return (shown - lo) / span * 255.0; };
    const auto grey = [&](int p) { return place(source.At(x, y, p) - source.min[p]); };
    return static_cast<float>(source.Colour() ? 0.587 * grey(1) + 0.299 * grey(0) + 0.114 * grey(2)
                                              : place(static_cast<float>(source.To256(source.At(x, y, 0), 0))));
}

} // namespace

TEST(FalseColor, GivesTheColoursOfTheMaps)
{
    for (const int map : {-1, 0, 1, 2, 3, 4, 7}) {
        for (const int cycles : {-3, 0, 1, 2, 5, 2147483647}) {
            for (float value = -1.0F; value < 257.0F; value += 0.21875F) {
                ASSERT_EQ(GetFalseColor(value, map, cycles), PlainColour(value, map, cycles))
                    << "map " << map << ", cycles " << cycles << ", value " << value;
            }
        }
    }
    EXPECT_EQ(GetFalseColor(NAN, 9, 2), (Colour{0.0F, 0.0F, 0.0F}));
}

TEST(FalseColor, EqualsThePlainForm)
{
    struct InColour : CImgFalseColor {
        explicit InColour(const CStlImage& source) : CImgFalseColor(source) { ToColor(); }
    };
    for (const double low : {30.0, 150.0}) { // equal levels leave the ends of the map
        ExpectArea<InColour>(
            nullptr,
            [=](CImgFalseColor& operation, CStlImage* source, CRect* rect) {
                operation.Do(low, 150.0, 1, 3, source, rect, 0);
            },
            [=](int x, int y, int p, const Plain& from, const Plain& to) {
                const Colour colour = PlainColour(Place(from, x, y, low, 150.0), 1, 3);
                return to.ToRaw(colour[static_cast<std::size_t>(p)], p);
            });
    }
}

TEST(FalseColor, ReportsARowAtATimeAndNeedsThreePlanes)
{
    ProgressWindow window;
    CStlImage source = RandomImage({300, 20}, 1, 1);
    source.SetProgressHandle(window.Handle());
    CImgFalseColor operation(source);
    operation.Do(0.0, 100.0, 0, 1, &source, nullptr, 1);
    EXPECT_TRUE(Agree(operation, Plain(source)) && window.Take().empty());
    operation.ToColor();
    window.Take();
    operation.Do(0.0, 100.0, 0, 1, &source, nullptr, 1);
    EXPECT_EQ(window.Take(), Counted("Applying false color...", 20, std::vector<int>(20, 1)));
}
