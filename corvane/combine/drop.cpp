#include "corvane/combine/drop.h"

#include <algorithm>
#include <cmath>

namespace corvane {

namespace {

double Between(double low, double v, double high)
{
    const double raised = v < low ? low : v;
    return raised > high ? high : raised;
}

} // namespace

Drop::Drop(const Mapping& mapping, const Position& about, double size, DropKernel kernel)
    : half_(size / 2.0), scale_(1.0 / (size * size)), isPoint_(kernel == DropKernel::kPoint)
{
    const Position origin = mapping.Map(about.x, about.y);
    const Position right = mapping.Map(about.x + 1.0, about.y);
    const Position below = mapping.Map(about.x, about.y + 1.0);
    across_ = {(right.x - origin.x) / 2.0, (right.y - origin.y) / 2.0};
    down_ = {(below.x - origin.x) / 2.0, (below.y - origin.y) / 2.0};
    isAlongAxes_ = across_.y == 0.0 && down_.x == 0.0;
    half_ = isPoint_ ? 1e-6 : half_; // so that a middle on an edge is seen from both sides
    reach_ = half_ + std::max(std::fabs(across_.x) + std::fabs(down_.x), std::fabs(across_.y) + std::fabs(down_.y));
    const Position corners[] = {{-across_.x - down_.x, -across_.y - down_.y},
                                {across_.x - down_.x, across_.y - down_.y},
                                {across_.x + down_.x, across_.y + down_.y},
                                {down_.x - across_.x, down_.y - across_.y}};
    for (int i = 0; i < 4; ++i) {
        AddEdge(i, corners[i], corners[(i + 1) % 4]);
    }
}

void Drop::AddEdge(int i, const Position& from, const Position& to)
{
    const bool isForward = from.x <= to.x;
    const Position& left = isForward ? from : to;
    const Position& right = isForward ? to : from;
    const double mirror = right.y < left.y ? -1.0 : 1.0;
    const double width = right.x - left.x;
    const double rise = mirror * (right.y - left.y);
    constexpr double kSteep = 1e30; // stands for infinity where a product with 0 is to be 0
    edges_[i] = {left.x,
                 mirror * left.y,
                 right.x,
                 width > 0.0 ? std::min(rise / width, kSteep) : 0.0,
                 rise > 0.0 ? std::min(width / rise, kSteep) : kSteep,
                 mirror,
                 (isForward ? -1.0 : 1.0) * mirror};
}

void Drop::Parts(const double* a, const double* b, int count, double* __restrict parts) const
{
    const double h = half_;
    if (isAlongAxes_) {
        const double x = std::fabs(across_.x);
        const double y = std::fabs(down_.y);
        for (int i = 0; i < count; ++i) {
            const double width = Between(-h, a[i] + x, h) - Between(-h, a[i] - x, h);
            const double height = Between(-h, b[i] + y, h) - Between(-h, b[i] - y, h);
            parts[i] = width * height * scale_;
        }
        return;
    }
    std::fill_n(parts, count, 0.0);
    for (const Edge& edge : edges_) {
        for (int i = 0; i < count; ++i) {
            const double x = a[i] + edge.x;
            const double y = edge.mirror * b[i] + edge.y;
            const double left = Between(-h, x, h);
            const double right = Between(-h, a[i] + edge.toX, h);
            const double enters = Between(left, x + (-h - y) * edge.inverse, right); // from below the drop
            const double leaves = Between(left, x + (h - y) * edge.inverse, right);
            const double middle = Between(-h, y + ((enters + leaves) / 2.0 - x) * edge.slope, h);
            const double area = h * (left + right - enters - leaves) + (leaves - enters) * middle;
            parts[i] += edge.direction * area;
        }
    }
    const double turn = across_.x * down_.y > across_.y * down_.x ? scale_ : -scale_;
    for (int i = 0; i < count; ++i) {
        const double part = parts[i] * turn;
        parts[i] = part > 1e-12 ? part : 0.0; // what is left where both only touch
    }
}

} // namespace corvane
