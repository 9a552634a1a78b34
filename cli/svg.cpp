#include "cli/svg.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "corvane/core/text.h"

namespace corvane::cli {
namespace {

constexpr int kPositionDigits = 2; // of positions

/// name="value", with a blank before it.
std::string Attribute(const std::string& name, const std::string& value)
{
    return std::string(" ").append(name).append("=\"").append(value) + "\"";
}

std::string Attribute(const std::string& name, double value)
{
    return Attribute(name, NumberText(value, kPositionDigits));
}

std::string Attribute(const std::string& name, const Rgb& colour)
{
    std::string parts = "rgb";
    for (const double part : colour) {
        parts += parts.size() == 3 ? "(" : ",";
        parts += std::to_string(std::lround(part));
    }
    return Attribute(name, parts + ")");
}

/// The text with a sign in place of what is no UTF-8, as JSON has it: the name of a file may hold any bytes.
std::string ValidUtf8(const std::string& text)
{
    return nlohmann::json::parse(nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace))
        .get<std::string>();
}

const char* Word(Svg::Anchor anchor)
{
    return anchor == Svg::Anchor::kStart ? "start" : anchor == Svg::Anchor::kMiddle ? "middle" : "end";
}

} // namespace

std::string EscapedXml(const std::string& text)
{
    std::string escaped;
    for (const char letter : ValidUtf8(text)) {
        switch (letter) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        default:
            escaped += static_cast<unsigned char>(letter) < ' ' ? ' ' : letter;
        }
    }
    return escaped;
}

double NiceStep(double about)
{
    const double power = std::pow(10.0, std::floor(std::log10(about)));
    const double factor = about / power;
    return power * (factor < 1.5 ? 1.0 : factor < 3.5 ? 2.0 : factor < 7.5 ? 5.0 : 10.0);
}

Svg::Svg(double width, double height)
    : text_("<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" font-family=\"sans-serif\"" +
            Attribute("width", width) + Attribute("height", height) + ">\n")
{
    Rectangle(0.0, 0.0, width, height, {255, 255, 255});
}

void Svg::Line(double x1, double y1, double x2, double y2, const Rgb& colour)
{
    text_ += "<line" + Attribute("x1", x1) + Attribute("y1", y1) + Attribute("x2", x2) + Attribute("y2", y2) +
             Attribute("stroke", colour) + "/>\n";
}

void Svg::Rectangle(double x, double y, double width, double height, const Rgb& fill)
{
    text_ += "<rect" + Attribute("x", x) + Attribute("y", y) + Attribute("width", width) + Attribute("height", height) +
             Attribute("fill", fill) + " stroke=\"none\"/>\n";
}

void Svg::Frame(double x, double y, double width, double height, const Rgb& colour)
{
    text_ += "<rect" + Attribute("x", x) + Attribute("y", y) + Attribute("width", width) + Attribute("height", height) +
             Attribute("stroke", colour) + " fill=\"none\"/>\n";
}

void Svg::Disc(double x, double y, double radius, const Rgb& fill, const std::string& hint)
{
    text_ += "<g><title>" + EscapedXml(hint) + "</title><circle" + Attribute("cx", x) + Attribute("cy", y) +
             Attribute("r", radius) + Attribute("fill", fill) +
             " fill-opacity=\"0.85\" stroke=\"rgb(60,60,60)\" stroke-width=\"0.5\"/></g>\n";
}

void Svg::Text(double x, double y, const std::string& text, double size, Anchor anchor)
{
    text_ += "<text" + Attribute("x", x) + Attribute("y", y) + Attribute("font-size", size) +
             " fill=\"rgb(30,30,30)\" stroke=\"none\" text-anchor=\"" + Word(anchor) + "\">" + EscapedXml(text) +
             "</text>\n";
}

} // namespace corvane::cli
