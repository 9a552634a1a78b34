#include <cmath>

#include "corvane/combine/rejection.h"

namespace corvane {
namespace {

template <class Count>
void SetSigmaBounds(const Block<double>& block, const Count& count, double sigmas, double* low, double* high)
{
    double mean[kColumns] = {};
    double squares[kColumns] = {};
    for (int i = 0; i < block.frames; ++i) {
        for (int k = 0; k < kColumns; ++k) {
            mean[k] += count.Has(i, k) ? block.Row(i)[k] : 0.0;
        }
    }
    for (int k = 0; k < kColumns; ++k) {
        mean[k] /= count.Of(k);
    }
    for (int i = 0; i < block.frames; ++i) {
        for (int k = 0; k < kColumns; ++k) {
            const double off = block.Row(i)[k] - mean[k];
            squares[k] += count.Has(i, k) ? off * off : 0.0;
        }
    }
    for (int k = 0; k < kColumns; ++k) {
        const double median = block.Row(count.Of(k) / 2)[k];
        const double sigma = std::sqrt(squares[k] / count.Of(k));
        low[k] = median - sigmas * sigma;
        high[k] = median + sigmas * sigma;
    }
}

class SigmaClipping final : public Rejection {
public:
    explicit SigmaClipping(double sigmas) : sigmas_(sigmas) {}

    void Choose(const SortedBlock& block, Kept& kept) const override
    {
        double low[kColumns];
        double high[kColumns];
        block.WithCount([&](const auto& count) { SetSigmaBounds(block.values, count, sigmas_, low, high); });
        for (int i = 0; i < block.values.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                const double v = block.values.Row(i)[k];
                kept.first[k] += v <= low[k] ? 1 : 0; // missing values, being infinite, are neither
                kept.count[k] += ((v > low[k]) & (v < high[k])) ? 1 : 0;
            }
        }
    }

private:
    double sigmas_;
};

} // namespace

std::unique_ptr<const Rejection> SigmaClip(double sigmas)
{
    return std::make_unique<SigmaClipping>(sigmas);
}

} // namespace corvane
