#include "corvane/restore/mem_engine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>

#include "corvane/core/convolver.h"
#include "corvane/core/lane_transform.h"
#include "corvane/core/power.h"
#include "corvane/resources/string_table.h"
#include "corvane/restore/grid.h"
#include "corvane/restore/region.h"
#include "corvane/restore/samples.h"
#include "corvane/restore/subspace.h"

namespace corvane {

namespace {

constexpr double kReach = 0.3;      // of the sum of the image: the longest step, squared, by the metric of the entropy
constexpr double kLeastShare = 0.1; // of a sample that one step leaves
constexpr float kLeastSample = 1e-20F; // of the mean
constexpr double kTolerance = 0.01;    // of chi-square about its target
constexpr double kParallel = 0.05;     // 1 - cosine between both gradients, below which the entropy is at its maximum
constexpr double kLeastAmount = 0.0;   // of a direction that the line search may take
constexpr double kMostAmount = 1.0;
constexpr int kSubIterations = 6;
constexpr double kLineBracket = 0.05;

/// Inlined by force: it is long, and a loop that calls it does not vectorise.
[[gnu::always_inline]] inline double Logarithm(double x)
{
    constexpr double kLn2 = 0x1.62e42fefa39efp-1;
    const BinaryLogarithm log = Log2(x);
    return (log.whole + log.fraction) * kLn2;
}

class MemEngine {
public:
    MemEngine(const float* data, const MemJob& job, double scale, const Run& run, RestoreProgress& progress, int plane);

    /// Returns the status.
    int Restore();
    void Write(float* result);

private:
    void Start();
    void Advance(int iteration);
    void FindSlopes();
    template <class Prepare>
    std::array<double, 3> Products(Prepare prepare);
    void FindDirections();
    Subspace Model();
    void Join(const SubspaceStep& step);
    double Search(double multiplier);
    void Move(double amount);
    bool IsDone() const;
    RestoreState State(int iteration) const { return {plane_, iteration, job_.iterations, chi_ / target_}; }
    MemStart Beginning() const;
    MemIteration Summary(int iteration, const SubspaceStep& step, double amount);

