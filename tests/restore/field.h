#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <valarray>
#include <vector>

#include "corvane/core/stl_image.h"
#include "tests/support/images.h"

namespace corvane::test {

/// A plane of doubles whose opposite edges meet.
struct Field {
    Field(int w, int h, double value = 0.0) : width(w), height(h), v(value, static_cast<std::size_t>(w) * h) {}

    std::size_t Index(int x, int y) const
    {
        return static_cast<std::size_t>((y + 64 * height) % height * width + (x + 64 * width) % width);
    }
    double& At(int x, int y) { return v[Index(x, y)]; }
    double At(int x, int y) const { return v[Index(x, y)]; }

    int width;
    int height;
    std::valarray<double> v;
};

/// One sample of a point-spread function, by its distance from the peak.
struct Tap {
    int dx;
    int dy;
    double weight;
};

/// A Gaussian of sum 1 that has its peak on a sample.
inline std::vector<Tap> GaussTaps(double sigma)
{
    const int reach = static_cast<int>(6.0 * sigma) + 1;
    std::vector<Tap> taps;
    double sum = 0.0;
    for (int i = 0; i < (2 * reach + 1) * (2 * reach + 1); ++i) {
        const int dx = i % (2 * reach + 1) - reach;
        const int dy = i / (2 * reach + 1) - reach;
        taps.push_back({dx, dy, std::exp(-(dx * dx + dy * dy) / (2.0 * sigma * sigma))});
        sum += taps.back().weight;
    }
    std::for_each(taps.begin(), taps.end(), [=](Tap& tap) { tap.weight /= sum; });
    return taps;
}

/// The same in an array of size x size about its middle.
inline std::vector<float> GaussPsf(double sigma, int size)
{
    std::vector<float> psf(static_cast<std::size_t>(size) * size);
    for (const Tap& tap : GaussTaps(sigma)) {
        psf[(size / 2 + tap.dy) * size + size / 2 + tap.dx] = static_cast<float>(tap.weight);
    }
    return psf;
}

/// A function that is like none of its mirror images, with a peak off its middle.
struct PsfOfTest {
    PsfOfTest(int w, int h, Random& random) : width(w), height(h)
    {
        double sum = 0.0;
        for (int i = 0; i < w * h; ++i) {
            samples.push_back(static_cast<float>(random.Between(0.1, 1.0) + (i == 1 ? 0.5 : 0.0)));
            sum += samples.back();
        }
        for (int i = 0; i < w * h; ++i) {
            taps.push_back({i % w - w / 2, i / w - h / 2, samples[i] / sum});
        }
    }

    int width;
    int height;
    std::vector<float> samples{};
    std::vector<Tap> taps{}; ///< of sum 1, by their distance from (width / 2, height / 2)
};

/// The sum over all taps, sample by sample; with direction -1 the transpose.
inline Field Blurred(const Field& field, const std::vector<Tap>& taps, int direction = 1)
{
    Field result(field.width, field.height);
    for (int y = 0; y < field.height; ++y) {
        for (int x = 0; x < field.width; ++x) {
            for (const Tap& tap : taps) {
                result.At(x, y) += tap.weight * field.At(x - direction * tap.dx, y - direction * tap.dy);
            }
        }
    }
    return result;
}

/// A sky of 100 with a star of sigma 0.6 for every 300 samples.
inline Field StarField(int size, std::uint64_t seed)
{
    Random random(seed);
    Field field(size, size, 100.0);
    const std::vector<Tap> star = GaussTaps(0.6);
    for (int i = 0; i < size * size / 300; ++i) {
        const int x = random.Whole(0, size - 1);
        const int y = random.Whole(0, size - 1);
        const double flux = std::min(500.0 * std::pow(random.Between(0.0, 1.0), -1.2), 40000.0);
        for (const Tap& tap : star) {
            field.At(x + tap.dx, y + tap.dy) += flux * tap.weight;
        }
    }
    return field;
}

/// What a camera sees of it: counts, with photon noise and read-out noise [electrons]. A gain of 0 stands for no photon
/// noise, and read-out noise in counts.
inline Field Exposed(Field field, double gain, double readNoise, Random& random)
{
    for (double& v : field.v) {
        double normal = -6.0;
        for (int i = 0; i < 12; ++i) {
            normal += random.Between(0.0, 1.0);
        }
        v += normal * (gain == 0.0 ? readNoise : std::sqrt(v * gain + readNoise * readNoise) / gain);
    }
    return field;
}

inline double RmsError(const Field& a, const Field& b)
{
    return std::sqrt(std::pow(a.v - b.v, 2.0).sum() / static_cast<double>(a.v.size()));
}

/// Writes a part of a field, from its first sample on, as a plane of an image.
inline void Write(const Field& field, CStlImage& image, int plane = 0)
{
    for (int i = 0; i < image.GetWidth() * image.GetHeight(); ++i) {
        const int x = i % image.GetWidth();
        const int y = i / image.GetWidth();
        image.SetPixelGrayRaw(x, y, static_cast<float>(field.At(x, y)), plane);
    }
}

/// A part of a blurred star field, its planes alike.
inline CStlImage StarFrame(int width, int height, int planes)
{
    const Field field = Blurred(StarField(64, 5), GaussTaps(1.2));
    return Make(width, height, planes, [&](int x, int y, int) { return field.At(x, y); });
}

} // namespace corvane::test
