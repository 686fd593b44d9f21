#include "kvxml/fastinfoset/internal/text_output.h"

#include <algorithm>
#include <cstdint>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/words.h"
#include "kvxml/fastinfoset/internal/value_encoding.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::uint64_t kLongestString = std::uint64_t{1} << 32;

constexpr unsigned kUtf8 = 0;
constexpr unsigned kAlphabet = 2;
constexpr unsigned kAlgorithm = 3;

/// Shorter ones gain nothing, for the alphabet takes an octet.
constexpr std::size_t kShortestPacked = 4;

constexpr unsigned kText = 0x80;
constexpr unsigned kAddText = 0x10;
constexpr unsigned kAddString = 0x40;
constexpr unsigned kKnownText = 0xA0;
constexpr unsigned kKnownString = 0x80;
constexpr unsigned kEmptyString = 0xFF;

bool IsSuspect(char c) noexcept {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte >= 0x80;
}

/// Whether all of it is printable ASCII, tab and line feed perhaps excepted.
bool IsPlain(std::string_view text) noexcept {
    const char* const data = text.data();
    const std::size_t length = text.size();
    if (length < 8) return std::none_of(text.begin(), text.end(), IsSuspect);
    const auto suspects = [data](std::size_t at) {
        const auto word = Load<std::uint64_t>(data + at);
        return HasControl(word) | HasNonAscii(word);
    };
    for (std::size_t at = 0; at + 8 <= length; at += 8) {
        if (suspects(at) != 0) return false;
    }
    return suspects(length - 8) == 0;
}

std::size_t LengthLimit(const CFastInfosetContext& settings) {
    return settings.GetMaxIndexedLength();
}

std::size_t EntryLimit(const CFastInfosetContext& settings) {
    return std::min(settings.GetMaxTableEntries(), CFastInfosetContext::kMaxTableEntries);
}

/// The start of an item that carries text, or of a string, which differ in the bits they have left.
unsigned char* PutLength(unsigned char* out, bool isText, unsigned lead, std::size_t length) {
    return isText ? form::Length7(out, lead, length) : form::Length5(out, lead, length);
}

}  // namespace

void FailFastInfoset(const std::string& what) {
    throw CKvException("Failed to write FastInfoset. " + what);
}

CTextOutput::CTextOutput(const CFastInfosetContext& settings)
    : m_maxIndexedLength(LengthLimit(settings)),
      m_writeTypedValues(settings.GetWriteTypedValues()),
      m_useAlphabets(settings.GetUseRestrictedAlphabets()),
      m_isLocalUtf8(IsLocalUtf8()),
      m_values(EntryLimit(settings)),
      m_texts(EntryLimit(settings)),
      m_others(EntryLimit(settings)) {}

void CTextOutput::AddKnown(CStringTable& table, std::string_view text) {
    table.Find(text);
    if (table.Add(text) == 0) FailFastInfoset("The vocabulary is larger than the tables may be.");
}

void CTextOutput::PutString(COctetBuffer& out, CStringTable& table, std::string_view text, ItemType type,
                            CRepetition& repetition) {
    if (text.empty()) {
        out.Append(kEmptyString);
        return;
    }
    Encoded encoded;
    if (TryEncodeValue(text, type, encoded)) {
        PutPieces(out, 0, encoded);
        return;
    }
    unsigned lead = 0;
    if (text.size() <= m_maxIndexedLength && repetition.IsWorthTrying()) {
        if (const std::uint32_t number = table.Find(text)) {
            repetition.OnHit();
            out.Commit(form::Number2(out.Reserve(6), kKnownString, number));
            return;
        }
        repetition.OnMiss();
        encoded = EncodeText(text);
        if (table.Add(text) != 0) lead = kAddString;
    } else {
        encoded = EncodeText(text);
    }
    PutPieces(out, lead, encoded);
}

