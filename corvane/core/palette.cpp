#include "corvane/core/palette.h"

#include <algorithm>

namespace corvane {
namespace {

constexpr int kSide = 32;
constexpr std::size_t kColours = 256;

using Cells = std::vector<std::uint32_t>;

/// A box of cells: inclusive bounds for red, green and blue.
struct Box {
    std::array<int, 3> first{0, 0, 0};
    std::array<int, 3> last{kSide - 1, kSide - 1, kSide - 1};
    std::uint64_t pixels = 0;

    int Length(int axis) const { return last[axis] - first[axis]; }
    int LongestAxis() const
    {
        return static_cast<int>(
            std::max_element(kAxes.begin(), kAxes.end(), [this](int a, int b) { return Length(a) < Length(b); }) -
            kAxes.begin());
    }
    /// How much is gained by halving it; 0 for a single cell.
    std::uint64_t Weight() const { return pixels * static_cast<std::uint64_t>(Length(LongestAxis())); }

    static constexpr std::array<int, 3> kAxes{0, 1, 2};
};

template <class Visit>
void ForEachCell(const Box& box, Visit visit)
{
    for (int r = box.first[0]; r <= box.last[0]; ++r) {
        for (int g = box.first[1]; g <= box.last[1]; ++g) {
            for (int b = box.first[2]; b <= box.last[2]; ++b) {
                visit(std::array<int, 3>{r, g, b}, static_cast<std::size_t>(r << 10 | g << 5 | b));
            }
        }
    }
}

/// Draws the bounds in to the cells that hold pixels, and counts those.
void Fit(Box& box, const Cells& cells)
{
    Box fitted{box.last, box.first, 0};
    ForEachCell(box, [&](const std::array<int, 3>& at, std::size_t cell) {
        if (cells[cell] == 0) {
            return;
        }
        for (const int axis : Box::kAxes) {
            fitted.first[axis] = std::min(fitted.first[axis], at[axis]);
            fitted.last[axis] = std::max(fitted.last[axis], at[axis]);
        }
        fitted.pixels += cells[cell];
    });
    if (fitted.pixels > 0) {
        box = fitted;
    }
}

/// Halves a box where half of its pixels lie on either side, and returns the upper part.
Box Halve(Box& box, const Cells& cells)
{
    const int axis = box.LongestAxis();
    std::array<std::uint64_t, kSide> slices{};
    ForEachCell(box, [&](const std::array<int, 3>& at, std::size_t cell) { slices[at[axis]] += cells[cell]; });
    int cut = box.first[axis];
    std::uint64_t below = slices[cut];
    while (cut + 1 < box.last[axis] && below * 2 < box.pixels) {
        below += slices[++cut];
    }
    Box upper = box;
    upper.first[axis] = cut + 1;
    box.last[axis] = cut;
    Fit(box, cells);
    Fit(upper, cells);
    return upper;
}

/// The mean colour of a box's pixels, each taken at the middle of its cell.
RGBQUAD MeanColour(const Box& box, const Cells& cells)
{
    std::array<std::uint64_t, 3> sum{};
    ForEachCell(box, [&](const std::array<int, 3>& at, std::size_t cell) {
        for (const int axis : Box::kAxes) {
            sum[axis] += static_cast<std::uint64_t>(at[axis] * 8 + 4) * cells[cell];
        }
    });
    const std::uint64_t pixels = std::max<std::uint64_t>(box.pixels, 1);
    const auto mean = [&](int axis) { return static_cast<BYTE>(sum[axis] / pixels); };
    return {mean(2), mean(1), mean(0), 0};
}

std::vector<Box> CutIntoBoxes(const Cells& cells)
{
    std::vector<Box> boxes(1);
    boxes.reserve(kColours);
    Fit(boxes.front(), cells);
    while (boxes.size() < kColours) {
        const auto heaviest = std::max_element(boxes.begin(), boxes.end(),
                                               [](const Box& a, const Box& b) { return a.Weight() < b.Weight(); });
        if (heaviest->Weight() == 0) {
            break; // fewer colours than the palette has room for
        }
        boxes.push_back(Halve(*heaviest, cells));
    }
    return boxes;
}

} // namespace

std::array<RGBQUAD, 256> ChoosePalette(std::vector<std::uint32_t>& cells)
{
    const std::vector<Box> boxes = CutIntoBoxes(cells);
    std::array<RGBQUAD, 256> palette{};
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        palette[i] = MeanColour(boxes[i], cells);
        ForEachCell(boxes[i],
                    [&](const std::array<int, 3>&, std::size_t cell) { cells[cell] = static_cast<std::uint32_t>(i); });
    }
    return palette;
}

} // namespace corvane
