#include "corvane/combine/cut_out_search.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

#include "corvane/combine/cut_out_likeness.h"
#include "corvane/core/convolver.h"
#include "corvane/core/defined.h"
#include "corvane/core/memory_budget.h"
#include "corvane/resources/string_table.h"

namespace corvane {

namespace {

constexpr int kTile = 512; // places along a side; a larger cut-out gets as many as its own side
constexpr std::size_t kCandidates = 16;
constexpr int kApart = 2;               // pixels; nearer ones are the same candidate
constexpr double kLeastContrast = 2e-5; // of the root of a tile's sum of squares; 20 times what transforms round off

/// A place that is tried.
struct Candidate {
    int x;
    int y;
    double correlation;
};

/// The best places so far, best first, more than a distance apart in columns or rows.
class Candidates {
public:
    explicit Candidates(int apart) : apart_(apart) {}

    void Offer(const Candidate& offered)
    {
        if (best_.size() == kCandidates && !(offered.correlation > best_.back().correlation)) {
            return;
        }
        const auto same = std::find_if(best_.begin(), best_.end(), [&](const Candidate& other) {
            return std::max(std::abs(other.x - offered.x), std::abs(other.y - offered.y)) <= apart_;
        });
        if (same != best_.end()) {
            if (!(offered.correlation > same->correlation)) {
                return;
            }
            best_.erase(same);
        }
        const auto worse = std::find_if(best_.begin(), best_.end(), [&](const Candidate& other) {
            return offered.correlation > other.correlation;
        });
        best_.insert(worse, offered);
        best_.resize(std::min(best_.size(), kCandidates));
    }

    const std::vector<Candidate>& Best() const { return best_; }

private:
    int apart_;
    std::vector<Candidate> best_;
};

/// The candidates for the best place, and those for the rivals of any of them.
class Shortlist {
public:
    explicit Shortlist(const CStlImage& cutOut)
        : apart_(std::min(cutOut.GetWidth(), cutOut.GetHeight()) / 2), rivals_(apart_)
    {}

    void Offer(const Candidate& offered)
    {
        places_.Offer(offered);
        rivals_.Offer(offered);
    }

    const std::vector<Candidate>& Places() const { return places_.Best(); }
    /// The best place that is not about (x, y); null for none.
    const Candidate* RivalOf(int x, int y) const
    {
        const std::vector<Candidate>& all = rivals_.Best();
        const auto found = std::find_if(all.begin(), all.end(), [&](const Candidate& rival) {
            return std::max(std::abs(rival.x - x), std::abs(rival.y - y)) > apart_;
        });
        return found == all.end() ? nullptr : &*found;
    }

private:
    int apart_;
    Candidates places_{kApart};
    Candidates rivals_;
};

/// values[i] += values[i + shift], with 0 behind the end.
void AddShifted(std::vector<double>& sums, const std::vector<double>& values, std::size_t shift)
{
    double* const to = sums.data();
    const double* const from = values.data() + std::min(shift, values.size());
    const std::size_t count = values.size() - std::min(shift, values.size());
    for (std::size_t i = 0; i < count; ++i) {
        to[i] += from[i];
    }
}

/// Each value becomes the sum of `window` values from it on, `stride` apart, by additions alone, which keep the small
/// beside the large: sums of 1, 2, 4... values make up those of the window.
void SumWindows(std::vector<double>& values, std::size_t stride, int window)
{
    std::vector<double> sums(values.size());
    std::size_t done = 0;
    for (unsigned size = 1; size <= static_cast<unsigned>(window); size *= 2) {
        if ((static_cast<unsigned>(window) & size) != 0) {
            AddShifted(sums, values, done * stride);
            done += size;
        }
        AddShifted(values, values, size * stride);
    }
    values.swap(sums);
}

/// Copies a part of a plane into the corner of a grid of zeros, less its mean. In place of an undefined sample stands
/// the one before it in its row, or the first behind it; a row without any is 0. Returns the sum of squares.
double ReadDeviations(const CStlImage& image, const CRect& part, int plane, int gridWidth, std::vector<float>& grid)
{
    const DefinedTest isDefined(image);
    const auto rowOf = [&](int y) -> const float* { return image.GetImageAdr(0, y, plane, 1) + part.left; };
    double sum = 0.0;
    double count = 0.0;
    for (int y = static_cast<int>(part.top); y < part.bottom; ++y) {
        std::for_each(rowOf(y), rowOf(y) + part.Width(), [&](float v) {
            sum += isDefined(v) ? static_cast<double>(v) : 0.0;
            count += isDefined(v) ? 1.0 : 0.0;
        });
    }
    const double mean = count > 0.0 ? sum / count : 0.0;
    double squares = 0.0;
    std::fill(grid.begin(), grid.end(), 0.0F);
    for (int y = static_cast<int>(part.top); y < part.bottom; ++y) {
        const float* const end = rowOf(y) + part.Width();
        const float* const first = std::find_if(rowOf(y), end, isDefined);
        double last = first == end ? mean : static_cast<double>(*first);
        std::transform(rowOf(y), end, grid.begin() + (y - part.top) * gridWidth, [&](float v) {
            last = isDefined(v) ? static_cast<double>(v) : last;
            squares += (last - mean) * (last - mean);
            return static_cast<float>(last - mean);
        });
    }
    return squares;
}

/// Correlates a cut-out with an image, a tile of places at a time.
class TileSearch {
public:
    TileSearch(const CStlImage& cutOut, const CStlImage& image, int tileWidth, int tileHeight)
        : cutOut_(cutOut), image_(image), width_(QuickLength(tileWidth + cutOut.GetWidth() - 1)),
          height_(QuickLength(tileHeight + cutOut.GetHeight() - 1)),
          reservation_(BytesOf(width_, height_, cutOut.GetPlanes())),
          samples_(static_cast<std::size_t>(width_) * height_)
    {
        for (int plane = 0; plane < cutOut.GetPlanes(); ++plane) {
            const CRect whole(0, 0, cutOut.GetWidth(), cutOut.GetHeight());
            squares_ += ReadDeviations(cutOut, whole, plane, width_, samples_);
            planes_.emplace_back(width_, height_).SetKernel(samples_.data());
        }
    }

