#include "corvane/tone/tone_curve.h"

#include "tests/tone/mapped.h"

using namespace corvane::test;

namespace {

using Table = std::vector<float>;

struct Open : CImgToneCurve {
    using CImgToneCurve::CalcToneCurve;
};

double Curved(const Table& curve, double x)
{
    const double last = static_cast<double>(curve.size()) - 1.0;
    const auto entry = [&](double i) { return static_cast<double>(curve[static_cast<std::size_t>(i)]); };
    if (x >= 0.0 && x <= 255.0) {
        const double t = last * x * 0.00392156862745098;
        const double i = std::trunc(t);
        const double f = t - i;
        return i > last ? entry(last) * 255.0 : (f + (1.0 - f)) * entry(i) * 255.0;
    }
    const double a = x < 0.0 ? entry(0) : entry(last - 1.0);
    const double b = x < 0.0 ? entry(1) : entry(last);
    const double slope = (b - a) * last;
    if (std::isnan(x) || a == b) {
        return std::isnan(x) ? x : b * 255.0;
    }
    return x < 0.0 ? (slope < 0.0 ? slope : 0.0) * x : (slope > 0.0 ? slope : 0.0) * (x - b * 255.0) + b * 255.0;
}

Table RandomCurve(int n, std::uint64_t seed)
{
    Random random(seed);
    Table curve(static_cast<std::size_t>(n));
    std::generate(curve.begin(), curve.end(), [&] { return static_cast<float>(random.Between(-0.1, 1.1)); });
    return curve;
}

/// Curves whose ends rise, fall and are level, and that begin and end on and off the corners.
std::vector<Table> Curves(int n)
{
    std::vector<Table> curves{RandomCurve(n, 1), RandomCurve(n, 2), Table(static_cast<std::size_t>(n), 0.5F)};
    for (const auto& [from, to] : {std::pair{0.0F, 1.0F}, {0.25F, 0.75F}, {1.0F, 0.0F}, {0.1F, 1.3F}}) {
        curves.emplace_back();
        for (int i = 0; i < n; ++i) {
            curves.back().push_back(from + (to - from) * static_cast<float>(i) / static_cast<float>(n - 1));
        }
    }
    return curves;
}

} // namespace

TEST(ToneCurve, EqualsThePlainForm)
{
    for (const int n : {2, 3, 256}) {
        const std::vector<Table> curves = Curves(n);
        for (std::size_t i = 0; i < curves.size(); ++i) {
            SCOPED_TRACE(testing::Message() << "curve " << i << " of " << n << " entries");
            const Table* of[4];
            const float* pointers[4];
            for (std::size_t k = 0; k < 4; ++k) {
                of[k] = &curves[(i + k * k) % curves.size()];
                pointers[k] = of[k]->data();
            }
            ExpectMapped<CImgToneCurve>(
                nullptr,
                [&](CImgToneCurve& operation, CStlImage* source, CRect* rect) {
                    operation.Do(pointers, n, source, rect, 0);
                },
                [&](double v, int p, const Plain& image) {
                    const double s = image.To256(v, p);
                    return image.ToRaw(Curved(*of[0], image.Colour() ? Curved(*of[p + 1], s) : s), p);
                });
        }
    }
}

TEST(ToneCurve, KeepsSamplesOnTheirSideOfAStep)
{
    for (const int n : {2, 52, 256, 4096}) {
        const Table curve = RandomCurve(n, 3);
        const float* const curves[] = {curve.data()};
        ExpectSteps<CImgToneCurve>(
            n - 1.0,
            [&](CImgToneCurve& operation, CStlImage* source, CRect* rect) { operation.Do(curves, n, source, rect, 0); },
            [&](double v, int p, const Plain& image) { return image.ToRaw(Curved(curve, image.To256(v, p)), p); });
    }
}

TEST(ToneCurve, IsSteppedAndNeedsTwoEntries)
{
    EXPECT_EQ(Open().CalcToneCurve(Table{0.0F, 1.0F}.data(), 2, 127.5), 0.0);
    EXPECT_EQ(Open().CalcToneCurve(Table{0.5F}.data(), 1, 77.0), 77.0);
    EXPECT_EQ(Open().CalcToneCurve(nullptr, 2, 5.0), 5.0);
}

TEST(ToneCurve, CountsTheRowsOfTheWholeImageAndNeedsEveryCurve)
{
    ProgressWindow window;
    CStlImage source = RandomImage({20, 70}, 3, 1);
    source.SetProgressHandle(window.Handle());
    CImgToneCurve operation(source);
    const Table curve{0.0F, 1.0F};
    const float* curves[] = {curve.data(), curve.data(), curve.data(), curve.data()};
    CRect rect(0, 60, 5, 99);
    operation.Do(curves, 2, &source, &rect, 1);
    EXPECT_EQ(window.Take(), Counted("Adjusting Curves...", 210, std::vector<int>(30, 1)));
    const Plain before(operation);
    operation.Do(curves, 1, &source, nullptr, 1);
    operation.Do(nullptr, 2, &source, nullptr, 1);
    curves[3] = nullptr;
    operation.Do(curves, 2, &source, nullptr, 1);
    EXPECT_TRUE(Agree(operation, before) && window.Take().empty());
}
