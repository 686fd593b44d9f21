#include "kvxml/json/json_text_writer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/json/internal/json_literal.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/plain_text.h"
#include "kvxml/xml/internal/prepared_names.h"
#include "kvxml/xml/internal/writer_context.h"

namespace KvXmlLib16 {

using internal::CopyPlain;
using internal::HasByte;
using internal::HasControl;
using internal::IsBare;
using internal::IsCanonicalLiteral;
using internal::IsLiteral;
using internal::kPieceLength;
using internal::Put;

namespace {

/// The longest replacement of one character.
constexpr std::size_t kLongestEscape = 6;
constexpr char kHexDigits[] = "0123456789ABCDEF";

// --- transformation of strings ---------------------------------------------------------------------------

char* PutUnit(char* out, unsigned unit) noexcept {
    out[0] = '\\';
    out[1] = 'u';
    for (int i = 5; i >= 2; --i, unit >>= 4)
        out[i] = kHexDigits[unit & 0xF];
    return out + 6;
}

/// Strings as they are, but for line ends and most control characters.
struct PassThrough {
    static unsigned OfByte(char character) noexcept { return static_cast<unsigned char>(character) < 0x20; }
    static constexpr std::uint64_t OfWord(std::uint64_t word) noexcept { return HasControl(word); }
#if defined(__GNUC__)
    static internal::Flags16 OfBytes(internal::Bytes16 bytes) noexcept {
        return bytes < 0x20;
    }
#endif
    static char* Put(char* out, char character, const internal::CLineLayout& layout) noexcept {
        switch (character) {
            case '\n':
                return layout.PutLineEnd(out);
            case '\r':
                return out;
            case '\t':
            case '\b':
            case '\f':
                *out = character;
                return out + 1;
            default:
                return PutUnit(out, static_cast<unsigned char>(character));
        }
    }
};

/// Strings whose content RFC 8259 allows in quotation marks.
struct Escaped {
    static unsigned OfByte(char character) noexcept {
        return static_cast<unsigned char>(character) < 0x20 || character == '"' || character == '\\';
    }
    static constexpr std::uint64_t OfWord(std::uint64_t word) noexcept {
        return HasControl(word) | HasByte(word, '"') | HasByte(word, '\\');
    }
#if defined(__GNUC__)
    static internal::Flags16 OfBytes(internal::Bytes16 bytes) noexcept {
        return (bytes < 0x20) | (bytes == '"') | (bytes == '\\');
    }
#endif
    static char* Put(char* out, char character, const internal::CLineLayout&) noexcept {
        constexpr std::string_view kCharacters = "\"\\\b\f\n\r\t";
        constexpr std::string_view kLetters = "\"\\bfnrt";
        const std::size_t i = kCharacters.find(character);
        if (i == kCharacters.npos) return PutUnit(out, static_cast<unsigned char>(character));
        out[0] = '\\';
        out[1] = kLetters[i];
        return out + 2;
    }
};

[[noreturn]] void ThrowUnknownNamespace(std::string_view uri) {
    throw CKvException(FormatString("Unknown Namespace: %s.", std::string(uri).c_str()));
}

}  // namespace

CJsonTextWriter::CJsonTextWriter(CTextStream* stream)
    : m_stream(stream),
      m_needsFlush(stream->NeedsFlush()),
      m_escapesAsAscii(!internal::IsLocalUtf8() || internal::IsAsciiOnly()) {
    SetDeclaresByAttribute(true);
}

CJsonTextWriter::~CJsonTextWriter() = default;

// --- settings --------------------------------------------------------------------------------------------

void CJsonTextWriter::SetEscapeStrings(bool escape) {
    m_escapeStrings = escape;
    SetIndentChars(GetIndentChars());
}

void CJsonTextWriter::SetIndentChars(std::string_view indentChars) {
    std::string blanks(indentChars);
    const auto isOther = [](char character) { return character != ' ' && character != '\t'; };
    if (m_escapeStrings) blanks.erase(std::remove_if(blanks.begin(), blanks.end(), isOther), blanks.end());
    m_layout.SetIndentChars(blanks);
    ForgetNames();
}

// --- document --------------------------------------------------------------------------------------------

void CJsonTextWriter::BeginOutput() {
    m_stream->Begin();
    Buffer().Append('{');
    m_level = 1;
    m_hasMember = false;
    m_hasText = false;
}

void CJsonTextWriter::EndDocument() {
    if (m_formatted && m_hasMember) Buffer().Append(m_layout.LineEnd());
    Buffer().Append('}');
    m_stream->End();
    CXmlWriter::EndDocument();
}

void CJsonTextWriter::WriteComment(std::string_view text) {
    if (m_escapeStrings) return;
    std::string apart;
    for (const char character : text) {
        if (character == '/' && !apart.empty() && apart.back() == '*') apart += ' ';
        apart += character;
    }
    Buffer().Append("/* ");
    AppendTransformed<PassThrough>(apart);
    Buffer().Append(" */");
    Buffer().Append(m_layout.LineEnd());
    FlushIfFull();
}

void CJsonTextWriter::WriteRaw(std::string_view) {}
void CJsonTextWriter::WriteRawAfterSpace(std::string_view) {}

// --- layout ----------------------------------------------------------------------------------------------

CXmlWriter::CXmlWriterContext& CJsonTextWriter::RequireElement() const {
    CXmlWriterContext* const context = GetCurrentContext();
    if (context == nullptr) throw CKvInvalidStateException("No element is open.");
    return *context;
}

/// Length of the indentation that `PutNewLine` is to put at `level`.
inline std::size_t CJsonTextWriter::LineIndentation(std::size_t level) {
    return m_formatted ? m_layout.PrepareIndentation(level) : 0;
}

inline char* CJsonTextWriter::PutNewLine(char* out, std::size_t indentation) const noexcept {
    return m_formatted ? m_layout.PutIndentation(m_layout.PutLineEnd(out), indentation) : out;
}

void CJsonTextWriter::CloseArray(CXmlWriterContext& context) {
    context.isArrayOpen = false;
    const std::size_t indentation = LineIndentation(--m_level);
    char* out = PutNewLine(Buffer().Reserve(kFrame + indentation), indentation);
    *out++ = ']';
    Buffer().Commit(out);
}

/// Writes line and name of a member or of the document element, after `separator` if it is not zero.
void CJsonTextWriter::AppendLineAndName(char separator, std::string_view mark, std::string_view qualifier,
                                        std::string_view localName) {
    const std::size_t indentation = LineIndentation(m_level);
    CStringBuffer& buffer = Buffer();
    char* out = buffer.Reserve(kFrame + indentation + qualifier.size() + localName.size());
    if (separator != '\0') *out++ = separator;
    out = PutNewLine(out, indentation);
    char* const end = PutName(out, mark, qualifier, localName);
    buffer.Commit(end != nullptr ? end : out);
    if (end == nullptr) AppendName(mark, qualifier, localName);
}

/// Writes what comes before the value of an attribute, a declaration or a text.
void CJsonTextWriter::AppendMember(CXmlWriterContext& context, std::string_view mark,
                                   std::string_view qualifier, std::string_view localName) {
    if (context.isArrayOpen) CloseArray(context);
    const char separator = context.startTagOpen ? '{' : ',';
    context.startTagOpen = false;
    AppendLineAndName(separator, mark, qualifier, localName);
}

// --- elements --------------------------------------------------------------------------------------------

/// The prefix and colon that a namespace has in scope.
inline std::string_view CJsonTextWriter::QualifierOf(const NamespaceScope& scope, std::string_view uri) {
    const NamespaceScope::Alias* const alias = scope.Find(uri);
    if (alias == nullptr) ThrowUnknownNamespace(uri);
    return alias->qualifier;
}

/// Whether an element of this name goes on with the array that is open in the parent. `context` is that of
/// the array's last item, which still has the name.
inline bool CJsonTextWriter::IsItem(const CXmlWriterContext& context, std::string_view qualifier,
                                    std::string_view localName) noexcept {
    const std::size_t length = qualifier.size() + localName.size();
    if (context.nameLength != length) return false;
    const std::string_view name(
        length <= CXmlWriterContext::kShortName ? context.shortName : context.longName.data(), length);
    if (qualifier.empty() && length <= 16) return internal::EqualShort(name.data(), localName.data(), length);
    return name.substr(0, qualifier.size()) == qualifier && name.substr(qualifier.size()) == localName;
}

/// The prefix and colon of an element inside one with this scope; none where names are written without.
inline std::string_view CJsonTextWriter::ElementQualifier(const NamespaceScope& scope,
                                                          std::string_view uri) const {
    const bool isPlain = m_roundTrip != JsonRoundTrip_Full || uri.empty() || scope.IsDefault(uri);
    return isPlain ? std::string_view() : QualifierOf(scope, uri);
}

/// The same for an attribute, for which there is no default namespace.
inline std::string_view CJsonTextWriter::AttributeQualifier(const NamespaceScope& scope,
                                                            std::string_view uri) const {
    const bool isPlain = m_roundTrip != JsonRoundTrip_Full || uri.empty();
    return isPlain ? std::string_view() : QualifierOf(scope, uri);
}

/// What the names of attributes begin with.
inline std::string_view CJsonTextWriter::AttributeMark() const noexcept {
    return m_roundTrip == JsonRoundTrip_None ? "" : "@";
}

void CJsonTextWriter::WriteStartElement(std::string_view localName, std::string_view namespaceUri) {
    CXmlWriterContext* const parent = GetCurrentContext();
    if (parent == nullptr) return StartDocumentElement(localName, namespaceUri);
    const std::string_view qualifier = ElementQualifier(*parent->scope, namespaceUri);
    if (m_hasText) AppendHeldText(*parent);
    CXmlWriterContext* const context = PushContext();
    context->isArrayOpen = false;
    CStringBuffer& buffer = Buffer();
    char separator = ',';
    if (parent->isArrayOpen) {
        if (IsItem(*context, qualifier, localName)) {
            const std::size_t indentation = LineIndentation(m_level);
            char* const out = buffer.Reserve(kFrame + indentation);
            *out = ',';
            buffer.Commit(PutNewLine(out + 1, indentation));
            ++m_level;
            return FlushIfFull();
        }
        CloseArray(*parent);
        // Another name within one collection goes on with another array.
        if (parent->arrayMode == kArrayOpen) parent->arrayMode = kArrayStarting;
    } else if (parent->startTagOpen) {
        parent->startTagOpen = false;
        separator = '{';
    }
    AppendLineAndName(separator, {}, qualifier, localName);
    ++m_level;
    if (parent->arrayMode == kArrayStarting) {
        parent->arrayMode = kArrayOpen;
        parent->isArrayOpen = true;
        const std::size_t nameLength = qualifier.size() + localName.size();
        context->nameLength = nameLength;
        if (nameLength <= CXmlWriterContext::kShortName)
            Put(Put(context->shortName, qualifier), localName);
        else
            context->longName.assign(qualifier).append(localName);
        const std::size_t indentation = LineIndentation(m_level);
        char* const out = buffer.Reserve(kFrame + indentation);
        *out = '[';
        buffer.Commit(PutNewLine(out + 1, indentation));
        ++m_level;
    }
    FlushIfFull();
}

void CJsonTextWriter::StartDocumentElement(std::string_view localName, std::string_view namespaceUri) {
    CXmlWriterContext* const context = PushContext();
    context->isArrayOpen = false;
    std::string_view qualifier;
    std::string_view invented;
    if (m_roundTrip == JsonRoundTrip_Full && !namespaceUri.empty() &&
        !context->scope->IsDefault(namespaceUri)) {
        const NamespaceScope::Alias* alias = context->scope->Find(namespaceUri);
        if (alias == nullptr) {
            alias = &InventPrefix(namespaceUri);
            invented = namespaceUri;
        }
        qualifier = alias->qualifier;
    }
    AppendLineAndName(m_hasMember ? ',' : '\0', {}, qualifier, localName);
    m_hasMember = true;
    ++m_level;
    if (m_roundTrip == JsonRoundTrip_Full) AppendDeclarations(*context, invented);
    FlushIfFull();
}

void CJsonTextWriter::WriteText(std::string_view text, ItemType type, bool) {
    RequireElement();
    // An empty text is a value of its own only where it can be written as one.
    if (text.empty() && (m_hasText || type == ItemType_Unknown || IsBare(type))) return;
    // What comes next decides on the form: the only text of an element is a plain value.
    const std::size_t before = m_hasText ? m_textLength : 0;
    m_textLength = before + text.size();
    if (m_textLength > m_text.size())
        m_text.resize(before == 0 ? std::max<std::size_t>(m_textLength, 64) : 2 * m_textLength);
    CStringBuffer::CopyBytes(m_text.data() + before, text.data(), text.size());
    m_textType = !m_hasText || type == m_textType ? type : ItemType_string;
    m_hasText = true;
}

void CJsonTextWriter::AppendHeldText(CXmlWriterContext& context) {
    m_hasText = false;
    AppendMember(context, {}, {}, m_roundTrip == JsonRoundTrip_None ? "" : "#text");
    AppendValue({m_text.data(), m_textLength}, m_textType);
}

void CJsonTextWriter::WriteEndElement() {
    CXmlWriterContext& context = RequireElement();
    if (context.startTagOpen) {
        if (m_hasText)
            AppendValue({m_text.data(), m_textLength}, m_textType);
        else
            Buffer().Append(m_isNil ? "null" : "{}");
        m_hasText = false;
    } else {
        if (m_hasText) AppendHeldText(context);
        if (context.isArrayOpen) CloseArray(context);
        const std::size_t indentation = LineIndentation(m_level - 1);
        char* out = PutNewLine(Buffer().Reserve(kFrame + indentation), indentation);
        *out++ = '}';
        Buffer().Commit(out);
    }
    m_isNil = false;
    --m_level;
    PopContext();
    FlushIfFull();
}

// --- prepared names ---------------------------------------------------------------------------------------

/// What was prepared for a member of the element with this context, or null.
inline const internal::CPreparedName* CJsonTextWriter::FindPrepared(const SimpleName& name,
                                                                    const CXmlWriterContext& context) {
    if (m_preparedNames == nullptr) return nullptr;
    return m_preparedNames->Find(name.id, context.scope, GetNamesVersion(), m_level);
}

/// Prepares line and name of a member of the current element; null when they can not be.
const internal::CPreparedName* CJsonTextWriter::Prepare(const SimpleName& name, std::string_view mark,
                                                        std::string_view qualifier) {
    const std::size_t indentation = LineIndentation(m_level);
    std::string text(kFrame + indentation + qualifier.size() + name.localName.size() + CStringBuffer::kSlack,
                     '\0');
    char* const end = PutName(PutNewLine(text.data(), indentation), mark, qualifier, name.localName);
    if (end == nullptr) return nullptr;
    if (m_preparedNames == nullptr) m_preparedNames = std::make_unique<internal::CPreparedNames>();
    return m_preparedNames->Keep(name.id, GetCurrentContext()->scope, GetNamesVersion(), m_level,
                                 {text.data(), static_cast<std::size_t>(end - text.data())}, {});
}

/// Appends a value to what was put into reserved room up to `out`, which has more for the value.
inline void CJsonTextWriter::AppendValue(char* out, std::string_view text, ItemType type, bool isCanonical) {
    char* const end = PutValue(out, text, type, isCanonical);
    Buffer().Commit(end != nullptr ? end : out);
    if (end == nullptr) AppendLongValue(text, type);
    FlushIfFull();
}

inline void CJsonTextWriter::AppendPrepared(CXmlWriterContext& context,
                                            const internal::CPreparedName& prepared, std::string_view text,
                                            ItemType type, bool isCanonical) {
    const std::size_t length = std::min(text.size(), kPieceLength);
    char* out = Buffer().Reserve(kFrame + internal::CPreparedName::kLongest + length);
    *out++ = context.startTagOpen ? '{' : ',';
    context.startTagOpen = false;
    AppendValue(prepared.PutStart(out), text, type, isCanonical);
}

void CJsonTextWriter::WriteSimpleElement(const SimpleName& name, std::string_view text, bool isDefaultValue,
                                         bool isCanonical) {
    CXmlWriterContext* const parent = GetCurrentContext();
    // As WriteText has it: an empty text is a value of its own only where it can be written as one.
    const bool isNull = text.empty() && (name.type == ItemType_Unknown || IsBare(name.type));
    if (parent == nullptr || m_hasText || isNull)
        return CXmlWriter::WriteSimpleElement(name, text, isDefaultValue, isCanonical);
    if (parent->isArrayOpen) {
        const std::string_view qualifier = ElementQualifier(*parent->scope, name.namespaceUri);
        if (!IsItem(*PeekContext(), qualifier, name.localName))
            return CXmlWriter::WriteSimpleElement(name, text, isDefaultValue, isCanonical);
        const std::size_t indentation = LineIndentation(m_level);
        char* const out = Buffer().Reserve(kFrame + indentation + std::min(text.size(), kPieceLength));
        *out = ',';
        return AppendValue(PutNewLine(out + 1, indentation), text, name.type, isCanonical);
    }
    const internal::CPreparedName* prepared = nullptr;
    if (name.id != 0 && parent->arrayMode != kArrayStarting) {
        prepared = FindPrepared(name, *parent);
        if (prepared == nullptr)
            prepared = Prepare(name, {}, ElementQualifier(*parent->scope, name.namespaceUri));
    }
    if (prepared == nullptr) return CXmlWriter::WriteSimpleElement(name, text, isDefaultValue, isCanonical);
    AppendPrepared(*parent, *prepared, text, name.type, isCanonical);
}

void CJsonTextWriter::WriteSimpleAttribute(const SimpleName& name, std::string_view value, bool isCanonical) {
    CXmlWriterContext& context = RequireElement();
    const internal::CPreparedName* prepared = nullptr;
    if (name.id != 0 && !context.isArrayOpen) {
        prepared = FindPrepared(name, context);
        if (prepared == nullptr)
            prepared = Prepare(name, AttributeMark(), AttributeQualifier(*context.scope, name.namespaceUri));
    }
    if (prepared == nullptr) return CXmlWriter::WriteSimpleAttribute(name, value, isCanonical);
    AppendPrepared(context, *prepared, value, name.type, isCanonical);
}

// --- attributes ------------------------------------------------------------------------------------------

void CJsonTextWriter::WriteAttribute(std::string_view localName, std::string_view namespaceUri,
                                     std::string_view value, ItemType type) {
    CXmlWriterContext& context = RequireElement();
    AppendMember(context, AttributeMark(), AttributeQualifier(*context.scope, namespaceUri), localName);
    AppendValue(value, type);
    FlushIfFull();
}

void CJsonTextWriter::WriteTypeAttribute(std::string_view typeNamespaceUri, std::string_view typeName,
                                         ItemType type) {
    if (m_roundTrip != JsonRoundTrip_Full) return;
    const NamespaceScope& scope = *RequireElement().scope;
    std::string value;
    if (!typeNamespaceUri.empty() && typeNamespaceUri != scope.defaultNamespace)
        value = QualifierOf(scope, typeNamespaceUri);
    value += typeName;
    WriteAttribute("type", internal::kInstanceNamespace, value, type);
}

void CJsonTextWriter::WriteNilAttribute() {
    m_isNil = true;
}

void CJsonTextWriter::AppendDeclarations(CXmlWriterContext& context, std::string_view invented) {
    const NamespaceScope& scope = *context.scope;
    if (!scope.defaultNamespace.empty()) AppendDeclaration(context, {}, scope.defaultNamespace);
    for (const NamespaceScope::Alias& alias : scope.aliases)
        if (!IsXmlNamespace(alias.uri) && alias.uri != invented)
            AppendDeclaration(context, alias.Prefix(), alias.uri);
    if (!invented.empty()) AppendDeclaration(context, scope.Find(invented)->Prefix(), invented);
}

void CJsonTextWriter::AppendDeclaration(CXmlWriterContext& context, std::string_view prefix,
                                        std::string_view uri) {
    AppendMember(context, prefix.empty() ? "@xmlns" : "@xmlns:", prefix, {});
    AppendValue(uri, ItemType_string);
}

// --- names and values ------------------------------------------------------------------------------------

/// Puts a name with its quotation marks and colon into room for kFrame characters more than it has; null
/// when it needs a closer look, which `AppendName` takes.
inline char* CJsonTextWriter::PutName(char* out, std::string_view mark, std::string_view qualifier,
                                      std::string_view localName) const noexcept {
    *out++ = '"';
    out = Put(out, mark);
    if (m_escapeStrings) {
        const std::size_t plain = CopyPlain<Escaped>(out, qualifier.data(), qualifier.size());
        const std::size_t more = CopyPlain<Escaped>(out + plain, localName.data(), localName.size());
        if (m_escapesAsAscii || plain + more != qualifier.size() + localName.size()) return nullptr;
        out += plain + more;
    } else {
        out = Put(Put(out, qualifier), localName);
    }
    std::memcpy(out, "\": ", 3);
    return out + 3;
}

void CJsonTextWriter::AppendName(std::string_view mark, std::string_view qualifier,
                                 std::string_view localName) {
    CStringBuffer& buffer = Buffer();
    buffer.Append('"');
    buffer.Append(mark);
    AppendEscaped(qualifier);
    AppendEscaped(localName);
    buffer.Append("\": ");
}

/// Puts a value into room for two characters more than it has, or than a piece has; null when it needs a
/// closer look, which `AppendLongValue` takes.
inline char* CJsonTextWriter::PutValue(char* out, std::string_view text, ItemType type,
                                       bool isCanonical) const noexcept {
    if (text.size() > kPieceLength) return nullptr;
    if (IsBare(type) && (!m_escapeStrings || (isCanonical && IsCanonicalLiteral(text)) || IsLiteral(text)))
        return Put(out, text);
    *out++ = '"';
    std::size_t plain = 0;
    if (!m_escapeStrings)
        plain = CopyPlain<PassThrough>(out, text.data(), text.size());
    else if (!m_escapesAsAscii)
        plain = CopyPlain<Escaped>(out, text.data(), text.size());
    if (plain != text.size()) return nullptr;
    out[plain] = '"';
    return out + plain + 1;
}

inline void CJsonTextWriter::AppendValue(std::string_view text, ItemType type) {
    CStringBuffer& buffer = Buffer();
    char* const end = PutValue(buffer.Reserve(std::min(text.size(), kPieceLength) + 2), text, type, false);
    if (end == nullptr) return AppendLongValue(text, type);
    buffer.Commit(end);
}

void CJsonTextWriter::AppendLongValue(std::string_view text, ItemType type) {
    CStringBuffer& buffer = Buffer();
    if (IsBare(type) && (!m_escapeStrings || IsLiteral(text))) return buffer.Append(text);
    buffer.Append('"');
    if (m_escapeStrings)
        AppendEscaped(text);
    else
        AppendTransformed<PassThrough>(text);
    buffer.Append('"');
}

void CJsonTextWriter::AppendEscaped(std::string_view text) {
    if (m_escapesAsAscii)
        AppendAsAscii(text);
    else
        AppendTransformed<Escaped>(text);
}

template <class Rules>
void CJsonTextWriter::AppendTransformed(std::string_view text) {
    internal::AppendEscapedInPieces<Rules>(
        Buffer(), text, kLongestEscape,
        [this](char* out, std::string_view rest) { return Rules::Put(out, rest.front(), m_layout); });
}

/// Escapes all that is not ASCII, for text whose bytes may not stand in a document as they are.
void CJsonTextWriter::AppendAsAscii(std::string_view text) {
    const std::string utf8 =
        internal::IsLocalUtf8() ? internal::RepairUtf8(text) : internal::LocalToUtf8(text);
    std::size_t i = 0;
    while (i < utf8.size()) {
        std::size_t ascii = i;
        while (ascii < utf8.size() && static_cast<unsigned char>(utf8[ascii]) < 0x80)
            ++ascii;
        AppendTransformed<Escaped>(std::string_view(utf8).substr(i, ascii - i));
        if ((i = ascii) == utf8.size()) return;
        // The text is well-formed, so the first byte tells the length of the character.
        const auto lead = static_cast<unsigned char>(utf8[i++]);
        unsigned code = lead < 0xE0 ? lead & 0x1Fu : lead < 0xF0 ? lead & 0x0Fu : lead & 0x07u;
        for (int rest = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3; rest > 0; --rest)
            code = code << 6 | (static_cast<unsigned char>(utf8[i++]) & 0x3Fu);
        char* out = Buffer().Reserve(2 * kLongestEscape);
        if (code > 0xFFFF) {
            code -= 0x10000;
            out = PutUnit(out, 0xD800 | code >> 10);
            code = 0xDC00 | (code & 0x3FF);
        }
        Buffer().Commit(PutUnit(out, code));
    }
}

}  // namespace KvXmlLib16
