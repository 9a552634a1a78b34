#pragma once

#include <memory>

#include "corvane/combine/pixel_block.h"

namespace corvane {

/// Decides which values of a pixel count: those between two bounds.
class Rejection {
public:
    virtual ~Rejection() = default;
    /// Sets the bounds of each pixel of a block.
    virtual void SetBounds(const SortedBlock& block, double* low, double* high) const = 0;
};

/// Within so many standard deviations, of all values about their mean, of the median.
std::unique_ptr<const Rejection> SigmaClip(double sigmas);

/// Which values of a block of pixels count.
struct Kept {
    double low[kColumns];
    double high[kColumns];
    int first[kColumns] = {}; ///< place of the first that counts, in their order
    int count[kColumns] = {};

    Kept(const SortedBlock& block, const Rejection& rejection)
    {
        rejection.SetBounds(block, low, high);
        for (int i = 0; i < block.values.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                const double v = block.values.Row(i)[k];
                first[k] += v <= low[k] ? 1 : 0; // missing values, being infinite, are neither
                count[k] += Has(k, v) ? 1 : 0;
            }
        }
    }

    bool Has(int k, double v) const { return (v > low[k]) & (v < high[k]); }
};

} // namespace corvane
