#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Filters of a sample and its neighbours: smoothing, sharpening, development.
///
/// The object is the result, made as a copy of the image to be filtered; a filter reads `source` and writes the samples
/// inside the rectangle, plane by plane unless it says otherwise. Rules that hold for all of them:
/// - `source` has the size and planes of this image. A smaller one is not read outside: columns to the right of it keep
///   their samples, planes that it lacks repeat its last one, and rows below it are mirrored as those about an edge
///   are.
/// - Neighbourhoods by `type`: 0 a cross of 5 samples, 1 a square of 3 x 3, 2 a square of 5 x 5 without its corners
///   (21 samples). With any other type the samples are copied.
/// - Above row 0 lie rows 1, 2, ...: the mirror does not repeat the first row. Below the last row lie the last row, the
///   last but one, ...: there it does. In a column next to an edge a neighbour that would lie outside is replaced by
///   the one at the same distance on the other side of the centre. What still lies outside, in images narrower than the
///   neighbourhood, is clamped. So no border is left out.
/// - Samples are taken as they are, blank values too. A NaN makes every mean that it enters NaN; where it stands in the
///   order of a median or a rank is not defined, the result is then any of the values.
/// - Each filter counts one progress step per row and plane; ESC is ignored.
/// - Levels, where they enter, are those of the source.
///
/// Kernels give one filtered sample for applications that need no more. Their `rows` are pointers to the samples in
/// column x of the 2r + 1 rows about the centre row, top first, of an image of this object's size and levels. Raw forms
/// give raw units, Gray and 256f forms the same value on those scales of plane `plane`.
class CORVANE_API CImgFilter : public CStlImage {
public:
    CImgFilter() = default;
    /// A copy of the image to be filtered.
    explicit CImgFilter(const CStlImage& source) : CStlImage(source) {}

    /// @name Radius of a neighbourhood: 1 for types 0 and 1, 2 for type 2, otherwise 0
    /// @{
    static int GetMeanR(int type);
    static int GetMedianR(int type);
    static int GetMinMaxR(int type);
    static int GetSharpR(int type);
    static int GetStarSharpR(int type);
    /// @}

    /// @name Smoothing
    /// @{

    /// Mean of the neighbourhood with the given weight of each neighbour; the centre has weight 1. Weight 1 gives the
    /// plain mean, 0 a copy. Reports "Applying mean filter...".
    void MeanFilter(int type, double weight, CStlImage* source, CRect* rect, int showProgress);
    /// The same with the weight lowered where the image has edges: times (1 - e)^2, with e the absolute Laplacian of
    /// the cross in units of plane 0's level range, for every plane, limited to 0..1.
    void MeanWithoutEdgeFilter(int type, double weight, CStlImage* source, CRect* rect, int showProgress);
    /// Median of the neighbourhood. Reports "Applying median filter".
    void MedianFilter(int type, CStlImage* source, CRect* rect, int showProgress);
    /// The value of rank `rank` in the ascending order of the neighbourhood: 0 the minimum, 4, 8 or 20 the maximum by
    /// type. A rank outside is clamped. Reports "Applying minimum/maximum filtering...".
    void MinMaxFilter(int type, int rank, CStlImage* source, CRect* rect, int showProgress);
    /// Convolution with a Gaussian of deviation `sigma` [pixels, 0.1..5, clamped; NaN counts as 0.1] cut off at
    /// ceil(2 sigma) and normalised. Columns outside are mirrored as rows are. Reports "Applying Gaussian filter...".
    void GaussianFilter(double sigma, CStlImage* source, CRect* rect, int showProgress);
    /// @}

    /// @name Sharpening
    /// @{

    /// (2 c - strength * mean of the neighbours) / (2 - strength) of the centre sample c: 0 changes nothing, 1 gives
    /// 2 c - mean; 2 divides by zero. Reports "Applying sharpening filter".
    void SharpFilter(int type, double strength, CStlImage* source, CRect* rect, int showProgress);
    /// The same with the strength lowered away from edges: times e^2, with e the absolute Laplacian of the cross in
    /// units of the plane's level range, limited to 0..1. Reports "Applying edge enhancement...".
    void SharpEdgeFilter(int type, double strength, CStlImage* source, CRect* rect, int showProgress);
    /// Absolute Laplacian plus plane 0's level min, in every plane: type 0 of the 4 direct neighbours, 1 of all 8, 2
    /// 4 c - 2 * direct + diagonal neighbours. Any other type takes the sample above for the Laplacian. Reports
    /// "Defining edges...".
    void LaplacianFilter(int type, CStlImage* source, CRect* rect, int showProgress);
    /// Adds `amount` times the difference from the weighted mean, where the plain mean of the neighbourhood differs
    /// from the centre by at least the part `threshold` of it. Reports "Applying unsharp mask...".
    void UnSharpMask(double amount, int type, double weight, double threshold, CStlImage* source, CRect* rect,
                     int showProgress);
    /// Tightens stars: the value at `rankPosition` [0..4, 8 or 20 by type, clamped; NaN counts as 0] in the ascending
    /// order of the neighbourhood, interpolated between ranks, where it differs from the maximum by at least the part
    /// `threshold` of it (0: everywhere). With keepPeaks a sample that is the maximum itself stays. Reports "Sharpening
    /// stars...".
    void StarSharpFilter(int type, double rankPosition, double threshold, int keepPeaks, CStlImage* source, CRect* rect,
                         int showProgress);
    /// @}

