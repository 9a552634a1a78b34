#include <algorithm>
#include <set>

#include "corvane/core/memory_budget.h"
#include "tests/stack/test_night.h"

namespace corvane::stack {
namespace {

class CosmicHits : public Night {
protected:
    /// Two lights of one sky, the first of which has hits. A star of one colour is in both, where they are mosaics.
    Options Lights(const std::string& pattern)
    {
        const auto name = [=](io::Header& header) { header.Set("BAYERPAT", pattern); };
        CStlImage light = Sky(160, 140, 1, {{40, 50, 3000}, {100, 90, 9000}});
        for (int i = 0; i < 25 && !pattern.empty(); ++i) {
            const double far = std::pow(120 + 2 * (i % 5 - 2) - 120.7, 2) + std::pow(30 + 2 * (i / 5 - 2) - 30.4, 2);
            const int x = 120 + 2 * (i % 5 - 2);
            light.SetPixelGrayRaw(x, 30 + 2 * (i / 5 - 2), static_cast<float>(200.0 + 3000.0 * std::exp(-far / 5.0)),
                                  0);
        }
        Options options;
        options.align = AlignMethod::kNone;
        options.combine = CombineBy::kMean;
        options.reject.method = RejectMethod::kNone;
        options.normalise = NormaliseMethod::kNone;
        options.lights = {Save("hit.fits", light, 60.0, name), Save("clean.fits", light, 60.0, name)};
        clean_ = stack::Stack(options).image;
        for (const auto& [x, y] : kHits) {
            light.SetPixelGrayRaw(x, y, 2500.0F + static_cast<float>(x), 0);
        }
        Save("hit.fits", light, 60.0, name);
        return options;
    }

    /// The largest difference to the stack of clean lights.
    double Worst(const CStlImage& image) const
    {
        double worst = 0.0;
        for (int i = 0; i < clean_.GetWidth() * clean_.GetHeight() * clean_.GetPlanes(); ++i) {
            const int x = i % clean_.GetWidth();
            const int y = i / clean_.GetWidth() % clean_.GetHeight();
            const int plane = i / clean_.GetWidth() / clean_.GetHeight();
            worst = std::max(worst,
                             std::fabs(1.0 * image.GetPixelGrayRaw(x, y, plane) - clean_.GetPixelGrayRaw(x, y, plane)));
        }
        return worst;
    }

    static inline const std::set<std::pair<int, int>> kHits{{20, 20}, {21, 20}, {22, 21}, {70, 30}, {0, 139}, {90, 64}};
    CStlImage clean_;
};

TEST_F(CosmicHits, AreMendedInTheirLightAlone)
{
    for (const std::string pattern : {"", "RGGB"}) {
        SCOPED_TRACE(pattern);
        Options options = Lights(pattern);
        EXPECT_GT(Worst(stack::Stack(options).image), 1000.0);
        options.cosmic = true;
        const Result result = stack::Stack(options);
        EXPECT_LT(Worst(result.image), 8.0);
        EXPECT_GE(result.frames[0].cosmicHits, std::ssize(kHits));
        EXPECT_LE(result.frames[1].cosmicHits, 2);
        EXPECT_TRUE(Holds(result.header.History().front(), " --cosmic")) << result.header.History().front();
    }
}

TEST_F(CosmicHits, AreNotMendedWhereTheyWouldBeTooMany)
{
    Options options = Lights("");
    options.lights = {Save("dots.fits", Make(80, 80, 1, [](int x, int y, int) {
                               return 200 + (x * 7 + y * 13) % 5 + (x % 7 == 0 && y % 7 == 0 ? 900 : 0);
                           }))};
    options.cosmic = true;
    const Result result = stack::Stack(options);
    EXPECT_EQ(result.frames[0].cosmicHits, 0);
    EXPECT_GT(result.image.GetPixelGrayRaw(14, 14, 0), 1000.0);
    EXPECT_TRUE(std::any_of(result.notes.begin(), result.notes.end(),
                            [](const std::string& note) { return Holds(note, "dots.fits: more than 1 %"); }));
}

} // namespace
} // namespace corvane::stack
