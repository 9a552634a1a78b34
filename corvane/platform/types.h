#pragma once

/// The window system's plain types and constants, by the names that the interface uses.
/// On Windows they are the system's own; elsewhere they have the same names, sizes and values.

#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

// The system's macro would rename CString::LoadString to a different name in each character set.
#undef LoadString

#else

#include <cstdint>

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using LONG = std::int32_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using HANDLE = void*;
using HGLOBAL = HANDLE;
using HWND = struct WindowHandle*;

/// A pixel's place.
struct POINT {
    LONG x;
    LONG y;
};

/// A rectangle; right and bottom are exclusive.
struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

/// A message out of a thread's queue.
struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

/// The head of a packed device-independent bitmap, 40 bytes.
struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};

/// An entry of a bitmap's colour table.
struct RGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
};

inline constexpr UINT WM_PAINT = 0x000F;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_KEYDOWN = 0x0100;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr int VK_ESCAPE = 27;
inline constexpr UINT PM_NOREMOVE = 0;
inline constexpr UINT PM_REMOVE = 1;
inline constexpr UINT GMEM_MOVEABLE = 0x0002;
inline constexpr UINT GMEM_ZEROINIT = 0x0040;
inline constexpr DWORD BI_RGB = 0;
inline constexpr UINT MB_OK = 0;
inline constexpr UINT MB_ICONINFORMATION = 0x0040;
inline constexpr int IDOK = 1;

#endif

/// A device-independent bitmap: a global memory block with header, colour table and rows.
using HDIB = HGLOBAL;

static_assert(sizeof(BITMAPINFOHEADER) == 40 && sizeof(RGBQUAD) == 4, "bitmaps are exchanged as bytes");
