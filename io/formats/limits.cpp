#include "io/formats/limits.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <system_error>

#include "io/error.h"

namespace corvane::io {
namespace {

namespace fs = std::filesystem;

// Bytes of samples per byte of file. Deflate reaches 1,032, an empty sky in wavelet tiles some ten thousand.
constexpr double kMostExpansion = 65536.0;

std::string Whole(double value)
{
    return std::to_string(static_cast<long long>(value));
}

} // namespace

void CheckSize(const std::string& name, const std::string& path, const Size& size, double planes, int bits)
{
    const std::string text = Whole(size.width) + " x " + Whole(size.height);
    if (size.width < 1.0 || size.height < 1.0) {
        throw Error(name, "holds no samples: its size is " + text);
    }
    if (planes != 1.0 && planes != 3.0) {
        throw Error(name, "has " + Whole(planes) + " planes; frames of 1 or 3 planes are read");
    }
    if (size.width > std::numeric_limits<int>::max() || size.height > std::numeric_limits<int>::max() ||
        size.width * size.height * planes * bits / 8 > kMostExpansion * static_cast<double>(fs::file_size(path))) {
        throw Error(name, "claims a size of " + text + " samples, more than the file can hold");
    }
}

std::string ReadStart(const std::string& path, std::size_t count)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        throw Error(path, status.type() == fs::file_type::not_found ? "no such file" : error.message());
    }
    if (!fs::is_regular_file(status)) {
        throw Error(path, fs::is_directory(status) ? "is a folder" : "is not an ordinary file");
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (file == nullptr) {
        throw Error(path, "cannot be opened: " + std::generic_category().message(errno));
    }
    std::string start(count, '\0');
    start.resize(std::fread(start.data(), 1, count, file.get()));
    if (start.empty()) {
        throw Error(path, "is empty");
    }
    return start;
}

bool IsCompressedFile(const std::string& path)
{
    const std::string start = ReadStart(path, 2);
    return start == "\x1f\x8b" || start == "\x1f\x9d";
}

} // namespace corvane::io
