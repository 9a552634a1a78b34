#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include <unistd.h>

#include "io/frame.h"

namespace corvane::test {

/// A file of this process alone, in the temporary folder, that goes with the object.
class ScratchFile {
public:
    explicit ScratchFile(const std::string& end)
        : path_((std::filesystem::temp_directory_path() / ("corvane-fuzz-" + std::to_string(getpid()))).string() + end)
    {}
    ScratchFile(const std::string& end, std::string_view bytes) : ScratchFile(end)
    {
        std::ofstream(path_, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    ~ScratchFile() { std::filesystem::remove(path_); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& Path() const { return path_; }
    std::string Bytes() const
    {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string path_;
};

/// The bytes of a frame in a file of the format that the extension names.
inline std::string FileOf(const CStlImage& image, const io::Header& header, const std::string& extension, int bits)
{
    const ScratchFile file(extension);
    io::Save(file.Path(), image, header, {bits});
    return file.Bytes();
}

} // namespace corvane::test
