#include "corvane/draw/draw_text.h"

#include <cmath>

#include "corvane/draw/lettering.h"

using namespace corvane;

void CImgDrawText::Do(const char* text, double x, double y, double height, double angle, int align, const Pen& pen,
                      CStlImage* source, CRect* rect, int showProgress)
{
    Do(text, x, y, height, angle, align, pen, *source, rect, WindowRun(*this, showProgress));
}

void CImgDrawText::Do(const char* text, double x, double y, double height, double angle, int align, const Pen& pen,
                      const CStlImage& source, const CRect* rect, const Run& run)
{
    const double before = align == 1 ? 0.5 : align == 2 ? 1.0 : 0.0;
    DrawStrokes(*this, source, rect, run, pen,
                TextSegments(text == nullptr ? "" : text, {x, y, height, angle, before}));
}

double CImgDrawText::GetTextWidth(const char* text, double height)
{
    return TextWidth(text == nullptr ? "" : text) * std::fabs(height);
}
