// Holds every operation of the catalogue to its footprint.

#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "catalogue/footprint.h"
#include "catalogue/operations.h"
#include "catalogue/row_order.h"
#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "tests/io/files.h"
#include "tests/variants/named_frame.h"
#include "tests/variants/step_texts.h"

namespace corvane::catalogue {
namespace {

constexpr int kTileColumns[]{0, 40, 41, 63, kFrameWidth};
constexpr int kTileRows[]{0, 46, 47, kFrameHeight};
constexpr int kShort = 3; // in place of a reach as far as the image goes
constexpr const char* kAll = "looks at the whole image";

/// What work gives; nothing when it is refused.
template <class Work>
auto UnlessRefused(Work work) -> std::optional<decltype(work())>
{
    try {
        return work();
    } catch (const Error&) {
        return std::nullopt;
    }
}

std::optional<io::Frame> Outcome(const Step& step, io::Frame frame)
{
    return UnlessRefused([&] {
        RunStep(step, frame, {});
        return frame;
    });
}

io::Frame Cut(io::Frame frame, const CRect& cut)
{
    RunStep(ParseStep("crop:rect=" + ToText(Value(cut))), frame, {});
    return frame;
}

/// A frame without a sample that is defined in a tile and far about it, and with levels of its own.
io::Frame WithHole(io::Frame frame)
{
    for (int plane = 0; plane < frame.image.GetPlanes(); ++plane) {
        for (int y = 40; y < 60; ++y) {
            for (int x = 20; x < 63; ++x) {
                frame.image.SetPixelGrayRaw(x, y, NAN, plane);
            }
        }
    }
    frame.image.SetOwnLevel(1);
    return frame;
}

/// With levels between which some samples lie, other ones in each plane.
io::Frame WithLevels(io::Frame frame, double min, double max)
{
    for (int plane = 0; plane < frame.image.GetPlanes(); ++plane) {
        frame.image.SetLevel(plane, min - plane, max * (1.0 + plane));
    }
    return frame;
}

bool AreSame(const CStlImage& a, const CStlImage& b)
{
    return a.GetWidth() == b.GetWidth() && a.GetPlanes() == b.GetPlanes() &&
           test::SameSamples(test::Samples(a), test::Samples(b));
}

bool HaveSameLevels(const CStlImage& a, const CStlImage& b)
{
    bool same = true;
    for (int plane = 0; plane < a.GetPlanes(); ++plane) {
        same = same && a.GetLevelMin(plane) == b.GetLevelMin(plane) && a.GetLevelMax(plane) == b.GetLevelMax(plane);
    }
    return same;
}

Footprint With(Footprint footprint, int Footprint::*reach, int value)
{
    footprint.*reach = value;
    return footprint;
}

class Tiles : public test::InFolder {
protected:
    /// The step for a cut of a frame; images that it reads are cut, too.
    Step StepFor(const CRect& cut, const Step& step, const io::Frame& frame) const
    {
        Step moved = step;
        moved.arguments = {};
        const Arguments arguments = MovedInto(cut, step.arguments);
        for (Argument argument : arguments.List()) {
            const std::vector<std::string> files = FilesOf(step.arguments); // words may stand for images
            if (argument.parameter->kind == Kind::Image && !files.empty()) {
                io::Frame other = io::Load(std::get<std::string>(argument.value));
                BringToOrderOf(frame, other, {});
                const io::Frame part = Cut(std::move(other), cut);
                const std::string file = Path(argument.parameter->name + " cut.fits");
                argument.value = file;
                io::Save(file, part.image, part.header);
            }
            moved.arguments.Add(argument);
        }
        return moved;
    }

    /// Whether tiles that are cut by a footprint make the result for the whole.
    bool MakeTheWhole(const Footprint& footprint, const Step& step, const io::Frame& frame, io::Frame whole) const
    {
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 4; ++column) {
                const CRect tile(kTileColumns[column], kTileRows[row], kTileColumns[column + 1], kTileRows[row + 1]);
                const CRect cut = CutFor(footprint, tile, kFrameWidth, kFrameHeight);
                const std::optional<io::Frame> part = Outcome(StepFor(cut, step, frame), Cut(frame, cut));
                if (!part || part->image.GetWidth() != cut.Width() || part->image.GetHeight() != cut.Height() ||
                    !HaveSameLevels(part->image, whole.image)) {
                    return false;
                }
                CRect middle = tile;
                middle.left -= cut.left;
                middle.right -= cut.left;
                middle.top -= cut.top;
                middle.bottom -= cut.top;
                if (!AreSame(Cut(*part, middle).image, Cut(whole, tile).image)) {
                    return false;
                }
            }
        }
        return true;
    }

    /// Something that a footprint claims, which must show with some frame and some arguments.
    void ExpectSomewhere(const Step& step, const std::string& claim, const std::function<bool()>& shows)
    {
        bool& isShown = claims_[step.operation->name + ' ' + claim];
        isShown = isShown || shows();
    }

