#include "corvane/core/image_transform.h"

#include <algorithm>

#include "corvane/core/walk.h"
#include "corvane/platform/workers.h"

namespace corvane {

namespace {

constexpr int kPair = 2 * kLanes; // columns that are transformed together: half as real, half as imaginary parts

/// The complex numbers of kLanes frequencies of kLanes columns.
struct Tile {
    float re[kLanes][kLanes];
    float im[kLanes][kLanes];
};

constexpr int kTileSize = kLanes * kLanes;

/// Takes samples from both halves of a tile in turn: the bits of a place move up by one.
void Shuffle(const float* __restrict in, float* __restrict out)
{
    for (int i = 0; i < kTileSize / 2; ++i) {
        out[2 * i] = in[i];
        out[2 * i + 1] = in[i + kTileSize / 2];
    }
}

/// Exchanges rows and columns, which are four bits of a place each.
void Transpose(const float* in, float* out)
{
    float once[kTileSize];
    float twice[kTileSize];
    Shuffle(in, once);
    Shuffle(once, twice);
    Shuffle(twice, once);
    Shuffle(once, out);
}

/// Writes a part of a tile, its frequencies side by side, column after column.
void Store(const float (&part)[kLanes][kLanes], int columns, float* out)
{
    float turned[kTileSize];
    Transpose(part[0], columns == kLanes ? out : turned);
    if (columns < kLanes) {
        std::copy_n(turned, columns * kLanes, out);
    }
}

/// Reads what `Store` wrote; columns that do not exist are 0.
void Load(const float* in, int columns, float (&part)[kLanes][kLanes])
{
    float turned[kTileSize];
    if (columns < kLanes) {
        std::fill(std::copy_n(in, columns * kLanes, turned), turned + kTileSize, 0.0F);
    }
    Transpose(columns == kLanes ? in : turned, part[0]);
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

ImageTransform::ImageTransform(int width, int height, int threads)
    : width_(width), height_(height), blocks_((height / 2 + kLanes) / kLanes),
      threads_(ThreadsFor(static_cast<long long>(width) * height, std::min(threads, blocks_))), rows_(width),
      columns_(height), room_(std::max(rows_.Room(), columns_.Room()) * kLanes), work_(4 * threads_ * room_)
{}

Lanes ImageTransform::BlockAt(float* spectrum, int block) const
{
    float* re = spectrum + block * BlockSize();
    return {re, re + ImaginaryOffset()};
}

void ImageTransform::Forward(const float* image, float* spectrum)
{
    const platform::KeptThreads threads(threads_);
    ForwardColumns(image, spectrum);
    TransformRows(spectrum, [this](Lanes data, Lanes scratch, std::size_t) { return rows_.Forward(data, scratch); });
}

void ImageTransform::Inverse(float* spectrum, float* image)
{
    const platform::KeptThreads threads(threads_);
    TransformRows(spectrum, [this](Lanes data, Lanes scratch, std::size_t) { return rows_.Inverse(data, scratch); });
    InverseColumns(spectrum, image);
}

void ImageTransform::ForwardColumns(const float* image, float* spectrum)
{
    ForColumns([&](int x, Lanes data, Lanes scratch) {
        Gather(image, x, data);
        Separate(columns_.Forward(data, scratch), x, spectrum);
    });
}

void ImageTransform::ChangeRows(float* spectrum, const Change& change)
{
    TransformRows(spectrum, [&](Lanes data, Lanes scratch, std::size_t at) {
        const Lanes frequencies = rows_.Forward(data, scratch);
        change(frequencies, at);
        return rows_.Inverse(frequencies, frequencies.re == data.re ? scratch : data);
    });
}

void ImageTransform::InverseColumns(float* spectrum, float* image)
{
    ForColumns([&](int x, Lanes data, Lanes scratch) {
        Join(spectrum, x, data);
        Scatter(columns_.Inverse(data, scratch), x, image);
    });
}

/// Calls transform(x, data, scratch) for each pair of column groups, with work arrays of the thread.
template <class TransformColumns>
void ImageTransform::ForColumns(TransformColumns transform)
{
    const int pairs = (width_ + kPair - 1) / kPair;
    const auto body = [&](int pair, int thread) { transform(pair * kPair, Work(thread, 0), Work(thread, 1)); };
    platform::ForBlocks(pairs, threads_, body, [](int) {});
}

/// Transforms along the rows, block by block; in place where the transform needs no more room than the block has.
template <class Transform>
void ImageTransform::TransformRows(float* spectrum, Transform transform)
{
    const std::size_t count = ImaginaryOffset();
    const bool fits = rows_.Room() == static_cast<std::size_t>(width_);
    const auto body = [&](int i, int thread) {
        const Lanes block = BlockAt(spectrum, i);
        const Lanes work = Work(thread, 0);
        if (!fits) {
            std::copy_n(block.re, count, work.re);
            std::copy_n(block.im, count, work.im);
        }
        const Lanes result = transform(fits ? block : work, Work(thread, 1), i * BlockSize());
        if (result.re != block.re) {
            std::copy_n(result.re, count, block.re);
            std::copy_n(result.im, count, block.im);
        }
    };
    platform::ForBlocks(blocks_, threads_, body, [](int) {});
}

/// Reads a pair of column groups: the first as real, the second as imaginary parts.
void ImageTransform::Gather(const float* image, int x, Lanes columns) const
{
    const int reals = ColumnsFrom(x, width_);
    const int imaginaries = ColumnsFrom(x + kLanes, width_);
    for (int y = 0; y < height_; ++y) {
        const float* row = image + static_cast<std::size_t>(y) * width_ + x;
        const Lanes to = At(columns, y);
        if (imaginaries == kLanes) { // a number that the compiler knows
            std::copy_n(row, kLanes, to.re);
            std::copy_n(row + kLanes, kLanes, to.im);
        } else {
            std::fill(std::copy_n(row, reals, to.re), to.re + kLanes, 0.0F);
            std::fill(imaginaries > 0 ? std::copy_n(row + kLanes, imaginaries, to.im) : to.im, to.im + kLanes, 0.0F);
        }
    }
}

void ImageTransform::Scatter(Lanes columns, int x, float* image) const
{
    const auto scale = static_cast<float>(1.0 / (static_cast<double>(width_) * height_));
    const auto scaled = [=](float v) { return v * scale; };
    const int reals = ColumnsFrom(x, width_);
    const int imaginaries = ColumnsFrom(x + kLanes, width_);
    for (int y = 0; y < height_; ++y) {
        float* row = image + static_cast<std::size_t>(y) * width_ + x;
        const Lanes from = At(columns, y);
        if (imaginaries == kLanes) {
            std::transform(from.re, from.re + kLanes, row, scaled);
            std::transform(from.im, from.im + kLanes, row + kLanes, scaled);
        } else {
            std::transform(from.re, from.re + reals, row, scaled);
            if (imaginaries > 0) {
                std::transform(from.im, from.im + imaginaries, row + kLanes, scaled);
            }
        }
    }
}

/// Takes the transforms of two groups of columns from those of one as real and the other as imaginary parts.
void ImageTransform::Separate(Lanes columns, int x, float* spectrum) const
{
    for (int block = 0; block < blocks_; ++block) {
        const int first = block * kLanes;
        Tile a;
        Tile b;
        if (Frequencies() < first + kLanes) {
            a = b = {};
        }
        for (int v = first; v < std::min(first + kLanes, Frequencies()); ++v) {
            Split(At(columns, v), At(columns, Opposite(v)), v - first, a, b);
        }
        const Lanes target = BlockAt(spectrum, block) + static_cast<std::ptrdiff_t>(x) * kLanes;
        const Lanes next = target + kTileSize;
        Store(a.re, ColumnsFrom(x, width_), target.re);
        Store(a.im, ColumnsFrom(x, width_), target.im);
        Store(b.re, ColumnsFrom(x + kLanes, width_), next.re);
        Store(b.im, ColumnsFrom(x + kLanes, width_), next.im);
    }
}

void ImageTransform::Join(const float* spectrum, int x, Lanes columns) const
{
    for (int block = 0; block < blocks_; ++block) {
        const float* re = spectrum + block * BlockSize() + static_cast<std::size_t>(x) * kLanes;
        const float* im = re + ImaginaryOffset();
        Tile a;
        Tile b;
        Load(re, ColumnsFrom(x, width_), a.re);
        Load(im, ColumnsFrom(x, width_), a.im);
        Load(re + kTileSize, ColumnsFrom(x + kLanes, width_), b.re);
        Load(im + kTileSize, ColumnsFrom(x + kLanes, width_), b.im);
        const int first = block * kLanes;
        for (int v = first; v < std::min(first + kLanes, Frequencies()); ++v) {
            Unite(a, b, v - first, At(columns, v), At(columns, Opposite(v)));
        }
    }
}

} // namespace corvane