    /// @name Development and background
    /// @{

    /// Digital development: divides each display value above 0 by the blurred one plus that of `offset` [raw], and
    /// scales so that what equals the mean stays. The blur is the weighted mean of 3 x 3 samples of the plane that the
    /// first int at planeSelector tells, or of all three for 3 and more. One blur serves all planes, so that colours
    /// stay. A selector below 0, or one that the source has no plane for, counts as the nearest that it has; null is 0.
    /// Offset and mean are taken in units of this image's plane 0; a mean that is NaN makes every such sample NaN.
    /// Reports "Applying digital development (DDP)...".
    void DigitalDvlp(double offset, double weight, CStlImage* source, int* planeSelector, CRect* rect,
                     int showProgress);
    /// Smooths what is not above `level` [raw] with the weighted mean. The weight fades to 0 towards the level: over
    /// 5 % of the source's level range in monochrome images, over 16 display units of brightness in colour images,
    /// whose planes are taken together, one progress step per row. The display units of `level` are those of this
    /// image's plane 0. Reports "Applying background smoothing...".
    void BkgSmooth(double level, int type, double weight, CStlImage* source, CRect* rect, int showProgress);
    /// Cuts the brightness into `levels` [1 or more; less counts as 1] steps, each sample the mean of 3 x 3 positions
    /// within it, so that edges are smooth. Colour images become grey. Positions are read as between samples, clamped
    /// at the edges and not mirrored; NaN stays NaN. One progress step per row. Reports "Compressing grayscale...".
    void AAPosterizationFilter(int levels, CStlImage* source, CRect* rect, int showProgress);
    /// Replaces samples c by the median m of their neighbourhood where |m / c - 1| is above `threshold`: those below
    /// the median with fixCool, those above with fixHot. Reports "Removing hot/cool pixels...".
    void NoiseCut(int type, double threshold, int fixCool, int fixHot, CStlImage* source, CRect* rect,
                  int showProgress);
    /// Draws isophotes: lines of equal brightness at `levels` [1 or more; less counts as 1] display values spaced
    /// evenly between black and white. A pixel is on a line when its brightness reaches a level that one of its four
    /// neighbours does not; NaN reaches none. With a non-zero `overlay` the lines lie on the image, white where it is
    /// darker than half the range and black where it is brighter; otherwise they are white on black, by the levels of
    /// this image. One progress step per row. Reports "Defining edges...".
    void ContourFilter(int levels, int overlay, CStlImage* source, CRect* rect, int showProgress);
    /// @}

    /// @name The same filters as parts of a run
    /// @{
    void MeanFilter(int type, double weight, const CStlImage& source, const CRect* rect, const corvane::Run& run);
    void MeanWithoutEdgeFilter(int type, double weight, const CStlImage& source, const CRect* rect,
                               const corvane::Run& run);
    void MedianFilter(int type, const CStlImage& source, const CRect* rect, const corvane::Run& run);
    void MinMaxFilter(int type, int rank, const CStlImage& source, const CRect* rect, const corvane::Run& run);
    void GaussianFilter(double sigma, const CStlImage& source, const CRect* rect, const corvane::Run& run);
    void SharpFilter(int type, double strength, const CStlImage& source, const CRect* rect, const corvane::Run& run);
    void SharpEdgeFilter(int type, double strength, const CStlImage& source, const CRect* rect,
                         const corvane::Run& run);
    void LaplacianFilter(int type, const CStlImage& source, const CRect* rect, const corvane::Run& run);
    void UnSharpMask(double amount, int type, double weight, double threshold, const CStlImage& source,
                     const CRect* rect, const corvane::Run& run);
    void StarSharpFilter(int type, double rankPosition, double threshold, int keepPeaks, const CStlImage& source,
                         const CRect* rect, const corvane::Run& run);
    void DigitalDvlp(double offset, double weight, const CStlImage& source, const int* planeSelector, const CRect* rect,
                     const corvane::Run& run);
    void BkgSmooth(double level, int type, double weight, const CStlImage& source, const CRect* rect,
                   const corvane::Run& run);
    void AAPosterizationFilter(int levels, const CStlImage& source, const CRect* rect, const corvane::Run& run);
    void NoiseCut(int type, double threshold, int fixCool, int fixHot, const CStlImage& source, const CRect* rect,
                  const corvane::Run& run);
    void ContourFilter(int levels, int overlay, const CStlImage& source, const CRect* rect, const corvane::Run& run);
    /// @}

