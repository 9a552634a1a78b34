#include "corvane/restore/region.h"

#include <algorithm>
#include <cstdint>

#include "corvane/core/memory_budget.h"
#include "corvane/platform/memory_exception.h"

namespace corvane {

namespace {

constexpr std::int64_t kLongestSide = std::int64_t{1}
                                      << 28; // transforms of lengths up to eight times this count in int

/// From one edge to the other; 0 when they are turned over.
std::int64_t Extent(std::int64_t low, std::int64_t high)
{
    return std::max<std::int64_t>(high - low, 0);
}

} // namespace

double RestorationBytes(int width, int height, int planes, const RestorationNeeds& needs)
{
    const double samples = static_cast<double>(width) * height * planes;
    const double margin = needs.margin;
    return sizeof(float) * (samples + needs.arrays * (width + margin) * (height + margin));
}

Area::Area(const CStlImage& image, const CRect* rect)
{
    const CRect whole(0, 0, image.GetWidth(), image.GetHeight());
    isWhole = rect == nullptr ||
              (Extent(rect->left, rect->right) == whole.right && Extent(rect->top, rect->bottom) == whole.bottom);
    const CRect& area = isWhole ? whole : *rect;
    const std::int64_t w = Extent(area.left, area.right);
    const std::int64_t h = Extent(area.top, area.bottom);
    left = static_cast<int>(area.left);
    top = static_cast<int>(area.top);
    width = static_cast<int>(std::min(w, kLongestSide));
    height = static_cast<int>(std::min(h, kLongestSide));
    if (!IsEmpty() && (w > kLongestSide || h > kLongestSide)) {
        AfxThrowMemoryException();
    }
}

Region::Region(const CStlImage& image, const CRect* rect, const RestorationNeeds& needs) : area_(image, rect)
{
    if (area_.IsEmpty() || image.GetImageSize() == 0) {
        return;
    }
    const double bytes = RestorationBytes(area_.width, area_.height, image.GetPlanes(), needs);
    if (bytes > static_cast<double>(MemoryBudget())) {
        AfxThrowMemoryException();
    }
    reservation_.emplace(static_cast<std::uint64_t>(bytes));
    for (int p = 0; p < image.GetPlanes(); ++p) {
        Read(image, p, planes_.emplace_back(static_cast<std::size_t>(area_.width) * area_.height));
    }
}

void Region::Read(const CStlImage& image, int plane, std::vector<float>& samples) const
{
    const std::int64_t end = image.GetWidth();
    const std::int64_t before = std::clamp<std::int64_t>(-std::int64_t{area_.left}, 0, area_.width);
    const std::int64_t inside = std::clamp<std::int64_t>(end - area_.left, before, area_.width);
    auto sample = samples.begin();
    for (std::int64_t y = 0; y < area_.height; ++y) {
        const std::int64_t row = std::clamp<std::int64_t>(area_.top + y, 0, image.GetHeight() - 1);
        const float* const from = image.GetImageAdr(0, static_cast<int>(row), plane, 1);
        sample = std::fill_n(sample, before, from[0]);
        sample = std::copy_n(from + area_.left + before, inside - before, sample);
        sample = std::fill_n(sample, area_.width - inside, from[end - 1]);
    }
}

void Region::Write(CStlImage& image) const
{
    const std::int64_t left = std::max(area_.left, 0);
    const std::int64_t right = std::min<std::int64_t>(std::int64_t{area_.left} + area_.width, image.GetWidth());
    const std::int64_t top = std::max(area_.top, 0);
    const std::int64_t bottom = std::min<std::int64_t>(std::int64_t{area_.top} + area_.height, image.GetHeight());
    for (int p = 0; p < Planes() && left < right; ++p) {
        for (std::int64_t y = top; y < bottom; ++y) {
            const float* from =
                planes_[static_cast<std::size_t>(p)].data() + (y - area_.top) * area_.width + (left - area_.left);
            std::copy_n(from, right - left, image.GetImageAdr(static_cast<int>(left), static_cast<int>(y), p));
        }
    }
}

} // namespace corvane
