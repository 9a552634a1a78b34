#include "corvane/colour/mosaic_rows.h"

#include <algorithm>
#include <cmath>

#include "corvane/colour/local_slope.h"

namespace corvane::demosaic {
namespace {

double Sum(double a, double b)
{
    return a + b;
}

/// Some samples of a colour: what they lie between, and their mean.
struct Samples {
    Samples(double a, double b) : least(std::min(a, b)), most(std::max(a, b)), mean(0.5 * (a + b)) {}
    /// Those at i and i + 1 of two rows.
    Samples(const float* above, const float* below, int i)
        : Samples(Samples(above[i], above[i + 1]), Samples(below[i], below[i + 1]))
    {}
    Samples(const Samples& a, const Samples& b)
        : least(std::min(a.least, b.least)), most(std::max(a.most, b.most)), mean(0.5 * (a.mean + b.mean))
    {}

    double least;
    double most;
    double mean;
};

/// A colour where green is known, from the nearest samples of the colour, green there, and the slope of the colour over
/// green. It goes beyond the samples only as far as green goes beyond its own.
double MadeColour(const Samples& nearest, const Samples& greens, double green, double slope)
{
    const double made = nearest.mean + slope * (green - greens.mean);
    const double least = nearest.least - slope * std::max(greens.least - green, 0.0);
    const double most = nearest.most + slope * std::max(green - greens.most, 0.0);
    return std::min(std::max(made, least), most);
}

/// Writes function(i) for `count` samples from `first` on.
template <class Function>
void Fill(int first, int count, float* __restrict out, Function function)
{
    for (int i = first; i < first + count; ++i) {
        out[i] = static_cast<float>(function(i));
    }
}

void MakeGreenBlock(const SplitRows& rows, int first, int count, float* __restrict green)
{
    const float* const chroma[] = {rows.Chroma(-2) + first, rows.Chroma(0) + first, rows.Chroma(2) + first};
    const float* const beside[] = {rows.Green(-2) + first, rows.Green(0) + first, rows.Green(2) + first};
    const float* const above[] = {rows.Chroma(-3) + first, rows.Chroma(-1) + first, rows.Chroma(1) + first,
                                  rows.Chroma(3) + first};
    const auto guide = [&](int row, int i) { return chroma[row][i]; };
    SlopeSums<3> inRow;
    inRow.Take(count, guide, [&](int row, int i) { return Sum(beside[row][i], beside[row][i + 1]); });
    SlopeSums<3> inColumn;
    inColumn.Take(count, guide, [&](int row, int i) { return Sum(above[row][i], above[row + 1][i]); });
    for (int i = 0; i < count; ++i) {
        const double twice = 2.0 * chroma[1][i];
        const double standsOutInRow = twice - Sum(chroma[1][i - 1], chroma[1][i + 1]);
        const double standsOutInColumn = twice - Sum(chroma[0][i], chroma[2][i]);
        // The slopes are those of sums of two, so an eighth is half of the mean of two.
        const double byRow = 0.5 * Sum(beside[1][i], beside[1][i + 1]) + 0.125 * inRow.At<-1, 1>(i) * standsOutInRow;
        const double byColumn = 0.5 * Sum(above[1][i], above[2][i]) + 0.125 * inColumn.At<-1, 1>(i) * standsOutInColumn;
        const double rowChange =
            std::fabs(static_cast<double>(beside[1][i]) - beside[1][i + 1]) + std::fabs(standsOutInRow);
        const double columnChange =
            std::fabs(static_cast<double>(above[1][i]) - above[2][i]) + std::fabs(standsOutInColumn);
        const double change = rowChange + columnChange;
        const double weighted = (byRow * columnChange + byColumn * rowChange) / change;
        green[i] = static_cast<float>(change > 0.0 ? weighted : 0.5 * (byRow + byColumn));
    }
}

void MakeEdgeAwareBlock(const SplitRows& rows, int first, int firstGreen, int count, const MadeColours& made)
{
    const float* const own[] = {rows.Chroma(-2) + first, rows.Chroma(0) + first, rows.Chroma(2) + first};
    const float* const ownMade[] = {rows.Made(-2) + first, rows.Made(0) + first, rows.Made(2) + first};
    const float* const other[] = {rows.Green(-3) + first, rows.Green(-1) + first, rows.Green(1) + first,
                                  rows.Green(3) + first};
    const float* const otherMade[] = {rows.Made(-3) + first, rows.Made(-1) + first, rows.Made(1) + first,
                                      rows.Made(3) + first};
    const float* const green = rows.Green(0) + first;
    SlopeSums<3> ownSums;
    ownSums.Take(
        count, [&](int row, int i) { return ownMade[row][i]; }, [&](int row, int i) { return own[row][i]; });
    SlopeSums<4> otherSums;
    otherSums.Take(
        count, [&](int row, int i) { return otherMade[row][i]; }, [&](int row, int i) { return other[row][i]; });
    Fill(0, count, made.otherAtChroma + first, [&](int i) {
        return MadeColour({other[1], other[2], i}, {otherMade[1], otherMade[2], i}, ownMade[1][i],
                          otherSums.At<-1, 2>(i));
    });
    Fill(firstGreen, count, made.otherAtGreen + first, [&](int j) {
        return MadeColour({other[1][j], other[2][j]}, {otherMade[1][j], otherMade[2][j]}, green[j],
                          otherSums.At<-1, 1>(j));
    });
    Fill(firstGreen, count, made.ownAtGreen + first, [&](int j) {
        return MadeColour({own[1][j - 1], own[1][j]}, {ownMade[1][j - 1], ownMade[1][j]}, green[j],
                          ownSums.At<-2, 1>(j));
    });
}

/// Calls work(first, count) for the blocks of a range.
template <class Work>
void ForEachBlock(int first, int end, Work work)
{
    for (; first < end; first += kBlock) {
        work(first, std::min(end - first, kBlock));
    }
}

} // namespace

void MakeGreen(const SplitRows& rows, int first, int end, float* green)
{
    ForEachBlock(first, end, [&](int begin, int count) { MakeGreenBlock(rows, begin, count, green + begin); });
}

void MakeBilinear(const SplitRows& rows, int firstGreen, int count, const MadeColours& made)
{
    const float* const above = rows.Chroma(-1);
    const float* const below = rows.Chroma(1);
    const float* const otherAbove = rows.Green(-1);
    const float* const otherBelow = rows.Green(1);
    const float* const green = rows.Green(0);
    const float* const own = rows.Chroma(0);
    Fill(0, count, made.greenAtChroma,
         [=](int i) { return 0.25 * (Sum(above[i], below[i]) + Sum(green[i], green[i + 1])); });
    Fill(0, count, made.otherAtChroma,
         [=](int i) { return 0.25 * (Sum(otherAbove[i], otherAbove[i + 1]) + Sum(otherBelow[i], otherBelow[i + 1])); });
    Fill(firstGreen, count, made.ownAtGreen, [=](int j) { return 0.5 * Sum(own[j - 1], own[j]); });
    Fill(firstGreen, count, made.otherAtGreen, [=](int j) { return 0.5 * Sum(otherAbove[j], otherBelow[j]); });
}

void MakeLinear(const SplitRows& rows, int firstGreen, int count, const MadeColours& made)
{
    const float* const own[] = {rows.Chroma(-2), rows.Chroma(0), rows.Chroma(2)};
    const float* const green[] = {rows.Green(-2), rows.Green(0), rows.Green(2)};
    const float* const greenBeside[] = {rows.Chroma(-1), rows.Chroma(1)};
    const float* const other[] = {rows.Green(-1), rows.Green(1)};
    const auto ofFour = [](const float* const* two, int i, int j) {
        return Sum(two[0][i], two[0][j]) + Sum(two[1][i], two[1][j]);
    };
    // What a pixel stands out from four of its own colour at a distance of two.
    const auto standsOut = [=](int i) {
        return 4.0 * own[1][i] - (Sum(own[1][i - 1], own[1][i + 1]) + Sum(own[0][i], own[2][i]));
    };
    Fill(0, count, made.greenAtChroma, [=](int i) {
        return 0.25 * (Sum(greenBeside[0][i], greenBeside[1][i]) + Sum(green[1][i], green[1][i + 1])) +
               0.125 * standsOut(i);
    });
    Fill(0, count, made.otherAtChroma, [=](int i) { return 0.25 * ofFour(other, i, i + 1) + 0.1875 * standsOut(i); });
    const auto inRow = [=](int j) { return Sum(green[1][j - 1], green[1][j + 1]); };
    const auto inColumn = [=](int j) { return Sum(green[0][j], green[2][j]); };
    const auto atGreen = [=](int j, double nearest, double along, double across) {
        return 0.5 * nearest + 0.125 * (5.0 * green[1][j] - ofFour(greenBeside, j - 1, j) - along + 0.5 * across);
    };
    Fill(firstGreen, count, made.ownAtGreen,
         [=](int j) { return atGreen(j, Sum(own[1][j - 1], own[1][j]), inRow(j), inColumn(j)); });
    Fill(firstGreen, count, made.otherAtGreen,
         [=](int j) { return atGreen(j, Sum(other[0][j], other[1][j]), inColumn(j), inRow(j)); });
}

void MakeEdgeAware(const SplitRows& rows, int firstGreen, int count, const MadeColours& made)
{
    std::copy_n(rows.Made(0), count, made.greenAtChroma);
    ForEachBlock(0, count, [&](int first, int size) { MakeEdgeAwareBlock(rows, first, firstGreen, size, made); });
}

} // namespace corvane::demosaic
