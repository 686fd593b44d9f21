#include "kvxml/xml/xml_text_writer.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/plain_text.h"
#include "kvxml/xml/internal/prepared_names.h"
#include "kvxml/xml/internal/writer_context.h"

namespace KvXmlLib16 {

using internal::CopyPlain;
using internal::HasByte;
using internal::kPieceLength;
using internal::Put;

namespace {

constexpr std::string_view kSectionStart = "<![CDATA[";
constexpr std::string_view kSectionEnd = "]]>";
/// The longest replacement of one character.
constexpr std::size_t kLongestReference = 6;

// --- what a byte of text needs ---------------------------------------------------------------------------

enum ByteClass : std::uint8_t {
    kPlain,
    kTab,
    kLineFeed,
    kCarriageReturn,
    kQuote,
    kAmpersand,
    kLess,
    kGreater,
    kForbidden,         // XML 1.0 has no way to represent it
    kNonCharacterLead,  // in UTF-8 the first byte of U+FFFE and U+FFFF, which XML excludes as well
};

constexpr std::array<ByteClass, 256> MakeByteClasses() {
    std::array<ByteClass, 256> classes{};
    for (unsigned byte = 0; byte < 0x20; ++byte)
        classes[byte] = kForbidden;
    classes['\t'] = kTab;
    classes['\n'] = kLineFeed;
    classes['\r'] = kCarriageReturn;
    classes['"'] = kQuote;
    classes['&'] = kAmpersand;
    classes['<'] = kLess;
    classes['>'] = kGreater;
    classes[0xEF] = kNonCharacterLead;
    return classes;
}

constexpr std::array<ByteClass, 256> kByteClasses = MakeByteClasses();

ByteClass ClassOf(char character) noexcept {
    return kByteClasses[static_cast<unsigned char>(character)];
}

template <bool kAttribute>
struct Suspects {
    static unsigned OfByte(char character) noexcept { return ClassOf(character); }
    static constexpr std::uint64_t OfWord(std::uint64_t word) noexcept {
        const std::uint64_t angle = HasByte(word | (internal::kOnes * 0x02), 0x3E);  // < and >
        const std::uint64_t ampersand = kAttribute ? HasByte(word | (internal::kOnes * 0x04), 0x26)
                                                   : HasByte(word, 0x26);  // & and, in attributes, "
        return internal::HasControl(word) | angle | ampersand | HasByte(word, 0xEF);
    }
#if defined(__GNUC__)
    static internal::Flags16 OfBytes(internal::Bytes16 bytes) noexcept {
        const internal::Flags16 always =
            (bytes < 0x20) | ((bytes | 0x02) == '>') | (bytes == '&') | (bytes == 0xEF);
        return kAttribute ? always | (bytes == '"') : always;
    }
#endif
};

[[noreturn]] void ThrowForbidden(unsigned code) {
    throw CKvInvalidValueException(
        FormatString("The text contains the character 0x%02X, which XML can not represent", code));
}

/// Throws for U+FFFE and U+FFFF; `text` begins with their first byte.
void CheckNonCharacter(std::string_view text) {
    if (text.size() >= 3 && text[1] == '\xBF' && (text[2] == '\xBE' || text[2] == '\xBF'))
        ThrowForbidden(text[2] == '\xBE' ? 0xFFFEu : 0xFFFFu);
}

/// Throws for characters that have no place in a document, whether escaped or not.
void CheckCharacters(std::string_view text, bool isUtf8) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const ByteClass byteClass = ClassOf(text[i]);
        if (byteClass == kForbidden) ThrowForbidden(static_cast<unsigned char>(text[i]));
        if (byteClass == kNonCharacterLead && isUtf8) CheckNonCharacter(text.substr(i));
    }
}

/// Whether the library writes values of the kind without any character that must be escaped.
constexpr bool HasPlainForms(ItemType type) noexcept {
    return type != ItemType_Unknown && type != ItemType_char && type != ItemType_string;
}

bool BeginsWithSection(std::string_view text) noexcept {
    return text.front() == '<' && text.substr(0, kSectionStart.size()) == kSectionStart;
}

}  // namespace

CXmlTextWriter::CXmlTextWriter(CTextStream* stream, bool writeDefaultValues)
    : m_stream(stream),
      m_needsFlush(stream->NeedsFlush()),
      m_writeDefaultValues(writeDefaultValues),
      m_isUtf8(internal::IsLocalUtf8()) {
    SetDeclaresByAttribute(true);
}