    /// @name Work images
    /// A copy with a border of `margin` samples, filled by the row rule on all four sides, for callers that filter with
    /// kernels of their own. The caller owns it; null when there is no memory. "Initializing..." is
    /// reported first, while the memory is had.
    /// @{
    /// Margin 0 means 2. Reports "Initializing filtering process...".
    CStlImage* MakeFilterWork(int margin, int showProgress);
    CStlImage* MakeFilterWork(int margin, const corvane::Run& run) const;
    /// For digital development: margin 0 means 1, the radius of its blur. Reports "Initializing digital
    /// development...".
    CStlImage* MakeDDWork(int margin, int showProgress);
    CStlImage* MakeDDWork(int margin, const corvane::Run& run) const;
    /// @}

    /// @name Mean kernels
    /// `plainMean`, unless null, gets the mean with weight 1. The forms with x, y read the sample of this image.
    /// @{
    float GetMeanRaw(const float* const* rows, int x, int type, double weight, double* plainMean) const;
    float GetMeanRaw(int x, int y, int type, double weight, int plane) const;
    float GetMeanGray(const float* const* rows, int x, int type, double weight, int plane) const;
    float GetMean256f(const float* const* rows, int x, int type, double weight, int plane) const;
    float GetMeanWithoutEdgeRaw(const float* const* rows, int x, int type, double weight, int plane) const;
    float GetMeanWithoutEdgeGray(const float* const* rows, int x, int type, double weight, int plane) const;
    float GetMeanWithoutEdge256f(const float* const* rows, int x, int type, double weight, int plane) const;
    /// @}

    /// @name Median and rank kernels
    /// @{
    float GetMedianRaw(const float* const* rows, int x, int type) const;
    float GetMedianRaw(int x, int y, int type, int plane) const;
    float GetMedianGray(const float* const* rows, int x, int type, int plane) const;
    float GetMedian256f(const float* const* rows, int x, int type, int plane) const;
    float GetMinMaxRaw(const float* const* rows, int x, int type, int rank) const;
    float GetStarSharpRaw(const float* const* rows, int x, int type, double rankPosition, double threshold,
                          int keepPeaks) const;
    /// @}

    /// @name Gaussian kernel
    /// `kernel` holds (2r + 1) x (2r + 1) weights, row by row.
    /// @{
    float GetGaussianRaw(const float* const* rows, int x, int r, const double* kernel) const;
    float GetGaussianGray(const float* const* rows, int x, int r, const double* kernel, int plane) const;
    float GetGaussian256f(const float* const* rows, int x, int r, const double* kernel, int plane) const;
    /// @}

    /// @name Sharpening kernels
    /// The Laplacian reads three rows; the others as many as their type has.
    /// @{
    float GetSharpRaw(const float* const* rows, int x, int type, double strength) const;
    float GetSharpGray(const float* const* rows, int x, int type, double strength, int plane) const;
    float GetSharp256f(const float* const* rows, int x, int type, double strength, int plane) const;
    float GetSharpEdgeRaw(const float* const* rows, int x, int type, double strength, int plane) const;
    float GetSharpEdgeGray(const float* const* rows, int x, int type, double strength, int plane) const;
    float GetSharpEdge256f(const float* const* rows, int x, int type, double strength, int plane) const;
    float GetLaplacianRaw(const float* const* rows, int x, int type, int plane) const;
    float GetLaplacianGray(const float* const* rows, int x, int type, int plane) const;
    float GetLaplacian256f(const float* const* rows, int x, int type, int plane) const;
    /// @}

protected:
    /// Clips a rectangle into this image, edge by edge; null is the whole image.
    void CalcRect(int& left, int& top, int& right, int& bottom, const CRect* rect) const;
    /// Points rows[0..2r] at column x (clamped) of rows y - r..y + r of a plane, mirrored at the edges; r is 0 or more.
    /// Flag 2 locks the rows until `UnlockAll`.
    void SetFilterAdr(int x, int y, int plane, int r, const float** rows, unsigned flags) const;
    void SetFilterAdr(int x, int y, int plane, int r, float** rows, unsigned flags) const;
    /// The offset that centres this image in `other`: half of what it is smaller by. Unchanged when it is at least as
    /// wide and as high.
    void CalcShift(int& dx, int& dy, int unused, const CStlImage* other) const;
};
