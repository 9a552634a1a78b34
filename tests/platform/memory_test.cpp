#include "corvane/platform/memory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "corvane/platform/memory_exception.h"
#include "corvane/platform/page_range.h"
#include "corvane/platform/types.h"
#include "tests/support/storage.h"

using namespace corvane::platform;

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

TEST(Pages, AreZeroedAlignedAndWritable)
{
#ifdef __linux__
    const std::size_t kAligned = kLargePage;
#else
    const std::size_t kAligned = PageSize();
#endif
    for (const std::size_t bytes : {std::size_t{1}, PageSize() + 1, kLargePage - 1, 3 * kLargePage + 1}) {
        auto* memory = static_cast<unsigned char*>(AllocatePages(bytes));
        ASSERT_NE(memory, nullptr) << bytes;
        EXPECT_EQ(std::count(memory, memory + bytes, 0), bytes);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % (bytes < kLargePage ? PageSize() : kAligned), 0U) << bytes;
        OfferPages(memory, bytes); // stays usable
        std::memset(memory, 0xA5, bytes);
        EXPECT_EQ(std::count(memory, memory + bytes, 0xA5), bytes);
        FreePages(memory, bytes);
    }
    for (const std::size_t absurd : {std::size_t{0}, SIZE_MAX, SIZE_MAX / 2, SIZE_MAX / 2 - kLargePage}) {
        EXPECT_EQ(AllocatePages(absurd), nullptr) << absurd;
    }
    FreePages(nullptr, 1);
}

TEST(Pages, RangesAreRoundedToWholePages)
{
    const std::size_t page = PageSize();
    using Range = std::pair<std::size_t, std::size_t>; // first byte and number of bytes
    const std::tuple<Range, Range, Range> cases[] = {
        {{page, 2 * page}, {page, 2 * page}, {page, 2 * page}},
        {{page / 2, 2 * page}, {page, page}, {0, 3 * page}},
        {{page + 1, page - 2}, {2 * page, 0}, {page, page}},
        {{5, 0}, {page, 0}, {0, 0}},
    };
    for (const auto& [given, inside, around] : cases) {
        const auto inner = PagesInside(given.first, given.second);
        const auto outer = PagesAround(given.first, given.second);
        EXPECT_EQ(Range(inner.first, inner.bytes), inside) << given.first << " + " << given.second;
        EXPECT_EQ(Range(outer.first, outer.bytes), around) << given.first << " + " << given.second;
    }
}

class SpillFiles : public testing::Test {
protected:
    const corvane::test::TightMemory tight_{1 << 20};
    const std::filesystem::path& folder_ = tight_.Folder();
};

TEST_F(SpillFiles, BytesSurviveRelease)
{
    const std::size_t size = 5 * PageSize() + 123;
    SpillFile file(folder_.string(), size);
    ASSERT_EQ(file.Size(), size);
    std::mt19937 random(7);
    std::vector<unsigned char> expected(size);
    const std::pair<std::uint64_t, std::uint64_t> parts[] = {
        {0, size},        {PageSize() - 1, 2}, {PageSize(), PageSize()}, {size - 1, 9999},
        {size + 9999, 1}, {17, UINT64_MAX},    {UINT64_MAX, UINT64_MAX}, {1234, 0}};
    for (const auto& [offset, bytes] : parts) {
        std::generate(expected.begin(), expected.end(), [&] { return static_cast<unsigned char>(random()); });
        std::copy(expected.begin(), expected.end(), file.Data());
        file.Release(offset, bytes);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), file.Data())) << offset << " + " << bytes;
    }
}

std::ptrdiff_t EntriesOf(const std::filesystem::path& folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

#ifdef _WIN32
constexpr int kNamedFiles = 1; // open files keep their names

std::ptrdiff_t OpenFiles()
{
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}
#else
constexpr int kNamedFiles = 0;

std::ptrdiff_t OpenFiles()
{
    return std::filesystem::exists("/proc/self/fd") ? EntriesOf("/proc/self/fd") : 0;
}
#endif

TEST_F(SpillFiles, FailureIsAMemoryExceptionAndLeavesNothing)
{
    const auto before = OpenFiles();
    {
        const SpillFile file(folder_.string(), 4096);
        EXPECT_THROW(SpillFile((folder_ / "missing").string(), 4096), CMemoryException);
        const std::uint64_t wholeDisk = std::filesystem::space(folder_).capacity;
        for (const std::uint64_t bytes : {std::uint64_t{0}, wholeDisk + 1, std::uint64_t{INT64_MAX}, UINT64_MAX}) {
            EXPECT_THROW(SpillFile(folder_.string(), bytes), CMemoryException) << bytes;
        }
        EXPECT_EQ(EntriesOf(folder_), kNamedFiles);
    }
    EXPECT_EQ(EntriesOf(folder_), 0);
    EXPECT_EQ(OpenFiles(), before);
}

} // namespace
