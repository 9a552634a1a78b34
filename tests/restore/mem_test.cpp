#include "corvane/restore/mem.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/restore/mem_engine.h"
#include "tests/restore/field.h"
#include "tests/restore/interrupted.h"

using namespace corvane;
using namespace corvane::test;

namespace {

constexpr double kBlur = 1.5;
constexpr double kNoise = 10.0;
constexpr int kSize = 128;

/// With a function that has its centre on a sample.
int RestoreOnGrid(Field& field, int iterations)
{
    const std::vector<float> psf = GaussPsf(kBlur, 63);
    std::vector<float> plane(std::begin(field.v), std::end(field.v));
    const MemJob job{.width = field.width,
                     .height = field.height,
                     .psf = psf.data(),
                     .psfWidth = 63,
                     .psfHeight = 63,
                     .variance = kNoise * kNoise,
                     .iterations = iterations};
    const int status = RestoreByEntropy(plane.data(), job, {}, 0);
    std::copy(plane.begin(), plane.end(), std::begin(field.v));
    return status;
}

} // namespace

TEST(Mem, FitsTheDataToTheNoiseAndComesCloserToTheTruth)
{
    Random random(12);
    const Field truth = StarField(kSize, 11);
    const Field data = Exposed(Blurred(truth, GaussTaps(kBlur)), 0.0, kNoise, random);
    Field result = data;
    ASSERT_EQ(RestoreOnGrid(result, 200), kMemDone);
    EXPECT_LT(RmsError(result, truth), 0.5 * RmsError(data, truth)); // with the best constant, Wiener leaves 0.78
    const Field model = Blurred(result, GaussTaps(kBlur));
    double chiSquare = 0.0; // away from the edges, beyond which only the engine knows the light
    for (int i = 0; i < 108 * 108; ++i) {
        const std::size_t at = data.Index(10 + i % 108, 10 + i / 108);
        chiSquare += std::pow((model.v[at] - data.v[at]) / kNoise, 2.0) / (108.0 * 108.0);
    }
    EXPECT_NEAR(chiSquare, 1.0, 0.04);
    for (const double scale : {1e-3, 1.0, 1e4}) { // against the noise
        for (const int iterations : {1, 30}) {
            Field other = data;
            other.v *= scale;
            RestoreOnGrid(other, iterations);
            EXPECT_GT(other.v.min(), 0.0) << scale << ' ' << iterations;
            EXPECT_NEAR(other.v.sum() / data.v.sum() / scale, 1.0, 0.25) << scale << ' ' << iterations;
        }
    }
}

TEST(Mem, TakesAnyFunctionByItsMiddle)
{
    Random random(12);
    for (const auto& [width, height] : {std::pair{5, 4}, {4, 7}}) {
        const PsfOfTest psf(width, height, random);
        const Field truth = StarField(kSize, 11);
        const Field data = Exposed(Blurred(truth, psf.taps), 0.0, kNoise, random);
        CStlImage image(-32, kSize, kSize, 1, 1.0, 0.0, 1);
        Write(data, image);
        const MemJob job{.psf = psf.samples.data(),
                         .psfWidth = width,
                         .psfHeight = height,
                         .isPsfCentred = true,
                         .variance = kNoise * kNoise,
                         .iterations = 200};
        ASSERT_EQ(RestoreByEntropy(image, nullptr, job, {}), Restored::kDone);
        Field result = data;
        for (int i = 0; i < kSize * kSize; ++i) {
            result.v[i] = image.GetPixelGrayRaw(i % kSize, i / kSize, 0);
        }
        EXPECT_LT(RmsError(result, truth), 0.5 * RmsError(data, truth));
    }
}

TEST(Mem, LeavesAFaintFieldItsFlux)
{
    CImgMem image(RandomImage({24, 18}, 1, 3));
    for (const auto& [mean, expected] : {std::pair{47.0, 47.0}, {1e-6, 1e-6}, {0.0, 1000.0}}) {
        for (const int iterations : {0, 5}) {
            Write(Field(24, 18, mean), image);
            ASSERT_EQ(image.Do(kBlur, 1000.0, iterations, nullptr, 0), 1);
            EXPECT_NEAR(image.GetPixelGrayRaw(3, 4, 0), expected, 1e-5 * expected) << iterations;
        }
    }
}

