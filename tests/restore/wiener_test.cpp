#include "corvane/restore/wiener.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/restore/wiener_filter.h"
#include "tests/restore/field.h"
#include "tests/support/plain.h"
#include "tests/support/plain_transform.h"
#include "tests/support/progress_window.h"
#include "tests/support/storage.h"

using namespace corvane::test;

namespace {

/// What the filter makes of a part of an image; one that begins before it begins with it instead.
Plain Filtered(const Plain& image, double sigma, double noise, const CRect& rect)
{
    const int w = rect.Width();
    const int h = rect.Height();
    const int left = std::max(static_cast<int>(rect.left), 0);
    const int top = std::max(static_cast<int>(rect.top), 0);
    const int n = static_cast<int>(std::pow(2.0, std::ceil(std::log2(w))));
    const int m = static_cast<int>(std::pow(2.0, std::ceil(std::log2(h))));
    const double s = sigma * 0.707106781373095;
    NumberRows blur(m, std::vector<Number>(n));
    for (int y = 0; y < m; ++y) {
        for (int x = 0; x < n; ++x) {
            const double dx = x > n / 2 ? x - n : x;
            const double dy = y > m / 2 ? y - m : y;
            blur[y][x] = std::exp(-(dx * dx + dy * dy) * 0.5 / s / s) * 159.15507752443827;
        }
    }
    blur = PlainTransform(blur, -1.0);
    double most = 0.0;
    for (const auto& row : blur) {
        for (const Number& v : row) {
            most = std::max(most, std::norm(v));
        }
    }
    Plain result = image;
    for (int p = 0; p < image.planes; ++p) {
        NumberRows grid(m, std::vector<Number>(n));
        for (int y = 0; y < m; ++y) {
            for (int x = 0; x < n; ++x) {
                const int fromX = left + (x < w ? x : 2 * w - 1 - x);
                const int fromY = top + (y < h ? y : 2 * h - 1 - y);
                const bool isInside = fromX < image.width && fromY < image.height;
                grid[y][x] = image.To256(isInside ? image.At(fromX, fromY, p) : 0.0, p);
            }
        }
        grid = PlainTransform(grid, -1.0);
        for (int y = 0; y < m; ++y) {
            for (int x = 0; x < n; ++x) {
                grid[y][x] *= std::conj(blur[y][x]) / (std::norm(blur[y][x]) + most * noise);
            }
        }
        grid = PlainTransform(grid, 1.0);
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                if (left + x < image.width && top + y < image.height) {
                    result.At(left + x, top + y, p) = static_cast<float>(image.ToRaw(grid[y][x].real() / (n * m), p));
                }
            }
        }
    }
    return result;
}

} // namespace

// On a grid of powers of two opposite edges meet, so the blur can be undone to the last sample.
TEST(Wiener, UndoesAnyFunctionAndKeepsTheFlux)
{
    Random random(4);
    for (const auto& [width, height] : {std::pair{5, 4}, {4, 7}, {70, 3}}) {
        PsfOfTest psf(width, height, random);
        psf.samples[static_cast<std::size_t>(height / 2 * width + width / 2)] += 500.0F; // no frequency is lost
        double sum = 0.0;
        for (const float v : psf.samples) {
            sum += v;
        }
        Field truth(64, 32);
        for (double& v : truth.v) {
            v = random.Between(90.0, 300.0);
        }
        for (std::size_t i = 0; i < psf.taps.size(); ++i) {
            psf.taps[i].weight = psf.samples[i] / sum;
        }
        const double flux = truth.v.sum();
        for (const double noise : {1e-9, 0.1}) {
            CStlImage image(-32, 64, 32, 1, 1.0, 0.0, 1);
            image.SetLevel(0, 0.0, 255.0);
            Write(Blurred(truth, psf.taps), image);
            corvane::DeblurByWiener(image, nullptr, psf.samples.data(), width, height, noise, {});
            double worst = 0.0;
            double kept = 0.0;
            for (int i = 0; i < 64 * 32; ++i) {
                const double v = image.GetPixelGrayRaw(i % 64, i / 64, 0);
                worst = std::max(worst, std::fabs(v - truth.At(i % 64, i / 64)));
                kept += v;
            }
            EXPECT_NEAR(kept / flux, 1.0, 1e-6);
            EXPECT_EQ(worst < 0.01, noise < 1e-6) << worst;
        }
    }
}

TEST(Wiener, AgreesWithThePlainForm)
{
    for (const Size size : {Size{1, 1}, {1, 7}, {9, 1}, {3, 3}, {17, 13}, {32, 16}, {45, 5}}) {
        for (const int planes : {1, 3}) {
            CStlImage image = RandomImage(size, planes, 1);
            const Plain before(image);
            ForEachRect(image, [&](CRect* rect) {
                CRect area = rect == nullptr ? CRect(0, 0, size.width, size.height) : *rect;
                area = area.Width() == size.width && area.Height() == size.height ? CRect(0, 0, size.width, size.height)
                                                                                  : area;
                for (const auto& [sigma, noise] : {std::pair{0.8, 0.0}, {1.7, 1e-2}, {9.0, 0.3}}) {
                    SCOPED_TRACE(testing::Message() << size.width << " x " << size.height << " sigma " << sigma);
                    CImgWiener result(image);
                    ASSERT_EQ(result.Do(sigma, noise, rect, 0), 1);
                    const bool isEmpty = area.Width() <= 0 || area.Height() <= 0;
                    const Plain expected = isEmpty ? before : Filtered(before, sigma, noise, area);
                    // In single precision the transforms leave 1e-6 of the largest sample, or of the noise they lift.
                    EXPECT_TRUE(Agree(result, expected, 0, noise == 0.0 ? 2e-3 : 2e-4));
                    EXPECT_EQ(result.GetLevelMin(0), image.GetLevelMin(0));
                    EXPECT_EQ(result.GetLevelRange(0), image.GetLevelRange(0));
                }
            });
        }
    }
}

TEST(Wiener, ReportsItsStepsAndIgnoresEsc)
{
    ProgressWindow window;
    CImgWiener image(RandomImage({20, 10}, 3, 1));
    image.SetProgressHandle(window.Handle());
    PostMessageA(window.Handle(), WM_KEYDOWN, VK_ESCAPE, 0);
    CRect rect(2, 2, 9, 9);
    ASSERT_EQ(image.Do(1.0, 0.1, &rect, 1), 1);
    std::vector<int> steps{5, 10, 10};
    for (int p = 0; p < 3; ++p) {
        steps.insert(steps.end(), {5, 25, 25, 25, 10});
    }
    std::vector<std::string> expected = Counted("Applying Wiener filter...", 300, steps);
    expected.insert(expected.begin(), "4:Initializing...");
    EXPECT_EQ(window.Take(), expected);
    ASSERT_EQ(image.Do(1.0, 0.1, nullptr, 0), 1);
    EXPECT_TRUE(window.Take().empty());
}

TEST(Wiener, RefusesOnlyWhatCannotBeHad)
{
    CImgWiener image(RandomImage({20, 10}, 3, 1));
    for (CRect rect : {CRect(std::numeric_limits<int>::min(), 0, 0, 2), CRect(0, 0, 1 << 28, 1 << 20)}) {
        EXPECT_EQ(image.Do(1.0, 0.1, &rect, 0), 0);
    }
    const TightMemory memory(1 << 20); // for samples; the work takes more, and has it
    EXPECT_EQ(CImgWiener(RandomImage({300, 300}, 1, 1)).Do(1.0, 0.1, nullptr, 0), 1);
}
