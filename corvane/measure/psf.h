#pragma once

#include "corvane/core/stl_image.h"

/// Measures how wide stars are: the full width at half maximum (FWHM) along the row and the column through the peak.
///
/// `Add` measures a star; the mean or median over all added stars is then told as a width [pixels] or as the profile
/// parameter p that is kept of each star: p = sqrt(width) * 0.4246609, and back width = (p * 2.354820045829508)^2,
/// where the factors are 1 / (2 sqrt(2 ln 2)) and 2 sqrt(2 ln 2). Averages are those of p: two stars of 1 and 9 pixels
/// have the mean width 4.
///
/// The value of a pixel is the mean of its planes. The image is read only, and must outlive the object.
class CORVANE_API PSF {
public:
    explicit PSF(CStlImage* image) : image_(image) {}
    explicit PSF(const CStlImage& image) : image_(&image) {} ///< The same.
    virtual ~PSF();
    PSF(const PSF&) = delete; ///< the kept values have one owner
    PSF& operator=(const PSF&) = delete;

    /// Measures the star at a point and keeps its width; returns 1, or 0 when it is refused or there is no memory.
    ///
    /// From the point on, the largest of 3 x 3 values becomes the next point until none is greater; blanks and NaN are
    /// not stepped on. The sky is the median of values beyond the wings in the four directions along the axes: from two
    /// pixels behind the first that rises on, 12 in each direction as far as the image goes. Between the peak and the
    /// sky lies the half maximum; where it is crossed is interpolated between the two pixels, and the widths along row
    /// and column are averaged.
    ///
    /// Refused are points with no pixel of the image within reach of the first step, stars without sky pixels, peaks
    /// not above the sky, stars that do not fall to the half before the edge in each direction, and widths that are not
    /// within 0 (included) and 20 (excluded), NaN among them. Values in the wings count even if they are blank; NaN
    /// counts as greater than any number in the median.
    int Add(CPoint point);

    /// Stars that were kept.
    int GetCount() const { return count_; }

    /// The mean parameter of the kept stars: returns 1. Without stars, and when it would be 1e-6 or less, or 20 or
    /// more, returns 0 and leaves the output as it is.
    int GetMeanPSF(double* p) const;
    /// The same for the median; of an even number of stars the upper of the two middle ones. Puts the kept values in
    /// order.
    int GetMedianPSF(double* p);
    /// The width [pixels] of the mean parameter: returns 1. Returns 0 when `GetMeanPSF` does, and then writes 0.
    int GetMeanFWHM(double* width) const;
    /// The width [pixels] of the median parameter, as `GetMeanFWHM`.
    int GetMedianFWHM(double* width);

private:
    double GetPixelValue(CPoint point) const;
    CPoint ClimbToPeak(CPoint point) const;
    int GetBase(CPoint peak, double* base) const;
    int GetFWHM(CPoint peak, double base, double* width) const;
    static double FwhmToPsf(double width);
    static double PsfToFwhm(double p);

    const CStlImage* image_;
    double* values_ = nullptr;
    int count_ = 0;
};
