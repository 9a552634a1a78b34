#include "corvane/restore/lucy.h"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include "corvane/restore/lucy_engine.h"
#include "tests/restore/field.h"
#include "tests/restore/interrupted.h"
#include "tests/support/storage.h"

using namespace corvane;
using namespace corvane::test;

namespace {

using Values = std::valarray<double>;

constexpr double kSigma = 1.2;
constexpr double kGain = 1.6;
constexpr double kReadNoise = 6.0;
constexpr double kReadVariance = kReadNoise * kReadNoise / kGain;

/// The iteration in double precision, on the grid, with direct sums.
class PlainLucy {
public:
    PlainLucy(const Field& data, LucyMode mode, std::vector<Tap> taps = GaussTaps(kSigma), double damping = 0.0)
        : mode_(mode), damping_(damping), taps_(std::move(taps)), left_(std::max(64 - data.width, 0) / 2),
          top_(std::max(64 - data.height, 0) / 2), data_(std::max(data.width, 64), std::max(data.height, 64)),
          weight_(data_), estimate_(data_), step_(data_), modelStep_(data_), sensitivity_(data_)
    {
        for (int i = 0; i < data.width * data.height; ++i) {
            const int x = i % data.width;
            const int y = i / data.width;
            data_.At(left_ + x, top_ + y) = data.At(x, y);
            weight_.At(left_ + x, top_ + y) = data.At(x, y) < -5.0 * kReadNoise / kGain ? 0.0 : 1.0;
            estimate_.At(left_ + x, top_ + y) = 1.0;
        }
        estimate_.v *= (data_.v * weight_.v).sum() / weight_.v.sum();
        sensitivity_ = Blurred(weight_, taps_, -1);
        const double least = 0.001 * sensitivity_.v.max();
        estimate_.v[sensitivity_.v < least] = 0.0;
        sensitivity_.v[sensitivity_.v < least] = 1.0;
        least_ = 0.1 * std::sqrt((estimate_.v.max() + kReadVariance) / kGain);
    }

    void Iterate(bool isFirst)
    {
        const Values model = Blurred(estimate_, taps_).v;
        Field ratio = data_;
        ratio.v = (data_.v + kReadVariance) / (model + kReadVariance) * weight_.v;
        Field step = data_;
        step.v =
            estimate_.v * Blurred(ratio, taps_, -1).v / sensitivity_.v / (1.0 - damping_ * Curvature()) - estimate_.v;
        Field modelStep = Blurred(step, taps_);
        double factor = 1.0;
        if (mode_ != LucyMode::kPlain) {
            factor = Accelerate(isFirst, model, step.v, modelStep.v);
        }
        estimate_.v += factor * step.v;
        step_ = step;
        modelStep_ = modelStep;
    }

    double At(int x, int y) const { return estimate_.At(left_ + x, top_ + y); }

private:
    /// To the next sample in the row and in the column, and its length; beyond the edges there is none.
    std::array<double, 3> Gradient(const Field& image, int x, int y) const
    {
        const double dx = x + 1 < image.width ? image.At(x + 1, y) - image.At(x, y) : 0.0;
        const double dy = y + 1 < image.height ? image.At(x, y + 1) - image.At(x, y) : 0.0;
        return {dx, dy, std::sqrt(dx * dx + dy * dy + least_ * least_)};
    }

    Values Curvature() const
    {
        Field sum(data_.width, data_.height);
        for (int i = 0; i < data_.width * data_.height; ++i) {
            const int x = i % data_.width;
            const int y = i / data_.width;
            const auto [dx, dy, length] = Gradient(estimate_, x, y);
            sum.At(x, y) += (dx + dy) / length;
            sum.At(x + 1, y) -= dx / length;
            sum.At(x, y + 1) -= dy / length;
        }
        return sum.v;
    }

    double Accelerate(bool isFirst, const Values& model, Values& step, Values& modelStep) const
    {
        if (mode_ == LucyMode::kAccelerated || isFirst) {
            return Search(model, modelStep, 1.0, Limit(step));
        }
        const Values curvature = weight_.v / (model + kReadVariance) * modelStep_.v;
        const double share = -(curvature * modelStep).sum() / (curvature * modelStep_.v).sum();
        const Values turbo = step + share * step_.v;
        if (Limit(turbo) < 1.0) {
            return Search(model, modelStep, 1.0, Limit(step));
        }
        step = turbo;
        modelStep += share * modelStep_.v;
        return Search(model, modelStep, -Limit(-step), Limit(step));
    }