    const MemJob& job_;
    const Run& run_;
    RestoreProgress& progress_;
    int plane_;
    double scale_;
    Grid grid_;
    Convolver convolver_;
    SampleLoops loops_;
    Samples data_;
    Samples weight_; ///< 1 / variance; 0 where there is no datum
    Samples image_;
    Samples model_; ///< the image, blurred
    std::array<Samples, Subspace::kDirections> directions_;
    std::array<Samples, Subspace::kDirections> blurred_; ///< the directions
    double target_ = 0.0;
    double chi_ = std::numeric_limits<double>::quiet_NaN(); ///< not known before the first iteration
    double entropyLength_ = 0.0;                            ///< of both slopes, by the metric of the entropy
    double chiLength_ = 0.0;
    double unlikeness_ = 1.0; ///< 1 - cosine between both slopes
    int subIterations_ = 0;
};

/// The mean of the data, which becomes the unit of the image: there it starts, and about it the entropy is taken. Data
/// without a mean above 0 have the noise for a unit.
double LevelOf(const float* data, std::size_t count, double sigma, int threads)
{
    SampleLoops loops(count, threads);
    const double sum = loops.Sum<1>([=](std::size_t i, double* term) { term[0] = data[i]; })[0];
    const double mean = sum / static_cast<double>(count);
    return mean <= 0.0 ? sigma : mean;
}

/// Room for the function, and for the plane with what the function brings in from beyond its edges, in a length that
/// transforms are quick for.
int GridExtent(int plane, int psf)
{
    return QuickLength(std::max(plane + psf / 2, psf));
}

MemEngine::MemEngine(const float* data, const MemJob& job, double scale, const Run& run, RestoreProgress& progress,
                     int plane)
    : job_(job), run_(run), progress_(progress), plane_(plane), scale_(scale),
      grid_(job.width, job.height, GridExtent(job.width, job.psfWidth), GridExtent(job.height, job.psfHeight)),
      convolver_(grid_.Width(), grid_.Height(), run.Threads()), loops_(grid_.Size(), run.Threads()),
      data_(loops_.Make(0.0F)), weight_(loops_.Make(0.0F)), image_(loops_.Make(1.0F)), model_(grid_.Size()),
      target_(static_cast<double>(job.width) * job.height)
{
    directions_[0] = loops_.Make(0.0F); // the function comes in here
    for (int i = 0; i < Subspace::kDirections; ++i) {
        directions_[i].resize(grid_.Size());
        blurred_[i].resize(grid_.Size());
    }
    grid_.Place(data, data_.data());
    loops_.Fill(data_, [this](std::size_t i) { return data_[i] * scale_; });
    grid_.Fill(static_cast<float>(1.0 / (job.variance * scale * scale)), weight_.data());
}

int MemEngine::Restore()
{
    Start();
    run_.Tell(Beginning());
    for (int n = 0; n < job_.iterations;) {
        ++n;
        progress_.OpenIteration(IDS_MEM, IDS_MEM_PLANE, plane_, n);
        FindSlopes();
        if (!std::isfinite(chi_)) {
            return kMemNothingToFit;
        }
        if (IsDone()) {
            return kMemDone;
        }
        Advance(n);
        progress_.Reach(100.0);
    }
    return kMemNotReached;
}

void MemEngine::Advance(int iteration)
{
    FindDirections();
    const double sum = loops_.Sum<1>([f = image_.data()](std::size_t i, double* term) { term[0] = f[i]; })[0];
    const SubspaceStep step = FindStep(Model(), target_, kReach * sum);
    Join(step);
    const double amount = Search(step.multiplier);
    Move(amount);
    if (run_.diagnostics) { // its sums take time
        run_.Tell(Summary(iteration, step, amount));
    }
}

void MemEngine::Start()
{
    progress_.Open(plane_ == 0 ? IDS_MEM_INIT : IDS_MEM_INIT_PLANE, plane_);
    Samples& psf = directions_[0];
    const Grid ofPsf(job_.psfWidth, job_.psfHeight, grid_.Width(), grid_.Height());
    ofPsf.Place(job_.psf, psf.data());
    if (job_.isPsfCentred) {
        convolver_.SetPsf(psf.data(), ofPsf.Middle());
    } else {
        convolver_.SetPsf(psf.data());
    }
    progress_.Reach(50.0);
    convolver_.Convolve(image_.data(), model_.data(), progress_.Between(50.0, 100.0));
}

/// Chi-square, and the directions of both slopes by the metric of the entropy.
void MemEngine::FindSlopes()
{
    const float* f = image_.data();
    const float* model = model_.data();
    const float* data = data_.data();
    const float* weight = weight_.data();
    Samples& residual = blurred_[2];
    chi_ = loops_.Sum<1>(
        [=, r = residual.data()](std::size_t i, double* term) {
            term[0] = (static_cast<double>(model[i]) - data[i]) * r[i];
        },
        SampleLoops::Filler(residual,
                            [=](std::size_t i) { return (static_cast<double>(model[i]) - data[i]) * weight[i]; }))[0];
    Samples& slope = directions_[1];
    convolver_.Correlate(residual.data(), slope.data(), progress_.Between(0.0, 20.0));
    const auto scale = SampleLoops::Filler(slope, [f, s = slope.data()](std::size_t i) { return 2.0 * f[i] * s[i]; });
    const auto ascend = SampleLoops::Filler(directions_[0], [f](std::size_t i) { return -f[i] * Logarithm(f[i]); });
    const auto [entropy, both, chi] = Products([=](std::size_t first, std::size_t end) {
        scale(first, end);
        ascend(first, end);
    });
    const double lengths = std::sqrt(entropy * chi);
    unlikeness_ = lengths > 0.0 ? 1.0 - both / lengths : 1.0;
    entropyLength_ = std::sqrt(entropy);
    chiLength_ = std::sqrt(chi);
}

/// The third direction: how chi-square's slope changes along the first two.
void MemEngine::FindDirections()
{
    convolver_.Convolve(directions_[0].data(), blurred_[0].data(), progress_.Between(20.0, 40.0));
    convolver_.Convolve(directions_[1].data(), blurred_[1].data(), progress_.Between(40.0, 60.0));
    const double perEntropy = entropyLength_ > 0.0 ? 1.0 / entropyLength_ : 0.0;
    const double perChi = chiLength_ > 0.0 ? 1.0 / chiLength_ : 0.0;
    Samples& third = directions_[2];
    loops_.Fill(third, [=, a = blurred_[0].data(), b = blurred_[1].data(), w = weight_.data()](std::size_t i) {
        return 2.0 * (a[i] * perEntropy - b[i] * perChi) * w[i];
    });
    convolver_.Correlate(third.data(), third.data(), progress_.Between(60.0, 80.0));
    loops_.Fill(third,
                [f = image_.data(), t = third.data()](std::size_t i) { return static_cast<double>(f[i]) * t[i]; });
    convolver_.Convolve(third.data(), blurred_[2].data(), progress_.Between(80.0, 95.0));
}

/// The products of all pairs of directions, in one pass over their samples.
Subspace MemEngine::Model()
{
    constexpr int kDirections = Subspace::kDirections;
    constexpr int kPairs = kDirections * (kDirections + 1) / 2;
    using Pointers = std::array<const float*, kDirections>;
    const auto pointersOf = [](const auto& all) { return Pointers{all[0].data(), all[1].data(), all[2].data()}; };
    const auto sums = loops_.Sum<2 * kPairs>([f = image_.data(), w = weight_.data(), p = pointersOf(directions_),
                                              blurred = pointersOf(blurred_)](std::size_t i, double* term) {
        const double perSample = 1.0 / f[i];
        for (int a = 0; a < kDirections; ++a) {
            for (int b = a; b < kDirections; ++b) {
                *term++ = static_cast<double>(p[a][i]) * p[b][i] * perSample;
                *term++ = 2.0 * blurred[a][i] * blurred[b][i] * w[i];
            }
        }
    });
    Subspace space;
    space.chi = chi_;
    const double* sum = sums.data();
    for (int a = 0; a < kDirections; ++a) {
        for (int b = a; b < kDirections; ++b) {
            space.metric[a][b] = space.metric[b][a] = *sum++;
            space.curvature[a][b] = space.curvature[b][a] = *sum++;
        }
        // The first two directions are the slopes, times the inverse of the metric.
        space.entropySlope[a] = space.metric[0][a];
        space.chiSlope[a] = space.metric[1][a];
    }
    return space;
}

/// Of the first two directions a and b, when prepare(first, end) has made them: a a, a b and b b by the metric of the
/// entropy.
template <class Prepare>
std::array<double, 3> MemEngine::Products(Prepare prepare)
{
    const auto terms = [f = image_.data(), a = directions_[0].data(), b = directions_[1].data()](std::size_t i,
                                                                                                 double* term) {
        const double perSample = 1.0 / f[i];
        term[0] = static_cast<double>(a[i]) * a[i] * perSample;
        term[1] = static_cast<double>(a[i]) * b[i] * perSample;
        term[2] = static_cast<double>(b[i]) * b[i] * perSample;
    };
    return loops_.Sum<3>(terms, prepare);
}

/// Makes the first direction that of the step, shortened where a sample would lose too much.
void MemEngine::Join(const SubspaceStep& step)
{
    const auto [x, y, z] = step.amounts;
    const auto joined = [x = x, y = y, z = z](const std::array<Samples, Subspace::kDirections>& all) {
        return [=, a = all[0].data(), b = all[1].data(), c = all[2].data()](std::size_t i) {
            return a[i] * x + b[i] * y + c[i] * z;
        };
    };
    loops_.Fill(blurred_[0], joined(blurred_));
    const float* f = image_.data();
    float* d = directions_[0].data();
    const double cut =
        loops_.Sum<1>([=](std::size_t i, double* term) { term[0] = d[i] < (kLeastShare - 1.0) * f[i] ? 1.0 : 0.0; },
                      SampleLoops::Filler(directions_[0], joined(directions_)))[0];
    if (cut > 0.0) {
        loops_.Fill(directions_[0], [=](std::size_t i) { return std::max<double>(d[i], (kLeastShare - 1.0) * f[i]); });
        convolver_.Convolve(d, blurred_[0].data(), progress_.Between(95.0, 100.0));
    }
}

/// So much of the direction that multiplier * S - C no longer rises, at most all of it.
double MemEngine::Search(double multiplier)
{
    const auto [chiSlope, chiCurvature] =
        loops_.Sum<2>([model = model_.data(), data = data_.data(), weight = weight_.data(),
                       step = blurred_[0].data()](std::size_t i, double* term) {
            term[0] = 2.0 * (static_cast<double>(model[i]) - data[i]) * weight[i] * step[i];
            term[1] = 2.0 * step[i] * static_cast<double>(step[i]) * weight[i];
        });
    const auto slopeAt = [&, c = chiSlope, cc = chiCurvature](double amount) {
        const double entropy =
            loops_.Sum<1>([=, f = image_.data(), d = directions_[0].data()](std::size_t i, double* term) {
                term[0] = -Logarithm(f[i] + amount * d[i]) * d[i];
            })[0];
        return multiplier * entropy - c - cc * amount;
    };
    double low = kLeastAmount;
    double high = kMostAmount;
    double slopeLow = slopeAt(low);
    double slopeHigh = slopeAt(high);
    double amount = high;
    for (subIterations_ = 1; slopeHigh < 0.0 && slopeLow > 0.0 && subIterations_ < kSubIterations; ++subIterations_) {
        amount = low + (high - low) * slopeLow / (slopeLow - slopeHigh);
        const double slope = slopeAt(amount);
        (slope > 0.0 ? low : high) = amount;
        (slope > 0.0 ? slopeLow : slopeHigh) = slope;
        if (high - low < kLineBracket) {
            break;
        }
    }
    return amount;
}

void MemEngine::Move(double amount)
{
    loops_.Fill(image_, [=, f = image_.data(), d = directions_[0].data()](std::size_t i) {
        return std::max<double>(f[i] + amount * d[i], kLeastSample);
    });
    loops_.Fill(model_, [=, m = model_.data(), d = blurred_[0].data()](std::size_t i) { return m[i] + amount * d[i]; });
}

bool MemEngine::IsDone() const
{
    const bool isEven = entropyLength_ == 0.0 && chi_ <= target_; // an even image agrees with the data as it is
    return isEven || (std::fabs(chi_ - target_) <= kTolerance * target_ && unlikeness_ <= kParallel);
}

MemStart MemEngine::Beginning() const
{
    constexpr int kOtherArrays = 4;
    return {.state = State(0),
            .dimension = grid_.Size(),
            .data = static_cast<std::size_t>(job_.width) * static_cast<std::size_t>(job_.height),
            .unknowns = grid_.Size(),
            .arrays = kOtherArrays + static_cast<int>(directions_.size() + blurred_.size()),
            .factor = scale_};
}

MemIteration MemEngine::Summary(int iteration, const SubspaceStep& step, double amount)
{
    const auto [entropy, squares] =
        loops_.Sum<2>([f = image_.data(), d = directions_[0].data()](std::size_t i, double* term) {
            term[0] = f[i] - 1.0 - f[i] * Logarithm(f[i]);
            term[1] = static_cast<double>(d[i]) * d[i];
        });
    const auto [least, most] = std::minmax_element(directions_[0].begin(), directions_[0].end());
    const double rawStep = amount / scale_;
    return {.state = State(iteration),
            .objective = step.multiplier * entropy - chi_,
            .subIterations = subIterations_,
            .amount = amount,
            .leastAmount = kLeastAmount,
            .mostAmount = kMostAmount,
            .directions = step.directions,
            .rmsStep = std::sqrt(squares / static_cast<double>(image_.size())) * rawStep,
            .mostStep = static_cast<double>(std::max(*most, -*least)) * rawStep,
            .multiplier = step.multiplier,
            .rmsResidual = std::sqrt(chi_ / target_ * job_.variance),
            .deviations = (chi_ - target_) / std::sqrt(2.0 * target_)};
}

void MemEngine::Write(float* result)
{
    loops_.Fill(image_, [this](std::size_t i) { return image_[i] / scale_; });
    grid_.Take(image_.data(), result);
}

} // namespace

Restored EndOfStatus(int status)
{
    for (; status > 0; status /= 10) {
        const int digit = status % 10;
        if (digit == kMemCancelled) {
            return Restored::kCancelled;
        }
        if ((digit >= 1 && digit <= 4) || digit == kMemNoGrid) {
            return Restored::kNoMemory;
        }
    }
    return Restored::kDone;
}

int RestoreByEntropy(float* data, const MemJob& job, const Run& run, int plane)
{
    try {
        RestoreProgress progress(run);
        progress.Open(plane == 0 ? IDS_MEM_START : IDS_MEM_START_PLANE, plane);
        const std::size_t count = static_cast<std::size_t>(job.width) * static_cast<std::size_t>(job.height);
        const double level = LevelOf(data, count, std::sqrt(job.variance), run.Threads());
        if (!(job.variance > 0.0) || !std::isfinite(level) || !std::isfinite(job.variance)) {
            return kMemNothingToFit;
        }
        const platform::KeptThreads threads(ThreadsFor(static_cast<long long>(count), run.Threads()));
        MemEngine engine(data, job, 1.0 / level, run, progress, plane);
        const int status = engine.Restore();
        if (status != kMemNothingToFit) {
            engine.Write(data);
        }
        return status;
    } catch (const std::bad_alloc&) {
        return kMemNoGrid;
    } catch (const Cancelled&) {
        return kMemCancelled;
    }
}

Restored RestoreByEntropy(CStlImage& image, const CRect* rect, MemJob job, const Run& run)
{
    Region region(image, rect, RestorationNeeds::For(job.psfWidth, job.psfHeight));
    job.width = region.Width();
    job.height = region.Height();
    return RestorePlanes(region, image, [&](float* plane, int number) {
        const int status = RestoreByEntropy(plane, job, run, number);
        return status == kMemNothingToFit ? Restored::kNotANumber : EndOfStatus(status);
    });
}

} // namespace corvane
