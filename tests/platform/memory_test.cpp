#include "corvane/platform/memory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "corvane/platform/memory_exception.h"
#include "corvane/platform/page_range.h"

using namespace corvane::platform;

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

TEST(Pages, AreZeroedAlignedAndWritable)
{
    for (const std::size_t bytes : {std::size_t{1}, PageSize(), PageSize() + 1, kLargePage - 1, kLargePage,
                                    kLargePage + 1, 3 * kLargePage + PageSize()}) {
        auto* memory = static_cast<unsigned char*>(AllocatePages(bytes));
        ASSERT_NE(memory, nullptr) << bytes;
        EXPECT_TRUE(std::all_of(memory, memory + bytes, [](unsigned char byte) { return byte == 0; })) << bytes;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % PageSize(), 0U) << bytes;
#ifdef __linux__
        EXPECT_TRUE(bytes < kLargePage || reinterpret_cast<std::uintptr_t>(memory) % kLargePage == 0) << bytes;
#endif
        OfferPages(memory, bytes); // stays usable
        std::memset(memory, 0xA5, bytes);
        EXPECT_TRUE(std::all_of(memory, memory + bytes, [](unsigned char byte) { return byte == 0xA5; })) << bytes;
        FreePages(memory, bytes);
    }
}

TEST(Pages, AbsurdSizesAreRefused)
{
    for (const std::size_t bytes : {std::size_t{0}, SIZE_MAX, SIZE_MAX / 2, SIZE_MAX / 2 - kLargePage}) {
        EXPECT_EQ(AllocatePages(bytes), nullptr) << bytes;
    }
    FreePages(nullptr, 1);
}

TEST(Pages, RangesAreRoundedToWholePages)
{
    const std::size_t page = PageSize();
    const struct {
        std::uintptr_t begin;
        std::size_t bytes;
        std::pair<std::size_t, std::size_t> inside, around; // first byte and number of bytes
    } cases[] = {
        {page, 2 * page, {page, 2 * page}, {page, 2 * page}}, {page / 2, 2 * page, {page, page}, {0, 3 * page}},
        {page + 1, page - 2, {2 * page, 0}, {page, page}},    {page - 1, 2, {page, 0}, {0, 2 * page}},
        {1, 2 * page - 1, {page, page}, {0, 2 * page}},       {5, 0, {page, 0}, {0, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.begin << " + " << c.bytes);
        const PageRange inside = PagesInside(c.begin, c.bytes);
        const PageRange around = PagesAround(c.begin, c.bytes);
        EXPECT_TRUE(inside.first == c.inside.first && inside.bytes == c.inside.second);
        EXPECT_TRUE(around.first == c.around.first && around.bytes == c.around.second);
    }
}

class SpillFiles : public testing::Test {
protected:
    SpillFiles() { std::filesystem::create_directory(folder_); }
    ~SpillFiles() override { std::filesystem::remove_all(folder_); }

    std::filesystem::path folder_ =
        std::filesystem::path(testing::TempDir()) / ("corvane-spill-" + std::to_string(std::random_device()()));
};

TEST_F(SpillFiles, BytesSurviveRelease)
{
    const std::size_t size = 5 * PageSize() + 123;
    SpillFile file(folder_.string(), size);
    ASSERT_EQ(file.Size(), size);
    std::mt19937 random(7);
    std::vector<unsigned char> expected(size);
    const struct {
        std::uint64_t offset, bytes;
    } parts[] = {{0, size},        {0, 1},    {PageSize() - 1, 2}, {PageSize(), PageSize()}, {size - 1, 1},
                 {size - 1, 9999}, {size, 1}, {size + 9999, 1},    {17, UINT64_MAX},         {UINT64_MAX, UINT64_MAX},
                 {1234, 0}};
    for (const auto& part : parts) {
        std::generate(expected.begin(), expected.end(), [&] { return static_cast<unsigned char>(random()); });
        std::copy(expected.begin(), expected.end(), file.Data());
        file.Release(part.offset, part.bytes);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), file.Data())) << part.offset << " + " << part.bytes;
    }
}

TEST_F(SpillFiles, FailureIsAMemoryExceptionAndLeavesNothing)
{
    const std::string here = folder_.string();
    const std::uint64_t wholeDisk = std::filesystem::space(folder_).capacity;
    EXPECT_THROW(SpillFile(here + "/missing", 4096), CMemoryException);
    EXPECT_THROW(SpillFile("", 4096), CMemoryException);
    for (const std::uint64_t bytes : {std::uint64_t{0}, wholeDisk + 1, std::uint64_t{INT64_MAX}, UINT64_MAX}) {
        EXPECT_THROW(SpillFile(here, bytes), CMemoryException) << bytes;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder_));
}

#ifdef __linux__
std::ptrdiff_t OpenFiles()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(SpillFiles, HasNoNameAndClosesWhatItOpened)
{
    const std::ptrdiff_t before = OpenFiles();
    {
        SpillFile file(folder_.string(), 4096);
        EXPECT_TRUE(std::filesystem::is_empty(folder_));
        EXPECT_THROW(SpillFile(folder_.string(), INT64_MAX), CMemoryException);
        EXPECT_EQ(OpenFiles(), before + 1);
    }
    EXPECT_EQ(OpenFiles(), before);
}
#endif

} // namespace
