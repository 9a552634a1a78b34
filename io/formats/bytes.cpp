#include "io/formats/bytes.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "corvane/core/error.h"
#include "io/formats/damaged_data.h"
#include "io/formats/limits.h"
#include "io/formats/unpacked.h"

namespace corvane::io {
namespace {

class FileBytes : public ByteSource {
public:
    FileBytes(std::string name, const std::string& path)
        : name_(std::move(name)), file_(open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        if (file_ < 0) {
            Fail("cannot be opened");
        }
    }

    ~FileBytes() override { close(file_); }
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    std::size_t Read(std::uint64_t offset, MutableBytes bytes) override
    {
        std::size_t done = 0;
        while (done < bytes.size() && offset + done <= INT64_MAX) {
            const ssize_t got =
                pread(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
            if (got < 0 && errno != EINTR) {
                Fail("cannot be read");
            }
            if (got == 0) {
                break;
            }
            done += got > 0 ? static_cast<std::size_t>(got) : 0;
        }
        return done;
    }

    std::optional<std::uint64_t> Size() const override
    {
        struct stat status {};
        if (fstat(file_, &status) != 0) {
            Fail("cannot be read");
        }
        return static_cast<std::uint64_t>(status.st_size);
    }

private:
    [[noreturn]] void Fail(const std::string& action) const
    {
        throw FileError(name_, action + ": " + std::generic_category().message(errno));
    }

    std::string name_;
    int file_;
};

} // namespace

std::unique_ptr<ByteSource> OpenBytes(const std::string& name, const std::string& path)
{
    auto file = std::make_unique<FileBytes>(name, path);
    try {
        if (const std::string start = ReadStart(path, 2); IsPacked(start)) {
            auto stream = OpenUnpacking(start, *file);
            return std::make_unique<UnpackedBytes>(name, std::move(file), std::move(stream));
        }
    } catch (const DamagedData& damage) {
        throw FileError(name, "cannot be unpacked: " + std::string(damage.what()));
    }
    return file;
}

} // namespace corvane::io
