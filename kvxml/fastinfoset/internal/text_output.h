/// Texts, values and identifiers of a Fast Infoset document, with the tables of those that come again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/fastinfoset/internal/octet_buffer.h"
#include "kvxml/fastinfoset/internal/string_table.h"
#include "kvxml/settings/fast_infoset_context.h"
#include "kvxml/types/item_type.h"

namespace KvXmlLib16::internal {

/// CKvException "Failed to write FastInfoset." with what failed.
[[noreturn]] void FailFastInfoset(const std::string& what);

/// Whether the values of one name come again often enough for a look at the table. Those that do not, such as
/// numbers in sequence, would fill the table and cost most of the time.
class CRepetition {
public:
    bool IsWorthTrying() noexcept { return m_balance > kHopeless || (++m_skipped & kTryAgain) == 0; }
    void OnHit() noexcept { m_balance = m_balance < kBest ? m_balance + kPerHit : kBest; }
    void OnMiss() noexcept {
        if (m_balance > kHopeless) --m_balance;
    }

private:
    static constexpr std::int32_t kHopeless = -256;
    static constexpr std::int32_t kBest = 256;
    static constexpr std::int32_t kPerHit = 8;
    static constexpr std::uint32_t kTryAgain = 63;

    std::int32_t m_balance = 0;
    std::uint32_t m_skipped = 0;
};

/// Puts strings that are in the local code page. What is ill-formed becomes U+FFFD; characters that XML does
/// not have are refused.
class CTextOutput {
public:
    explicit CTextOutput(const CFastInfosetContext& settings);

    /// Enters what readers have in the tables from the beginning.
    void AddKnownValue(std::string_view value) { AddKnown(m_values, value); }
    void AddKnownText(std::string_view text) { AddKnown(m_texts, text); }

    /// The value of an attribute.
    void PutValue(COctetBuffer& out, std::string_view value, ItemType type, CRepetition& repetition) {
        PutString(out, m_values, value, type, repetition);
    }
    /// The text of a comment, or the data of a processing instruction.
    void PutOther(COctetBuffer& out, std::string_view text) {
        PutString(out, m_others, text, ItemType_Unknown, m_repetition);
    }
    /// Text of an element that is not empty; starts an item.
    void PutText(COctetBuffer& out, std::string_view text, ItemType type, CRepetition& repetition);
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
    void PutString(COctetBuffer& out, CStringTable& table, std::string_view text, ItemType type,
                   CRepetition& repetition);
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
    CRepetition m_repetition;  // of the others
    std::string m_utf8;
    std::string m_octets;
};

}  // namespace KvXmlLib16::internal
