#include "cli/documents.h"

#include <algorithm>
#include <iterator>

namespace corvane::cli {

using catalogue::Count;
using catalogue::Kind;
using catalogue::OutputKind;
using catalogue::Parameter;
using catalogue::Planes;

const char* WordFor(Kind kind)
{
    switch (kind) {
    case Kind::Number:
        return "number";
    case Kind::Whole:
        return "whole";
    case Kind::Choice:
        return "choice";
    case Kind::Flag:
        return "flag";
    case Kind::Numbers:
        return "numbers";
    case Kind::Text:
        return "text";
    case Kind::Image:
        return "image";
    case Kind::CurveFile:
    case Kind::Matrix:
    case Kind::Output:
        return "file";
    case Kind::Curve:
        return "curve";
    case Kind::Rectangle:
        break;
    }
    return "rectangle";
}

const char* WordFor(OutputKind kind)
{
    switch (kind) {
    case OutputKind::Image:
        return "image";
    case OutputKind::Numbers:
        return "numbers";
    case OutputKind::Table:
        return "table";
    case OutputKind::Picture:
        return "picture";
    case OutputKind::Files:
        break;
    }
    return "files";
}

const char* WordFor(Count count)
{
    switch (count) {
    case Count::Several:
        return "several";
    case Count::Optional:
        return "optional";
    case Count::Any:
        return "any number";
    case Count::One:
        break;
    }
    return "one";
}

const char* WordFor(Planes planes)
{
    switch (planes) {
    case Planes::Mono:
        return "images of one plane";
    case Planes::Colour:
        return "colour images";
    case Planes::Any:
        break;
    }
    return "any image";
}

std::vector<Parameter> ShownParameters(const catalogue::Operation& operation)
{
    std::vector<Parameter> shown;
    std::copy_if(operation.parameters.begin(), operation.parameters.end(), std::back_inserter(shown),
                 [](const Parameter& parameter) { return parameter.isShown; });
    return shown;
}

std::vector<Parameter> OwnParameters(const catalogue::Operation& operation)
{
    std::vector<Parameter> own = ShownParameters(operation);
    std::erase_if(own, [](const Parameter& parameter) { return parameter.isCommon; });
    return own;
}

std::vector<const CLI::App*> CommandsOf(const CLI::App& app)
{
    return app.get_subcommands([](const CLI::App*) { return true; });
}

} // namespace corvane::cli
