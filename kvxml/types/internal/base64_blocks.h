/// The part of base64 that a processor with byte shuffles does sixteen characters at a time.
#pragma once

#include <cstddef>
#include <string_view>

namespace KvXmlLib16::internal {

inline constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Encodes as many whole blocks of 12 bytes as may be read 16 bytes wide. Returns the number of bytes used, 0
/// where the processor cannot do it; 4/3 of that many characters are written.
std::size_t EncodeBase64Blocks(const unsigned char* source, std::size_t length, char* out) noexcept;

/// Decodes blocks of 16 characters up to the first that holds a character outside the alphabet (of which only
/// the low seven bits count). Returns the number of characters used; 3/4 of that many bytes count in `out`,
/// and up to four after them are overwritten, for which the eight characters always left over give room.
std::size_t DecodeBase64Blocks(const unsigned char* text, std::size_t length, unsigned char* out) noexcept;

}  // namespace KvXmlLib16::internal
