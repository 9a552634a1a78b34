#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "corvane/platform/memory.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::platform {
namespace {

// Closes the file unless it is taken out.
class File {
public:
    explicit File(int descriptor) : descriptor_(descriptor)
    {
        if (descriptor < 0) {
            AfxThrowMemoryException();
        }
    }
    ~File()
    {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int Get() const { return descriptor_; }
    int Take() { return std::exchange(descriptor_, -1); }

private:
    int descriptor_;
};

// A file without a name; -1 when there is none to be had.
int OpenNameless(const std::string& folder)
{
    if (folder.empty()) {
        return -1;
    }
#ifdef O_TMPFILE
    const int nameless = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (nameless >= 0) {
        return nameless;
    }
#endif
    std::string path = folder + "/corvane-" + std::string(6, 'X');
    const int named = mkstemp(path.data());
    if (named >= 0) {
        unlink(path.c_str());
        fcntl(named, F_SETFD, FD_CLOEXEC);
    }
    return named;
}

// Asks first what is free, so that a hopeless wish does not fill the disk for a moment.
void AllocateSpace(int file, std::uint64_t bytes)
{
    struct statvfs disk {};
    if (bytes > static_cast<std::uint64_t>(std::min<std::intmax_t>(PTRDIFF_MAX, std::numeric_limits<off_t>::max())) ||
        fstatvfs(file, &disk) != 0 || bytes / disk.f_frsize > disk.f_bavail) {
        AfxThrowMemoryException();
    }
    int error = EINTR;
    while (error == EINTR) {
        error = posix_fallocate(file, 0, static_cast<off_t>(bytes));
    }
    if (error != 0) {
        AfxThrowMemoryException();
    }
}

unsigned char* Map(int file, std::uint64_t bytes)
{
    void* const data = mmap(nullptr, static_cast<std::size_t>(bytes), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (data == MAP_FAILED) {
        AfxThrowMemoryException();
    }
    return static_cast<unsigned char*>(data);
}

} // namespace

SpillFile::SpillFile(const std::string& folder, std::uint64_t bytes) : size_(bytes)
{
    File file(OpenNameless(folder));
    AllocateSpace(file.Get(), bytes);
    data_ = Map(file.Get(), bytes);
    file_ = file.Take();
}

SpillFile::~SpillFile()
{
    munmap(data_, static_cast<std::size_t>(size_));
    close(static_cast<int>(file_));
}

void SpillFile::ReleasePages(std::size_t offset, std::size_t bytes) noexcept
{
    const auto file = static_cast<int>(file_);
    const auto start = static_cast<off_t>(offset);
    const auto length = static_cast<off_t>(bytes);
#ifdef __linux__
    madvise(data_ + offset, bytes, MADV_DONTNEED);
    sync_file_range(file, start, length, SYNC_FILE_RANGE_WRITE);
#else
    msync(data_ + offset, bytes, MS_ASYNC);
    madvise(data_ + offset, bytes, MADV_DONTNEED);
#endif
    posix_fadvise(file, start, length, POSIX_FADV_DONTNEED);
}

} // namespace corvane::platform
