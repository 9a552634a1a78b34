#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "corvane/platform/export.h"

namespace corvane::io {

class TemporaryFile;

/// A file that appears whole or not at all.
///
/// What is written goes to a file without a name in the same folder; `Commit` gives it the name, and waits for the disk
/// before it replaces a file. Without `Commit`, or when the process is killed, nothing remains of it, and a file that
/// was there before stays as it was. Where the file system knows no nameless files, see `TemporaryFile`, one of a
/// killed process remains until the next output to its folder. A symbolic link is followed: its target is replaced. An
/// existing file keeps its permissions. Every member throws Error, naming the path as it was given.
class CORVANE_VISIBLE OutputFile {
public:
    /// Makes the temporary file. Refuses a folder as output, a folder that is missing or cannot be written to, and an
    /// existing file without write permission.
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Throws what the constructor would throw, and leaves nothing behind.
    static void Check(const std::string& path);

    const std::string& Path() const { return path_; }

    void Write(const void* bytes, std::size_t count);
    /// Reads back up to `count` bytes from the present position; returns how many there were.
    std::size_t Read(void* bytes, std::size_t count);
    /// Moves to a byte offset from the start, the present position or the end (SEEK_SET, SEEK_CUR, SEEK_END); returns
    /// the new offset from the start.
    std::uint64_t Seek(std::int64_t offset, int origin);

    /// Closes the file and puts it in place; one that takes the place of another is on the disk before.
    void Commit();

private:
    [[noreturn]] void Fail(const std::string& action) const;

    std::string path_;
    std::filesystem::path target_;
    std::unique_ptr<TemporaryFile> file_; ///< none once it is in place
};

} // namespace corvane::io
