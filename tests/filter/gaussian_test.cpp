#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

/// The square of weights, row by row.
std::vector<double> Kernel(double sigma, int r)
{
    std::vector<double> kernel;
    for (int dy = -r; dy <= r; ++dy) {
        for (int dx = -r; dx <= r; ++dx) {
            kernel.push_back(std::exp(-(dx * dx + dy * dy) / (2.0 * sigma * sigma)));
        }
    }
    const double sum = std::accumulate(kernel.begin(), kernel.end(), 0.0);
    std::transform(kernel.begin(), kernel.end(), kernel.begin(), [=](double weight) { return weight / sum; });
    return kernel;
}

double PlainGaussian(const Spot& at, int r, const std::vector<double>& kernel)
{
    double sum = 0.0;
    auto weight = kernel.begin();
    for (int y = at.y - r; y <= at.y + r; ++y) {
        for (int x = at.x - r; x <= at.x + r; ++x) {
            sum += at.image.At(Mirrored(x, at.image.width), Mirrored(y, at.image.height), at.p) * *weight++;
        }
    }
    return sum;
}

} // namespace

TEST(Gaussian, AgreesWithThePlainFormForEveryRadius)
{
    for (const double given : {-1.0, double{NAN}, 0.5, 0.6, 1.3, 2.0, 2.4, 3.0, 3.1, 4.0, 4.5, 5.0, 5.1, 1e9}) {
        SCOPED_TRACE(testing::Message() << "sigma " << given);
        const double sigma = given > 0.1 ? std::min(given, 5.0) : 0.1;
        const int r = static_cast<int>(std::ceil(2.0 * sigma));
        const std::vector<double> kernel = Kernel(sigma, r);
        const auto value = [&](const Spot& at) { return PlainGaussian(at, r, kernel); };
        ExpectFilter([=](auto& f, auto... to) { f.GaussianFilter(given, to...); }, value);
        ExpectKernel(r, value,
                     [&](auto& f, auto rows, auto& at) { return f.GetGaussianRaw(rows, at.x, r, kernel.data()); });
    }
}
