#pragma once

/// A linear transform of the plane: (x, y) becomes (m11 x + m12 y, m21 x + m22 y).
struct tagMATRIX2_2 {
    double m11;
    double m12;
    double m21;
    double m22;
};
