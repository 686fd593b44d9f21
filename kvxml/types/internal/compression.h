/// gzip and zlib streams in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

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

/// Inflates a gzip stream (with all its members) or a zlib stream piece by piece.
class KVXML_EXPORT CInflater {
public:
    /// Whether input that begins so is a stream of one of the two kinds; three bytes tell.
    static bool IsCompressed(const unsigned char* data, std::size_t length) noexcept;

    explicit CInflater(const InflateLimits& limits);
    CInflater(const CInflater&) = delete;
    CInflater& operator=(const CInflater&) = delete;
    ~CInflater();

    /// Takes from `input` and fills `output`, as far as both reach; returns how much was filled. The end of
    /// the input is told by `isLast`. CKvException when the stream is damaged or cut off, or beyond a limit.
    /// Bytes after the stream are ignored.
    std::size_t Inflate(const unsigned char*& input, std::size_t& length, bool isLast, unsigned char* output,
                        std::size_t room);
    bool IsAtEnd() const noexcept { return m_isAtEnd; }

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
    InflateLimits m_limits;
    std::size_t m_taken = 0;
    std::size_t m_made = 0;
    bool m_isAtEnd = false;
};

}  // namespace KvXmlLib16::internal