    /// How often a step may be taken before a sample is 0.
    double Limit(const Values& step) const
    {
        double limit = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < step.size(); ++i) {
            limit = step[i] < 0.0 ? std::min(limit, -estimate_.v[i] / step[i]) : limit;
        }
        return std::isinf(limit) ? 100.0 : limit;
    }

    double Search(const Values& model, const Values& modelStep, double least, double most) const
    {
        double c = 1.0;
        double move = 1.0;
        for (int round = 0; std::fabs(move) > 0.01 && round < 20; ++round) {
            const Values p = (model + c * modelStep) * weight_.v + kReadVariance;
            const Values q = data_.v * weight_.v + kReadVariance;
            const Values change = weight_.v * modelStep / p;
            const double newton = ((q - p) * change).sum() / (change * change * q).sum();
            move = c + newton >= most ? (most - c) * 0.5 : c + newton <= least ? (least - c) * 0.5 : newton;
            c += move;
        }
        return c;
    }

    LucyMode mode_;
    double damping_;
    double least_ = 0.0;
    std::vector<Tap> taps_;
    int left_;
    int top_;
    Field data_;
    Field weight_;
    Field estimate_;
    Field step_;
    Field modelStep_;
    Field sensitivity_;
};

/// What the engine makes of it by a job.
Field Result(Field field, LucyJob job, const std::function<void(const RestoreEvent&)>& sink = {},
             Restored end = Restored::kDone)
{
    std::vector<float> plane(std::begin(field.v), std::end(field.v));
    job.width = field.width;
    job.height = field.height;
    job.gain = kGain;
    job.readNoise = kReadNoise;
    job.target = 0.0;
    const Run run{.diagnostics = [&](const Diagnostic& d) { sink ? sink(std::get<RestoreEvent>(d)) : void(); }};
    EXPECT_EQ(RestoreLucy(plane.data(), job, run, 0), end);
    std::copy(plane.begin(), plane.end(), std::begin(field.v));
    return field;
}

/// The same for a Gaussian.
Field Result(const Field& field, LucyMode mode, int iterations,
             const std::function<void(const RestoreEvent&)>& sink = {}, Restored end = Restored::kDone)
{
    const std::vector<float> psf = GaussPsf(kSigma, 64);
    return Result(field, {.psf = psf.data(), .psfWidth = 64, .psfHeight = 64, .iterations = iterations, .mode = mode},
                  sink, end);
}

/// How far the mean of a ring about a star falls below what lies beneath it, at most.
double RingDepth(const Field& field, int atX, int atY, const Field& beneath)
{
    double depth = 0.0;
    for (int radius = 3; radius < 12; ++radius) {
        double sum = 0.0;
        int count = 0;
        for (int i = 0; i < field.width * field.height; ++i) {
            const double away = std::hypot(i % field.width - atX, i / field.width - atY);
            const bool isIn = away >= radius && away < radius + 1;
            sum += isIn ? beneath.v[i] - field.v[i] : 0.0;
            count += isIn ? 1 : 0;
        }
        depth = std::max(depth, sum / count);
    }
    return depth;
}

} // namespace

TEST(Lucy, AgreesWithThePlainForm)
{
    Random random(3);
    const Field stars = Exposed(Blurred(StarField(64, 5), GaussTaps(kSigma)), kGain, kReadNoise, random);
    for (const auto& [width, height] : {std::pair{67, 61}, {1, 9}, {101, 2}}) {
        Field data(width, height);
        for (int i = 0; i < width * height; ++i) {
            const bool isMasked = i % width / 7 == 3 && i / width / 7 == 3; // so many that they are hardly seen
            data.v[i] = isMasked ? -50.0 : stars.At(i % width, i / width);
        }
        data.v[width + 3] = -19.0; // takes no part
        data.v[width + 4] = -18.0; // takes part
        for (const LucyMode mode : {LucyMode::kPlain, LucyMode::kAccelerated, LucyMode::kTurbo}) {
            PlainLucy plain(data, mode);
            for (int n = 1; n <= 6; ++n) {
                plain.Iterate(n == 1);
                const Field got = Result(data, mode, n);
                for (int i = 0; i < width * height; ++i) {
                    const double expected = plain.At(i % width, i / width);
                    ASSERT_NEAR(got.v[i], expected, 1e-3 * expected + 2e-3)
                        << width << " x " << height << ", mode " << static_cast<int>(mode) << ", " << n << ", " << i;
                }
            }
        }
    }
}

