#include "corvane/draw/draw_line.h"

#include "corvane/draw/strokes.h"

using namespace corvane;

void CImgDrawLine::Do(double x0, double y0, double x1, double y1, const Pen& pen, CStlImage* source, CRect* rect,
                      int showProgress)
{
    Do(x0, y0, x1, y1, pen, *source, rect, WindowRun(*this, showProgress));
}

void CImgDrawLine::Do(double x0, double y0, double x1, double y1, const Pen& pen, const CStlImage& source,
                      const CRect* rect, const Run& run)
{
    DrawStrokes(*this, source, rect, run, pen, {{x0, y0, x1, y1}});
}
