#include <cstdint>
#include <filesystem>
#include <utility>

#include "corvane/platform/memory.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/platform/types.h"

namespace corvane::platform {
namespace {

// Closes the handle, and so deletes the file, unless it is taken out.
class File {
public:
    explicit File(HANDLE handle) : handle_(handle)
    {
        if (handle == INVALID_HANDLE_VALUE) {
            AfxThrowMemoryException();
        }
    }
    ~File()
    {
        if (handle_ != INVALID_HANDLE_VALUE) {
            CloseHandle(handle_);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    HANDLE Get() const { return handle_; }
    HANDLE Take() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }

private:
    HANDLE handle_;
};

// Asks first what is free, so that a hopeless wish does not fill the disk for a moment.
bool HasSpace(const std::filesystem::path& folder, std::uint64_t bytes)
{
    ULARGE_INTEGER free{};
    return !folder.empty() && bytes <= PTRDIFF_MAX &&
           GetDiskFreeSpaceExW(folder.c_str(), &free, nullptr, nullptr) != 0 && bytes <= free.QuadPart;
}

HANDLE OpenTemporary(const std::filesystem::path& folder)
{
    wchar_t path[MAX_PATH] = L"";
    if (GetTempFileNameW(folder.c_str(), L"crv", 0, path) == 0) {
        return INVALID_HANDLE_VALUE;
    }
    HANDLE file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        DeleteFileW(path);
    }
    return file;
}

// Setting the end allocates the space: the file is not sparse.
void AllocateSpace(HANDLE file, std::uint64_t bytes)
{
    LARGE_INTEGER end{};
    end.QuadPart = static_cast<LONGLONG>(bytes);
    if (SetFilePointerEx(file, end, nullptr, FILE_BEGIN) == 0 || SetEndOfFile(file) == 0) {
        AfxThrowMemoryException();
    }
}

// The view keeps the mapping alive after its handle is closed.
unsigned char* Map(HANDLE file, std::uint64_t bytes)
{
    HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READWRITE, 0, 0, nullptr);
    if (mapping == nullptr) {
        AfxThrowMemoryException();
    }
    void* const data = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, static_cast<std::size_t>(bytes));
    CloseHandle(mapping);
    if (data == nullptr) {
        AfxThrowMemoryException();
    }
    return static_cast<unsigned char*>(data);
}

} // namespace

SpillFile::SpillFile(const std::string& folder, std::uint64_t bytes) : size_(bytes)
{
    const std::filesystem::path place(std::u8string(folder.begin(), folder.end()));
    File file(HasSpace(place, bytes) ? OpenTemporary(place) : INVALID_HANDLE_VALUE);
    AllocateSpace(file.Get(), bytes);
    data_ = Map(file.Get(), bytes);
    file_ = reinterpret_cast<std::intptr_t>(file.Take());
}

SpillFile::~SpillFile()
{
    UnmapViewOfFile(data_);
    CloseHandle(reinterpret_cast<HANDLE>(file_));
}

void SpillFile::ReleasePages(std::size_t offset, std::size_t bytes) noexcept
{
    FlushViewOfFile(data_ + offset, bytes);
    // Unlocking what is not locked takes the pages out of the working set.
    VirtualUnlock(data_ + offset, bytes);
}

} // namespace corvane::platform