// Functions that a mirror image, a transpose or a wrong centre of would show.
TEST(Lucy, TakesAnyFunctionDampedOrNot)
{
    Random random(8);
    const Field data = Exposed(Blurred(StarField(70, 5), GaussTaps(kSigma)), kGain, kReadNoise, random);
    for (const auto& [width, height] : {std::pair{5, 4}, {4, 7}, {65, 3}}) {
        const PsfOfTest psf(width, height, random);
        for (const double damping : {0.0, 0.1}) {
            for (const LucyMode mode : {LucyMode::kPlain, LucyMode::kTurbo}) {
                SCOPED_TRACE(testing::Message() << width << " x " << height << ", damping " << damping);
                PlainLucy plain(data, damping > 0.0 ? LucyMode::kPlain : mode, psf.taps, damping);
                for (int n = 1; n <= 4; ++n) {
                    plain.Iterate(n == 1);
                    const Field got = Result(data, {.psf = psf.samples.data(),
                                                    .psfWidth = width,
                                                    .psfHeight = height,
                                                    .isPsfCentred = true,
                                                    .iterations = n,
                                                    .damping = damping,
                                                    .mode = mode});
                    for (std::size_t i = 0; i < got.v.size(); ++i) {
                        const double expected = plain.At(static_cast<int>(i) % 70, static_cast<int>(i) / 70);
                        ASSERT_NEAR(got.v[i], expected, 2e-3 * expected + 2e-3) << n << ", " << i;
                    }
                }
            }
        }
    }
}

// On an even sky and with two stars on an arm of a galaxy, cut off where they are saturated.
TEST(Lucy, KeepsProtectedStarsFromDarkRingsAndHollowCores)
{
    const std::pair<int, int> places[]{{24, 24}, {70, 26}, {26, 70}, {71, 70}};
    const std::vector<float> psf = GaussPsf(1.5, 64);
    for (const auto& [arm, most] : {std::pair(0.0, 1e9), {0.0, 20000.0}, {600.0, 1e9}, {600.0, 8000.0}}) {
        SCOPED_TRACE(testing::Message() << arm << ' ' << most);
        Random random(21);
        Field beneath(96, 96, 1000.0);
        for (int i = 0; i < 96 * 96; ++i) {
            beneath.v[i] += arm * std::exp(-std::pow((i % 96 - i / 96) / 9.0, 2));
        }
        Field data = beneath;
        beneath = Blurred(beneath, GaussTaps(1.5)); // to sharpen the arm takes more iterations
        for (int star = 0; star < 4; ++star) {
            data.At(places[star].first, places[star].second) += 3e4 * std::pow(3.0, star);
        }
        data = Exposed(Blurred(data, GaussTaps(1.5)), kGain, kReadNoise, random);
        std::vector<char> isSaturated;
        for (double& v : data.v) {
            v = std::min(v, most);
            isSaturated.push_back(v == most ? 1 : 0);
        }
        const auto restored = [&](double skyNoise, int iterations = 20, double damping = 0.0) {
            return Result(data, {.psf = psf.data(),
                                 .psfWidth = 64,
                                 .psfHeight = 64,
                                 .iterations = iterations,
                                 .damping = damping,
                                 .skyNoise = skyNoise,
                                 .isSaturated = skyNoise > 0.0 ? &isSaturated : nullptr});
        };
        const Field bare = restored(0.0);
        const Field safe = restored(25.0);
        for (const auto& [x, y] : places) {
            const double percent = 0.01 * (data.At(x, y) - beneath.At(x, y));
            EXPECT_GT(RingDepth(bare, x, y, beneath), 1.2 * percent) << x << ' ' << y;
            EXPECT_LT(RingDepth(safe, x, y, beneath), percent) << x << ' ' << y;
            EXPECT_TRUE(data.At(x, y) == most || safe.At(x, y) > 1.2 * data.At(x, y));
        }
        for (std::size_t i = 0; i < isSaturated.size(); ++i) {
            ASSERT_TRUE(isSaturated[i] == 0 || safe.v[i] == data.v[i]) << i;
        }
        EXPECT_TRUE(most < 1e9 || std::fabs(safe.v.sum() / data.v.sum() - 1.0) < 0.01);
        EXPECT_NEAR(restored(25.0, 2, 0.01).v.sum() / data.v.sum(), 1.0, most < 1e9 ? 0.05 : 0.01);
    }
}

