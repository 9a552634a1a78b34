#include "stars/stamp.h"

#include <algorithm>

namespace corvane::stars {

Stamp::Stamp(const CStlImage& image, int plane, int reach)
    : image_(image), plane_(plane), reach_(reach), isDefined_(image),
      excess_(static_cast<std::size_t>(Side()) * Side()), gaps_(excess_.size())
{}

void Stamp::MoveTo(int x, int y, double sky)
{
    x_ = x;
    y_ = y;
    const int left = std::max(x - reach_, 0);
    const int right = std::min(x + reach_ + 1, image_.GetWidth());
    std::fill(excess_.begin(), excess_.end(), 0.0F);
    std::fill(gaps_.begin(), gaps_.end(), 1.0F);
    const auto level = static_cast<float>(sky);
    for (int row = std::max(y - reach_, 0); row < std::min(y + reach_ + 1, image_.GetHeight()); ++row) {
        const float* in = image_.GetImageAdr(left, row, plane_, 1);
        float* out = excess_.data() + Index(row - y) + (left - x + reach_);
        float* gaps = gaps_.data() + Index(row - y) + (left - x + reach_);
        for (int i = 0; i < right - left; ++i) {
            out[i] = isDefined_(in[i]) ? in[i] - level : 0.0F;
            gaps[i] = isDefined_(in[i]) ? 0.0F : 1.0F;
        }
    }
    hasGaps_ = std::find(gaps_.begin(), gaps_.end(), 1.0F) != gaps_.end();
}

} // namespace corvane::stars
