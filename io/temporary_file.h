#pragma once

#include <cstdio>
#include <filesystem>

namespace corvane::io {

/// A file being written that is gone with the object, or with the process, unless it is given a name.
///
/// Where the file system can, it has no name until then. Elsewhere it is called `.corvane-HOST-PROCESS-NUMBER.tmp`;
/// whoever makes such a name removes those of this host in the folder whose process has ended. Members throw
/// std::system_error.
class TemporaryFile {
public:
    explicit TemporaryFile(std::filesystem::path folder);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::FILE* Get() const { return file_; }

    /// Gives the file a name in its folder. A file that has the name is replaced, when the new one is on the disk, and
    /// leaves its permissions.
    void Rename(const std::filesystem::path& target);

private:
    void RemoveName();

    std::filesystem::path folder_;
    std::filesystem::path name_; ///< empty while there is none
    std::FILE* file_ = nullptr;
};

} // namespace corvane::io
