#include "corvane/core/unit.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "corvane/core/ascii.h"

namespace corvane {
namespace {

constexpr std::string_view kWithPrefix[] = {
    "m", "g",  "s", "rad", "sr", "K",  "A",  "mol", "cd", "Hz", "J",  "W",   "V", "N", "Pa",   "C",   "S",    "Ohm",
    "F", "Wb", "T", "H",   "lm", "lx", "eV", "pc",  "a",  "yr", "Jy", "mag", "R", "G", "barn", "bit", "byte", "D"};

constexpr std::string_view kWithoutPrefix[] = {"deg",   "arcmin", "arcsec", "mas",      "min",    "h",      "d",
                                               "erg",   "Ry",     "u",      "Angstrom", "AU",     "lyr",    "ct",
                                               "count", "ph",     "photon", "solMass",  "solLum", "solRad", "Sun",
                                               "chan",  "bin",    "beam",   "pix",      "pixel",  "adu",    "electron"};

constexpr std::pair<std::string_view, std::string_view> kOtherNames[] = {{"angstrom", "Angstrom"},
                                                                         {"angstroms", "Angstrom"},
                                                                         {"Angstroms", "Angstrom"},
                                                                         {"ANGSTROM", "Angstrom"},
                                                                         {"micron", "um"},
                                                                         {"microns", "um"},
                                                                         {"HZ", "Hz"},
                                                                         {"hz", "Hz"}};

constexpr std::pair<std::string_view, int> kPrefixes[] = {
    {"da", 1},  {"d", -1}, {"c", -2}, {"m", -3}, {"u", -6}, {"n", -9}, {"p", -12}, {"f", -15}, {"a", -18}, {"z", -21},
    {"y", -24}, {"h", 2},  {"k", 3},  {"M", 6},  {"G", 9},  {"T", 12}, {"P", 15},  {"E", 18},  {"Z", 21},  {"Y", 24}};

template <class List>
bool Contains(const List& list, std::string_view word)
{
    return std::find(std::begin(list), std::end(list), word) != std::end(list);
}

/// A single unit: the power of ten of its prefix, and the rest.
struct Simple {
    int ten;
    std::string_view base;
};

std::optional<Simple> SplitSimple(std::string_view name)
{
    for (const auto& [other, standard] : kOtherNames) {
        name = other == name ? standard : name;
    }
    if (Contains(kWithPrefix, name) || Contains(kWithoutPrefix, name)) {
        return Simple{0, name};
    }
    for (const auto& [prefix, ten] : kPrefixes) {
        if (name.starts_with(prefix) && Contains(kWithPrefix, name.substr(prefix.size()))) {
            return Simple{ten, name.substr(prefix.size())};
        }
    }
    return std::nullopt;
}

/// Takes the power off the end of a unit, 1 when there is none.
std::optional<int> TakePower(std::string_view& text)
{
    const auto end = text.find_first_of("^*(+-0123456789");
    if (end == text.npos) {
        return 1;
    }
    std::string_view power = text.substr(end);
    text = text.substr(0, end);
    power.remove_prefix(power.starts_with("**") ? 2 : power.starts_with('^') ? 1 : 0);
    if (power.starts_with('(') && power.ends_with(')')) {
        power = power.substr(1, power.size() - 2);
    }
    power.remove_prefix(power.starts_with('+') ? 1 : 0);
    int value = 0;
    const auto [last, error] = std::from_chars(power.data(), power.data() + power.size(), value);
    const bool isWhole = error == std::errc() && last == power.data() + power.size();
    return isWhole && value != 0 && value >= -9 && value <= 9 ? std::optional(value) : std::nullopt;
}

/// The double next to a power of ten.
double PowerOfTen(int ten)
{
    const std::string text = "1e" + std::to_string(ten);
    double value = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

} // namespace

SplitUnit SplitPrefix(std::string_view text)
{
    std::string_view rest = Trim(text);
    int sign = 1;
    for (const std::string_view over : {"1/", "/"}) {
        if (sign == 1 && rest.starts_with(over)) {
            rest = Trim(rest.substr(over.size()));
            sign = -1;
        }
    }
    const std::optional<int> power = TakePower(rest);
    const std::optional<Simple> unit = SplitSimple(rest);
    if (!power || !unit) {
        return {};
    }
    const int whole = sign * *power;
    return {PowerOfTen(unit->ten * whole), std::string(unit->base) + (whole == 1 ? "" : std::to_string(whole))};
}

} // namespace corvane
