/// Export macro of the shared library.
#pragma once

#if defined(KVXML_STATIC)
#define KVXML_EXPORT
#elif defined(_WIN32)
#if defined(KVXML_BUILDING)
#define KVXML_EXPORT __declspec(dllexport)
#else
#define KVXML_EXPORT __declspec(dllimport)
#endif
#else
#define KVXML_EXPORT __attribute__((visibility("default")))
#endif

/// Lets the compiler check a printf-style format against its arguments.
#if defined(__GNUC__)
#define KVXML_PRINTF_FORMAT(formatIndex, firstArgument) \
    __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define KVXML_PRINTF_FORMAT(formatIndex, firstArgument)
#endif