TEST(Mem, ReportsWhatItDoes)
{
    CImgMem image(StarFrame(24, 18, 1));
    std::string report;
    const corvane::Run run{.diagnostics = [&](const Diagnostic& d) { report += ReportOf(std::get<RestoreEvent>(d)); }};
    image.Do(kBlur, 1e-3, 1, nullptr, false, run);
    const std::string numbers = std::string(report).substr(0, report.find("factor"));
    EXPECT_EQ(numbers, "array dimension                       4096\nnumber of data                         432\n"
                       "number of unknowns                    4096\nnumber of work-arrays                   10\n");
    EXPECT_NE(report.find("\nfactor to o(1)-scale    "), std::string::npos);
    EXPECT_NE(report.find("\nmain iter                    1     g function "), std::string::npos) << report;
    EXPECT_EQ(image.Do(kBlur, 1e-30, 1, nullptr, false, {}), Restored::kNotANumber);
}

TEST(Mem, ReadsAStatusDigitByDigit)
{
    const Restored ends[] = {Restored::kDone, Restored::kNoMemory, Restored::kCancelled};
    const int cases[][2] = {{0, 0}, {5, 0}, {9690, 0}, {15, 1}, {4, 1}, {7, 1}, {8, 2}, {18, 2}, {81, 1}, {860, 2}};
    for (const auto& [status, end] : cases) {
        EXPECT_EQ(EndOfStatus(status), ends[end]) << status;
    }
}

TEST(Mem, TellsItsProgressAndStopsForEsc)
{
    const auto restore = [](CImgMem& image) { return image.Do(kBlur, 1e-3, 2, nullptr, 1); };
    const std::string end = " (press ESC to cancel)";
    const auto texts = [&](const std::string& plane, const std::string& applying) {
        return std::vector<std::string>{"0:Starting Maximum Entropy processing" + plane,
                                        "0:Initializing Maximum Entropy processing" + plane + end, applying + "1" + end,
                                        applying + "2" + end, "2:null"};
    };
    EXPECT_EQ(TextsOf(CImgMem(StarFrame(12, 8, 1)), restore), texts("", "0:Applying Maximum Entropy "));
    std::vector<std::string> expected;
    for (const std::string plane : {" for Plane 1", " for Plane 2", " for Plane 3"}) {
        const std::vector<std::string> more = texts(plane, "0:Applying Maximum Entropy" + plane + ": ");
        expected.insert(expected.end(), more.begin(), more.end());
    }
    EXPECT_EQ(TextsOf(CImgMem(StarFrame(12, 8, 3)), restore), expected);
    EXPECT_EQ(ExpectCancellable<CImgMem>(StarFrame(24, 18, 3), restore), 3 * 27);
}

TEST(Mem, TakesRectanglesSmallImagesAndWhatIsNoNumber)
{
    const CStlImage source = StarFrame(24, 18, 3);
    ExpectOnlyInside<CImgMem>(source, [](CImgMem& image, CRect* rect) { return image.Do(kBlur, 5.0, 3, rect, 0); });
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    for (const double odd : {0.0, kNaN, 1e300}) {
        CImgMem result(source);
        EXPECT_EQ(result.Do(kBlur, odd, 3, nullptr, 0), 1);
        EXPECT_EQ(Samples(result), Samples(source));
        EXPECT_EQ(result.Do(odd, 5.0, 3, nullptr, 0), 1);
    }
    for (const Size size : {Size{1, 1}, {1, 7}, {97, 1}}) {
        CImgMem small(RandomImage(size, 1, 3));
        EXPECT_EQ(small.Do(kBlur, 20.0, 5, nullptr, 0), 1);
        EXPECT_GT(small.GetPixelGrayRaw(0, 0, 0), 0.0F);
        small.SetPixelGrayRaw(0, 0, static_cast<float>(kNaN), 0);
        EXPECT_EQ(small.Do(kBlur, 20.0, 5, nullptr, 0), 1);
    }
}
