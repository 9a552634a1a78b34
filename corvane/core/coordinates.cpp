// World coordinates follow what geometric operations do to the pixels.

#include <cmath>

#include "corvane/core/display_scale.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/turn.h"

namespace {

/// What a flip does to one axis: the reference pixel is mirrored, and the matrix column or the increment is negated.
void FlipAxis(CImage& image, int axis, int size, double tagMATRIX2_2::*first, double tagMATRIX2_2::*second)
{
    double reference = 0.0;
    image.GetCRPix(axis, &reference);
    image.SetCRPix(axis, size - (reference - 1.0));
    tagMATRIX2_2 matrix;
    if (const int kind = image.GetLTMtx(&matrix)) {
        matrix.*first = -(matrix.*first);
        matrix.*second = -(matrix.*second);
        image.SetLTMtx(&matrix, kind);
        return;
    }
    double increment = 0.0;
    image.SetCDelt(axis, image.GetCDelt(axis, &increment) != 0 ? -increment : -1.0);
}

/// The image's matrix and kind; the identity with the kind for turns and stretches when it has none.
int MatrixOrIdentity(const CImage& image, tagMATRIX2_2& matrix)
{
    const int kind = image.GetLTMtx(&matrix);
    if (kind != corvane::kNoTransform) {
        return kind;
    }
    matrix = {1.0, 0.0, 0.0, 1.0};
    return corvane::kPcMatrix;
}

} // namespace

void CStlImage::FlipHorzPhysicalCoords()
{
    FlipAxis(*this, 0, GetWidth(), &tagMATRIX2_2::m11, &tagMATRIX2_2::m21);
}

void CStlImage::FlipVertPhysicalCoords()
{
    FlipAxis(*this, 1, GetHeight(), &tagMATRIX2_2::m12, &tagMATRIX2_2::m22);
}

void CStlImage::RotatePhysicalCoords(double angle, double dx, double dy)
{
    if (angle == 0.0 || std::isnan(angle)) {
        return; // without a turn the shift is left to TranslatePhysicalCoords, as callers expect
    }
    double x = 0.0;
    double y = 0.0;
    GetCRPix(0, &x);
    GetCRPix(1, &y);
    tagMATRIX2_2 m;
    const int kind = MatrixOrIdentity(*this, m);
    const auto [s, c] = corvane::SineAndCosine(angle * corvane::kDegree);
    const int cx = stdCtr_.ix;
    const int cy = stdCtr_.iy;
    SetCRPix(0, (x - cx) * c - (y - cy) * s + cx + dx);
    SetCRPix(1, (x - cx) * s + (y - cy) * c + cy + dy);
    tagMATRIX2_2 turned{c * m.m11 - s * m.m12, s * m.m11 + c * m.m12, c * m.m21 - s * m.m22, s * m.m21 + c * m.m22};
    SetLTMtx(&turned, kind);
}

void CStlImage::TranslatePhysicalCoords(double dx, double dy)
{
    double x = 0.0;
    double y = 0.0;
    GetCRPix(0, &x);
    GetCRPix(1, &y);
    SetCRPix(0, x + dx);
    SetCRPix(1, y + dy);
}

void CStlImage::ScalePhysicalCoords(double fx, double fy)
{
    double x = 0.0;
    double y = 0.0;
    GetCRPix(0, &x);
    GetCRPix(1, &y);
    SetCRPix(0, x * fx);
    SetCRPix(1, y * fy);
    tagMATRIX2_2 m;
    const int kind = MatrixOrIdentity(*this, m);
    m.m11 /= fx;
    m.m21 /= fx;
    m.m12 /= fy;
    m.m22 /= fy;
    SetLTMtx(&m, kind);
}
