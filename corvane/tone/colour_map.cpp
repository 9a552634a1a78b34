#include "corvane/tone/colour_map.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/interpolation.h"

namespace corvane {

ColourMap::ColourMap(std::vector<Rgb> controls, double perControl, double width, double perWidth)
    : perControl_(perControl), width_(width), perWidth_(perWidth)
{
    controls.push_back(controls.back());
    for (std::size_t component = 0; component < 3; ++component) {
        for (const Rgb& control : controls) {
            controls_[component].push_back(control[component]);
        }
    }
}

ColourMap ColourMap::Heat()
{
    std::vector<Rgb> controls;
    for (int i = 0; i < 256; ++i) {
        const auto rising = [=](int from) { return std::clamp(3.0 * (i - from), 0.0, 255.0); };
        controls.push_back({rising(0), rising(85), rising(170)});
    }
    return {controls, 1.0, 1.0, 1.0};
}

const ColourMap& ColourMap::Find(int number)
{
    constexpr Rgb kBlack{0.0, 0.0, 0.0};
    constexpr Rgb kBlue{0.0, 0.0, 255.0};
    constexpr Rgb kCyan{0.0, 255.0, 255.0};
    constexpr Rgb kGreen{0.0, 255.0, 0.0};
    constexpr Rgb kYellow{255.0, 255.0, 0.0};
    constexpr Rgb kRed{255.0, 0.0, 0.0};
    constexpr Rgb kWhite{255.0, 255.0, 255.0};
    constexpr double kPerQuarter = 0.01568627450980392;
    constexpr double kPerSixth = 0.023529411764705882;
    static const ColourMap maps[] = {
        {{kBlue, kCyan, kGreen, kYellow, kRed}, kPerQuarter, 63.75, kPerQuarter},
        {{kBlack, kBlue, kCyan, kGreen, kYellow, kRed, kWhite}, kPerSixth, 42.5, 0.015625},
        {{kBlack, {0.0, 0.0, 128.0}, kBlue, {128.0, 128.0, 255.0}, kWhite}, kPerQuarter, 63.75, kPerQuarter},
        Heat(),
        {{kBlack, {1.0, 1.0, 1.0}}, 0.0, 0.0, 1.0}, // grey: a value is so many times the way from 0 to 1
    };
    return maps[number >= 0 && number < 4 ? number : 4];
}

void ColourMap::Colour(const float* values, int count, int cycles, Block& colours) const
{
    constexpr double kPeriod = 256.0; // not 255: one cycle leaves every value as it is
    const float factor = static_cast<float>(std::max(cycles, 1));
    int index[kBlock];
    double fraction[kBlock];
    for (int i = 0; i < count; ++i) {
        const double times = factor * std::min(255.0F, std::max(0.0F, values[i]));
        const double value = std::min(255.0, times - kPeriod * std::floor(times * (1.0 / kPeriod)));
        index[i] = static_cast<int>(value * perControl_);
        fraction[i] = (value - index[i] * width_) * perWidth_;
    }
    for (std::size_t component = 0; component < 3; ++component) {
        const double* const controls = controls_[component].data();
        for (int i = 0; i < count; ++i) {
            const double blend = Mix(controls[index[i]], controls[index[i] + 1], fraction[i]);
            colours[component][static_cast<std::size_t>(i)] = static_cast<float>(blend);
        }
    }
}

} // namespace corvane
