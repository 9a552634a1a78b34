#include "stars/star_neighbours.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace corvane::stars {

namespace {

constexpr double kCrowded = 2.0;
constexpr double kRival = 0.15;
constexpr double kOne = 0.75;
constexpr double kChain = 4.0;
constexpr int kLinks = 4;

/// Calls visit(i, j) once for every two stars that are closer than `reach` to each other; puts the stars in order of y.
template <class Visit>
void ForEachPair(std::vector<FieldStar>& stars, double reach, Visit visit)
{
    std::stable_sort(stars.begin(), stars.end(), [](const FieldStar& a, const FieldStar& b) { return a.y < b.y; });
    for (std::size_t i = 0; i < stars.size(); ++i) {
        for (std::size_t j = i + 1; j < stars.size() && stars[j].y - stars[i].y < reach; ++j) {
            const double dx = stars[j].x - stars[i].x;
            const double dy = stars[j].y - stars[i].y;
            if (dx * dx + dy * dy < reach * reach) {
                visit(i, j);
            }
        }
    }
}

void EraseMarked(std::vector<FieldStar>& stars, const std::vector<bool>& isMarked)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < stars.size(); ++i) {
        if (!isMarked[i]) {
            stars[kept++] = stars[i];
        }
    }
    stars.resize(kept);
}

/// Numbers that lead from each member of a group to its first one.
class Groups {
public:
    explicit Groups(std::size_t count) : leadsTo_(count)
    {
        std::iota(leadsTo_.begin(), leadsTo_.end(), std::size_t{0});
    }

    std::size_t RootOf(std::size_t i)
    {
        while (leadsTo_[i] != i) {
            leadsTo_[i] = leadsTo_[leadsTo_[i]];
            i = leadsTo_[i];
        }
        return i;
    }
    void Join(std::size_t i, std::size_t j) { leadsTo_[RootOf(j)] = RootOf(i); }

private:
    std::vector<std::size_t> leadsTo_;
};

} // namespace

void MarkCrowded(std::vector<FieldStar>& stars, double fwhm)
{
    const auto disturbs = [](const FieldStar& other, const FieldStar& star) {
        return !other.isHot && other.Excess() > kRival * star.Excess();
    };
    ForEachPair(stars, kCrowded * fwhm, [&](std::size_t i, std::size_t j) {
        stars[i].isCrowded |= disturbs(stars[j], stars[i]);
        stars[j].isCrowded |= disturbs(stars[i], stars[j]);
    });
}

void RemoveDuplicates(std::vector<FieldStar>& stars, double fwhm)
{
    std::vector<bool> isMarked(stars.size());
    ForEachPair(stars, kOne * fwhm,
                [&](std::size_t i, std::size_t j) { isMarked[stars[i].Excess() < stars[j].Excess() ? i : j] = true; });
    EraseMarked(stars, isMarked);
}

void JoinTrails(std::vector<FieldStar>& stars, double fwhm)
{
    Groups groups(stars.size());
    ForEachPair(stars, kChain * fwhm, [&](std::size_t i, std::size_t j) {
        if (stars[i].isElongated && stars[j].isElongated) {
            groups.Join(i, j);
        }
    });
    std::vector<int> members(stars.size());
    std::vector<std::size_t> brightest(stars.size());
    std::iota(brightest.begin(), brightest.end(), std::size_t{0});
    for (std::size_t i = 0; i < stars.size(); ++i) {
        const std::size_t root = groups.RootOf(i);
        ++members[root];
        brightest[root] = stars[i].Excess() > stars[brightest[root]].Excess() ? i : brightest[root];
    }
    std::vector<bool> isMarked(stars.size());
    for (std::size_t i = 0; i < stars.size(); ++i) {
        const std::size_t root = groups.RootOf(i);
        isMarked[i] = members[root] >= kLinks && brightest[root] != i;
    }
    EraseMarked(stars, isMarked);
}

} // namespace corvane::stars