TEST(Lucy, ConvergesFasterThanThePlainIteration)
{
    Random random(4);
    const Field truth = StarField(96, 8);
    const Field data = Exposed(Blurred(truth, GaussTaps(kSigma)), kGain, kReadNoise, random);
    std::vector<double> chiSquares;
    const Field turbo = Result(data, LucyMode::kTurbo, 20,
                               [&](const RestoreEvent& event) { chiSquares.push_back(StateOf(event).chiSquare); });
    const Field plain = Result(data, LucyMode::kPlain, 20);
    EXPECT_LT(RmsError(turbo, truth), 0.9 * RmsError(plain, truth));
    EXPECT_LT(RmsError(plain, truth), 0.9 * RmsError(data, truth));
    EXPECT_NEAR(turbo.v.sum() / data.v.sum(), 1.0, 0.01);
    EXPECT_GT(turbo.v.max(), 1.7 * data.v.max());
    ASSERT_EQ(chiSquares.size(), 21U);
    for (int i = 0; i < 20; ++i) {
        EXPECT_LE(chiSquares[i + 1], 1.02 * chiSquares[i]) << i;
    }
    EXPECT_LT(chiSquares.back(), 1.05);
}

TEST(Lucy, ReportsWhatItDoesAndGivesUpWhenThereIsNoNumber)
{
    std::string report;
    const auto write = [&](const RestoreEvent& event) { report += ReportOf(event); };
    Field data = StarField(64, 5);
    data.At(3, 2) = -20.0;
    Result(data, LucyMode::kTurbo, 2, write);
    EXPECT_TRUE(
        report.starts_with("List of pixels below threshold -18.75 (-5 sigma)\npixel (4,3); value -20\nInitial"));
    for (const char* part :
         {"chi-sq = ", "\nAccelerated iteration  CMIN = 1, CMAX = ", ", C = ", "\nIteration 1 : chi-sq",
          "\nTotal Iterations 1  Turbo iteration        CMIN = ", "\nTotal Iterations 2  "}) {
        EXPECT_NE(report.find(part), std::string::npos) << part << " in " << report;
    }
    data.At(5, 5) = std::numeric_limits<double>::quiet_NaN();
    Result(data, LucyMode::kTurbo, 5, write, Restored::kNotANumber);
    EXPECT_TRUE(
        report.ends_with("Iteration 1 : chi-sq = nan\nTotal Iterations 1  chi-sq is not a number,  given up\n"));
}

// The blur leaves a twentieth of the pattern, and a plain step of what is missing brings back a twentieth of that.
TEST(Lucy, FollowsALowContrastAsFarAsTheSearchSays)
{
    Field data(64, 64, 1000.0);
    for (int i = 0; i < 64 * 64; ++i) {
        data.v[i] += 20.0 * std::cos(i % 64 * 21 / 32.0 * std::numbers::pi);
    }
    const Field restored = Result(Blurred(data, GaussTaps(kSigma)), LucyMode::kTurbo, 1);
    EXPECT_NEAR(RmsError(restored, data), 0.0, 0.5);
}

