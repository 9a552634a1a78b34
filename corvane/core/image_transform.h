#pragma once

#include <cstddef>
#include <functional>

#include "corvane/core/lane_transform.h"
#include "corvane/core/work_array.h"
#include "corvane/platform/export.h"

namespace corvane {

/// Two-dimensional Fourier transform of a plane of real samples, in single precision, for any width and height.
///
/// Forward is not scaled; inverse divides by width * height. The kernel of forward is e^(-2 pi i (u x / w + v y / h)).
/// A spectrum holds the frequencies v = 0..h / 2 of the columns, since those of real samples beyond are their
/// conjugates, and all u. They are kept in an order that suits the transform: kLanes neighbouring v side by side, so
/// that a block of them is one contiguous range. `IndexOf` finds a frequency; work that takes all frequencies alike
/// needs no more than the array. The places beyond h / 2 in the last block are 0.
class CORVANE_VISIBLE ImageTransform {
public:
    /// Prepares for planes of a size; 1 or more each, to be transformed by so many threads. Throws std::bad_alloc.
    ImageTransform(int width, int height, int threads = 1);

    int Width() const { return width_; }
    int Height() const { return height_; }
    /// Floats of a spectrum.
    std::size_t SpectrumSize() const { return static_cast<std::size_t>(blocks_) * BlockSize(); }
    /// Frequencies v that a spectrum holds: 0 to height / 2.
    int Frequencies() const { return height_ / 2 + 1; }
    /// Where the real part of frequency (u, v) is; the imaginary part follows `ImaginaryOffset` floats behind it.
    std::size_t IndexOf(int u, int v) const
    {
        return v / kLanes * BlockSize() + static_cast<std::size_t>(u) * kLanes + v % kLanes;
    }
    std::size_t ImaginaryOffset() const { return static_cast<std::size_t>(width_) * kLanes; }
    /// Transforms width * height samples, row by row.
    void Forward(const float* image, float* spectrum);
    /// The way back. The spectrum is lost.
    void Inverse(float* spectrum, float* image);

    /// What is done to a block of a spectrum: its parts, of `ImaginaryOffset` floats each, and where it begins. Threads
    /// share the blocks.
    using Change = std::function<void(Lanes block, std::size_t at)>;

    /// @name Forward, a change of the spectrum, and back
    /// In three steps, of which the second takes each block there and back while it is in a near cache.
    /// @{
    void ForwardColumns(const float* image, float* spectrum);
    void ChangeRows(float* spectrum, const Change& change);
    void InverseColumns(float* spectrum, float* image);
    /// @}

private:
    std::size_t BlockSize() const { return 2 * ImaginaryOffset(); }
    int Opposite(int v) const { return v == 0 ? 0 : height_ - v; }
    Lanes BlockAt(float* spectrum, int block) const;
    template <class Transform>
    void TransformRows(float* spectrum, Transform transform);
    template <class TransformColumns>
    void ForColumns(TransformColumns transform);
    void Gather(const float* image, int x, Lanes columns) const;
    void Scatter(Lanes columns, int x, float* image) const;
    void Separate(Lanes columns, int x, float* spectrum) const;
    void Join(const float* spectrum, int x, Lanes columns) const;
    /// One of the two work arrays of a thread.
    Lanes Work(int thread, int which)
    {
        float* const work = work_.data() + (2 * thread + which) * 2 * room_;
        return {work, work + room_};
    }

    int width_;
    int height_;
    int blocks_;
    int threads_;
    LaneTransform rows_;
    LaneTransform columns_;
    std::size_t room_;
    WorkArray work_;
};

} // namespace corvane
