#pragma once

#include <cstddef>
#include <vector>

namespace corvane::stars {

/// Values at the nodes of a lattice, and between four by four of them cubics through the inner ones with the slopes of
/// their neighbours (E. Catmull and R. Rom 1974). Two nodes must lie beyond what is asked for, or one just there.
class Lattice {
public:
    /// Nodes from (x, y) on [pixels].
    Lattice(double x, double y, double stepX, double stepY, int columns, int rows);

    int Columns() const { return columns_; }
    int Rows() const { return rows_; }
    double& Value(int column, int row) { return values_[static_cast<std::size_t>(row) * columns_ + column]; }

    /// Adds what lies between the nodes to `count` values along a row of samples.
    void AddRow(double y, int count, double* values) const;

private:
    double x_;
    double y_;
    double stepX_;
    double stepY_;
    int columns_;
    int rows_;
    std::vector<double> values_;
};

} // namespace corvane::stars
