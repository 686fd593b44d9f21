/// From collected text to bytes of an output encoding.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kvxml/settings/xml_encoding.h"

namespace KvXmlLib16 {
class CStringBuffer;
}

namespace KvXmlLib16::internal {

/// The byte-order mark of UTF-16 files.
inline constexpr std::string_view kUtf16Mark = "\xFF\xFE";

inline bool IsUtf16(XmlEncoding encoding) noexcept {
    return encoding == XmlEncoding_UTF16 || encoding == XmlEncoding_UTF16NoDeclaration;
}

/// Throws CKvException for a value that bytes can not be written in.
void CheckEncoding(XmlEncoding encoding);

/// Number of bytes at the end of `utf8` that begin a character but do not complete it.
std::size_t UnfinishedLength(std::string_view utf8) noexcept;

/// Turns text that comes piece by piece, in the local code page, into bytes of an encoding. A character may
/// lie across two pieces; text that is ill-formed comes out as U+FFFD.
class CPieceEncoder {
public:
    /// Empties the buffer and returns its text as bytes, without those of a character that the next piece
    /// goes on with. Valid until the next call. CKvException for an encoding that is none.
    const std::string& Take(CStringBuffer& buffer, XmlEncoding encoding, bool isLast);
    /// Something is left for the next piece.
    bool HasPending() const noexcept { return !m_pending.empty(); }
    void Reset() noexcept { m_pending.clear(); }

private:
    std::string m_bytes;    // kept for its capacity
    std::string m_pending;  // first bytes of a character that is not complete yet
};

}  // namespace KvXmlLib16::internal
