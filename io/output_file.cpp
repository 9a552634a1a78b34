#include "io/output_file.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "corvane/core/error.h"
#include "io/temporary_file.h"

namespace corvane::io {
namespace {

namespace fs = std::filesystem;

std::string SystemText(int number)
{
    return std::generic_category().message(number);
}

/// The file that a chain of symbolic links leads to, which need not exist.
fs::path FollowLinks(const std::string& path)
{
    constexpr int kMostLinks = 40; // what the system itself follows
    fs::path target(path);
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(target, error); ++i) {
        target = target.parent_path() / fs::read_symlink(target, error);
    }
    return target;
}

void CheckTarget(const std::string& path, const fs::path& target)
{
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (fs::is_directory(status) || path.empty() || path.ends_with('/')) {
        throw FileError(path, "is a folder; the name of a file is needed");
    }
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, error)) {
        throw FileError(path, "there is no folder '" + folder.string() + "'");
    }
    if (!fs::exists(status)) {
        return;
    }
    if (!fs::is_regular_file(status)) {
        throw FileError(path, "is not an ordinary file and will not be replaced");
    }
    std::FILE* existing = std::fopen(target.c_str(), "r+b");
    if (existing == nullptr) {
        throw FileError(path, "cannot be replaced: " + SystemText(errno));
    }
    std::fclose(existing);
}

} // namespace

OutputFile::OutputFile(const std::string& path) : path_(path), target_(FollowLinks(path))
{
    CheckTarget(path_, target_);
    try {
        file_ = std::make_unique<TemporaryFile>(target_.parent_path());
    } catch (const std::system_error& error) {
        throw FileError(path_, "cannot be written: " + error.code().message());
    }
}

OutputFile::~OutputFile() = default;

void OutputFile::Check(const std::string& path)
{
    const OutputFile probe(path);
}

void OutputFile::Write(const void* bytes, std::size_t count)
{
    if (std::fwrite(bytes, 1, count, file_->Get()) != count) {
        Fail("cannot be written");
    }
}

std::size_t OutputFile::Read(void* bytes, std::size_t count)
{
    const std::size_t got = std::fread(bytes, 1, count, file_->Get());
    if (std::ferror(file_->Get()) != 0) {
        Fail("cannot be read back");
    }
    return got;
}

std::uint64_t OutputFile::Seek(std::int64_t offset, int origin)
{
    if (fseeko(file_->Get(), offset, origin) != 0) {
        Fail("cannot be written");
    }
    return static_cast<std::uint64_t>(ftello(file_->Get()));
}

void OutputFile::Commit()
{
    try {
        file_->Rename(target_);
    } catch (const std::system_error& error) {
        throw FileError(path_, "cannot be written: " + error.code().message());
    }
    file_.reset();
}

void OutputFile::Fail(const std::string& action) const
{
    throw FileError(path_, action + ": " + SystemText(errno));
}

} // namespace corvane::io
