#include "catalogue/shown.h"

#include <cmath>
#include <utility>

#include "catalogue/apply.h"
#include "tests/io/files.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

/// A grey sky, noisier from plane to plane, with light that is twice as bright in green and four times in blue.
io::Frame ColourFrame(const std::vector<std::string>& history)
{
    io::Frame frame;
    frame.image = test::Make(60, 40, 3, [](int x, int y, int p) {
        const double away = std::hypot(x - 30, y - 20) / 4.0;
        return 500.0 + (p + 1) * ((x * 7 + y * 13) % 9 - 4) + 1000.0 * std::exp2(p) * std::exp(-away * away);
    });
    for (const std::string& line : history) {
        frame.header.AddHistory(line);
    }
    return frame;
}

TEST(Shown, StretchesPlanesOfOneSkyAsOne)
{
    const std::pair<std::vector<std::string>, bool> cases[] = {
        {{}, false},
        {{"corvane stack of 20 lights"}, false},
        {{"corvane apply white-balance", "corvane apply neutral-sky", "corvane apply gaussian"}, true},
        {{"corvane apply neutral-sky:value=100"}, true},
        {{"corvane apply neutral-sky", "corvane apply white-balance:red=2"}, false},
        {{"corvane rgb r.fits g.fits b.fits"}, false},
        {{"corvane rgb r.fits g.fits b.fits --balance stars", "balance: g.fits times 0.9 by 30 stars, plus 2"}, true},
        {{"corvane apply neutral-sky", "corvane palette hoo a.fits b.fits --balance none"}, false},
        {{"corvane palette hoo a.fits b.fits", "balance: b.fits times 3 by the brightest parts, plus 1"}, true},
        {{"corvane lrgb l.fits rgb.fits"}, true},
    };
    for (const auto& [history, isLinked] : cases) {
        for (const std::string stretch : {"", "asinh", "linear"}) {
            SCOPED_TRACE((history.empty() ? "none" : history.back()) + ' ' + stretch);
            io::Frame frame = ColourFrame(history);
            const CStlImage expected =
                stretch == "linear"  ? Apply(frame.image, "auto-levels", {{"per-plane", !isLinked}})
                : stretch == "asinh" ? Apply(frame.image, "autostretch", {{"linked", isLinked}, {"curve", "asinh"}})
                                     : Apply(frame.image, "autostretch", {{"linked", isLinked}});
            MakeShown(frame, stretch);
            EXPECT_TRUE(test::SameSamples(test::Samples(frame.image), test::Samples(expected)));
            EXPECT_EQ(frame.image.GetLevelMin(2), expected.GetLevelMin(2));
            EXPECT_EQ(frame.image.GetLevelMax(0) == frame.image.GetLevelMax(2), isLinked);
        }
    }
}

} // namespace
} // namespace corvane::catalogue
