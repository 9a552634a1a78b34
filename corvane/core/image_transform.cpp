#include "corvane/core/image_transform.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr int kPair = 2 * kLanes; // columns that are transformed together: half as real, half as imaginary parts

/// The complex numbers of kLanes frequencies of kLanes columns.
struct Tile {
    float re[kLanes][kLanes];
    float im[kLanes][kLanes];
};

/// Writes a tile's frequencies side by side, column after column.
void Store(const Tile& tile, int columns, float* __restrict re, float* __restrict im)
{
    for (int x = 0; x < columns; ++x) {
        for (int v = 0; v < kLanes; ++v) {
            re[x * kLanes + v] = tile.re[v][x];
            im[x * kLanes + v] = tile.im[v][x];
        }
    }
}

/// Reads what `Store` wrote; columns that do not exist are 0.
void Load(const float* __restrict re, const float* __restrict im, int columns, Tile& tile)
{
    for (int x = 0; x < kLanes; ++x) {
        for (int v = 0; v < kLanes; ++v) {
            tile.re[v][x] = x < columns ? re[x * kLanes + v] : 0.0F;
            tile.im[v][x] = x < columns ? im[x * kLanes + v] : 0.0F;
        }
    }
}

/// Takes one frequency of two real columns, a and b, from the transform Z of a + i b: with Z' the conjugate of Z at the
/// opposite frequency, they are (Z + Z') / 2 and (Z - Z') / 2i.
void Split(Lanes z, Lanes opposite, int row, Tile& a, Tile& b)
{
    for (int l = 0; l < kLanes; ++l) {
        a.re[row][l] = 0.5F * (z.re[l] + opposite.re[l]);
        a.im[row][l] = 0.5F * (z.im[l] - opposite.im[l]);
        b.re[row][l] = 0.5F * (z.im[l] + opposite.im[l]);
        b.im[row][l] = 0.5F * (opposite.re[l] - z.re[l]);
    }
}

/// The way back, Z and the opposite one.
void Unite(const Tile& a, const Tile& b, int row, Lanes z, Lanes opposite)
{
    for (int l = 0; l < kLanes; ++l) {
        opposite.re[l] = a.re[row][l] + b.im[row][l];
        opposite.im[l] = b.re[row][l] - a.im[row][l];
        z.re[l] = a.re[row][l] - b.im[row][l];
        z.im[l] = a.im[row][l] + b.re[row][l];
    }
}

Lanes At(Lanes columns, int v)
{
    return columns + static_cast<std::ptrdiff_t>(v) * kLanes;
}

/// How many of the kLanes columns from x on exist.
int ColumnsFrom(int x, int width)
{
    return std::clamp(width - x, 0, kLanes);
}

} // namespace

ImageTransform::ImageTransform(int width, int height)
    : width_(width), height_(height), blocks_((height / 2 + kLanes) / kLanes), rows_(width), columns_(height),
      room_(std::max(rows_.Room(), columns_.Room()) * kLanes), work_(4 * room_)
{}

Lanes ImageTransform::BlockAt(float* spectrum, int block) const
{
    float* re = spectrum + block * BlockSize();
    return {re, re + ImaginaryOffset()};
}

void ImageTransform::Forward(const float* image, float* spectrum)
{
    for (int x = 0; x < width_; x += kPair) {
        Gather(image, x, Work(0));
        Separate(columns_.Forward(Work(0), Work(1)), x, spectrum);
    }
    TransformRows(spectrum, [this](Lanes data, Lanes scratch) { return rows_.Forward(data, scratch); });
}

void ImageTransform::Inverse(float* spectrum, float* image)
{
    TransformRows(spectrum, [this](Lanes data, Lanes scratch) { return rows_.Inverse(data, scratch); });
    for (int x = 0; x < width_; x += kPair) {
        Join(spectrum, x, Work(0));
        Scatter(columns_.Inverse(Work(0), Work(1)), x, image);
    }
}

