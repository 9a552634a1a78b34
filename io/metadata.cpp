#include "io/metadata.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <vector>

namespace corvane::io {
namespace {

constexpr double kSecondsPerDay = 86400.0;
constexpr double kMjdOf1970 = 40587.0;
constexpr double kYear0 = -62167219200.0; // 0000-01-01, seconds since 1970
constexpr double kYear10000 = 253402300800.0;

using Names = std::initializer_list<const char*>;

constexpr Names kExposureNames{"EXPTIME", "EXPOSURE", "EXP_TIME"};

std::optional<double> FirstNumber(const Header& header, Names names)
{
    for (const char* name : names) {
        if (const auto number = header.Number(name)) {
            return number;
        }
    }
    return std::nullopt;
}

std::optional<std::string> FirstText(const Header& header, Names names)
{
    for (const char* name : names) {
        if (auto text = header.Text(name); text && !text->empty()) {
            return text;
        }
    }
    return std::nullopt;
}

/// The text's numbers when `separator` alone stands between them; empty when it is anything else.
std::vector<double> NumbersBetween(const std::string& text, char separator)
{
    std::vector<double> numbers;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end && std::isdigit(static_cast<unsigned char>(*at)) != 0) {
        double number = 0.0;
        at = std::from_chars(at, end, number, std::chars_format::fixed).ptr;
        numbers.push_back(number);
        if (at == end) {
            return numbers;
        }
        if (*at++ != separator) {
            break;
        }
    }
    return {};
}

std::optional<double> ParseClock(const std::string& text)
{
    std::vector<double> parts = NumbersBetween(text, ':');
    if (parts.size() < 2 || parts.size() > 3) {
        return std::nullopt;
    }
    parts.resize(3);
    if (parts[0] >= 25.0 || parts[1] >= 60.0 || parts[2] >= 61.0) {
        return std::nullopt;
    }
    return parts[0] * 3600.0 + parts[1] * 60.0 + parts[2];
}

/// A time of day, with the offset from UTC (`Z`, `+02:00` or `-0700`) that may follow it taken off.
std::optional<double> ParseTimeOfDay(const std::string& text)
{
    const auto sign = text.find_first_of("Z+-");
    const auto time = ParseClock(text.substr(0, sign));
    if (sign == text.npos || text[sign] == 'Z') {
        return time;
    }
    std::string zone = text.substr(sign + 1);
    if (zone.size() == 4) {
        zone = zone.substr(0, 2) + ':' + zone.substr(2);
    }
    const auto offset = ParseClock(zone);
    return time && offset ? std::optional(text[sign] == '-' ? *time + *offset : *time - *offset) : std::nullopt;
}

std::optional<double> SecondsOfDate(double year, double month, double day)
{
    if (year > 9999.0 || month > 12.0 || day > 31.0) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) {
        return std::nullopt;
    }
    return static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count()) * kSecondsPerDay;
}

std::optional<double> ParseDate(const std::string& text)
{
    if (const auto parts = NumbersBetween(text, '-'); parts.size() == 3) {
        return SecondsOfDate(parts[0], parts[1], parts[2]);
    }
    const auto parts = NumbersBetween(text, '/');
    if (parts.size() != 3) {
        return std::nullopt;
    }
    const bool yearFirst = parts[0] > 31.0;
    return yearFirst ? SecondsOfDate(parts[0], parts[1], parts[2])
                     : SecondsOfDate(parts[2] < 100.0 ? 1900.0 + parts[2] : parts[2], parts[1], parts[0]);
}

} // namespace

std::optional<double> ExposureSeconds(const Header& header)
{
    return FirstNumber(header, kExposureNames);
}

std::optional<std::string> UnreadableExposure(const Header& header)
{
    for (const char* name : kExposureNames) {
        const std::string text = header.Text(name).value_or("");
        if (!text.empty() && !ExposureSeconds(header)) {
            return std::string(name) + " = " + text;
        }
    }
    return std::nullopt;
}

