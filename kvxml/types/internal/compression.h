/// gzip and zlib streams in memory.
#pragma once

#include <cstddef>

#include "kvxml/export.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/compression_type.h"

namespace KvXmlLib16::internal {

/// Replaces the bytes by their compressed form. Nothing happens to an empty buffer and for any type but gzip
/// and zlib. Input that does not shrink is refused: CKvException "Failed to compress data. [Error Code: %d]",
/// after which `data` is as before.
KVXML_EXPORT void Compress(CBinaryData& data, CompressionType type);

/// Inflates a gzip stream (with all its members) or a zlib stream into `out`; bytes behind the stream are
/// ignored. Returns false, with `out` empty, when the input is no such stream or is damaged or cut off. The
/// first two bytes tell most other input apart at once. A result of more than `maxSize` bytes (0: no limit)
/// is a CKvException.
KVXML_EXPORT bool Inflate(const unsigned char* data, std::size_t length, std::size_t maxSize,
                          CBinaryData& out);

}  // namespace KvXmlLib16::internal