/// Transforms along the rows, block by block; in place where the transform needs no more room than the block has.
template <class Transform>
void ImageTransform::TransformRows(float* spectrum, Transform transform)
{
    const std::size_t count = ImaginaryOffset();
    const bool fits = rows_.Room() == static_cast<std::size_t>(width_);
    for (int i = 0; i < blocks_; ++i) {
        const Lanes block = BlockAt(spectrum, i);
        if (!fits) {
            std::copy_n(block.re, count, Work(0).re);
            std::copy_n(block.im, count, Work(0).im);
        }
        const Lanes result = transform(fits ? block : Work(0), Work(1));
        if (result.re != block.re) {
            std::copy_n(result.re, count, block.re);
            std::copy_n(result.im, count, block.im);
        }
    }
}

/// Reads a pair of column groups: the first as real, the second as imaginary parts.
void ImageTransform::Gather(const float* image, int x, Lanes columns) const
{
    const int reals = ColumnsFrom(x, width_);
    const int imaginaries = ColumnsFrom(x + kLanes, width_);
    for (int y = 0; y < height_; ++y) {
        const float* row = image + static_cast<std::size_t>(y) * width_ + x;
        float* re = columns.re + static_cast<std::size_t>(y) * kLanes;
        float* im = columns.im + static_cast<std::size_t>(y) * kLanes;
        std::fill(std::copy_n(row, reals, re), re + kLanes, 0.0F);
        std::fill(imaginaries > 0 ? std::copy_n(row + kLanes, imaginaries, im) : im, im + kLanes, 0.0F);
    }
}

void ImageTransform::Scatter(Lanes columns, int x, float* image) const
{
    const auto scale = static_cast<float>(1.0 / (static_cast<double>(width_) * height_));
    const int reals = ColumnsFrom(x, width_);
    const int imaginaries = ColumnsFrom(x + kLanes, width_);
    for (int y = 0; y < height_; ++y) {
        float* row = image + static_cast<std::size_t>(y) * width_ + x;
        const float* re = columns.re + static_cast<std::size_t>(y) * kLanes;
        const float* im = columns.im + static_cast<std::size_t>(y) * kLanes;
        std::transform(re, re + reals, row, [=](float v) { return v * scale; });
        if (imaginaries > 0) {
            std::transform(im, im + imaginaries, row + kLanes, [=](float v) { return v * scale; });
        }
    }
}

/// Takes the transforms of two groups of columns from those of one as real and the other as imaginary parts.
void ImageTransform::Separate(Lanes columns, int x, float* spectrum) const
{
    for (int block = 0; block < blocks_; ++block) {
        Tile a{};
        Tile b{};
        const int first = block * kLanes;
        for (int v = first; v < std::min(first + kLanes, Frequencies()); ++v) {
            Split(At(columns, v), At(columns, Opposite(v)), v - first, a, b);
        }
        const Lanes target = BlockAt(spectrum, block) + static_cast<std::ptrdiff_t>(x) * kLanes;
        const Lanes next = target + kLanes * kLanes;
        Store(a, ColumnsFrom(x, width_), target.re, target.im);
        Store(b, ColumnsFrom(x + kLanes, width_), next.re, next.im);
    }
}

void ImageTransform::Join(const float* spectrum, int x, Lanes columns) const
{
    for (int block = 0; block < blocks_; ++block) {
        const float* re = spectrum + block * BlockSize() + static_cast<std::size_t>(x) * kLanes;
        const float* im = re + ImaginaryOffset();
        Tile a;
        Tile b;
        Load(re, im, ColumnsFrom(x, width_), a);
        Load(re + kLanes * kLanes, im + kLanes * kLanes, ColumnsFrom(x + kLanes, width_), b);
        const int first = block * kLanes;
        for (int v = first; v < std::min(first + kLanes, Frequencies()); ++v) {
            Unite(a, b, v - first, At(columns, v), At(columns, Opposite(v)));
        }
    }
}

} // namespace corvane