    void Check(const Step& step, const io::Frame& frame)
    {
        const Footprint footprint = FootprintOf(*step.operation, step.arguments);
        if (footprint.IsWhole() && claims_[step.operation->name + ' ' + kAll]) {
            return; // restorations take long
        }
        const bool hasLevels = frame.image.HasOwnLevel() != 0;
        const bool mayBeCut = footprint.MayBeCut(hasLevels);
        const std::optional<io::Frame> whole = Outcome(step, frame);
        if (!whole) {
            return;
        }
        const CStlImage& image = whole->image;
        const bool isResized = image.GetWidth() != kFrameWidth || image.GetHeight() != kFrameHeight;
        EXPECT_TRUE(footprint.resizes || !isResized);
        EXPECT_TRUE(footprint.makesPlanes || image.GetPlanes() == frame.image.GetPlanes());
        EXPECT_TRUE(!footprint.levelsOnly || AreSame(image, frame.image));
        const auto areTiles = [&](const Footprint& cuts) { return MakeTheWhole(cuts, step, frame, *whole); };
        if (mayBeCut) {
            EXPECT_TRUE(areTiles(footprint));
            CheckReach(step, footprint, &Footprint::columns, areTiles);
            CheckReach(step, footprint, &Footprint::rows, areTiles);
        } else if (footprint.IsWhole()) {
            ExpectSomewhere(step, kAll, [&] {
                return !areTiles(With(footprint, &Footprint::columns, kShort)) &&
                       !areTiles(With(footprint, &Footprint::rows, kShort));
            });
        } else if (!footprint.placed) { // places show in roundings, too seldom to be waited for
            const bool chooses = !hasLevels && footprint.levels == LevelUse::Chosen;
            ExpectSomewhere(step, (chooses ? "chooses levels; " : "cannot be cut; ") + ToText(footprint),
                            [&] { return isResized || !areTiles(footprint); });
        }
        if (hasLevels) {
            CheckLevels(step, footprint, frame, image);
        }
    }

private:
    /// A smaller reach must not do.
    void CheckReach(const Step& step, const Footprint& footprint, int Footprint::*reach,
                    const std::function<bool(const Footprint&)>& areTiles)
    {
        const int own = footprint.*reach;
        if (own > 0) {
            const Footprint less = With(footprint, reach, own == Footprint::kWhole ? kShort : own - 1);
            ExpectSomewhere(step, "looks further than at " + ToText(less), [&] { return !areTiles(less); });
        }
    }

    void CheckLevels(const Step& step, const Footprint& footprint, const io::Frame& frame, const CStlImage& image)
    {
        const auto areRead = [&] {
            const std::optional<io::Frame> other = Outcome(step, WithLevels(frame, 900.3, 60000.9));
            return !other || !AreSame(other->image, image);
        };
        if (footprint.levels == LevelUse::Unread) {
            EXPECT_FALSE(areRead());
        } else {
            ExpectSomewhere(step, "reads levels", areRead);
        }
    }

protected:
    std::map<std::string, bool> claims_;
};

TEST_F(Tiles, AreWhatFootprintsSay)
{
    StepFiles files{{}, Write("curve.txt", "0 0.05\n0.2 0.5\n1 0.95\n"), Path("mask.fits")};
    const io::Frame mask = MakeNamedFrame("mask");
    io::Save(files.mask, mask.image, mask.header);
    for (const char* name : {"other", "other colour", "other undefined"}) {
        const io::Frame frame = MakeNamedFrame(name);
        files.images.push_back(Path(std::string(name) + ".fits"));
        io::Save(files.images.back(), frame.image, frame.header);
    }
    const io::Frame frames[]{WithLevels(MakeNamedFrame("mono"), 1100.1, 2000.7),
                             WithLevels(MakeNamedFrame("colour"), 1100.1, 2000.7),
                             MakeNamedFrame("undefined"),
                             MakeNamedFrame("undefined colour"),
                             WithHole(MakeNamedFrame("undefined")),
                             WithHole(MakeNamedFrame("undefined colour"))};
    for (const Operation& operation : Operations()) {
        EXPECT_TRUE(operation.footprint || !operation.IsStep()) << operation.name << " has no footprint";
    }
    for (const std::string& text : StepTexts(files)) {
        const std::optional<Step> step = UnlessRefused([&] { return ParseStep(text); });
        for (const io::Frame& frame : frames) {
            SCOPED_TRACE(text + " of " + frame.image.GetOrgFileName());
            step ? Check(*step, frame) : void();
        }
    }
    for (const auto& [claim, isShown] : claims_) {
        EXPECT_TRUE(isShown) << "never shows: " << claim;
    }
}

} // namespace
} // namespace corvane::catalogue
