// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Marks what the shared library shows to its users: `class ZT_EXPORT NSObject`, `ZT_EXPORT void post(...)`.
///
/// The library is compiled with hidden symbols, so a class or function of a public header that lacks this mark
/// links in the tests (they use the floors directly) and fails in the tool and in a consumer (they use the library).
/// Templates and inline functions need no mark.

#if defined(_WIN32) && defined(ZT_BUILDS_LIBRARY)
#define ZT_EXPORT __declspec(dllexport)
#elif defined(_WIN32)
#define ZT_EXPORT __declspec(dllimport)
#elif defined(__GNUC__)
#define ZT_EXPORT __attribute__((visibility("default")))
#else
#define ZT_EXPORT
#endif
