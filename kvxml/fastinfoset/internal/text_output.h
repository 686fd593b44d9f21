/// Texts, values and identifiers of a Fast Infoset document, with the tables of those that come again.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kvxml/fastinfoset/fast_infoset_context.h"
#include "kvxml/fastinfoset/internal/octet_buffer.h"
#include "kvxml/fastinfoset/internal/string_table.h"
#include "kvxml/types/item_type.h"

namespace KvXmlLib16::internal {

/// CKvException "Failed to write FastInfoset." with what failed.
[[noreturn]] void FailFastInfoset(const std::string& what);

/// Puts strings that are in the local code page. What is ill-formed becomes U+FFFD; characters that XML does
/// not have are refused.
class CTextOutput {
public:
    explicit CTextOutput(const CFastInfosetContext& settings);

    /// Enters what readers have in the tables from the beginning.
    void AddKnownValue(std::string_view value) { AddKnown(m_values, value); }
    void AddKnownText(std::string_view text) { AddKnown(m_texts, text); }

    /// The value of an attribute.
    void PutValue(COctetBuffer& out, std::string_view value, ItemType type) {
        PutString(out, m_values, value, type);
    }
    /// The text of a comment, or the data of a processing instruction.
    void PutOther(COctetBuffer& out, std::string_view text) {
        PutString(out, m_others, text, ItemType_Unknown);
    }
    /// Text of an element that is not empty; starts an item.
    void PutText(COctetBuffer& out, std::string_view text, ItemType type);
    /// The same, as CDATA section.
    void PutSection(COctetBuffer& out, std::string_view text);
    /// A name or URI that is not empty and comes for the first time.
    void PutIdentifier(COctetBuffer& out, std::string_view text);

private:
    /// How the octets stand for the text.
    struct Encoded {
        unsigned format = 0;  // 0: UTF-8, 2: a restricted alphabet, 3: an encoding algorithm
        unsigned number = 0;  // of the alphabet or algorithm
        std::string_view octets;
    };

    static void AddKnown(CStringTable& table, std::string_view text);
    void PutString(COctetBuffer& out, CStringTable& table, std::string_view text, ItemType type);
    void PutPieces(COctetBuffer& out, unsigned lead, Encoded encoded);
    bool TryEncodeValue(std::string_view text, ItemType type, Encoded& encoded);
    Encoded EncodeText(std::string_view text);
    std::string_view ToUtf8(std::string_view text);
    std::string_view ToUtf8Slowly(std::string_view text);

    const std::size_t m_maxIndexedLength;
    const bool m_writeTypedValues;
    const bool m_useAlphabets;
    const bool m_isLocalUtf8;
    CStringTable m_values;
    CStringTable m_texts;
    CStringTable m_others;
    std::string m_utf8;
    std::string m_octets;
};

}  // namespace KvXmlLib16::internal
