#include "corvane/restore/subspace.h"

#include <algorithm>
#include <cmath>

namespace corvane {

namespace {

constexpr int kDirections = Subspace::kDirections;
constexpr double kLeastLength = 1e-7; // squared, of what a direction has beside the others, below which it adds nothing
constexpr int kSweeps = 12;
constexpr int kHalvings = 60;

using Vector = Subspace::Vector;
using Matrix = Subspace::Matrix;

/// Values and vectors of a symmetric matrix; vectors are columns.
struct Eigen {
    Vector values{};
    Matrix vectors{};
};

/// Turns axes p and q so that the element between them becomes 0.
void Rotate(Matrix& a, Matrix& vectors, int p, int q)
{
    const double theta = (a[q][q] - a[p][p]) / (2.0 * a[p][q]);
    const double t = (theta < 0.0 ? -1.0 : 1.0) / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
    const double c = 1.0 / std::sqrt(t * t + 1.0);
    const double s = t * c;
    const auto turn = [=](double& x, double& y) {
        const double before = x;
        x = c * before - s * y;
        y = s * before + c * y;
    };
    for (int k = 0; k < kDirections; ++k) {
        turn(a[k][p], a[k][q]);
        turn(vectors[k][p], vectors[k][q]);
    }
    for (int k = 0; k < kDirections; ++k) {
        turn(a[p][k], a[q][k]);
    }
}

/// By rotations of two axes at a time (C. G. J. Jacobi, Crelle's Journal 30, 51, 1846).
Eigen Diagonalise(Matrix a)
{
    Eigen eigen;
    for (int i = 0; i < kDirections; ++i) {
        eigen.vectors[i][i] = 1.0;
    }
    for (int sweep = 0; sweep < kSweeps; ++sweep) {
        for (int p = 0; p < kDirections; ++p) {
            for (int q = p + 1; q < kDirections; ++q) {
                if (a[p][q] != 0.0) {
                    Rotate(a, eigen.vectors, p, q);
                }
            }
        }
    }
    for (int i = 0; i < kDirections; ++i) {
        eigen.values[i] = a[i][i];
    }
    return eigen;
}

/// The model in axes in which the metric is 1 and the curvature diagonal.
struct Diagonal {
    int count = 0;
    Matrix axes{}; ///< columns, in amounts of the directions
    Vector curvature{};
    Vector entropySlope{};
    Vector chiSlope{};
};

double Product(const Matrix& axes, int axis, const Vector& vector)
{
    double sum = 0.0;
    for (int i = 0; i < kDirections; ++i) {
        sum += axes[i][axis] * vector[i];
    }
    return sum;
}

/// Axes of length 1; those along which the directions do not differ are left out, as zeros. Directions may be of very
/// different lengths, so each is measured by its own.
Matrix UnitAxes(Matrix metric, int& count)
{
    Vector perLength{};
    for (int i = 0; i < kDirections; ++i) {
        perLength[i] = metric[i][i] > 0.0 ? 1.0 / std::sqrt(metric[i][i]) : 0.0;
    }
    for (int i = 0; i < kDirections; ++i) {
        for (int j = 0; j < kDirections; ++j) {
            metric[i][j] *= perLength[i] * perLength[j];
        }
    }
    const Eigen eigen = Diagonalise(metric);
    Matrix axes{};
    count = 0;
    for (int a = 0; a < kDirections; ++a) {
        if (eigen.values[a] > kLeastLength) {
            for (int i = 0; i < kDirections; ++i) {
                axes[i][count] = eigen.vectors[i][a] * perLength[i] / std::sqrt(eigen.values[a]);
            }
            ++count;
        }
    }
    return axes;
}

Matrix Transformed(const Matrix& matrix, const Matrix& axes)
{
    Matrix result{};
    for (int a = 0; a < kDirections; ++a) {
        for (int b = 0; b < kDirections; ++b) {
            for (int i = 0; i < kDirections; ++i) {
                for (int j = 0; j < kDirections; ++j) {
                    result[a][b] += axes[i][a] * matrix[i][j] * axes[j][b];
                }
            }
        }
    }
    return result;
}

Diagonal MakeDiagonal(const Subspace& space)
{
    Diagonal model;
    const Matrix unit = UnitAxes(space.metric, model.count);
    const Eigen eigen = Diagonalise(Transformed(space.curvature, unit));
    for (int a = 0; a < kDirections; ++a) {
        for (int i = 0; i < kDirections; ++i) {
            for (int k = 0; k < kDirections; ++k) {
                model.axes[i][a] += unit[i][k] * eigen.vectors[k][a];
            }
        }
        model.curvature[a] = std::max(eigen.values[a], 0.0);
        model.entropySlope[a] = Product(model.axes, a, space.entropySlope);
        model.chiSlope[a] = Product(model.axes, a, space.chiSlope);
    }
    return model;
}

/// The step for a multiplier of the entropy and an added curvature, which shortens it.
Vector StepFor(const Diagonal& model, double multiplier, double added)
{
    Vector step{};
    for (int a = 0; a < kDirections; ++a) {
        const double stiffness = model.curvature[a] + multiplier + added;
        step[a] = stiffness > 0.0 ? (multiplier * model.entropySlope[a] - model.chiSlope[a]) / stiffness : 0.0;
    }
    return step;
}

double ChiAt(const Diagonal& model, double chi, const Vector& step)
{
    for (int a = 0; a < kDirections; ++a) {
        chi += step[a] * (model.chiSlope[a] + 0.5 * model.curvature[a] * step[a]);
    }
    return chi;
}

double LengthSquared(const Vector& step)
{
    double sum = 0.0;
    for (const double amount : step) {
        sum += amount * amount;
    }
    return sum;
}

/// The multiplier for which the step meets the target of C. C grows with it; where even none is too much, none.
double FindMultiplier(const Diagonal& model, double chi, double target, double added)
{
    const auto isBelow = [&](double multiplier) {
        return ChiAt(model, chi, StepFor(model, multiplier, added)) < target;
    };
    double low = 0.0;
    double high = 1.0;
    for (int i = 0; i < kHalvings && isBelow(high); ++i) {
        low = high;
        high *= 4.0;
    }
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = 0.5 * (low + high);
        (isBelow(middle) ? low : high) = middle;
    }
    return low;
}

/// A step on the model's axes, and the multiplier that it is for.
struct AxisStep {
    Vector amounts{};
    double multiplier = 0.0;
};

/// The step towards a value of C, with so much curvature added that its length squared is `reach` at most.
AxisStep FindAxisStep(const Diagonal& model, double chi, double aim, double reach)
{
    double enough = -1.0; // added curvature that shortens the step to the reach, once one is known
    double tooLittle = 0.0;
    double added = 0.0;
    AxisStep step;
    for (int i = 0; i < kHalvings; ++i) {
        step.multiplier = FindMultiplier(model, chi, aim, added);
        step.amounts = StepFor(model, step.multiplier, added);
        const bool isWithin = LengthSquared(step.amounts) <= reach;
        (isWithin ? enough : tooLittle) = added;
        if (isWithin && enough - tooLittle <= 0.05 * enough) { // so, too, when nothing had to be added
            break;
        }
        added = enough < 0.0 ? (added == 0.0 ? 1.0 : added * 8.0) : 0.5 * (enough + tooLittle);
    }
    return step;
}

} // namespace

SubspaceStep FindStep(const Subspace& space, double target, double reach)
{
    const Diagonal model = MakeDiagonal(space);
    // What a step could reach at best; to ask for all of it at once would spend the entropy on the last bit.
    const double best = ChiAt(model, space.chi, StepFor(model, 0.0, 0.0));
    const AxisStep step = FindAxisStep(model, space.chi, std::max(target, (2.0 * best + space.chi) / 3.0), reach);
    const double square = LengthSquared(step.amounts);
    const double shortening = square > reach ? std::sqrt(reach / square) : 1.0;
    SubspaceStep result{.multiplier = step.multiplier, .directions = model.count};
    for (int i = 0; i < kDirections; ++i) {
        for (int a = 0; a < kDirections; ++a) {
            result.amounts[i] += model.axes[i][a] * step.amounts[a] * shortening;
        }
    }
    return result;
}

} // namespace corvane
