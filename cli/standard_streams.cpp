#include "cli/standard_streams.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <unistd.h>

#include "cli/cancel.h"
#include "cli/terminal.h"
#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardInput = "standard input";
constexpr const char* kStandardOutput = "standard output";

[[noreturn]] void FailOn(const char* stream, const std::string& what)
{
    throw FileError(stream, what + ": " + std::generic_category().message(errno));
}

/// Copies all that comes from one descriptor to another; `stream` is the standard one of them.
void CopyAll(int from, int to, const char* stream)
{
    std::array<char, 1 << 16> bytes;
    for (;;) {
        ThrowIfCancelled();
        const ssize_t got = read(from, bytes.data(), bytes.size());
        if (got == 0) {
            return;
        }
        if (got < 0) {
            FailOn(stream, "cannot be read");
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = write(to, bytes.data() + done, static_cast<std::size_t>(got - done));
            if (put < 0) {
                FailOn(stream, "cannot be copied");
            }
            done += put;
        }
    }
}

/// A file without a name that holds standard input, for as long as the process lives.
std::string CopyOfInput()
{
    if (IsTerminal(STDIN_FILENO)) {
        throw FileError(kStandardInput, "is a terminal; an image must come through it");
    }
    std::string name = (fs::path(SpillFolder()) / "corvane-XXXXXX").string();
    const int file = mkstemp(name.data());
    if (file < 0) {
        FailOn(kStandardInput, "cannot be copied to the folder '" + SpillFolder() + "'");
    }
    unlink(name.c_str());
    CopyAll(STDIN_FILENO, file, kStandardInput);
    return "/dev/fd/" + std::to_string(file);
}

/// Calls work(path), whose errors are of the stream in place of the path.
template <class Work>
auto NamedAs(const char* stream, const std::string& path, Work work)
{
    try {
        return work(path);
    } catch (const Error& error) {
        throw error.Subject() == path ? FileError(stream, error.Reason()) : error;
    }
}

template <class Work>
auto WithInput(const std::string& word, Work work)
{
    return word == kStandardStream ? NamedAs(kStandardInput, CopyOfInput(), work) : work(word);
}

/// A folder that is gone with the object.
class TemporaryFolder {
public:
    TemporaryFolder() : path_((fs::path(SpillFolder()) / "corvane-XXXXXX").string())
    {
        if (mkdtemp(path_.data()) == nullptr) {
            FailOn(kStandardOutput, "cannot be prepared in the folder '" + SpillFolder() + "'");
        }
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string FitsFile() const { return path_ + "/out.fits"; }

private:
    std::string path_;
};

using OpenedFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// An image as FITS, in a file that has lost its name, so that nothing remains when whoever reads the copy goes away.
OpenedFile SavedFits(const io::Frame& frame, const io::SaveOptions& options)
{
    const TemporaryFolder folder;
    return NamedAs(kStandardOutput, folder.FitsFile(), [&](const std::string& path) {
        io::Save(path, frame.image, frame.header, options);
        OpenedFile file(std::fopen(path.c_str(), "rb"), std::fclose);
        if (file == nullptr) {
            FailOn(kStandardOutput, "cannot be written");
        }
        return file;
    });
}

} // namespace

std::vector<std::string> FilesAmong(std::vector<std::string> words)
{
    std::erase(words, kStandardStream);
    return words;
}

std::unique_ptr<io::FrameReader> OpenInput(const std::string& word, io::Cubes cubes)
{
    return WithInput(word, [=](const std::string& path) { return io::OpenFrame(path, cubes); });
}

io::Frame LoadInput(const std::string& word)
{
    return WithInput(word, [](const std::string& path) { return io::Load(path); });
}

void SaveOutput(const std::string& word, const io::Frame& frame, const io::SaveOptions& options)
{
    if (word == kStandardStream) {
        const OpenedFile fits = SavedFits(frame, options);
        CopyAll(fileno(fits.get()), STDOUT_FILENO, kStandardOutput);
    } else {
        io::Save(word, frame.image, frame.header, options);
    }
}

void CheckOutput(const std::string& word, const io::SaveOptions& options)
{
    if (word != kStandardStream) {
        io::CheckSave(word, options);
        return;
    }
    if (IsTerminal(STDOUT_FILENO)) {
        throw FileError(kStandardOutput, "is a terminal; send the image to a file or a program");
    }
    const TemporaryFolder folder;
    NamedAs(kStandardOutput, folder.FitsFile(), [&](const std::string& path) { io::CheckSave(path, options); });
}

} // namespace corvane::cli
