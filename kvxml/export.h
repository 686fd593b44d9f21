/// Export macros of the shared library.
///
/// KVXML_EXPORT stands at classes and functions that others than the library use. KVXML_EXPORT_ENUM stands at
/// enumerations that are arguments of exported templates: what is instantiated for a type that is not visible
/// outside is not either.
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

#if defined(_WIN32)
#define KVXML_EXPORT_ENUM
#else
#define KVXML_EXPORT_ENUM KVXML_EXPORT
#endif

/// Lets the compiler check a printf-style format against its arguments.
#if defined(__GNUC__)
#define KVXML_PRINTF_FORMAT(formatIndex, firstArgument) \
    __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define KVXML_PRINTF_FORMAT(formatIndex, firstArgument)
#endif
