#include "corvane/core/vm_image.h"

#include <algorithm>

#include "corvane/core/memory_budget.h"
#include "corvane/core/run.h"
#include "corvane/core/walk.h"
#include "corvane/geometry/rotate.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/tone/invert.h"
#include "tests/support/images.h"
#include "tests/support/storage.h"

using namespace corvane::test;

namespace {

constexpr std::uint64_t kMiB = 1 << 20;
// Rows that do not divide a page; three planes of 600 rows are 6.9 MiB, in pages of 262 rows.
constexpr Size kLarge{1000, 600};

enum class Locking { kNever, kEachRow, kAllAtOnce, kHeldForEver };

CStlImage Zeros(int planes)
{
    return {-32, kLarge.width, kLarge.height, planes, 1.0, 0.0, 1};
}

/// Calls visit(row, first sample's number) for every row, releasing rows as callers do; checks the bound at every row.
template <class Visit>
void WalkRows(const CStlImage& image, Locking locking, Visit visit)
{
    const CVmImage& store = *image.GetStore();
    const std::uint64_t page = static_cast<std::uint64_t>(store.GetRowsPerPage()) * kLarge.width * sizeof(float);
    std::uint64_t most = 0;
    for (int row = 0; row < image.GetPlanes() * kLarge.height; ++row) {
        void* lock = nullptr;
        const int flags = locking == Locking::kNever ? 0 : 2;
        visit(image.GetImageAdr(0, row % kLarge.height, row / kLarge.height, flags, &lock), row * kLarge.width);
        EXPECT_EQ(locking == Locking::kEachRow ? image.Unlock(lock) : 1, 1);
        most = std::max(most, store.GetResidentBytes());
    }
    if (locking == Locking::kAllAtOnce) {
        image.UnlockAll();
    }
    EXPECT_GT(most, 0U);
    EXPECT_LE(most, 4 * page);
}

} // namespace

TEST(PagedStore, KeepsContentsWithinTheBoundUnderEveryLocking)
{
    const TightMemory tight(kMiB);
    for (const Locking locking : {Locking::kNever, Locking::kEachRow, Locking::kAllAtOnce, Locking::kHeldForEver}) {
        SCOPED_TRACE(static_cast<int>(locking));
        const CStlImage image = Zeros(3);
        ASSERT_TRUE(image.GetStore()->IsPaged());
        for (int pass = 0; pass < 3; ++pass) {
            WalkRows(image, locking, [&](float* row, int number) {
                for (int x = 0; x < kLarge.width; ++x) {
                    ASSERT_EQ(row[x], static_cast<float>(pass == 0 ? 0 : number + x + pass));
                    row[x] = static_cast<float>(number + x + pass + 1);
                }
            });
        }
    }
}

TEST(PagedStore, AHeldPageStaysUntilItIsReleased)
{
    constexpr int kLocks = 15;
    for (const std::uint64_t budget : {kMiB, 100 * kMiB}) { // the greater one holds all as plain memory
        const TightMemory tight(budget);
        const CStlImage image = Zeros(3);
        ASSERT_EQ(image.GetStore()->IsPaged(), budget == kMiB);
        std::vector<void*> locks(kLocks); // two on most pages, and more pages than may stay
        for (int i = 0; i < kLocks; ++i) {
            image.GetImageAdr(i, i * 120 % kLarge.height, i * 120 / kLarge.height, i % 2 == 0 ? 2 : 3, &locks[i]);
        }
        EXPECT_EQ(std::count_if(locks.begin(), locks.end(), [&](void* lock) { return image.Unlock(lock); }), kLocks);
        EXPECT_EQ(image.Unlock(locks[1]), 0);
        unsigned char* const first = image.GetStore()->GetImageAdr(0, 0, 2); // without a place for a handle
        image.GetStore()->GetImageAdr(0, 0, 2);
        EXPECT_EQ(image.Unlock(first), 1);
        image.UnlockAll();
        EXPECT_EQ(image.Unlock(first), 0);
        EXPECT_EQ(image.Unlock(locks.data()), 0);
    }
}

