#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "catalogue/filter_mosaic.h"
#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "corvane/core/alignment.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "corvane/geometry/crop.h"
#include "corvane/geometry/expansion.h"
#include "corvane/geometry/flip.h"
#include "corvane/geometry/resize.h"
#include "corvane/geometry/resolution.h"
#include "corvane/geometry/rotate.h"
#include "corvane/geometry/scroll.h"
#include "corvane/geometry/soft_binning.h"
#include "corvane/platform/memory_exception.h"
#include "io/metadata.h"
#include "io/sky.h"

namespace corvane::catalogue {
namespace {

constexpr int kMostSide = 1000000;                  // of a side
constexpr double kMostImageBytes = 1099511627776.0; // of an image: 1 TiB

constexpr const char* kCarriesMosaic = " Cards that describe a colour filter mosaic follow.";
constexpr const char* kDropsMosaic = " Samples of a colour filter mosaic are mixed: the cards that describe it are "
                                     "taken away.";
constexpr const char* kFirstRow =
    " Screens show the first row where ROWORDER says, at the bottom when it says nothing.";
constexpr const char* kCarriesSky = " World coordinates follow.";
constexpr const char* kTurnsSky = " World coordinates follow, of pictures that are not square too.";

/// Refuses a size that no image can have, before any work.
void CheckSize(const CStlImage& image, double width, double height)
{
    const std::string size = SizeText(static_cast<long long>(width), static_cast<long long>(height));
    if (width < 1.0 || height < 1.0) {
        throw InputError("image", "would become " + size + " pixels; at least 1 x 1 are needed");
    }
    const double bytes = width * height * image.GetPlanes() * sizeof(float);
    if (width > kMostSide || height > kMostSide || bytes > kMostImageBytes) {
        throw InputError("image", "would become " + size + " pixels; at most " + std::to_string(kMostSide) +
                                      " either way and 1 TiB in all are allowed");
    }
}

void RequireDone(int done)
{
    if (done == 0) {
        AfxThrowMemoryException();
    }
}

/// Makes the result, whose pixels moved by the map, the frame's image. The members carry coordinates along in ways of
/// their own; here they are set anew.
void Finish(io::Frame& frame, CStlImage& result, const io::PixelMap& map)
{
    CarryCoordinates(map, frame, result);
    frame.image = std::move(result);
}

/// The same for samples that were only moved.
void FinishMove(io::Frame& frame, CStlImage& result, const io::PixelMap& map)
{
    CarryMosaic(map, frame.image, result, frame.header);
    Finish(frame, result, map);
}

/// The same for samples that are new ones.
void FinishResampling(io::Frame& frame, CStlImage& result, const io::PixelMap& map)
{
    DropMosaic(frame.header);
    Finish(frame, result, map);
}

void RunFlip(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const bool isHorizontal = arguments.Text("direction") == "horizontal";
    CImgFlip result(frame.image);
    result.Do(isHorizontal ? 1 : 0, frame.image, run);
    const io::PixelMap map = isHorizontal ? io::PixelMap{{-1.0, 0.0, 0.0, 1.0}, result.GetWidth() - 1.0, 0.0}
                                          : io::PixelMap{{1.0, 0.0, 0.0, -1.0}, 0.0, result.GetHeight() - 1.0};
    FinishMove(frame, result, map);
}

/// Where the turn takes the pixels: the way back from what it samples.
io::PixelMap MapOf(const Alignment& turn)
{
    const double x = turn.centreX;
    const double y = turn.centreY;
    return {{turn.cosine, -turn.sine, turn.sine, turn.cosine},
            x + turn.dx - turn.cosine * x + turn.sine * y,
            y + turn.dy - turn.sine * x - turn.cosine * y};
}

/// The degrees by which rows in their order in memory are to be turned, so that the picture on the screen turns
/// clockwise.
double TurnInMemory(const io::Header& header, double clockwise)
{
    return io::IsBottomUp(header) ? -clockwise : clockwise;
}

/// Refuses a canvas that no image can have; it is measured a little large.
void CheckExpanded(const CStlImage& image, const Alignment& turn)
{
    const double sine = std::fabs(turn.sine);
    const double cosine = std::fabs(turn.cosine);
    CheckSize(image, std::ceil(image.GetWidth() * cosine + image.GetHeight() * sine) + 2.0,
              std::ceil(image.GetWidth() * sine + image.GetHeight() * cosine) + 2.0);
}

std::vector<double> Background(const Arguments& arguments, const CStlImage& image)
{
    std::vector<double> background;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        background.push_back(arguments.Has("background") ? arguments.Number("background") : image.GetLevelMin(plane));
    }
    return background;
}

void RunRotate(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    CStlImage& image = frame.image;
    const double angle = TurnInMemory(frame.header, arguments.Number("angle"));
    if (angle == 0.0) {
        return;
    }
    const bool isExpanded = arguments.Flag("expand");
    Alignment turn = Alignment::Turned(0.0, 0.0, angle, CfPoint(image.GetWidth() / 2, image.GetHeight() / 2));
    if (isExpanded) {
        CheckExpanded(image, turn);
    }
    std::vector<double> background = Background(arguments, image);
    CImgRotate result(image);
    RequireDone(result.Do(angle, background.data(), image, isExpanded, run));
    turn.dx = (result.GetWidth() - image.GetWidth()) * 0.5;
    turn.dy = (result.GetHeight() - image.GetHeight()) * 0.5;
    FinishResampling(frame, result, MapOf(turn));
}

Footprint RotateFootprint(const Arguments& arguments)
{
    return {.levels = arguments.Has("background") ? LevelUse::Unread : LevelUse::Read,
            .moves = true,
            .resizes = arguments.Flag("expand")};
}

void RunRotate90(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const bool isClockwise = arguments.Text("direction") == "clockwise";
    const bool isClockwiseInMemory = isClockwise != io::IsBottomUp(frame.header);
    CImgRotate result(frame.image);
    RequireDone(result.Do90(isClockwiseInMemory ? 1 : 0, frame.image, run));
    const io::PixelMap map = isClockwiseInMemory ? io::PixelMap{{0.0, -1.0, 1.0, 0.0}, result.GetWidth() - 1.0, 0.0}
                                                 : io::PixelMap{{0.0, 1.0, -1.0, 0.0}, 0.0, result.GetHeight() - 1.0};
    FinishMove(frame, result, map);
}

void RunRotate180(io::Frame& frame, const Arguments&, const Run& run)
{
    CImgRotate result(frame.image);
    result.Do180(frame.image, run);
    FinishMove(frame, result, {{-1.0, 0.0, 0.0, -1.0}, result.GetWidth() - 1.0, result.GetHeight() - 1.0});
}

void CheckResize(const Arguments& arguments)
{
    const bool hasSide = arguments.Has("width") || arguments.Has("height");
    if (hasSide == arguments.Has("factor")) {
        throw arguments.Refusal("factor", hasSide ? "width and height say the same; give one or the other"
                                                  : "must be given, or else width, or height, or both of these");
    }
}

/// A side that was given, or else the one in proportion.
double Side(const Arguments& arguments, const char* name, int side, const char* otherName, int otherSide)
{
    if (arguments.Has(name)) {
        return arguments.Whole(name);
    }
    const double factor = arguments.Has("factor") ? arguments.Number("factor")
                                                  : static_cast<double>(arguments.Whole(otherName)) / otherSide;
    return std::floor(side * factor + 0.5);
}

void RunResize(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    CStlImage& image = frame.image;
    const double width = Side(arguments, "width", image.GetWidth(), "height", image.GetHeight());
    const double height = Side(arguments, "height", image.GetHeight(), "width", image.GetWidth());
    CheckSize(image, width, height);
    CImgResolution result(image);
    RequireDone(result.ByLiner(image, static_cast<int>(width), static_cast<int>(height), run));
    FinishResampling(frame, result, {{width / image.GetWidth(), 0.0, 0.0, height / image.GetHeight()}, 0.0, 0.0});
}

void RunBin(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    CStlImage& image = frame.image;
    const int x = arguments.Whole("x");
    const int y = arguments.Has("y") ? arguments.Whole("y") : x;
    const bool keepPartial = arguments.Flag("keep-partial");
    if (!keepPartial && (x > image.GetWidth() || y > image.GetHeight())) {
        throw InputError("image", "has only " + SizeText(image.GetWidth(), image.GetHeight()) + " pixels; a block of " +
                                      SizeText(x, y) + " needs more");
    }
    CImgSoftBinning result(image);
    RequireDone(result.Do(x, y, keepPartial, arguments.Flag("scale-levels"), image, run));
    for (const auto& [name, factor] : {std::pair("XBINNING", x), std::pair("YBINNING", y)}) {
        if (const auto binning = frame.header.Number(name)) {
            frame.header.Set(name, *binning * factor);
        }
    }
    io::ScalePixelSize(frame.header, x, y);
    // The new pixel lies in the middle of its block.
    FinishResampling(frame, result, {{1.0 / x, 0.0, 0.0, 1.0 / y}, (1.0 - x) * 0.5 / x, (1.0 - y) * 0.5 / y});
}

const std::vector<std::string> kAnchors = {"top-left", "top",         "top-right", "left",        "centre",
                                           "right",    "bottom-left", "bottom",    "bottom-right"};

/// The code of an anchor among the rows in their order in memory.
int AnchorInMemory(const io::Header& header, const std::string& anchor)
{
    const int code = PlaceOf(anchor, kAnchors);
    return io::IsBottomUp(header) ? (2 - code / 3) * 3 + code % 3 : code;
}

/// How far the first pixel of the picture moves along one side. `part` is 0 for the near end, 1 the middle, 2 the far.
double Offset(int canvas, int picture, int part)
{
    return part == 0 ? 0 : part == 1 ? (canvas - picture) / 2 : canvas - picture;
}

void RunCanvas(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    CStlImage& image = frame.image;
    const int width = arguments.Has("width") ? arguments.Whole("width") : image.GetWidth();
    const int height = arguments.Has("height") ? arguments.Whole("height") : image.GetHeight();
    CheckSize(image, width, height);
    const int anchor = AnchorInMemory(frame.header, arguments.Text("anchor"));
    std::vector<float> background(static_cast<std::size_t>(image.GetPlanes()),
                                  static_cast<float>(arguments.Number("background")));
    CImgResize result(image);
    RequireDone(result.Do(width, height, anchor, background.data(), image, run));
    FinishMove(
        frame, result,
        {.x0 = Offset(width, image.GetWidth(), anchor % 3), .y0 = Offset(height, image.GetHeight(), anchor / 3)});
}

void RunCrop(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const CRect rect = *arguments.Rectangle("rect");
    CImgCrop result(frame.image);
    RequireDone(result.Do(rect, frame.image, run));
    FinishMove(frame, result, {.x0 = -static_cast<double>(rect.left), .y0 = -static_cast<double>(rect.top)});
}

/// The shift of the larger part of a side.
int NearestShift(int shift, int side)
{
    const int rest = (shift % side + side) % side;
    return rest > side / 2 ? rest - side : rest;
}

void RunScroll(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const int x = arguments.Whole("x");
    const int y = arguments.Whole("y");
    CImgScroll result(frame.image);
    result.Do(x, y, frame.image, run);
    const io::PixelMap map{.x0 = 1.0 * NearestShift(x, frame.image.GetWidth()),
                           .y0 = 1.0 * NearestShift(y, frame.image.GetHeight())};
    FinishMove(frame, result, map);
}

void RunExpand(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    CStlImage& image = frame.image;
    const int x = arguments.Whole("x");
    const int y = arguments.Has("y") ? arguments.Whole("y") : x;
    CheckSize(image, static_cast<double>(x) * image.GetWidth(), static_cast<double>(y) * image.GetHeight());
    CImgExpansion result(image);
    RequireDone(result.Do(x, y, image, run));
    FinishResampling(frame, result, {{1.0 * x, 0.0, 0.0, 1.0 * y}, (x - 1) * 0.5, (y - 1) * 0.5});
}

Parameter SideParameter(const char* name, const char* whenAbsent)
{
    return WholeParameter(name, std::string("the new ") + name, "pixels", {1.0, kMostSide}, whenAbsent);
}

Parameter ColumnsParameter(const char* summary)
{
    return WholeParameter("x", summary, "pixels", {1.0, 1000.0}, 2);
}

Parameter RowsParameter(const char* summary)
{
    Parameter rows = ColumnsParameter(summary);
    rows.name = std::string("y");
    rows.defaultValue.reset();
    rows.whenAbsent = "as many as columns";
    return rows;
}

Parameter ScrollParameter(const char* name, const char* summary)
{
    return WholeParameter(name, summary, "pixels", {-kMostSide, kMostSide}, 0);
}

Operation Flip()
{
    return {.name = "flip",
            .summary = "mirror the image",
            .help = std::string("Samples do not change.") + kCarriesSky + kCarriesMosaic,
            .parameters = {{.name = "direction",
                            .kind = Kind::Choice,
                            .summary = "horizontal exchanges left and right, vertical top and bottom",
                            .choices = {"horizontal", "vertical"}}},
            .footprint = Always({.moves = true}),
            .run = RunFlip};
}

Operation Rotate()
{
    return {
        .name = "rotate",
        .summary = "turn the image by an angle",
        .help = std::string("Bilinear between samples, about the middle of the image.") + kFirstRow +
                " World coordinates follow to the half pixel." + kDropsMosaic,
        .parameters =
            {{.name = "angle", .summary = "clockwise on the screen", .unit = "degrees", .min = -360.0, .max = 360.0},
             FlagParameter("expand", "enlarge the canvas, so that no corner is cut off", false),
             NumberParameter("background", "the sample where the image leaves the canvas free", "counts", kAnyNumber,
                             "the level min of each plane")},
        .footprint = RotateFootprint,
        .run = RunRotate};
}

Operation Rotate90()
{
    return {.name = "rotate90",
            .summary = "turn the image by a quarter",
            .help = std::string("Samples do not change.") + kFirstRow + kTurnsSky + kCarriesMosaic,
            .parameters = {ChoiceParameter("direction", "which way, on the screen", {"clockwise", "anticlockwise"},
                                           "clockwise")},
            .footprint = Always({.moves = true, .resizes = true}),
            .run = RunRotate90};
}

Operation Rotate180()
{
    return {.name = "rotate180",
            .summary = "turn the image upside down",
            .help = std::string("Samples do not change.") + kTurnsSky + kCarriesMosaic,
            .footprint = Always({.moves = true}),
            .run = RunRotate180};
}

Operation Resize()
{
    return {.name = "resize",
            .summary = "enlarge or reduce the image",
            .help = std::string("Interpolates between samples, with the first ones of old and new image in one place. "
                                "Nothing is averaged: bin first to reduce an image by much.") +
                    " World coordinates follow, to the half pixel." + kDropsMosaic,
            .parameters = {SideParameter("width", "in proportion to the height"),
                           SideParameter("height", "in proportion to the width"),
                           NumberParameter("factor", "the new size in place of width and height", "times the old",
                                           {1e-6, 1000.0}, "width and height"),
                           {.name = "method",
                            .kind = Kind::Choice,
                            .summary = "how to interpolate",
                            .choices = {"bilinear", "cubic"},
                            .defaultValue = std::string("bilinear"),
                            .isShown = false}},
            .footprint = Always({.moves = true, .resizes = true}),
            .check = CheckResize,
            .run = RunResize};
}

Operation Bin()
{
    return {
        .name = "bin",
        .summary = "add blocks of pixels up into one",
        .help = std::string("The result is the sum of a block, not its mean.") +
                " World coordinates follow. XBINNING, YBINNING, "
                "XPIXSZ and YPIXSZ are multiplied." +
                kDropsMosaic,
        .parameters = {ColumnsParameter("columns that become one"), RowsParameter("rows that become one"),
                       FlagParameter("keep-partial",
                                     "keep blocks that the right and last edge cut, as sums of what is there", false),
                       FlagParameter("scale-levels", "multiply the display levels, so that the image looks as before",
                                     true)},
        .footprint = Always({.moves = true, .resizes = true}),
        .run = RunBin};
}

Operation Canvas()
{
    return {.name = "canvas",
            .summary = "cut the image or give it a border, without resampling",
            .help =
                std::string("The border has one brightness on the screen, counted by the levels of the first plane.") +
                kFirstRow + kCarriesSky + kCarriesMosaic,
            .parameters = {SideParameter("width", "the width stays"), SideParameter("height", "the height stays"),
                           ChoiceParameter("anchor", "where the picture lies on the canvas, as the screen shows it",
                                           kAnchors, "centre"),
                           NumberParameter("background", "what the border shows: 0 black, 255 white", "display value",
                                           {0.0, 255.0}, 0.0)},
            .footprint = Always({.levels = LevelUse::Read, .moves = true, .resizes = true}),
            .run = RunCanvas};
}

Operation Crop()
{
    Parameter rect = RectangleParameter();
    rect.summary = "what is kept; right and bottom are the first column and row outside";
    rect.whenAbsent.clear();
    return {.name = "crop",
            .summary = "keep a rectangle of the image",
            .help =
                std::string("Rows count in the file's order. Samples do not change.") + kCarriesSky + kCarriesMosaic,
            .parameters = {rect},
            .footprint = Always({.moves = true, .resizes = true}),
            .run = RunCrop};
}

Operation Scroll()
{
    return {.name = "scroll",
            .summary = "shift the image in a circle",
            .help = std::string("What leaves the image on one side comes in on the other.") + kCarriesSky +
                    " They are right for the larger part of the picture, on either axis." + kCarriesMosaic,
            .parameters = {ScrollParameter("x", "columns to the right"),
                           ScrollParameter("y", "rows, in the file's order, towards the last")},
            .footprint = Always({.moves = true}),
            .run = RunScroll};
}

Operation Expand()
{
    return {.name = "expand",
            .summary = "enlarge the image by whole factors",
            .help = std::string("Every sample becomes a block of equal ones.") + kCarriesSky +
                    " Cards that describe a colour filter mosaic are taken away.",
            .parameters = {ColumnsParameter("columns that one becomes"), RowsParameter("rows that one becomes")},
            .footprint = Always({.moves = true, .resizes = true}),
            .run = RunExpand};
}

} // namespace

std::vector<Operation> GeometryOperations()
{
    return {Flip(), Rotate(), Rotate90(), Rotate180(), Resize(), Bin(), Canvas(), Crop(), Scroll(), Expand()};
}

} // namespace corvane::catalogue
