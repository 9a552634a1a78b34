#include "io/formats/limits.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <system_error>

#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "io/input_file.h"

namespace corvane::io {
namespace {

namespace fs = std::filesystem;

// Bytes of samples per byte of file. Deflate reaches 1,032, an empty sky in wavelet tiles some ten thousand.
constexpr double kMostExpansion = 65536.0;

std::string Whole(double value)
{
    return std::to_string(static_cast<long long>(value));
}

std::string SidesText(const Size& size)
{
    return Whole(size.width) + " x " + Whole(size.height);
}

} // namespace

void CheckSize(const std::string& name, const std::string& path, const Size& size, double planes, int bits)
{
    if (size.width < 1.0 || size.height < 1.0) {
        throw FileError(name, "holds no samples: its size is " + SidesText(size));
    }
    if (planes != 1.0 && planes != 3.0) {
        throw FileError(name, "has " + Whole(planes) + " planes; frames of 1 or 3 planes are read");
    }
    CheckClaim(name, path, size, size.width * size.height * planes * bits / 8, kMostExpansion);
    CheckMemory(name, "a row of " + Whole(size.width) + " samples", size.width * sizeof(float));
}

void CheckClaim(const std::string& name, const std::string& path, const Size& size, double bytes, double mostExpansion)
{
    constexpr double kMostSide = std::numeric_limits<int>::max();
    if (size.width > kMostSide || size.height > kMostSide ||
        bytes > mostExpansion * static_cast<double>(fs::file_size(path))) {
        throw FileError(name, "claims a size of " + SidesText(size) + " samples, more than the file can hold");
    }
}

void CheckMemory(const std::string& name, const std::string& what, double bytes)
{
    const auto budget = static_cast<double>(MemoryBudget());
    if (bytes > budget) {
        const double mebi = 1 << 20;
        throw FileError(name, "needs " + Whole(std::ceil(bytes / mebi)) + " MiB of memory for " + what +
                                  ", and the budget is " + Whole(budget / mebi) + " MiB (CORVANE_MEMORY)");
    }
}

std::size_t BandBytes()
{
    return static_cast<std::size_t>(std::clamp<std::uint64_t>(MemoryBudget() / 16, 1 << 20, 64 << 20));
}

std::string ReadStart(const std::string& path, std::size_t count)
{
    CheckOrdinaryFile(path);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (file == nullptr) {
        throw FileError(path, "cannot be opened: " + std::generic_category().message(errno));
    }
    std::string start(count, '\0');
    start.resize(std::fread(start.data(), 1, count, file.get()));
    if (start.empty()) {
        throw FileError(path, "is empty");
    }
    return start;
}

} // namespace corvane::io
