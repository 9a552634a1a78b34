#pragma once

/// Marks what the shared library shows to its callers; everything else is hidden.
/// A program that links the static library defines CORVANE_STATIC; only the library itself defines CORVANE_BUILDING.
#if defined(CORVANE_STATIC)
#define CORVANE_API
#elif defined(_WIN32)
#if defined(CORVANE_BUILDING)
#define CORVANE_API __declspec(dllexport)
#else
#define CORVANE_API __declspec(dllimport)
#endif
#else
#define CORVANE_API __attribute__((visibility("default")))
#endif
