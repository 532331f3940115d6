#pragma once
/// @file
/// Marks what the shared library offers. Everything else stays hidden.

#if defined(__GNUC__)
#define ZT_EXPORT __attribute__((visibility("default")))
#else
#define ZT_EXPORT
#endif
