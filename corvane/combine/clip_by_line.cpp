#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <vector>

#include "corvane/combine/kept_moments.h"

namespace corvane {
namespace {

struct Line {
    double start = 0.0; ///< at rank 0
    double slope = 0.0;
    double scale = 0.0; ///< mean absolute deviation

    /// The line of least squares through values against their ranks.
    explicit Line(const std::vector<double>& values)
    {
        const auto count = static_cast<double>(values.size());
        const double middle = 0.5 * (count - 1.0);
        double mean = 0.0;
        for (const double v : values) {
            mean += v;
        }
        mean /= count;
        double products = 0.0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            products += (static_cast<double>(i) - middle) * (values[i] - mean);
        }
        slope = products / (count * (count * count - 1.0) / 12.0); // which is the sum of (i - middle) squared
        start = mean - slope * middle;
        for (std::size_t i = 0; i < values.size(); ++i) {
            scale += std::fabs(values[i] - At(i));
        }
        scale /= count;
    }

    double At(std::size_t rank) const { return start + slope * static_cast<double>(rank); }
};

/// The values of a pixel by what becomes of them.
struct Parts {
    std::vector<double> low;
    std::vector<double> kept;
    std::vector<double> high;
};

class LineClipping final : public Rejection {
public:
    explicit LineClipping(const ClipLimits& limits) : limits_(limits) {}

    void Choose(const SortedBlock& block, Kept& kept) const override
    {
        Parts parts;
        for (int k = 0; k < kColumns; ++k) {
            parts.kept.clear();
            for (int i = 0; i < block.count[k]; ++i) {
                parts.kept.push_back(block.values.Row(i)[k]);
            }
            Clip(parts);
            kept.first[k] = static_cast<int>(parts.low.size());
            kept.count[k] = static_cast<int>(parts.kept.size());
            PutBack(parts, block.values, k);
        }
    }

private:
    void Clip(Parts& parts) const
    {
        parts.low.clear();
        parts.high.clear();
        const int most = limits_.rounds > 0 ? limits_.rounds : std::numeric_limits<int>::max();
        for (int round = 0; round < most && std::ssize(parts.kept) >= kFewestClipped && ClipOnce(parts); ++round) {
        }
    }

    /// False when nothing has changed.
    bool ClipOnce(Parts& parts) const
    {
        const Line line(parts.kept);
        std::size_t left = 0;
        for (std::size_t i = 0; i < parts.kept.size(); ++i) {
            const double off = parts.kept[i] - line.At(i);
            if (off < -limits_.low * line.scale) {
                parts.low.push_back(parts.kept[i]);
            } else if (off > limits_.high * line.scale) {
                parts.high.push_back(parts.kept[i]);
            } else {
                parts.kept[left++] = parts.kept[i];
            }
        }
        const bool isChanged = left < parts.kept.size();
        parts.kept.resize(left);
        return isChanged;
    }

    /// Those of later rounds may lie among those of earlier ones.
    static void PutBack(Parts& parts, const Block<double>& values, int k)
    {
        std::sort(parts.low.begin(), parts.low.end());
        std::sort(parts.high.begin(), parts.high.end());
        int i = 0;
        for (const std::vector<double>* part : {&parts.low, &parts.kept, &parts.high}) {
            for (const double v : *part) {
                values.Row(i++)[k] = v;
            }
        }
    }

    ClipLimits limits_;
};

} // namespace

std::unique_ptr<const Rejection> ClipByLine(const ClipLimits& limits)
{
    return std::make_unique<LineClipping>(limits);
}

} // namespace corvane
