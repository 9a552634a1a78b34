#pragma once

namespace corvane::demosaic {

/// The rows about a row of a mosaic, split so that the kernels need not know the pattern.
///
/// In the row itself red or blue pixels take turns with green ones. `chroma` has the columns of the former, `green`
/// those of the latter: green[k][i] lies left of chroma[k][i] and green[k][i + 1] right of it. So in the rows at an odd
/// distance, which hold the other colour, `chroma` points at green samples and `green` at those of the other colour.
struct SplitRows {
    static constexpr int kReach = 3; ///< rows from -kReach to kReach

    const float* chromaRows[2 * kReach + 1];
    const float* greenRows[2 * kReach + 1];
    /// Green where a row has red or blue, as `MakeGreen` made it: along chroma in even rows, along green in odd ones.
    const float* madeRows[2 * kReach + 1];

    const float* Chroma(int row) const { return chromaRows[row + kReach]; }
    const float* Green(int row) const { return greenRows[row + kReach]; }
    const float* Made(int row) const { return madeRows[row + kReach]; }
};

/// What is made of a row: for its red and blue pixels, green and the other colour; for its green ones, the row's own
/// red or blue and the other colour. Indices are those of `SplitRows`.
struct MadeColours {
    float* greenAtChroma;
    float* otherAtChroma;
    float* ownAtGreen;
    float* otherAtGreen;
};

/// Makes green at the red or blue pixels `first` to before `end` of a row, which may lie beyond its ends.
void MakeGreen(const SplitRows& rows, int first, int end, float* green);

/// @name Make colours of `count` red or blue pixels from 0 on, and of as many green ones from `firstGreen` [0, 1] on
/// `MakeEdgeAware` needs the green that `MakeGreen` made two pixels beyond both ends.
/// @{
void MakeBilinear(const SplitRows& rows, int firstGreen, int count, const MadeColours& made);
void MakeLinear(const SplitRows& rows, int firstGreen, int count, const MadeColours& made);
void MakeEdgeAware(const SplitRows& rows, int firstGreen, int count, const MadeColours& made);
/// @}

} // namespace corvane::demosaic