CXmlTextWriter::~CXmlTextWriter() = default;

// --- document --------------------------------------------------------------------------------------------

void CXmlTextWriter::BeginOutput() {
    m_stream->Begin();
}

void CXmlTextWriter::EndDocument() {
    m_stream->End();
    CXmlWriter::EndDocument();
}

void CXmlTextWriter::WriteDeclaration() {
    CStringBuffer& buffer = Buffer();
    buffer.Append("<?xml version=\"1.0\"");
    if (m_stream->GetEncoding() == XmlEncoding_UTF8)
        buffer.Append(" encoding=\"UTF-8\"");
    else if (m_stream->GetEncoding() == XmlEncoding_UTF16)
        buffer.Append(" encoding=\"UTF-16\"");
    buffer.Append("?>");
    buffer.Append(m_layout.LineEnd());
    FlushIfFull();
}

void CXmlTextWriter::WriteComment(std::string_view text) {
    std::string apart;
    if (text.find("--") != text.npos || (!text.empty() && text.back() == '-')) {
        for (const char character : text) {
            if (character == '-' && !apart.empty() && apart.back() == '-') apart += ' ';
            apart += character;
        }
        if (apart.back() == '-') apart += ' ';
        text = apart;
    }
    AppendEscaped<false>("<!--", text);
    Buffer().Append("-->");
    Buffer().Append(m_layout.LineEnd());
    FlushIfFull();
}

void CXmlTextWriter::WriteRaw(std::string_view text) {
    Buffer().Append(text);
    Buffer().Append(m_layout.LineEnd());
    Buffer().Append(m_layout.LineEnd());
    FlushIfFull();
}

void CXmlTextWriter::WriteRawAfterSpace(std::string_view text) {
    Buffer().Append(' ');
    Buffer().Append(m_layout.LineEnd());
    Buffer().Append(text);
    Buffer().Append(m_layout.LineEnd());
    FlushIfFull();
}

void CXmlTextWriter::WriteRawContent(std::string_view text, bool onOwnLines) {
    CXmlWriterContext* const context = GetCurrentContext();
    if (context == nullptr) ThrowNoElement();
    const std::string_view lineEnd = onOwnLines && m_formatted ? m_layout.LineEnd() : std::string_view();
    CStringBuffer& buffer = Buffer();
    if (context->startTagOpen) {
        buffer.Append('>');
        buffer.Append(lineEnd);
    }
    context->startTagOpen = false;
    if (!lineEnd.empty()) ++context->childCount;  // the end tag is on a line of its own
    buffer.Append(text);
    buffer.Append(lineEnd);
    FlushIfFull();
}

// --- elements --------------------------------------------------------------------------------------------

inline std::size_t CXmlTextWriter::IndentationOf(const CXmlWriterContext& context) {
    return m_layout.PrepareIndentation(static_cast<std::size_t>(context.depth));
}

void CXmlTextWriter::WriteStartElement(std::string_view localName, std::string_view namespaceUri) {
    CXmlWriterContext* const parent = GetCurrentContext();
    bool closeParent = false;
    if (parent != nullptr) {
        ++parent->childCount;
        closeParent = parent->startTagOpen;
        parent->startTagOpen = false;
    }
    CXmlWriterContext* const context = PushContext();

    const NamespaceScope::Alias* alias = nullptr;
    bool invented = false;
    if (!namespaceUri.empty() && !context->scope->IsDefault(namespaceUri)) {
        alias = context->scope->Find(namespaceUri);
        invented = alias == nullptr;
        if (invented) alias = &InventPrefix(namespaceUri);
    }
    const std::string_view qualifier = alias != nullptr ? alias->qualifier : std::string_view();

    const std::size_t indentation = m_formatted ? IndentationOf(*context) : 0;
    const std::size_t nameLength = qualifier.size() + localName.size();
    CStringBuffer& buffer = Buffer();
    char* out = buffer.Reserve(1 + internal::CLineLayout::kLineEndLength + indentation + 1 + nameLength);
    if (closeParent) {
        *out++ = '>';
        if (m_formatted) out = m_layout.PutLineEnd(out);
    }
    out = m_layout.PutIndentation(out, indentation);
    *out++ = '<';
    char* const name = out;
    out = Put(Put(out, qualifier), localName);
    context->qualifierLength = qualifier.size();
    context->nameLength = nameLength;
    // The end tag copies what is stored here in the same pieces; pieces of other widths are slow to load.
    if (nameLength <= CXmlWriterContext::kShortName)
        Put(Put(context->shortName, qualifier), localName);
    else
        context->longName.assign(name, nameLength);
    buffer.Commit(out);

    if (invented) AppendNamespace(alias->Prefix(), namespaceUri);
    if (parent == nullptr) AppendDocumentNamespaces(invented ? namespaceUri : std::string_view());
    FlushIfFull();
}

