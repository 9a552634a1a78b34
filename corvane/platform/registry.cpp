#include "corvane/platform/registry.h"

#include <cmath>
#include <limits>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace {

// A double holds every int exactly, so one kind of number serves both.
struct Settings {
    std::mutex mutex;
    std::map<std::pair<std::string, std::string>, double> values;
};

Settings& TheSettings()
{
    static Settings settings;
    return settings;
}

std::optional<double> Find(const CString& section, const CString& key)
{
    Settings& settings = TheSettings();
    const std::lock_guard lock(settings.mutex);
    const auto found = settings.values.find({section.GetString(), key.GetString()});
    return found == settings.values.end() ? std::nullopt : std::optional(found->second);
}

int Truncate(double value)
{
    if (value <= std::numeric_limits<int>::min()) {
        return std::numeric_limits<int>::min();
    }
    if (value >= std::numeric_limits<int>::max()) {
        return std::numeric_limits<int>::max();
    }
    return static_cast<int>(value);
}

} // namespace

CRegistry::CRegistry() = default;
CRegistry::~CRegistry() = default;

int CRegistry::Read(const CString& section, const CString& key, int defaultValue, int* value, int)
{
    const std::optional<double> found = Find(section, key);
    const bool present = found && !std::isnan(*found);
    *value = present ? Truncate(*found) : defaultValue;
    return present;
}

int CRegistry::Read(const CString& section, const CString& key, double defaultValue, double* value)
{
    const std::optional<double> found = Find(section, key);
    *value = found.value_or(defaultValue);
    return found.has_value();
}

void CRegistry::Write(const CString& section, const CString& key, int value)
{
    Write(section, key, static_cast<double>(value));
}

void CRegistry::Write(const CString& section, const CString& key, double value)
{
    Settings& settings = TheSettings();
    const std::lock_guard lock(settings.mutex);
    settings.values[{section.GetString(), key.GetString()}] = value;
}
