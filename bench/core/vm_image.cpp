#include "corvane/core/vm_image.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "bench/support/bench.h"
#include "corvane/core/memory_budget.h"
#include "corvane/core/stl_image.h"

namespace corvane::bench {
namespace {

/// An image four times as large as the memory that the budget leaves for it, until it is gone.
class PagedFrame {
public:
    PagedFrame()
    {
        SetMemoryBudget(0); // so the image goes to a file
        image_ = std::make_unique<CStlImage>(-32, kWidth, Size(4 * kWidth, kWidth / 4), 1, 1.0, 0.0, 1);
        room_ = image_->GetImageSize() / 4;
        SetMemoryBudget(MemoryInUse() + room_);
        Require(image_->GetStore()->IsPaged(), "the image is not paged");
    }
    ~PagedFrame()
    {
        image_.reset();
        SetMemoryBudget(before_);
    }
    PagedFrame(const PagedFrame&) = delete;
    PagedFrame& operator=(const PagedFrame&) = delete;

    CStlImage& Image() { return *image_; }

    void RequireBounded() const
    {
        Require(image_->GetStore()->GetResidentBytes() <= room_, "the image takes more memory than its budget");
    }

private:
    static constexpr int kWidth = 4096;

    std::uint64_t before_ = MemoryBudget();
    std::uint64_t room_ = 0;
    std::unique_ptr<CStlImage> image_;
};

float Tag(int x, int y)
{
    return static_cast<float>(x + 2 * y);
}

void Write(CStlImage& image)
{
    for (int y = 0; y < image.GetHeight(); ++y) {
        float* const row = image.GetImageAdr(0, y, 0);
        for (int x = 0; x < image.GetWidth(); ++x) {
            row[x] = Tag(x, y);
        }
    }
}

/// Takes every row out of the image; the return value is the last one.
std::vector<float> Read(const CStlImage& image)
{
    std::vector<float> row(static_cast<std::size_t>(image.GetWidth()));
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::copy_n(image.GetImageAdr(0, y, 0, 1), row.size(), row.data());
        benchmark::DoNotOptimize(row.data());
        benchmark::ClobberMemory();
    }
    return row;
}

void CheckPaging()
{
    PagedFrame frame;
    Write(frame.Image());
    frame.RequireBounded();
    CheckSamples(frame.Image(), [](int x, int y, int) { return Tag(x, y); });
    Require(Read(frame.Image()).front() == Tag(0, frame.Image().GetHeight() - 1), "the last row");
    frame.RequireBounded();
}

std::uint64_t Bytes()
{
    return PagedFrame().Image().GetImageSize();
}

const Line write("core/Paging/write", {}, [](Run& run) {
    CheckPaging();
    run.Time(
        Bytes(), [] { return PagedFrame(); }, [](PagedFrame& frame) { Write(frame.Image()); });
});

const Line read("core/Paging/read", {}, [](Run& run) {
    CheckPaging();
    const auto written = [] {
        auto frame = std::make_unique<PagedFrame>();
        Write(frame->Image());
        return frame;
    };
    run.Time(Bytes(), written,
             [](const std::unique_ptr<PagedFrame>& frame) { benchmark::DoNotOptimize(Read(frame->Image())); });
});

} // namespace
} // namespace corvane::bench
