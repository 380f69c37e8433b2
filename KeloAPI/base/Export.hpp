#pragma once

/// Marks what the shared library exports; everything else stays hidden.
#if defined(KELO_STATIC)
#define KELO_API
#else
#define KELO_API __attribute__((visibility("default")))
#endif
