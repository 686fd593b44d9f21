/// Export macro of libkvxml-schema.
#pragma once

#if defined(KVXML_STATIC)
#define KVXML_SCHEMA_EXPORT
#elif defined(_WIN32)
#if defined(KVXML_SCHEMA_BUILDING)
#define KVXML_SCHEMA_EXPORT __declspec(dllexport)
#else
#define KVXML_SCHEMA_EXPORT __declspec(dllimport)
#endif
#else
#define KVXML_SCHEMA_EXPORT __attribute__((visibility("default")))
#endif
