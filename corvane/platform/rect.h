#pragma once

#include "corvane/platform/types.h"

#ifndef _WIN32

/// Non-zero when the point lies in the rectangle; right and bottom are exclusive. A null rectangle holds no point.
inline BOOL PtInRect(const RECT* rect, POINT point)
{
    return rect != nullptr && point.x >= rect->left && point.x < rect->right && point.y >= rect->top &&
           point.y < rect->bottom;
}

/// Sets the four edges; returns zero, and does nothing, for a null rectangle.
inline BOOL SetRect(RECT* rect, int left, int top, int right, int bottom)
{
    if (rect == nullptr) {
        return 0;
    }
    *rect = RECT{left, top, right, bottom};
    return 1;
}

#endif

/// A point with integer coordinates, initially (0, 0).
class CPoint : public POINT {
public:
    CPoint() : POINT{0, 0} {}
    CPoint(int pointX, int pointY) : POINT{pointX, pointY} {}
    CPoint(const POINT& point) : POINT(point) {}

    friend bool operator==(const CPoint& a, const CPoint& b) { return a.x == b.x && a.y == b.y; }
};

/// A rectangle of pixels, initially empty. Right and bottom are exclusive; edges are kept as given, never exchanged.
class CRect : public RECT {
public:
    CRect() : RECT{0, 0, 0, 0} {}
    CRect(int l, int t, int r, int b) : RECT{l, t, r, b} {}
    CRect(const RECT& rect) : RECT(rect) {}

    /// Right minus left; negative when the edges are exchanged.
    int Width() const { return static_cast<int>(right - left); }

    /// Bottom minus top; negative when the edges are exchanged.
    int Height() const { return static_cast<int>(bottom - top); }

    void SetRect(int l, int t, int r, int b) { ::SetRect(this, l, t, r, b); }

    /// Non-zero when the point lies inside.
    BOOL PtInRect(POINT point) const { return ::PtInRect(this, point); }

    friend bool operator==(const CRect& a, const CRect& b)
    {
        return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
    }
};