void CXmlTextWriter::WriteText(std::string_view text, ItemType, bool isDefaultValue) {
    if (text.empty() || (isDefaultValue && !m_writeDefaultValues)) return;
    CXmlWriterContext* const context = GetCurrentContext();
    if (context == nullptr) ThrowNoElement();
    const std::string_view tagEnd(">", context->startTagOpen ? 1 : 0);
    context->startTagOpen = false;
    if (BeginsWithSection(text) && !m_lossless) {
        Buffer().Append(tagEnd);
        AppendWithSections(text);
    } else {
        AppendEscaped<false>(tagEnd, text);
    }
    FlushIfFull();
}

void CXmlTextWriter::WriteEndElement() {
    CXmlWriterContext* const context = GetCurrentContext();
    if (context == nullptr) ThrowNoElement();
    CStringBuffer& buffer = Buffer();
    char* out;
    if (context->startTagOpen) {
        out = buffer.Reserve(2 + internal::CLineLayout::kLineEndLength);
        *out++ = '/';
    } else {
        const std::size_t indentation = m_formatted && context->childCount > 0 ? IndentationOf(*context) : 0;
        const std::size_t nameLength = context->nameLength;
        out = buffer.Reserve(indentation + 3 + nameLength + internal::CLineLayout::kLineEndLength);
        out = m_layout.PutIndentation(out, indentation);
        *out++ = '<';
        *out++ = '/';
        const char* const name =
            nameLength <= CXmlWriterContext::kShortName ? context->shortName : context->longName.data();
        const std::size_t qualifierLength = context->qualifierLength;
        out = Put(out, {name, qualifierLength});
        out = Put(out, {name + qualifierLength, nameLength - qualifierLength});
    }
    *out++ = '>';
    if (m_formatted) out = m_layout.PutLineEnd(out);
    buffer.Commit(out);
    PopContext();
    FlushIfFull();
}

/// The start tag of an element inside the current one, from the beginning of its line, and its end tag with
/// the line end; null when they can not be prepared.
const internal::CPreparedName* CXmlTextWriter::PrepareName(const SimpleName& name) {
    const CXmlWriterContext& parent = *GetCurrentContext();
    std::string_view qualifier;
    if (!name.namespaceUri.empty() && !parent.scope->IsDefault(name.namespaceUri)) {
        const NamespaceScope::Alias* const alias = parent.scope->Find(name.namespaceUri);
        if (alias == nullptr) return nullptr;
        qualifier = alias->qualifier;
    }
    std::string start;
    const auto level = static_cast<std::size_t>(parent.depth) + 1;
    if (m_formatted) {
        start.resize(m_layout.PrepareIndentation(level) + internal::CPreparedName::kSlack);
        start.resize(static_cast<std::size_t>(
            m_layout.PutIndentation(start.data(), m_layout.PrepareIndentation(level)) - start.data()));
    }
    start.append(1, '<').append(qualifier).append(name.localName).append(1, '>');
    std::string end("</");
    end.append(qualifier).append(name.localName).append(1, '>');
    if (m_formatted) end += m_layout.LineEnd();
    if (m_preparedNames == nullptr) m_preparedNames = std::make_unique<internal::CPreparedNames>();
    return m_preparedNames->Keep(name.id, parent.scope, GetNamesVersion(), level, start, end);
}

