// TQCACCESS_API marks what the library exports; everything else stays hidden.
//
// A program that links the static variant defines TQCACCESS_STATIC (the CMake target does it); the library's own
// build defines TQCACCESS_BUILDING.
#pragma once

/// Put before a class or function that programs may use.
#if defined(TQCACCESS_STATIC)
#define TQCACCESS_API
#elif defined(_WIN32)
#if defined(TQCACCESS_BUILDING)
#define TQCACCESS_API __declspec(dllexport)
#else
#define TQCACCESS_API __declspec(dllimport)
#endif
#else
#define TQCACCESS_API __attribute__((visibility("default")))
#endif
