#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace corvane::stars {

/// A sum of powers of column and row, those together up to a degree, over a frame.
class SkyPolynomial {
public:
    static constexpr int kMostDegree = 4;
    static constexpr std::size_t kMostTerms = 15; ///< of that degree

    /// 0 all over a frame of width x height [pixels].
    SkyPolynomial(int width, int height);

    /// What it comes to along a row of samples.
    class Row {
    public:
        double At(double x) const
        {
            const double u = x * scale_ + offset_;
            return (((terms_[4] * u + terms_[3]) * u + terms_[2]) * u + terms_[1]) * u + terms_[0];
        }

    private:
        friend class SkyPolynomial;
        double scale_;
        double offset_;
        std::array<double, kMostDegree + 1> terms_{};
    };

    Row RowAt(double y) const;
    double At(double x, double y) const { return RowAt(y).At(x); }

    /// A value at a place of the frame, and how much it counts.
    struct Value {
        double x;
        double y;
        double value;
        double weight = 1.0;
    };

    /// Becomes the polynomial of a degree that has the least sum of squared distances from values. It stays what it is,
    /// and false is returned, when they do not tell that one: at some place of the frame its variance would be above
    /// `most` times that of a value of weight 1.
    bool Fit(const std::vector<Value>& values, int degree, double most);

    double Across(double x) const { return x * scaleX_ - offsetX_; } ///< -1 to 1 over the frame
    double Down(double y) const { return y * scaleY_ - offsetY_; }
    /// The powers at such a place, by rising degree.
    static void PowersAt(double u, double v, int degree, double* powers);

    /// 0 all over the same frame.
    SkyPolynomial None() const
    {
        SkyPolynomial none = *this;
        none.factors_ = {};
        return none;
    }
    /// The sum of two over the same frame.
    SkyPolynomial operator+(const SkyPolynomial& other) const
    {
        SkyPolynomial sum = *this;
        for (std::size_t i = 0; i < factors_.size(); ++i) {
            sum.factors_[i] += other.factors_[i];
        }
        return sum;
    }

private:
    using Factors = std::array<double, kMostTerms>;

    template <int kDegree>
    std::optional<Factors> FactorsOf(const std::vector<Value>& values, double most) const;

    double scaleX_;
    double offsetX_;
    double scaleY_;
    double offsetY_;
    Factors factors_{};
};

} // namespace corvane::stars
