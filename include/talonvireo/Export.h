// Symbol export for the talonVireoSFR shared library.
//
// The library is built with hidden visibility by default; only declarations marked
// TALONVIREO_API are exported.
#pragma once

#if defined(_WIN32)
#if defined(TALONVIREO_BUILDING_LIBRARY)
#define TALONVIREO_API __declspec(dllexport)
#else
#define TALONVIREO_API __declspec(dllimport)
#endif
#else
#define TALONVIREO_API __attribute__((visibility("default")))
#endif