void CTextOutput::PutText(COctetBuffer& out, std::string_view text, ItemType type, CRepetition& repetition) {
    Encoded encoded;
    if (TryEncodeValue(text, type, encoded)) {
        PutPieces(out, kText, encoded);
        return;
    }
    unsigned lead = kText;
    if (text.size() <= m_maxIndexedLength && repetition.IsWorthTrying()) {
        if (const std::uint32_t number = m_texts.Find(text)) {
            repetition.OnHit();
            out.Commit(form::Number4(out.Reserve(6), kKnownText, number));
            return;
        }
        repetition.OnMiss();
        encoded = EncodeText(text);
        if (m_texts.Add(text) != 0) lead |= kAddText;
    } else {
        encoded = EncodeText(text);
    }
    PutPieces(out, lead, encoded);
}

void CTextOutput::PutSection(COctetBuffer& out, std::string_view text) {
    PutPieces(out, kText, {kAlgorithm, FastInfosetAlgorithm_CData, ToUtf8(text)});
}

void CTextOutput::PutIdentifier(COctetBuffer& out, std::string_view text) {
    const std::string_view utf8 = ToUtf8(text);
    if (utf8.size() > kLongestString) FailFastInfoset("A name is too long.");
    out.Commit(form::Length2(out.Reserve(6), 0, utf8.size()));
    out.Append(utf8);
}

/// Puts one string, or as many text items as are needed. `lead` tells the two apart.
void CTextOutput::PutPieces(COctetBuffer& out, unsigned lead, Encoded encoded) {
    const bool isText = (lead & kText) != 0;
    for (std::string_view rest = encoded.octets; !rest.empty();) {
        std::size_t length = rest.size();
        if (length > kLongestString) {
            if (!isText || encoded.format == kAlgorithm) FailFastInfoset("A value is too long.");
            length = static_cast<std::size_t>(kLongestString);
            while (encoded.format == kUtf8 && (static_cast<unsigned char>(rest[length]) & 0xC0) == 0x80)
                --length;
        }
        unsigned char* to = out.Reserve(8 + (length <= 16 ? 16 : 0));
        if (encoded.format == kUtf8) {
            to = PutLength(to, isText, lead, length);
        } else if (isText) {
            to = form::Put(to, lead | encoded.format << 2 | encoded.number >> 6);
            to = form::Length7(to, (encoded.number & 0x3Fu) << 2, length);
        } else {
            to = form::Put(to, lead | encoded.format << 4 | encoded.number >> 4);
            to = form::Length5(to, (encoded.number & 0xFu) << 4, length);
        }
        if (length <= 16) {
            CStringBuffer::CopyBytes(reinterpret_cast<char*>(to), rest.data(), length);
            out.Commit(to + length);
        } else {
            out.Commit(to);
            out.Append(rest.substr(0, length));
        }
        rest.remove_prefix(length);
    }
}

bool CTextOutput::TryEncodeValue(std::string_view text, ItemType type, Encoded& encoded) {
    if (!m_writeTypedValues || !EncodeValue(type, text, encoded.number, m_octets)) return false;
    if (m_octets.size() > kLongestString) return false;
    encoded.format = kAlgorithm;
    encoded.octets = m_octets;
    return true;
}

CTextOutput::Encoded CTextOutput::EncodeText(std::string_view text) {
    if (m_useAlphabets && text.size() >= kShortestPacked) {
        unsigned alphabet;
        if (PackText(text, alphabet, m_octets)) return {kAlphabet, alphabet, m_octets};
    }
    return {kUtf8, 0, ToUtf8(text)};
}

std::string_view CTextOutput::ToUtf8(std::string_view text) {
    return IsPlain(text) ? text : ToUtf8Slowly(text);
}

std::string_view CTextOutput::ToUtf8Slowly(std::string_view text) {
    if (!m_isLocalUtf8) {
        m_utf8 = LocalToUtf8(text);
        text = m_utf8;
    } else if (WellFormedUtf8Length(text) != text.size()) {
        m_utf8 = RepairUtf8(text);
        text = m_utf8;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        unsigned code = 0;
        if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r')
            code = byte;
        else if (byte == 0xEF && text[i + 1] == '\xBF' && static_cast<unsigned char>(text[i + 2]) >= 0xBE)
            code = text[i + 2] == '\xBE' ? 0xFFFE : 0xFFFF;
        else
            continue;
        FailFastInfoset(
            FormatString("The text contains the character 0x%02X, which XML can not represent", code));
    }
    return text;
}

}  // namespace KvXmlLib16::internal
