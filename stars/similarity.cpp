#include "stars/similarity.h"

#include <cmath>

namespace corvane::stars {

Position Centroid(const std::vector<StarPair>& pairs, Position StarPair::*field)
{
    Position sum{0.0, 0.0};
    for (const StarPair& pair : pairs) {
        sum.x += (pair.*field).x;
        sum.y += (pair.*field).y;
    }
    const auto count = static_cast<double>(pairs.size());
    return {sum.x / count, sum.y / count};
}

Similarity FitSimilarity(const std::vector<StarPair>& pairs, bool scale)
{
    const Position from = Centroid(pairs, &StarPair::reference);
    const Position to = Centroid(pairs, &StarPair::frame);
    double a = 0.0;
    double b = 0.0;
    double spread = 0.0;
    for (const auto& [reference, frame] : pairs) {
        const Position r{reference.x - from.x, reference.y - from.y};
        const Position f{frame.x - to.x, frame.y - to.y};
        a += r.x * f.x + r.y * f.y;
        b += r.y * f.x - r.x * f.y;
        spread += r.x * r.x + r.y * r.y;
    }
    const double size = scale ? spread : std::sqrt(a * a + b * b);
    const bool isTold = size > 0.0;
    Similarity fit{isTold ? a / size : 1.0, isTold ? b / size : 0.0, 0.0, 0.0};
    const Position turned = fit.Map(from);
    fit.x0 = to.x - turned.x;
    fit.y0 = to.y - turned.y;
    return fit;
}

double RmsDistance(const std::vector<StarPair>& pairs, const Similarity& similarity)
{
    double sum = 0.0;
    for (const auto& [reference, frame] : pairs) {
        sum += SquaredDistance(similarity.Map(reference), frame);
    }
    return pairs.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(pairs.size()));
}

} // namespace corvane::stars
