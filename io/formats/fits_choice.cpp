#include "io/formats/fits_choice.h"

#include <charconv>
#include <string_view>

#include "corvane/core/ascii.h"

namespace corvane::io {
namespace {

std::optional<long long> ParseWhole(std::string_view text)
{
    long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

} // namespace

std::optional<FitsChoice> ParseChoice(const std::string& text)
{
    constexpr std::string_view kPlane = "plane ";
    FitsChoice choice;
    std::string_view hdu = Trim(text);
    const auto lastComma = hdu.rfind(',');
    const std::string_view last = Trim(hdu.substr(lastComma == hdu.npos ? 0 : lastComma + 1));
    if (last.starts_with(kPlane)) {
        choice.plane = ParseWhole(Trim(last.substr(kPlane.size())));
        if (choice.plane.value_or(0) < 1) {
            return std::nullopt;
        }
        hdu = lastComma == hdu.npos ? std::string_view{} : Trim(hdu.substr(0, lastComma));
    }
    choice.hdu = hdu;
    choice.number = ParseWhole(hdu);
    choice.extension = hdu;
    const auto comma = hdu.rfind(',');
    if (const auto version = comma == hdu.npos ? std::nullopt : ParseWhole(Trim(hdu.substr(comma + 1)))) {
        choice.extension = Trim(hdu.substr(0, comma));
        choice.version = *version;
    }
    return choice;
}

std::string WithPlane(const std::string& name, const std::string& hdu, const std::string& plane)
{
    const std::string file = name.ends_with(']') && !hdu.empty() ? name.substr(0, name.rfind('[')) : name;
    return file + "[" + hdu + (hdu.empty() ? "" : ", ") + "plane " + plane + "]";
}

} // namespace corvane::io
