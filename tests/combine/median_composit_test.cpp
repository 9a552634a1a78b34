#include "corvane/combine/median_composit.h"

#include <cmath>

#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

constexpr double kDegree = 0.017453292522222223;

constexpr void (CImgMedianComposit::*kMethods[])() = {&CImgMedianComposit::Calc, &CImgMedianComposit::CalcClipping,
                                                      &CImgMedianComposit::AddAvrCalcClipping};

/// What rows of one pixel become.
float StatisticOf(std::size_t method, const std::vector<double>& values)
{
    const int valid = 1;
    float result = 0.0F;
    std::vector<corvane::CombineLine> lines;
    for (const double& v : values) {
        lines.push_back({&v, &valid});
    }
    corvane::RowCombiner combiner(static_cast<corvane::CombineMethod>(method), corvane::Coverage::kAll,
                                  std::vector(values.size(), 1.0), 0.0);
    combiner.Combine(lines.data(), 1, {&result});
    return result;
}

/// A frame and how it is placed.
struct Frame {
    CStlImage image;
    double dx = 0.0;
    double dy = 0.0;
    double angle = 0.0;
};

/// What a frame gives where it has nothing.
double Undefined(const CStlImage& image)
{
    const int bits = image.GetOrgBitsPixel();
    const double byBits = bits == -64 || bits == -32 || bits == 32 ? -2147483648.0 : bits == 16 ? -32768.0 : 0.0;
    return image.IsBlankUsed() ? image.GetBlank() : byBits;
}

/// One row of the composite in its plain form; frames change as Store changes them.
void PlainRow(Plain& target, int row, std::vector<Frame>& frames, std::size_t method)
{
    std::vector<double> outside; // of each frame, before the row changes it
    for (const Frame& frame : frames) {
        outside.push_back(Undefined(frame.image));
    }
    for (int i = 0; i < target.width * target.planes; ++i) {
        std::vector<double> values;
        const double* invalid = nullptr;
        values.reserve(frames.size());
        for (auto& [image, dx, dy, angle] : frames) {
            int isOutside = 0;
            values.push_back(image.GetPixelGrayRaw(i % target.width, row, dx, dy, std::sin(angle * kDegree),
                                                   std::cos(angle * kDegree), 1.0, i / target.width,
                                                   outside[values.size()], 0, &isOutside, nullptr, nullptr));
            image.SetBlankUsed(image.IsBlankUsed() || isOutside);
            const bool isBlank = image.IsBlankUsed() && std::trunc(values.back()) == image.GetBlank();
            invalid = isOutside || isBlank ? &values.back() : invalid;
        }
        target.At(i % target.width, row, i / target.width) =
            invalid ? static_cast<float>(*invalid) : StatisticOf(method, values);
    }
}

/// Stacks the frames both ways and compares target and frames.
void CheckFrames(const std::vector<Frame>& frames, Size size, int planes)
{
    for (const std::size_t method : {0, 1, 2}) {
        SCOPED_TRACE(testing::Message() << frames.size() << " frames, method " << method);
        CStlImage target = RandomImage(size, planes, 51);
        Plain expected(target);
        std::vector<Frame> own(frames);
        std::vector<Frame> other(frames);
        CImgMedianComposit composite(&target);
        for (int y = 0; y < size.height; ++y) {
            for (Frame& frame : own) {
                composite.Store(&frame.image, y, frame.dx, frame.dy, frame.angle);
            }
            (composite.*kMethods[method])();
            PlainRow(expected, y, other, method);
        }
        ASSERT_TRUE(Agree(target, expected));
        for (std::size_t i = 0; i < frames.size(); ++i) {
            ASSERT_EQ(own[i].image.IsBlankUsed(), other[i].image.IsBlankUsed());
        }
    }
}

} // namespace

TEST(MedianComposit, PlacedFramesWithBlanksAndDifferentSizes)
{
    const double shifts[] = {0.0, 1.0, -2.0, 0.37, -0.5, 1e-17};
    const int bits[] = {16, 8, -32, -64, 32, 16};
    for (const int planes : {1, 3}) {
        std::vector<Frame> frames;
        for (int i = 0; i < 6; ++i) {
            const Size size{19 + i % 3, 14 - i % 2};
            CStlImage image = RandomImage(size, i == 4 ? 1 : planes, static_cast<std::uint64_t>(i) + 70);
            image.SetStdCtr(9.25 + i, 6.5);
            image.SetOrgBitsPixel(bits[i]);
            if (i == 1) {
                SprinkleOddities(image, 71);
            } else if (i == 2) {
                Sprinkle(image, {0.5F, -0.5F}, 72); // blank from the first pixel outside on: the unset value is 0
            }
            frames.push_back({image, shifts[i], shifts[5 - i], i % 2 == 0 ? 0.0 : 3.5 * i});
        }
        CheckFrames(frames, {19, 14}, planes);
        Sprinkle(frames[2].image, {0.5F}, 73);
        CheckFrames({{frames[2].image, -4.0}, {frames[0].image}}, {19, 2}, planes); // outside at the end of row 0
        CheckFrames({frames.begin() + 2, frames.begin() + 4}, {641, 3}, planes);
    }
}

TEST(MedianComposit, ReportsThroughTheTarget)
{
    ProgressWindow window;
    CStlImage target = RandomImage({3, 4}, 1, 1);
    target.SetProgressHandle(window.Handle());
    CStlImage frame = RandomImage({3, 4}, 1, 2);
    {
        CImgMedianComposit composite(&target);
        for (const int y : {3, 1, 0, 2}) {
            composite.Store(&frame, y, 0.0, 0.0, 0.0);
            composite.Calc();
        }
        composite.Store(&frame, 0, 0.0, 0.0, 0.0); // left over
    }
    EXPECT_EQ(window.Take(), Counted("Processing median composite...", 4, {1, 1, 1, 1}));
    EXPECT_EQ(Samples(target), Samples(frame));
}