std::optional<double> CcdTemperature(const Header& header)
{
    return FirstNumber(header, {"CCD-TEMP", "CCDTEMP", "CCD_TEMP", "SENSTEMP", "DET-TEMP", "SET-TEMP"});
}

std::optional<double> Gain(const Header& header)
{
    return FirstNumber(header, {"GAIN", "ISOSPEED"});
}

std::optional<double> ElectronsPerCount(const Header& header)
{
    return FirstNumber(header, {"EGAIN"});
}

std::optional<double> PixelSize(const Header& header)
{
    return FirstNumber(header, {"XPIXSZ", "PIXSIZE1", "XPIXELSZ"});
}

void ScalePixelSize(Header& header, double x, double y)
{
    const auto scale = [&header](const char* name, double factor) {
        if (const auto size = header.Number(name)) {
            header.Set(name, *size * factor);
        }
    };
    for (const char* name : {"XPIXSZ", "PIXSIZE1", "XPIXELSZ"}) {
        scale(name, x);
    }
    for (const char* name : {"YPIXSZ", "PIXSIZE2", "YPIXELSZ"}) {
        scale(name, y);
    }
}

std::optional<std::string> Filter(const Header& header)
{
    return FirstText(header, {"FILTER", "FILTER1", "FILTNAM"});
}

std::optional<std::string> StatedRowOrder(const Header& header)
{
    const auto order = header.Text("ROWORDER");
    return order == "TOP-DOWN" || order == "BOTTOM-UP" ? order : std::nullopt;
}

std::string RowOrder(const Header& header)
{
    return IsBottomUp(header) ? "BOTTOM-UP" : "TOP-DOWN";
}

bool IsBottomUp(const Header& header)
{
    return StatedRowOrder(header) != "TOP-DOWN";
}

std::optional<double> ObservationTime(const Header& header)
{
    for (const char* name : {"DATE-OBS", "DATE_OBS"}) {
        const std::string text = header.Text(name).value_or("");
        const auto start = ParseTime(text);
        if (!start) {
            continue;
        }
        if (text.find(':') != text.npos) {
            return start;
        }
        for (const char* time : {"TIME-OBS", "TIME_OBS", "UT", "UTC", "UTSTART", "UTC-OBS"}) {
            if (const auto seconds = ParseTimeOfDay(header.Text(time).value_or(""))) {
                return *start + *seconds;
            }
        }
        return start;
    }
    const auto mjd = header.Number("MJD-OBS");
    return mjd ? std::optional((*mjd - kMjdOf1970) * kSecondsPerDay) : std::nullopt;
}

std::optional<double> MiddleTime(const Header& header)
{
    const auto start = ObservationTime(header);
    const auto middle = start ? std::optional(*start + ExposureSeconds(header).value_or(0.0) / 2.0) : std::nullopt;
    const auto stated = ParseTime(header.Text("DATE-AVG").value_or(""));
    return stated ? stated : middle;
}

std::optional<std::string> DateObs(const Header& header)
{
    const auto seconds = ObservationTime(header);
    return seconds ? std::optional(FormatTime(*seconds)) : std::nullopt;
}

std::string FormatTime(double seconds)
{
    const double shown = std::clamp(seconds, kYear0, kYear10000 - 0.001);
    const auto milliseconds = static_cast<long long>(std::floor(shown * 1000.0 + 0.5));
    const std::chrono::sys_time<std::chrono::milliseconds> time{std::chrono::milliseconds(milliseconds)};
    const auto days = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(days);
    const std::chrono::hh_mm_ss clock(time - days);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03d", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
    return text;
}

std::optional<double> ParseTime(const std::string& text)
{
    const auto split = text.find_first_of("T ");
    const auto day = ParseDate(text.substr(0, split));
    if (!day || split == text.npos) {
        return day;
    }
    const auto time = ParseTimeOfDay(text.substr(split + 1));
    return time ? std::optional(*day + *time) : std::nullopt;
}

} // namespace corvane::io
