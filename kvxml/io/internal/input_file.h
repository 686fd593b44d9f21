/// Files and bytes that are read for parsing. Failures are CKvException with the file's name and the host's
/// error number.
#pragma once

#include <cstddef>
#include <vector>

#include "kvxml/platform/internal/file.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/internal/compression.h"

namespace KvXmlLib16::internal {

/// Stands for an unexpected end of the file where an error number is asked for.
inline constexpr int kEndOfFile = 38;

[[noreturn]] void ThrowReadError(const char* fileName, int error);
/// `format` has a place for the name and one for the number.
[[noreturn]] void ThrowFileError(const char* format, const char* fileName, int error);

void OpenFile(CFile& file, const char* fileName);
/// Reads exactly `length` bytes.
void ReadAll(CFile& file, const char* fileName, void* buffer, std::size_t length);
/// Reads from here to the end.
std::vector<unsigned char> ReadToEnd(CFile& file, const char* fileName);
/// Opens the file and reads all of it.
std::vector<unsigned char> ReadWhole(const char* fileName);

/// What compressed input may inflate to.
inline InflateLimits InflateLimitsOf(const CSerializationContext& context) noexcept {
    return {context.GetMaxInflatedSize(), context.GetMaxInflationRatio()};
}

}  // namespace KvXmlLib16::internal
