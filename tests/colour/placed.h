#pragma once

#include <cmath>

#include "tests/combine/aligned.h"
#include "tests/support/progress_window.h"

namespace corvane::test {

/// Where a frame lies.
struct Place {
    double dx;
    double dy;
    double angle;
    double scale = 1.0;

    double Sine() const { return std::sin(angle * 0.017453292522222223); }
    double Cosine() const { return std::cos(angle * 0.017453292522222223); }
};

/// Places for three frames each, of all kinds that samplers know.
inline const Place kPlaces[][3] = {{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
                                   {{3, -2, 0}, {-4, 5, 0, 0.5}, {40, 1, 0}},
                                   {{0.25, 1.5, 0}, {-2.75, 0.5, 12.5, 1.25}, {1, 2, 90}}};

/// A frame of an awkward size with a centre and levels of its own and samples of all kinds.
inline CStlImage OddFrame(int planes, std::uint64_t seed, bool finite = false)
{
    CStlImage frame = RandomImage({21 + static_cast<int>(seed), 16}, planes, seed);
    frame.SetStdCtr(9.5, 7.25);
    frame.SetLevel(0, 3.5 * static_cast<double>(seed), 250.0 - 11.25 * static_cast<double>(seed));
    SprinkleOddities(frame, seed + 7, finite);
    return frame;
}

/// The raw sample that a frame has there, or -77.
inline double RawAt(int x, int y, const CStlImage& frame, const Place& at, int plane)
{
    return frame.GetPixelGrayRaw(x, y, at.dx, at.dy, at.Sine(), at.Cosine(), 1.0, plane, -77.0, 0, nullptr, nullptr,
                                 nullptr);
}

/// The composite of three frames with -77 outside of them; the last arguments are those behind the outside value.
template <class Result, class... Arguments>
Result Combined(const CStlImage& before, CStlImage (&f)[3], const Place (&at)[3], CRect* rect, Arguments... last)
{
    Result result(before);
    result.Do(&f[0], at[0].dx, at[0].dy, at[0].angle, &f[1], at[1].dx, at[1].dy, at[1].angle, &f[2], at[2].dx, at[2].dy,
              at[2].angle, rect, -77, last...);
    return result;
}

/// Runs a composite of a frame, a second that lies nowhere and an empty one, and checks what it reports and leaves.
template <class Result, class... Arguments>
void ExpectHarmless(const char* text, Arguments... last)
{
    ProgressWindow window;
    CStlImage frames[] = {RandomImage({4, 3}, 1, 1), RandomImage({4, 3}, 3, 1), CStlImage()};
    CStlImage before = RandomImage({6, 5}, 3, 2);
    before.SetProgressHandle(window.Handle());
    const Place nowhere[] = {{NAN, 0, 0}, {0, -1e300, HUGE_VAL}, {0, 0, 0}};
    EXPECT_EQ(Samples(Combined<Result>(before, frames, nowhere, nullptr, last...)), std::vector<float>(90, -77.0F));
    EXPECT_EQ(window.Take(), Counted(text, 5, {1, 1, 1, 1, 1}));
}

} // namespace corvane::test
