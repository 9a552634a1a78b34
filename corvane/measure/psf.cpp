#include "corvane/measure/psf.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>

#include "corvane/core/ascending.h"
#include "corvane/core/blank.h"

using namespace corvane;

namespace {

constexpr int kSkyPerRay = 12;
constexpr int kGap = 2; // pixels between the end of a wing and the sky
constexpr double kTooWide = 20.0;

/// The pixels from a peak outwards, in one of the four directions along the axes.
struct Ray {
    CPoint peak;
    int stepX;
    int stepY;
    int length; ///< how many there are up to the edge; not above 0 when there are none

    CPoint At(int i) const { return {static_cast<int>(peak.x) + stepX * i, static_cast<int>(peak.y) + stepY * i}; }
    /// The column of pixel i, or its row when the ray goes up or down.
    int Along(int i) const { return static_cast<int>(stepX != 0 ? At(i).x : At(i).y); }
    int Step() const { return stepX + stepY; }
};

/// To the left, to the right, up, and down.
std::array<Ray, 4> RaysFrom(CPoint peak, const CImage& image)
{
    const int x = static_cast<int>(peak.x);
    const int y = static_cast<int>(peak.y);
    return {Ray{peak, -1, 0, x},
            {peak, 1, 0, image.GetWidth() - 1 - x},
            {peak, 0, -1, y},
            {peak, 0, 1, image.GetHeight() - 1 - y}};
}

bool IsWithin(CPoint point, const CImage& image, int margin)
{
    return point.x >= -margin && point.x < image.GetWidth() + margin && point.y >= -margin &&
           point.y < image.GetHeight() + margin;
}

/// A mean or median that can be told.
int Tell(double value, double* p)
{
    if (value <= 1e-6 || value >= kTooWide) {
        return 0;
    }
    *p = value;
    return 1;
}

} // namespace

PSF::~PSF()
{
    std::free(values_);
}

int PSF::Add(CPoint point)
{
    // A point farther outside has no pixel among its neighbours to climb to, and a peak outside has no width.
    if (image_->GetPixelCount() == 0 || !IsWithin(point, *image_, 1) || count_ == std::numeric_limits<int>::max()) {
        return 0;
    }
    const CPoint peak = ClimbToPeak(point);
    double base = 0.0;
    double width = 0.0;
    const bool isMeasured = GetBase(peak, &base) != 0 && GetPixelValue(peak) > base &&
                            GetFWHM(peak, base, &width) != 0 && width >= 0.0 && width < kTooWide;
    if (!isMeasured) {
        return 0;
    }
    void* const grown = std::realloc(values_, (static_cast<std::size_t>(count_) + 1) * sizeof(double));
    if (grown == nullptr) {
        return 0;
    }
    values_ = static_cast<double*>(grown);
    values_[count_++] = FwhmToPsf(width);
    return 1;
}

int PSF::GetMeanPSF(double* p) const
{
    return count_ == 0 ? 0 : Tell(std::accumulate(values_, values_ + count_, 0.0) / count_, p);
}

int PSF::GetMedianPSF(double* p)
{
    std::sort(values_, values_ + count_);
    return count_ == 0 ? 0 : Tell(values_[count_ / 2], p);
}

int PSF::GetMeanFWHM(double* width) const
{
    double p = 0.0;
    const int isKnown = GetMeanPSF(&p);
    *width = PsfToFwhm(p);
    return isKnown;
}

int PSF::GetMedianFWHM(double* width)
{
    double p = 0.0;
    const int isKnown = GetMedianPSF(&p);
    *width = PsfToFwhm(p);
    return isKnown;
}

double PSF::GetPixelValue(CPoint point) const
{
    const int planes = image_->GetPlanes();
    double sum = 0.0;
    for (int plane = 0; plane < planes; ++plane) {
        sum += image_->GetPixelGrayRaw(static_cast<int>(point.x), static_cast<int>(point.y), plane);
    }
    return planes > 0 ? sum / planes : 0.0;
}

CPoint PSF::ClimbToPeak(CPoint point) const
{
    const BlankTest isBlank(*image_);
    double best = GetPixelValue(point);
    for (CPoint peak = point;; point = peak) {
        for (const int dx : {-1, 0, 1}) {
            for (const int dy : {-1, 0, 1}) {
                const CPoint neighbour(static_cast<int>(point.x) + dx, static_cast<int>(point.y) + dy);
                const double v = IsWithin(neighbour, *image_, 0) ? GetPixelValue(neighbour) : best;
                if (v > best && !isBlank(v)) {
                    best = v;
                    peak = neighbour;
                }
            }
        }
        if (peak == point) {
            return peak;
        }
    }
}

int PSF::GetBase(CPoint peak, double* base) const
{
    double sky[4 * kSkyPerRay];
    int count = 0;
    for (const Ray& ray : RaysFrom(peak, *image_)) {
        int i = 1;
        for (double last = GetPixelValue(peak); i <= ray.length; ++i) {
            const double v = GetPixelValue(ray.At(i));
            if (v > last) {
                break;
            }
            last = v;
        }
        const int begin = i + kGap;
        for (i = begin; i < begin + kSkyPerRay && i <= ray.length; ++i) {
            sky[count++] = GetPixelValue(ray.At(i));
        }
    }
    if (count == 0) {
        return 0;
    }
    std::sort(sky, sky + count, Ascending());
    *base = sky[count / 2];
    return 1;
}

int PSF::GetFWHM(CPoint peak, double base, double* width) const
{
    const double half = (GetPixelValue(peak) + base) * 0.5;
    double crossings[4] = {};
    double* crossing = crossings;
    for (const Ray& ray : RaysFrom(peak, *image_)) {
        int i = 1;
        while (i <= ray.length && !(GetPixelValue(ray.At(i)) <= half)) {
            ++i;
        }
        if (i > ray.length) {
            return 0;
        }
        const double outer = GetPixelValue(ray.At(i));
        const double inner = GetPixelValue(ray.At(i - 1));
        *crossing++ = ray.Along(i) - ray.Step() * ((half - outer) / (inner - outer));
    }
    const auto [left, right, up, down] = crossings;
    *width = ((down - up) + (right - left)) * 0.5;
    return 1;
}

double PSF::FwhmToPsf(double width)
{
    return std::sqrt(width) * 0.4246609;
}

double PSF::PsfToFwhm(double p)
{
    const double root = p * 2.354820045829508;
    return root * root;
}