void CXmlTextWriter::WriteSimpleElement(const SimpleName& name, std::string_view text, bool isDefaultValue,
                                        bool isCanonical) {
    CXmlWriterContext* const parent = GetCurrentContext();
    const internal::CPreparedName* prepared = nullptr;
    if (name.id != 0 && parent != nullptr && !text.empty() && !isDefaultValue && !BeginsWithSection(text)) {
        if (m_preparedNames != nullptr)
            prepared = m_preparedNames->Find(name.id, parent->scope, GetNamesVersion(),
                                             static_cast<std::size_t>(parent->depth) + 1);
        if (prepared == nullptr) prepared = PrepareName(name);
    }
    if (prepared == nullptr) return CXmlWriter::WriteSimpleElement(name, text, isDefaultValue, isCanonical);

    constexpr std::size_t kNameRoom = internal::CPreparedName::kLongest + internal::CPreparedName::kSlack;
    const std::size_t length = std::min(text.size(), kPieceLength);
    CStringBuffer& buffer = Buffer();
    char* out = buffer.Reserve(1 + internal::CLineLayout::kLineEndLength + kNameRoom + length);
    ++parent->childCount;
    if (parent->startTagOpen) {
        parent->startTagOpen = false;
        *out++ = '>';
        if (m_formatted) out = m_layout.PutLineEnd(out);
    }
    out = prepared->PutStart(out);
    std::size_t plain = length;
    if (isCanonical && HasPlainForms(name.type))
        Put(out, text.substr(0, length));
    else
        plain = CopyPlain<Suspects<false>>(out, text.data(), length);
    out += plain;
    if (plain != text.size()) {
        buffer.Commit(out);
        AppendEscapedInPieces<false>(text.substr(plain));
        out = buffer.Reserve(kNameRoom);
    }
    buffer.Commit(prepared->PutEnd(out));
    FlushIfFull();
}

// --- attributes ------------------------------------------------------------------------------------------

void CXmlTextWriter::WriteAttribute(std::string_view localName, std::string_view namespaceUri,
                                    std::string_view value, ItemType) {
    RequireOpenStartTag();
    std::string_view qualifier;
    if (!namespaceUri.empty()) {
        const NamespaceScope::Alias* alias = GetCurrentContext()->scope->Find(namespaceUri);
        if (alias == nullptr) {
            alias = &InventPrefix(namespaceUri);
            AppendNamespace(alias->Prefix(), namespaceUri);
        }
        qualifier = alias->qualifier;
    }
    CStringBuffer& buffer = Buffer();
    char* out = buffer.Reserve(1 + qualifier.size() + localName.size());
    *out++ = ' ';
    out = Put(Put(out, qualifier), localName);
    buffer.Commit(out);
    AppendEscaped<true>("=\"", value);
    buffer.Append('"');
    FlushIfFull();
}

void CXmlTextWriter::WriteSimpleAttribute(const SimpleName& name, std::string_view value, bool isCanonical) {
    RequireOpenStartTag();
    const NamespaceScope& scope = *GetCurrentContext()->scope;
    const internal::CPreparedName* prepared = nullptr;
    if (name.id != 0) {
        if (m_preparedNames != nullptr)
            prepared = m_preparedNames->Find(name.id, &scope, GetNamesVersion(), 0);
        if (prepared == nullptr) prepared = PrepareAttribute(name);
    }
    if (prepared == nullptr) return CXmlWriter::WriteSimpleAttribute(name, value, isCanonical);

    constexpr std::size_t kNameRoom = internal::CPreparedName::kLongest + internal::CPreparedName::kSlack;
    const std::size_t length = std::min(value.size(), kPieceLength);
    CStringBuffer& buffer = Buffer();
    char* const out = prepared->PutStart(buffer.Reserve(kNameRoom + length + 1));
    const std::size_t plain = CopyPlain<Suspects<true>>(out, value.data(), length);
    buffer.Commit(out + plain);
    if (plain != value.size()) AppendEscapedInPieces<true>(value.substr(plain));
    buffer.Append('"');
    FlushIfFull();
}

/// An attribute up to the quotation mark in front of its value; null when it can not be prepared.
const internal::CPreparedName* CXmlTextWriter::PrepareAttribute(const SimpleName& name) {
    const NamespaceScope& scope = *GetCurrentContext()->scope;
    std::string start(1, ' ');
    if (!name.namespaceUri.empty()) {
        const NamespaceScope::Alias* const alias = scope.Find(name.namespaceUri);
        if (alias == nullptr) return nullptr;
        start += alias->qualifier;
    }
    start.append(name.localName).append("=\"");
    if (m_preparedNames == nullptr) m_preparedNames = std::make_unique<internal::CPreparedNames>();
    return m_preparedNames->Keep(name.id, &scope, GetNamesVersion(), 0, start, {});
}