// The first sample of the function is divided by the sum, once for each: from a sigma of 9.93 on it is the peak, and
// the result is displaced.
TEST(Lucy, EndsAtTheTargetAndKeepsTheMeanWithoutIterations)
{
    const CStlImage source = StarFrame(30, 20, 1);
    const auto restored = [&](double sigma, double gain, int iterations) {
        CImgLucy image(source);
        EXPECT_EQ(image.Do(sigma, gain, 1.0, iterations, nullptr, 0), 1);
        return Samples(image);
    };
    EXPECT_EQ(restored(1.2, 1e-9, 1), restored(1.2, 1e-9, 50)); // so noisy that chi-square is below 1 at once
    EXPECT_NE(restored(1.2, 1.0, 1), restored(1.2, 1.0, 2));
    EXPECT_NEAR(restored(9.9, 1.0, 1)[310] / restored(9.8, 1.0, 1)[310], 1.0, 0.02);
    EXPECT_GT(std::fabs(restored(10.1, 1.0, 1)[310] / restored(9.9, 1.0, 1)[310] - 1.0), 0.1);
    for (const int iterations : {0, std::numeric_limits<int>::min()}) {
        EXPECT_NEAR(restored(1.2, 1.0, iterations)[77], source.GetAvrGrayRaw(0), 0.1);
        EXPECT_EQ(restored(1.2, 1.0, iterations)[77], restored(1.2, 1.0, iterations)[599]);
    }
    for (const int iterations : {0, 1, std::numeric_limits<int>::max()}) { // where nothing takes part
        CImgLucy dark(StarFrame(5, 4, 1));
        Write(Field(5, 4, -100.0), dark);
        ASSERT_EQ(dark.Do(kSigma, kGain, kReadNoise, iterations, nullptr, 0), 1);
        EXPECT_EQ(dark.GetPixelGrayRaw(2, 2, 0), iterations == 0 ? 1.0F : 0.0F) << iterations;
    }
}

TEST(Lucy, WorksInsideTheRectangleAlone)
{
    ExpectOnlyInside<CImgLucy>(StarFrame(40, 30, 3), [](CImgLucy& image, CRect* rect) {
        return image.Do(kSigma, kGain, kReadNoise, 1, rect, 0);
    });
}

TEST(Lucy, TellsItsProgressAndStopsForEsc)
{
    const auto restore = [](CImgLucy& image) { return image.Do(kSigma, 1e6, 0.0, 2, nullptr, 1); };
    const std::string end = " (press ESC to cancel)";
    EXPECT_EQ(TextsOf(CImgLucy(StarFrame(12, 8, 1)), restore),
              (std::vector<std::string>{"0:Initializing Lucy-Richardson processing" + end,
                                        "0:Applying Lucy-Richardson: 1" + end, "0:Applying Lucy-Richardson: 2" + end,
                                        "2:null"}));
    std::vector<std::string> expected;
    for (const std::string plane : {"1", "2", "3"}) {
        const std::string applying = "0:Applying Lucy-Richardson for Plane " + plane + ":  ";
        for (const std::string& text : {"0:Initializing multiplane Lucy-Richardson processing" + end,
                                        applying + "1" + end, applying + "2" + end, std::string("2:null")}) {
            expected.push_back(text);
        }
    }
    EXPECT_EQ(TextsOf(CImgLucy(StarFrame(12, 8, 3)), restore), expected);
    EXPECT_EQ(ExpectCancellable<CImgLucy>(StarFrame(12, 8, 3), restore), 3 * 22); // two for each transform among them
}

TEST(Lucy, LeavesTheImageWhenARectangleIsTooLarge)
{
    const CStlImage source = StarFrame(12, 8, 3);
    constexpr int kMost = std::numeric_limits<int>::max();
    for (CRect large : {CRect(0, 0, kMost, 8), CRect(-kMost, 0, kMost, 200), CRect(0, -kMost, 1, kMost)}) {
        const TightMemory memory(1 << 20);
        CImgLucy image(source);
        EXPECT_EQ(image.Do(kSigma, kGain, kReadNoise, 1, &large, 0), 0);
        EXPECT_EQ(Samples(image), Samples(source));
    }
}

TEST(Lucy, TakesWhatIsNoNumber)
{
    for (const double odd : {0.0, -1.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        CImgLucy image(StarFrame(1, 1, 1));
        EXPECT_EQ(image.Do(odd, odd, odd, 2, nullptr, 0), 1);
        image.SetPixelGrayRaw(0, 0, static_cast<float>(odd), 0);
        EXPECT_EQ(image.Do(kSigma, kGain, kReadNoise, 3, nullptr, 0), 1);
    }
}