    /// Offers the places of a tile.
    void Search(const CRect& places, Shortlist& list)
    {
        double energy = 0.0;
        correlation_.assign(samples_.size(), 0.0F);
        deviation_.assign(samples_.size(), 0.0);
        meanSquare_.assign(samples_.size(), 0.0);
        for (int plane = 0; plane < cutOut_.GetPlanes(); ++plane) {
            energy += AddPlane(places, plane);
        }
        SumOverCutOut(deviation_);
        Offer(places, kLeastContrast * kLeastContrast * energy, list);
    }

private:
    /// Samples and their correlation, two spectra for each plane, and four sums.
    static std::uint64_t BytesOf(int width, int height, int planes)
    {
        const auto floats = 2 + 2 * static_cast<std::uint64_t>(planes);
        return static_cast<std::uint64_t>(width) * height * (floats * sizeof(float) + 4 * sizeof(double));
    }

    void SumOverCutOut(std::vector<double>& values) const
    {
        SumWindows(values, 1, cutOut_.GetWidth());
        SumWindows(values, static_cast<std::size_t>(width_), cutOut_.GetHeight());
    }

    /// Adds what a plane has to the products, to the squares and to those of the means. Returns its sum of squares.
    double AddPlane(const CRect& places, int plane)
    {
        CRect part(places);
        part.right += cutOut_.GetWidth() - 1;
        part.bottom += cutOut_.GetHeight() - 1;
        const double energy = ReadDeviations(image_, part, plane, width_, samples_);
        std::vector<double> sums(samples_.begin(), samples_.end());
        const double pairs = static_cast<double>(cutOut_.GetWidth()) * cutOut_.GetHeight();
        SumOverCutOut(sums);
        for (std::size_t i = 0; i < samples_.size(); ++i) {
            deviation_[i] += static_cast<double>(samples_[i]) * samples_[i];
            meanSquare_[i] += sums[i] * sums[i] / pairs;
        }
        planes_[static_cast<std::size_t>(plane)].Correlate(samples_.data(), samples_.data());
        std::transform(samples_.begin(), samples_.end(), correlation_.begin(), correlation_.begin(), std::plus<>());
        return energy;
    }

    void Offer(const CRect& places, double least, Shortlist& list) const
    {
        for (int y = 0; y < places.Height(); ++y) {
            for (int x = 0; x < places.Width(); ++x) {
                const std::size_t i = static_cast<std::size_t>(y) * width_ + x;
                const double deviation = deviation_[i] - meanSquare_[i];
                if (deviation > least) {
                    list.Offer({static_cast<int>(places.left) + x, static_cast<int>(places.top) + y,
                                correlation_[i] / std::sqrt(deviation * squares_)});
                }
            }
        }
    }