TEST(PagedStore, WorksLikePlainMemoryAndGivesItBack)
{
    const CStlImage plain = RandomImage(kLarge, 3, 5);
    CStlImage source(plain);
    CImgInvert inverted(plain);
    inverted.Do(&source, nullptr, 0);
    const TightMemory tight(kMiB);
    WalkRows(Zeros(3), Locking::kNever, [](const float*, int) {}); // drops what earlier images left behind
    const std::uint64_t before = corvane::MemoryInUse();
    {
        CStlImage paged(plain);
        CImgInvert operation(paged);
        operation.Do(&paged, nullptr, 0);
        EXPECT_TRUE(paged.GetStore()->IsPaged() && operation.GetStore()->IsPaged() && !plain.GetStore()->IsPaged());
        EXPECT_EQ(corvane::ThreadsOn(plain, {&inverted}, 7), 7);
        EXPECT_EQ(corvane::ThreadsOn(plain, {&paged}, 7), 1); // they would wait for the disk
        EXPECT_EQ(corvane::ThreadsOn(paged, {}, 7), 1);
        EXPECT_EQ(Samples(paged), Samples(plain));
        EXPECT_EQ(Samples(CStlImage(operation)), Samples(inverted));
        ASSERT_EQ(paged.ChangeSize(1001, 599), 1);
        EXPECT_EQ(*paged.GetImageAdr(999, 598, 2), *plain.GetImageAdr(999, 598, 2));
    }
    EXPECT_EQ(corvane::MemoryInUse(), before);
}

TEST(PagedStore, StaysWithinTheBoundWithManyThreads)
{
    const auto invert = [](auto& result, const CStlImage& source, const corvane::Run& run) {
        result.Do(source, nullptr, run);
    };
    const auto turn = [](auto& result, const CStlImage& source, const corvane::Run& run) {
        result.Do(33.3, nullptr, source, 0, run);
    };
    const CStlImage plain = RandomImage(kLarge, 3, 8);
    CImgInvert inverted(plain);
    invert(inverted, plain, {});
    CImgRotate turned(plain);
    turn(turned, plain, {});
    const TightMemory tight(kMiB);
    const CStlImage paged(plain);
    const auto expectSame = [&](auto result, auto work, const CStlImage& expected) {
        std::uint64_t most = 0;
        corvane::Run run;
        run.threads = 8;
        run.progress = [&](const corvane::Progress&) {
            most = std::max({most, paged.GetStore()->GetResidentBytes(), result.GetStore()->GetResidentBytes()});
        };
        work(result, paged, run);
        EXPECT_EQ(Samples(result), Samples(expected));
        EXPECT_LE(most, 4ULL * paged.GetStore()->GetRowsPerPage() * kLarge.width * sizeof(float));
    };
    expectSame(CImgInvert(paged), invert, inverted);
    expectSame(CImgRotate(paged), turn, turned);
}

TEST(PagedStore, WithoutASpillFolderThereIsNoMemory)
{
    const TightMemory tight(kMiB);
    CStlImage small = RandomImage({100, 100}, 1, 6);
    const std::vector<float> samples = Samples(small);
    CStlImage paged = Zeros(1);
    paged.SetStdCtr(3, 4);
    corvane::SetSpillFolder((tight.Folder() / "missing").string());
    EXPECT_THROW(Zeros(1), CMemoryException);
    EXPECT_THROW(small.CopyImage(paged), CMemoryException);
    EXPECT_EQ(small.GetStdCtr().iy, 4); // taken before the samples are
    EXPECT_THROW(CImage(-64, 2147483647, 2147483647, 3, 1.0, 0.0, 1), CMemoryException);
    EXPECT_EQ(small.CImage::Create(paged), 0);
    EXPECT_EQ(small.ChangeSize(4000, 4000), 0);
    EXPECT_EQ(Samples(small), samples);
}

TEST(MemoryBudget, LeavesImagesTheRestOfWhatIsReserved)
{
    const TightMemory tight(kMiB);
    {
        const corvane::Reservation most(kMiB - 30000);
        EXPECT_FALSE(CVmImage(100, 50, 1, 4).IsPaged());
        EXPECT_TRUE(CVmImage(100, 100, 1, 4).IsPaged());
        const corvane::Reservation beyond(kMiB);
        EXPECT_GE(corvane::MemoryInUse(), 2 * kMiB - 30000);
    }
    EXPECT_FALSE(CVmImage(100, 100, 1, 4).IsPaged());
}

TEST(MemoryBudget, ReadsAmounts)
{
    std::uint64_t bytes = 0;
    for (const auto& [text, expected] : {std::pair{"4K", 4ULL << 10}, {"17179869183g", 17179869183ULL << 30}}) {
        EXPECT_TRUE(corvane::ParseMemorySize(text, bytes) && bytes == expected) << text;
    }
    for (const char* text : {"", "K", "4KB", "-1", "1.5G", " 1", "17179869184G", "99999999999999999999"}) {
        EXPECT_FALSE(corvane::ParseMemorySize(text, bytes)) << text;
    }
}
