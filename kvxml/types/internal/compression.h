/// gzip and zlib streams in memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvxml/types/binary_data.h"
#include "kvxml/types/compression_type.h"

namespace KvXmlLib16::internal {

/// Replaces the bytes by their compressed form. Nothing happens to an empty buffer and for any type but gzip
/// and zlib. Input that does not shrink is refused: CKvException "Failed to compress data. [Error Code: %d]",
/// after which `data` is as before.
void Compress(CBinaryData& data, CompressionType type);

/// What compressed input may inflate to; 0 means without limit.
struct InflateLimits {
    std::size_t maxSize = 0;     ///< bytes
    std::uint32_t maxRatio = 0;  ///< bytes for each byte of input, looked at once 8 MiB have come out
};

/// Inflates a gzip stream (with all its members) or a zlib stream into `out`; bytes after the stream are
/// ignored. Returns false, with `out` empty, when the input is no such stream or is damaged or cut off. The
/// first two bytes tell most other input apart at once. What is beyond a limit is a CKvException.
bool Inflate(const unsigned char* data, std::size_t length, const InflateLimits& limits, CBinaryData& out);

}  // namespace KvXmlLib16::internal
