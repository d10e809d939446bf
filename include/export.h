#pragma once

// KIVO_API marks what the shared library exports; everything else stays hidden inside it.
#if defined(KIVO2D_STATIC)
#define KIVO_API
#elif defined(_WIN32)
#if defined(KIVO2D_BUILDING)
#define KIVO_API __declspec(dllexport)
#else
#define KIVO_API __declspec(dllimport)
#endif
#else
#define KIVO_API __attribute__((visibility("default")))
#endif
