#pragma once

#include <cstdint>
#include <filesystem>

namespace corvane::test {

/// A memory budget, and an empty folder for what lies beyond it, as long as the object lives.
class TightMemory {
public:
    explicit TightMemory(std::uint64_t bytes);
    ~TightMemory();
    TightMemory(const TightMemory&) = delete;
    TightMemory& operator=(const TightMemory&) = delete;

    const std::filesystem::path& Folder() const { return folder_; }

private:
    std::filesystem::path folder_;
    std::uint64_t before_;
};

} // namespace corvane::test