    const CStlImage& cutOut_;
    const CStlImage& image_;
    int width_;
    int height_;
    Reservation reservation_;
    double squares_ = 0.0;
    std::vector<Convolver> planes_;
    std::vector<float> samples_;
    std::vector<float> correlation_;
    std::vector<double> deviation_;
    std::vector<double> meanSquare_;
};

/// Searches tile by tile.
Shortlist SearchTiles(const CStlImage& cutOut, const CStlImage& image, const CRect& places, const Run& run)
{
    const int width = std::min<int>(places.Width(), std::max(kTile, cutOut.GetWidth()));
    const int height = std::min<int>(places.Height(), std::max(kTile, cutOut.GetHeight()));
    const int tiles = ((places.Width() - 1) / width + 1) * ((places.Height() - 1) / height + 1);
    Shortlist list(cutOut);
    TileSearch search(cutOut, image, width, height);
    Stage stage(run, IDS_MATCHING, tiles);
    for (int top = static_cast<int>(places.top); top < places.bottom; top += height) {
        for (int left = static_cast<int>(places.left); left < places.right; left += width) {
            const int right = std::min(left + width, static_cast<int>(places.right));
            const int bottom = std::min(top + height, static_cast<int>(places.bottom));
            search.Search({left, top, right, bottom}, list);
            stage.Step();
        }
    }
    return list;
}

/// The judge of single places.
class Judge {
public:
    Judge(const CStlImage& cutOut, const CStlImage& image, const CRect& places)
        : cutOut_(cutOut), image_(image), places_(places), whole_(0, 0, cutOut.GetWidth(), cutOut.GetHeight())
    {}

    /// Takes the place if it is better than the best.
    bool Try(int x, int y)
    {
        if (x < places_.left || y < places_.top || x >= places_.right || y >= places_.bottom) {
            return false;
        }
        const CutOutLikeness likeness = CompareAt(cutOut_, whole_, image_, x, y);
        const bool isBetter = likeness.correlation > (best_ ? best_->correlation : -2.0); // NaN is not
        if (isBetter) {
            best_ = {1.0 * x, 1.0 * y, likeness.correlation, likeness.rms, -1.0};
        }
        return isBetter;
    }

    /// Goes on to the best neighbour while there is a better one: the transforms round, and undefined samples count in
    /// them as the mean.
    void Climb()
    {
        for (bool isBetter = best_.has_value(); isBetter;) {
            isBetter = false;
            const int x = static_cast<int>(best_->x);
            const int y = static_cast<int>(best_->y);
            for (int i = 0; i < 9; ++i) {
                isBetter |= i != 4 && Try(x + i % 3 - 1, y + i / 3 - 1);
            }
        }
    }

    /// The correlation at a rival's place; -1 for none.
    double Rival(const Candidate* rival) const
    {
        const double correlation =
            rival == nullptr ? -1.0 : CompareAt(cutOut_, whole_, image_, rival->x, rival->y).correlation;
        return std::isnan(correlation) ? -1.0 : correlation;
    }

    const std::optional<CutOutPlace>& Best() const { return best_; }

private:
    const CStlImage& cutOut_;
    const CStlImage& image_;
    CRect places_;
    CRect whole_;
    std::optional<CutOutPlace> best_;
};

} // namespace

std::optional<CutOutPlace> FindCutOut(const CStlImage& cutOut, const CStlImage& image, const CRect& places,
                                      const Run& run)
{
    if (places.Width() <= 0 || places.Height() <= 0) {
        return std::nullopt;
    }
    const Shortlist list = SearchTiles(cutOut, image, places, run);
    Judge judge(cutOut, image, places);
    for (const Candidate& candidate : list.Places()) {
        judge.Try(candidate.x, candidate.y);
    }
    judge.Climb();
    if (!judge.Best()) {
        return std::nullopt;
    }
    CutOutPlace best = *judge.Best();
    const int x = static_cast<int>(best.x);
    const int y = static_cast<int>(best.y);
    best.rival = judge.Rival(list.RivalOf(x, y));
    const PeakOffset peak = PeakAbout(cutOut, image, x, y);
    best.x += peak.x;
    best.y += peak.y;
    return best;
}

} // namespace corvane
