#include "tests/variants/step_texts.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "catalogue/operations.h"

using namespace corvane::catalogue;

namespace {

using Texts = std::vector<std::string>;

const std::map<Kind, Texts> kValues{{Kind::Flag, {"yes", "no"}},
                                    {Kind::Text, {"Vega,, 8.3", "{g@&S}"}},
                                    {Kind::Curve, {"0:0.1/0.3:0.6/1:0.9", "0:1/0.7:0.2/1:0"}},
                                    {Kind::Rectangle, {"9:11:74:60", "70:3:131:96"}},
                                    {Kind::Output, {}}};

// The largest values that are worth their memory or their time.
const std::map<std::string, double> kMost{{"width", 200.0}, {"height", 150.0}, {"factor", 1.7},
                                          {"x", 7.0},       {"y", 7.0},        {"iterations", 4.0}};

// What one parameter at a time does not reach.
const std::set<std::string> kCombinations{"resize:width=57,height=140,method=cubic",
                                          "rotate:angle=33.3,expand=yes",
                                          "star-sharpen:shape=square5,rank=7.25,threshold=0.01",
                                          "draw-line:x1=3.3,y1=90.5,x2=88,y2=-4.25,thickness=2.6",
                                          "draw-text:text=Vega 8.3,x=50,y=40,height=13.5,angle=33.3,align=centre",
                                          "false-color:low=3000.5,high=900,cycles=3",
                                          "ghs:d=5.5,b=0.7,sp=0.4,lp=0.1,hp=0.8",
                                          "ghs:d=5.5,b=-0.7,sp=0.4,lp=0.1,hp=0.8",
                                          "ghs:d=5.5,b=-1,sp=0.4,inverse=yes",
                                          "fill:with=value,value=7.5",
                                          "cosmic-rays:sigma=1,limit=0.1,gain=0.05,read-noise=3,iterations=2",
                                          "lucy:sigma=1.3,rect=9:11:74:60",
                                          "lucy:psf=auto,protect=yes,damping=0.01,iterations=3",
                                          "wiener:psf=auto",
                                          "maxent:sigma=1.3,noise=70,rect=9:11:74:60"};

/// Values to try; the first is given where one must be. Numbers are a usual one, which is greater for the later of an
/// operation's parameters, as levels must be, the limits, and one near a lower limit.
Texts ValuesOf(const Parameter& parameter, std::size_t place, const StepFiles& files)
{
    if (parameter.kind == Kind::Image || parameter.kind == Kind::CurveFile) {
        return parameter.kind == Kind::Image ? files.images : Texts{files.curve};
    }
    if (kValues.contains(parameter.kind)) {
        return kValues.at(parameter.kind);
    }
    Texts values = parameter.choices;
    if (parameter.kind != Kind::Choice) {
        const auto most = kMost.find(parameter.name);
        const double max = most == kMost.end() ? parameter.max : std::min(parameter.max, most->second);
        const double low = std::max(parameter.min, -999.5);
        const double high = std::min(max, 3000.25);
        const double usual = low + (high - low) * (0.6 + 0.15 * static_cast<double>(place % 3));
        for (const double v : {usual, parameter.min, max, std::sqrt(std::max(low * high, 0.0))}) {
            values.push_back(ToText(parameter.kind == Kind::Whole ? Value(static_cast<int>(v)) : Value(v)));
        }
    }
    return values;
}

/// The operation with its defaults, but for the parameter that is varied, if any.
std::string StepText(const Operation& operation, std::size_t varied, const std::string& value, const StepFiles& files)
{
    std::string text = operation.name;
    for (std::size_t i = 0; i < operation.parameters.size(); ++i) {
        const Parameter& parameter = operation.parameters[i];
        if (i == varied || parameter.IsRequired()) {
            text += (text == operation.name ? ":" : ",") + parameter.name + "=";
            text += i == varied ? value : ValuesOf(parameter, i, files).front();
        }
    }
    return text;
}

/// The operation with its defaults, and a part of its change.
std::string MixedText(const Operation& operation, const StepFiles& files)
{
    std::string text = StepText(operation, operation.parameters.size(), "", files);
    for (const Parameter& parameter : operation.parameters) {
        if (parameter.isCommon) {
            text += (text.find(':') == text.npos ? ":" : ",") + parameter.name + "=";
            text += parameter.kind == Kind::Image ? files.mask : "0.7";
        }
    }
    return text;
}

} // namespace

std::set<std::string> StepTexts(const StepFiles& files)
{
    std::set<std::string> steps = kCombinations;
    for (const Operation& operation : Operations()) {
        if (!operation.IsStep()) {
            continue;
        }
        const std::vector<Parameter>& parameters = operation.parameters;
        steps.insert(StepText(operation, parameters.size(), "", files));
        steps.insert(MixedText(operation, files));
        for (std::size_t i = 0; i < parameters.size() && !parameters[i].isCommon; ++i) {
            for (const std::string& value : ValuesOf(parameters[i], i, files)) {
                steps.insert(StepText(operation, i, value, files));
            }
        }
    }
    return steps;
}
