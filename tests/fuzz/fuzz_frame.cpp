// Files of every format that is read, with whatever bytes.

#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include "io/error.h"
#include "io/frame.h"
#include "tests/fuzz/target.h"
#include "tests/support/images.h"

namespace {

/// The name of a file of this process alone.
std::string ScratchFile(const std::string& extension)
{
    return (std::filesystem::temp_directory_path() / ("corvane-fuzz-" + std::to_string(getpid()))).string() + extension;
}

std::string Saved(const std::string& extension, int planes, int bits)
{
    const std::string path = ScratchFile(extension);
    CStlImage counts = corvane::test::RandomImage({9, 7}, planes, 1);
    counts.CutOutOfLevel();
    corvane::io::Header header;
    header.Set("EXPTIME", 2.5);
    header.Set("CTYPE1", "RA---TAN");
    header.AddHistory("a line");
    corvane::io::Save(path, counts, header, {bits});
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::filesystem::remove(path);
    return bytes;
}

} // namespace

std::vector<std::string> Seeds()
{
    return {Saved(".fits", 1, -32), Saved(".fits", 3, 16), Saved(".tif", 1, 8),
            Saved(".tif", 3, -32),  Saved(".png", 1, 16),  Saved(".png", 3, 8)};
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = ScratchFile("");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    try {
        corvane::io::Load(path);
    } catch (const corvane::io::Error&) { // what a user is told
    }
    std::filesystem::remove(path);
    return 0;
}
