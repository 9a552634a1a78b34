#pragma once

#include <array>
#include <vector>

namespace corvane {

/// A colour for each display value; see `CImgFalseColor`.
class ColourMap {
public:
    /// Values are coloured in blocks of at most so many.
    static constexpr int kBlock = 256;
    /// Components of the colours of a block, 0 to 255.
    using Block = std::array<std::array<float, kBlock>, 3>;

    /// The map of a number; the grey one for numbers that have none.
    static const ColourMap& Find(int number);

    /// Colours `count` values, the map run through `cycles` times.
    void Colour(const float* values, int count, int cycles, Block& colours) const;

private:
    using Rgb = std::array<double, 3>;

    ColourMap(std::vector<Rgb> controls, double perControl, double width, double perWidth);
    static ColourMap Heat();

    std::array<std::vector<double>, 3> controls_; ///< of each component; the last one twice, for it has no successor
    double perControl_;                           ///< control colours for one display value
    double width_;                                ///< display values from one control colour to the next
    double perWidth_;                             ///< part of the way to the next that one display value is
};

} // namespace corvane
