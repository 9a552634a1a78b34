#pragma once

/// @name Whether a sanitizer watches, of which compilers tell in two ways
/// @{
#ifdef __has_feature
#define CORVANE_SANITIZES_ADDRESSES __has_feature(address_sanitizer)
#define CORVANE_SANITIZES_THREADS __has_feature(thread_sanitizer)
#else
#ifdef __SANITIZE_ADDRESS__
#define CORVANE_SANITIZES_ADDRESSES 1
#else
#define CORVANE_SANITIZES_ADDRESSES 0
#endif
#ifdef __SANITIZE_THREAD__
#define CORVANE_SANITIZES_THREADS 1
#else
#define CORVANE_SANITIZES_THREADS 0
#endif
#endif
/// @}
