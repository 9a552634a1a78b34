
#include <algorithm>

#include "corvane/core/lab.h"

namespace corvane {
namespace {

/// A few pixels in buffers of their own, which no row overlaps. Each conversion goes through all of them before the
/// next: its steps wait for each other, and the shorter they are, the more pixels the processor has under way.
class Pixels {
public:
    static constexpr int kMost = 64;

    Pixels(int count, const double* first, const double* second, const double* third) : count_(count)
    {
        std::copy_n(first, count, first_);
        std::copy_n(second, count, second_);
        std::copy_n(third, count, third_);
    }

    template <class From, class Convert>
    void Map(Convert convert)
    {
        for (int i = 0; i < count_; ++i) {
            const auto [first, second, third] = convert(From{first_[i], second_[i], third_[i]});
            first_[i] = first;
            second_[i] = second;
            third_[i] = third;
        }
    }

    void CopyTo(double* first, double* second, double* third) const
    {
        CopyTo(first);
        std::copy_n(second_, count_, second);
        std::copy_n(third_, count_, third);
    }
    void CopyTo(double* first) const { std::copy_n(first_, count_, first); }

private:
    int count_;
    double first_[kMost];
    double second_[kMost];
    double third_[kMost];
};

/// Calls visit(x, count) for the stretches of a row.
template <class Visit>
void ForEachStretch(int count, Visit visit)
{
    for (int x = 0; x < count; x += Pixels::kMost) {
        visit(x, std::min(Pixels::kMost, count - x));
    }
}

} // namespace

void RgbToLabRow(int count, const double* red, const double* green, const double* blue, double* lightness, double* a,
                 double* b)
{
    ForEachStretch(count, [=](int x, int length) {
        Pixels pixels(length, red + x, green + x, blue + x);
        pixels.Map<Rgb>([](const Rgb& rgb) { return Linearise(rgb); });
        pixels.Map<Rgb>([](const Rgb& linear) { return ToLab(ToXyz(linear)); });
        pixels.CopyTo(lightness + x, a + x, b + x);
    });
}

void RgbToLightnessRow(int count, const double* red, const double* green, const double* blue, double* lightness)
{
    ForEachStretch(count, [=](int x, int length) {
        Pixels pixels(length, red + x, green + x, blue + x);
        pixels.Map<Rgb>([](const Rgb& rgb) { return Linearise(rgb); });
        pixels.Map<Rgb>([](const Rgb& linear) { return Lab{ToLightness(ToXyz(linear)), 0.0, 0.0}; });
        pixels.CopyTo(lightness + x);
    });
}

void LabToRgbRow(int count, const double* lightness, const double* a, const double* b, double* red, double* green,
                 double* blue)
{
    ForEachStretch(count, [=](int x, int length) {
        Pixels pixels(length, lightness + x, a + x, b + x);
        pixels.Map<Lab>([](const Lab& lab) { return ToXyz(lab); });
        pixels.Map<Xyz>([](const Xyz& xyz) { return ToRgb(xyz); });
        pixels.CopyTo(red + x, green + x, blue + x);
    });
}

} // namespace corvane
