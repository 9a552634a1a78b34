#pragma once

/// CORVANE_API marks the interface: what the shared library shows to its callers on every system.
/// CORVANE_VISIBLE marks what this project's own libraries, tests and benchmarks use besides. Systems whose libraries
/// have visibility show it too; a Windows DLL does not, and what uses it there is linked with its object file.
/// Everything else is hidden.
///
/// A program that links the static library defines CORVANE_STATIC; only the library itself defines CORVANE_BUILDING.
#if defined(CORVANE_STATIC)
#define CORVANE_API
#define CORVANE_VISIBLE
#elif defined(_WIN32)
#define CORVANE_VISIBLE
#if defined(CORVANE_BUILDING)
#define CORVANE_API __declspec(dllexport)
#else
#define CORVANE_API __declspec(dllimport)
#endif
#else
#define CORVANE_API __attribute__((visibility("default")))
#define CORVANE_VISIBLE CORVANE_API
#endif
