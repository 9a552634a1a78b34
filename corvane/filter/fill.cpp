#include "corvane/filter/fill.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "corvane/core/gaps.h"
#include "corvane/core/walk.h"

namespace corvane {
namespace {

constexpr float kNext = std::numeric_limits<float>::infinity(); // a gap that the ring to come has listed

/// Closes the gaps of one plane from their edges inwards.
class Hole {
public:
    Hole(CStlImage& image, int plane) : image_(image), plane_(plane) {}

    /// Makes the first ring of the gaps of a row.
    void AddEdges(int y)
    {
        const float* const row = image_.GetImageAdr(0, y, plane_);
        for (int x = 0; x < image_.GetWidth(); ++x) {
            if (std::isnan(row[x]) && !std::isnan(Mean({x, y}))) {
                Add({x, y});
            }
        }
    }

    void Close()
    {
        while (!ring_.empty()) {
            FillRing();
            AddRingInside();
        }
    }

private:
    struct Place {
        int x;
        int y;
    };

    void Add(const Place& place)
    {
        *image_.GetImageAdr(place.x, place.y, plane_) = kNext;
        ring_.push_back(place);
    }

    /// Calls visit(sample, place, weight) for the neighbours that lie in the image.
    template <class Visit>
    void VisitNeighbours(const Place& at, Visit visit)
    {
        const int left = std::max(at.x - 1, 0);
        const int right = std::min(at.x + 1, image_.GetWidth() - 1);
        for (int y = std::max(at.y - 1, 0); y <= std::min(at.y + 1, image_.GetHeight() - 1); ++y) {
            float* const row = image_.GetImageAdr(0, y, plane_);
            for (int x = left; x <= right; ++x) {
                if (x != at.x || y != at.y) {
                    visit(row[x], Place{x, y}, x == at.x || y == at.y ? 1.0 : 0.5);
                }
            }
        }
    }

    /// The weighted mean of the neighbours that are defined; NaN without any.
    float Mean(const Place& place)
    {
        double sum = 0.0;
        double weights = 0.0;
        VisitNeighbours(place, [&](float v, const Place&, double weight) {
            const bool counts = std::isfinite(v);
            sum += counts ? weight * v : 0.0;
            weights += counts ? weight : 0.0;
        });
        return static_cast<float>(sum / weights);
    }

    void FillRing()
    {
        std::vector<float> means(ring_.size());
        std::transform(ring_.begin(), ring_.end(), means.begin(), [this](const Place& place) { return Mean(place); });
        for (std::size_t i = 0; i < means.size(); ++i) {
            *image_.GetImageAdr(ring_[i].x, ring_[i].y, plane_) = means[i];
        }
    }

    void AddRingInside()
    {
        std::vector<Place> filled;
        filled.swap(ring_);
        for (const Place& place : filled) {
            VisitNeighbours(place, [&](float v, const Place& neighbour, double) {
                if (std::isnan(v)) {
                    Add(neighbour);
                }
            });
        }
    }

    CStlImage& image_;
    int plane_;
    std::vector<Place> ring_;
};

} // namespace

long long FillFromNeighbours(CStlImage& image, const Run& run)
{
    const long long count = MarkGaps(image);
    Stage stage(run, "Filling undefined samples...", image.GetPlanes() * image.GetHeight());
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        Hole hole(image, plane);
        for (int y = 0; y < image.GetHeight(); ++y) {
            hole.AddEdges(y);
            stage.Step();
        }
        hole.Close();
    }
    return count;
}

long long FillWithValues(CStlImage& image, const std::vector<double>& values)
{
    const long long count = MarkGaps(image);
    if (count == 0) {
        return 0;
    }
    WriteRows(image, image.GetPlanes(), [&](float* row, int plane) {
        const auto value = static_cast<float>(values[static_cast<std::size_t>(plane)]);
        for (int x = 0; x < image.GetWidth(); ++x) {
            row[x] = std::isnan(row[x]) ? value : row[x];
        }
    });
    return count;
}

} // namespace corvane
