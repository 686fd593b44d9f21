/// Text in the forms in which Fast Infoset documents may hold it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace KvXmlLib16::internal {

/// Well-formed UTF-8 whose characters XML 1.0 allows. `hasReturns` is set where there are carriage returns
/// and is else left alone.
bool IsXmlText(std::string_view text, bool& hasReturns) noexcept;

/// Characters that are written with as few bits as their number needs.
class CRestrictedAlphabet {
public:
    /// `characters` is well-formed UTF-8 and not empty.
    explicit CRestrictedAlphabet(std::string_view characters);

    /// Replaces `text`. Null when the octets are such text, else what is wrong with them.
    const char* Decode(std::string_view octets, std::string& text) const;

private:
    std::string m_characters;
    std::vector<std::uint32_t> m_offsets;  // of the characters, and the end
    unsigned m_bits = 1;
};

/// UTF-16, big-endian, without byte-order mark. Replaces `text` by UTF-8. Null, or what is wrong.
const char* DecodeUtf16(std::string_view octets, std::string& text);

/// Encoding algorithms by their numbers in documents.
enum class EncodingAlgorithm : unsigned {
    Hexadecimal,
    Base64,
    Short,
    Int,
    Long,
    Boolean,
    Float,
    Double,
    Uuid,
    CData,
};

/// Replaces `text` by the text that a built-in algorithm other than CData stands for, in the forms of W3C XML
/// Schema and with one blank between values. Null, or what is wrong.
const char* DecodeAlgorithm(EncodingAlgorithm algorithm, std::string_view octets, std::string& text);

}  // namespace KvXmlLib16::internal
