// Lines and text.

#include <string>
#include <vector>

#include "catalogue/display_levels.h"
#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/plane.h"
#include "corvane/draw/draw_line.h"
#include "corvane/draw/draw_text.h"
#include "io/metadata.h"

namespace corvane::catalogue {
namespace {

constexpr double kMostPixels = 10000.0;
constexpr double kPenOfHeight = 0.125; // what is easy to read
constexpr const char* kSamples =
    " Edges are smooth: a sample that is partly covered becomes a mean. Undefined samples are replaced where half of "
    "them or more is covered. The display levels stay. Without them, it chooses them from the sky first, for "
    "display values. For a colour, draw on each plane with a value of its own.";

const std::vector<std::string> kAlignments{"left", "centre", "right"}; // in the order of CImgDrawText::Do

bool IsRaw(const Arguments& arguments)
{
    return arguments.Text("units") == "raw";
}

/// The pen that is asked for.
Pen MakePen(const Arguments& arguments, double thickness, const CStlImage& image)
{
    return {thickness, arguments.Number("value"), IsRaw(arguments) ? 1 : 0, GivenPlane(arguments, image)};
}

/// The image, with the display levels that display values need.
CStlImage Paper(const CStlImage& image, const Arguments& arguments)
{
    return IsRaw(arguments) ? image.Shared() : WithLevels(image, 1.0, 12.0);
}

CStlImage RunDrawLine(const CStlImage& given, const Arguments& arguments, const Run& run)
{
    const Pen pen = MakePen(arguments, arguments.Number("thickness"), given);
    const CStlImage image = Paper(given, arguments);
    CImgDrawLine result(image);
    result.Do(arguments.Number("x1"), arguments.Number("y1"), arguments.Number("x2"), arguments.Number("y2"), pen,
              image, arguments.Rectangle("rect"), run);
    return result;
}

void RunDrawText(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const double height = arguments.Number("height");
    const double thickness = arguments.Has("thickness") ? arguments.Number("thickness") : height * kPenOfHeight;
    const Pen pen = MakePen(arguments, thickness, frame.image);
    const CStlImage image = Paper(frame.image, arguments);
    CImgDrawText result(image);
    result.Do(arguments.Text("text").c_str(), arguments.Number("x"), arguments.Number("y"),
              io::IsBottomUp(frame.header) ? -height : height, arguments.Number("angle"),
              PlaceOf(arguments.Text("align"), kAlignments), pen, image, arguments.Rectangle("rect"), run);
    frame.image = std::move(result);
}

Parameter Coordinate(const char* name, const char* summary)
{
    return {.name = name, .summary = summary, .unit = "pixels, 0 is the middle of the first"};
}

Parameter Thickness()
{
    return {.name = "thickness", .summary = "width of the pen", .unit = "pixels", .min = 0.1, .max = kMostPixels};
}

/// What every drawing takes, behind its own parameters.
std::vector<Parameter> WithPen(std::vector<Parameter> parameters)
{
    parameters.push_back({.name = "value", .summary = "what covered samples become", .defaultValue = 255.0});
    parameters.push_back(
        ChoiceParameter("units", "the scale of value: display, black 0 and white 255; or raw, the sample itself",
                        {"display", "raw"}, "display"));
    parameters.push_back(PlaneParameter("the plane to draw on"));
    parameters.push_back(RectangleParameter());
    return parameters;
}

Footprint DrawFootprint(const Arguments& arguments)
{
    return {.levels = arguments.Text("units") == "display" ? LevelUse::Chosen : LevelUse::Unread, .placed = true};
}

std::string Help(std::string text)
{
    return text.append(kSamples);
}

Operation DrawLine()
{
    Parameter thickness = Thickness();
    thickness.defaultValue = 1.0;
    return {.name = "draw-line",
            .summary = "draw a straight line",
            .help = Help("The line has round ends; equal ends make a dot. What lies outside of the image is left out."),
            .parameters = WithPen({Coordinate("x1", "column of one end"), Coordinate("y1", "row of one end"),
                                   Coordinate("x2", "column of the other end"),
                                   Coordinate("y2", "row of the other end"), std::move(thickness)}),
            .footprint = DrawFootprint,
            .run = RunDrawLine};
}

Operation DrawText()
{
    Parameter thickness = Thickness();
    thickness.whenAbsent = "an eighth of the height";
    return {.name = "draw-text",
            .summary = "write a line of text",
            .help = Help("The text reads upright on the screen, in whichever order the rows are. A comma within it is "
                         "written twice. What lies outside of the image is left out."),
            .parameters = WithPen(
                {{.name = "text", .kind = Kind::Text, .summary = "what to write"},
                 Coordinate("x", "column of the point that the text is put at"),
                 Coordinate("y", "row of the line that the letters stand on"),
                 NumberParameter("height", "height of capitals", "pixels", {1.0, kMostPixels}, 16.0),
                 NumberParameter("angle", "turns the text about its point, clockwise", "degrees", {-360.0, 360.0}, 0.0),
                 ChoiceParameter("align", "which part of the text is put at its point", kAlignments, "left"),
                 std::move(thickness)}),
            .footprint = DrawFootprint,
            .run = RunDrawText};
}

} // namespace

std::vector<Operation> DrawOperations()
{
    return {DrawLine(), DrawText()};
}

} // namespace corvane::catalogue