void CXmlTextWriter::WriteTypeAttribute(std::string_view typeNamespaceUri, std::string_view typeName,
                                        ItemType type) {
    RequireOpenStartTag();
    const NamespaceScope& scope = *GetCurrentContext()->scope;
    std::string value;
    if (!typeNamespaceUri.empty() && typeNamespaceUri != scope.defaultNamespace) {
        const NamespaceScope::Alias* alias = scope.Find(typeNamespaceUri);
        if (alias == nullptr) {
            alias = &InventPrefix(typeNamespaceUri);
            AppendNamespace(alias->Prefix(), typeNamespaceUri);
            Buffer().Append(' ');
        }
        value = alias->qualifier;
    }
    value += typeName;
    WriteAttribute("type", internal::kInstanceNamespace, value, type);
}

void CXmlTextWriter::WriteNilAttribute() {
    RequireOpenStartTag();
    WriteAttribute("nil", internal::kInstanceNamespace, "true", ItemType_boolean);
}

void CXmlTextWriter::RequireOpenStartTag() const {
    const CXmlWriterContext* const context = GetCurrentContext();
    if (context == nullptr || !context->startTagOpen)
        throw CKvException("Attributes must be added before elements");
}

void CXmlTextWriter::AppendNamespace(std::string_view prefix, std::string_view uri) {
    CStringBuffer& buffer = Buffer();
    buffer.Append(" xmlns");
    if (!prefix.empty()) {
        buffer.Append(':');
        buffer.Append(prefix);
    }
    AppendEscaped<true>("=\"", uri);
    buffer.Append('"');
}

void CXmlTextWriter::AppendDocumentNamespaces(std::string_view declared) {
    const NamespaceScope& scope = *GetCurrentContext()->scope;
    if (!scope.defaultNamespace.empty()) AppendNamespace({}, scope.defaultNamespace);
    for (const NamespaceScope::Alias& alias : scope.aliases)
        if (!IsXmlNamespace(alias.uri) && alias.uri != declared) AppendNamespace(alias.Prefix(), alias.uri);
}

// --- text ------------------------------------------------------------------------------------------------

template <bool kAttribute>
inline void CXmlTextWriter::AppendEscaped(std::string_view lead, std::string_view text) {
    CStringBuffer& buffer = Buffer();
    const std::size_t length = std::min(text.size(), kPieceLength);
    char* const out = Put(buffer.Reserve(lead.size() + length), lead);
    const std::size_t plain = CopyPlain<Suspects<kAttribute>>(out, text.data(), length);
    buffer.Commit(out + plain);
    if (plain != text.size()) AppendEscapedInPieces<kAttribute>(text.substr(plain));
}

template <bool kAttribute>
void CXmlTextWriter::AppendEscapedInPieces(std::string_view text) {
    internal::AppendEscapedInPieces<Suspects<kAttribute>>(
        Buffer(), text, kLongestReference,
        [this](char* out, std::string_view rest) { return PutEscaped<kAttribute>(out, rest); });
}

/// Puts what stands for the character that `rest` begins with.
template <bool kAttribute>
char* CXmlTextWriter::PutEscaped(char* out, std::string_view rest) const {
    const char character = rest.front();
    switch (ClassOf(character)) {
        case kTab:
            if (kAttribute && m_lossless) return Put(out, "&#x9;");
            break;
        case kLineFeed:
            return kAttribute ? Put(out, "&#xA;") : m_layout.PutLineEnd(out);
        case kCarriageReturn:
            return m_lossless ? Put(out, "&#xD;") : out;
        case kAmpersand:
            return Put(out, "&amp;");
        case kLess:
            return Put(out, "&lt;");
        case kGreater:
            return Put(out, "&gt;");
        case kQuote:
            if (kAttribute) return Put(out, "&quot;");
            break;
        case kForbidden:
            ThrowForbidden(static_cast<unsigned char>(character));
        case kNonCharacterLead:
            if (m_isUtf8) CheckNonCharacter(rest);
            break;
        case kPlain:
            break;
    }
    *out = character;
    return out + 1;
}

void CXmlTextWriter::AppendWithSections(std::string_view text) {
    while (!text.empty()) {
        const std::size_t start = text.find(kSectionStart);
        const std::size_t end =
            start == text.npos ? text.npos : text.find(kSectionEnd, start + kSectionStart.size());
        if (end == text.npos) break;
        AppendEscaped<false>({}, text.substr(0, start));
        const std::string_view section = text.substr(start, end + kSectionEnd.size() - start);
        CheckCharacters(section, m_isUtf8);
        Buffer().Append(section);
        text.remove_prefix(start + section.size());
    }
    AppendEscaped<false>({}, text);
}

void CXmlTextWriter::ThrowNoElement() {
    throw CKvInvalidStateException("No element is open.");
}

}  // namespace KvXmlLib16
