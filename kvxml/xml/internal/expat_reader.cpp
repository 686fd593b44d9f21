#include "kvxml/xml/internal/expat_reader.h"

// The header has what limits entities only with it; the library has it unless built without entities.
#ifndef XML_DTD
#define XML_DTD 1
#endif
#include <expat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/tree_limits.h"

namespace KvXmlLib16::internal {

namespace {

// expat doubles its buffer in int arithmetic.
constexpr std::size_t kWholeLimit = std::size_t{1} << 30;
std::size_t g_wholeLimit = kWholeLimit;

// Larger texts come in pieces of this size.
constexpr std::size_t kPiece = std::size_t{1} << 26;

// expat reads an entity inside an entity by a recursive call; its own limits are on the amount of text only.
constexpr int kMaxNestedEntities = 1000;

// For each attribute declaration, and for each element, expat goes through all attributes that are declared
// for the element.
constexpr int kMaxDeclaredAttributes = 1000;

/// True when the replacement text of an entity refers to another entity.
bool RefersToEntity(std::string_view text) {
    for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
        if (at + 1 < text.size() && text[at + 1] != '#') return true;
    }
    return false;
}

// In a tag expat writes the namespace in front of the name of each attribute that is in one. Those of longer
// namespaces are counted as what the document gains, and the memory that they take at once is bounded.
constexpr std::size_t kLongNamespace = 256;
constexpr std::uint64_t kMemoryPerExpansion = 8;
constexpr const char* kTooLongNames =
    "namespaces of attributes add more to the document than the limit of %llu bytes";

/// What the parser that runs in this thread may still allocate; null when none does.
thread_local constinit std::uint64_t* t_memoryLeft = nullptr;

bool TakeMemory(std::size_t size) noexcept {
    if (t_memoryLeft == nullptr) return true;
    const bool isLeft = size <= *t_memoryLeft;
    *t_memoryLeft = isLeft ? *t_memoryLeft - size : 0;
    return isLeft;
}

void* Allocate(std::size_t size) {
    return TakeMemory(size) ? std::malloc(size) : nullptr;
}

void* Reallocate(void* memory, std::size_t size) {
    return TakeMemory(size) ? std::realloc(memory, size) : nullptr;
}

constexpr XML_Memory_Handling_Suite kParserMemory{&Allocate, &Reallocate, &std::free};

/// Counts what the parser allocates while it runs; with null, does not, though a parser around it may run.
class CMemoryCount {
public:
    explicit CMemoryCount(std::uint64_t* left) noexcept : m_outer(std::exchange(t_memoryLeft, left)) {}
    CMemoryCount(const CMemoryCount&) = delete;
    CMemoryCount& operator=(const CMemoryCount&) = delete;
    ~CMemoryCount() { t_memoryLeft = m_outer; }

private:
    std::uint64_t* const m_outer;
};

/// What the parser's conversion of a multi-byte encoding needs.
struct Decoder {
    std::string encoding;
    int lengths[256];
    void* cache = nullptr;

    ~Decoder() { CloseDecoder(cache); }
};

}  // namespace

/// What expat calls. No exception may pass through its C code.
struct CExpatReader::Handlers {
    static CExpatReader& Reader(void* user) { return *static_cast<CExpatReader*>(user); }

    static void XMLCALL OnStartElement(void* user, const XML_Char* name, const XML_Char** attributes) {
        try {
            Reader(user).m_builder->StartElement(name, attributes);
        } catch (...) {
            Reader(user).Stop();
        }
    }

    /// For documents whose type declares default attributes, or entities that hold elements, and for those
    /// with long namespaces.
    static void XMLCALL OnStartCountedElement(void* user, const XML_Char* name, const XML_Char** attributes) {
        CExpatReader& reader = Reader(user);
        try {
            reader.CountElement(attributes);
            reader.m_builder->StartElement(name, attributes);
        } catch (...) {
            reader.Stop();
        }
    }

    static void XMLCALL OnEndElement(void* user, const XML_Char*) {
        try {
            Reader(user).m_builder->EndElement();
        } catch (...) {
            Reader(user).Stop();
        }
    }

    static void XMLCALL OnText(void* user, const XML_Char* text, int length) {
        if (length == 1) {
            // Line ends are normalised, so carriage returns come from character references, which come alone
            // outside of entities.
            if (*text == '\r' || Reader(user).m_builder->AppendCharacter(*text)) return;
        }
        AppendText(Reader(user), text, static_cast<std::size_t>(length));
    }

    /// For documents with entities that hold carriage returns.
    static void XMLCALL OnTextWithReturns(void* user, const XML_Char* text, int length) {
        std::string_view rest(text, static_cast<std::size_t>(length));
        while (!rest.empty()) {
            const std::string_view piece = rest.substr(0, rest.find('\r'));
            if (!piece.empty()) AppendText(Reader(user), piece.data(), piece.size());
            rest.remove_prefix(std::min(rest.size(), piece.size() + 1));
        }
    }

    static void XMLCALL OnStartCData(void* user) { AppendText(Reader(user), "<![CDATA[", 9); }
    static void XMLCALL OnEndCData(void* user) { AppendText(Reader(user), "]]>", 3); }

    static void XMLCALL OnStartNamespace(void* user, const XML_Char* prefix, const XML_Char* uri) {
        CExpatReader& reader = Reader(user);
        try {
            const std::string_view uriText = OrEmpty(uri);
            if (uriText.size() > kLongNamespace) BeginCounting(reader);
            reader.m_builder->DeclarePrefix(OrEmpty(prefix), uriText);
        } catch (...) {
            reader.Stop();
        }
    }

    /// Likewise. The declarations that elements make themselves count too: they are no more than was read.
    static void XMLCALL OnStartCountedNamespace(void* user, const XML_Char* prefix, const XML_Char* uri) {
        CExpatReader& reader = Reader(user);
        try {
            const std::string_view uriText = OrEmpty(uri);
            reader.CountExpansion(uriText.size());
            reader.m_builder->DeclarePrefix(OrEmpty(prefix), uriText);
        } catch (...) {
            reader.Stop();
        }
    }

    static void XMLCALL OnAttribute(void* user, const XML_Char* element, const XML_Char*, const XML_Char*,
                                    const XML_Char* value, int) {
        CExpatReader& reader = Reader(user);
        if (value != nullptr) BeginCounting(reader);
        try {
            reader.CountDeclaredAttribute(element);
        } catch (...) {
            reader.Stop();
        }
    }

    static void XMLCALL OnEntity(void* user, const XML_Char*, int isParameter, const XML_Char* value,
                                 int length, const XML_Char*, const XML_Char*, const XML_Char*,
                                 const XML_Char*) {
        if (value == nullptr || isParameter != 0) return;
        CExpatReader& reader = Reader(user);
        const std::string_view text(value, static_cast<std::size_t>(length));
        if (text.find('\r') != std::string_view::npos && reader.m_builder != nullptr)
            XML_SetCharacterDataHandler(reader.m_parser.get(), &OnTextWithReturns);
        if (text.find('<') != std::string_view::npos) BeginCounting(reader);
        if (!RefersToEntity(text)) return;
        if (++reader.m_nestedEntities <= kMaxNestedEntities) return;
        try {
            throw CKvException(reader.Locate("too many entities refer to other entities"));
        } catch (...) {
            reader.Stop();
        }
    }

    static int XMLCALL OnUnknownEncoding(void* user, const XML_Char* name, XML_Encoding* info) {
        CExpatReader& reader = Reader(user);
        try {
            auto decoder = std::make_unique<Decoder>();
            if (!DescribeEncoding(name, info->map)) {
                reader.m_unreadEncoding = name;
                return XML_STATUS_ERROR;
            }
            decoder->encoding = name;
            std::copy(std::begin(info->map), std::end(info->map), decoder->lengths);
            info->data = decoder.release();
            info->convert = &Decode;
            info->release = &ReleaseDecoder;
            return XML_STATUS_OK;
        } catch (...) {
            reader.m_exception = std::current_exception();
            return XML_STATUS_ERROR;
        }
    }

    static int XMLCALL Decode(void* data, const char* bytes) {
        auto& decoder = *static_cast<Decoder*>(data);
        try {
            const int length = -decoder.lengths[static_cast<unsigned char>(*bytes)];
            return DecodeMultiByte(decoder.encoding.c_str(), bytes, length, decoder.cache);
        } catch (...) {
            return -1;  // reads as an ill-formed character
        }
    }

    static void XMLCALL ReleaseDecoder(void* data) { delete static_cast<Decoder*>(data); }

private:
    static void BeginCounting(CExpatReader& reader) {
        if (reader.m_events != nullptr) {
            reader.m_isCounting = true;
            return;
        }
        XML_SetElementHandler(reader.m_parser.get(), &OnStartCountedElement, &OnEndElement);
        XML_SetStartNamespaceDeclHandler(reader.m_parser.get(), &OnStartCountedNamespace);
    }
    static void AppendText(CExpatReader& reader, const char* text, std::size_t length) {
        try {
            reader.m_builder->AppendText(text, length);
        } catch (...) {
            reader.Stop();
        }
    }
};

/// The same for events.
struct CExpatReader::EventHandlers {
    /// Calls the receiver; what it throws is kept.
    template <class Call>
    static void Pass(void* user, Call call) {
        auto& reader = *static_cast<CExpatReader*>(user);
        if (reader.m_exception != nullptr) return;
        try {
            call(reader);
        } catch (...) {
            reader.Stop();
        }
    }

    static void XMLCALL OnStart(void* user, const XML_Char* name, const XML_Char** attributes) {
        Pass(user, [&](CExpatReader& reader) {
            if (reader.m_isCounting) reader.CountElement(attributes);
            reader.m_events->OnStart(name, attributes, XML_GetSpecifiedAttributeCount(reader.m_parser.get()));
        });
    }
    static void XMLCALL OnEnd(void* user, const XML_Char*) {
        Pass(user, [](CExpatReader& reader) { reader.m_events->OnEnd(); });
    }
    static void XMLCALL OnText(void* user, const XML_Char* text, int length) {
        Pass(user,
             [&](CExpatReader& reader) { reader.m_events->OnText(text, static_cast<std::size_t>(length)); });
    }
    static void XMLCALL OnStartCData(void* user) {
        Pass(user, [](CExpatReader& reader) { reader.m_events->OnCData(true); });
    }
    static void XMLCALL OnEndCData(void* user) {
        Pass(user, [](CExpatReader& reader) { reader.m_events->OnCData(false); });
    }
    static void XMLCALL OnComment(void* user, const XML_Char* text) {
        Pass(user, [&](CExpatReader& reader) { reader.m_events->OnComment(text); });
    }
    static void XMLCALL OnProcessingInstruction(void* user, const XML_Char* target, const XML_Char* data) {
        Pass(user, [&](CExpatReader& reader) { reader.m_events->OnProcessingInstruction(target, data); });
    }
    static void XMLCALL OnDoctype(void* user, const XML_Char* name, const XML_Char*, const XML_Char*, int) {
        Pass(user, [&](CExpatReader& reader) { reader.m_events->OnDocumentType(name); });
    }
    static void XMLCALL OnNamespace(void* user, const XML_Char* prefix, const XML_Char* uri) {
        Pass(user, [&](CExpatReader& reader) {
            const std::size_t uriLength = std::strlen(OrEmpty(uri));
            if (uriLength > kLongNamespace) reader.m_isCounting = true;
            if (reader.m_isCounting) reader.CountExpansion(uriLength);
            reader.m_events->OnDeclarePrefix(OrEmpty(prefix), OrEmpty(uri));
        });
    }
};

void CExpatReader::Release::operator()(XML_ParserStruct* parser) const noexcept {
    XML_ParserFree(parser);
}

CExpatReader::CExpatReader(CXmlTreeBuilder& builder, const CExpatOptions& options)
    : m_builder(&builder), m_maxExpansion(OrUnlimited(options.maxExpansion)) {
    constexpr XML_Char kSeparator[] = {CXmlNameTable::kSeparator, '\0'};
    Begin(options.namespaces ? kSeparator : nullptr, options);
    XML_Parser parser = m_parser.get();
    m_builder->TrustPlacesOfNames();
    XML_SetElementHandler(parser, &Handlers::OnStartElement, &Handlers::OnEndElement);
    XML_SetStartNamespaceDeclHandler(parser, &Handlers::OnStartNamespace);
    XML_SetCharacterDataHandler(parser, &Handlers::OnText);
    if (options.keepCData) XML_SetCdataSectionHandler(parser, &Handlers::OnStartCData, &Handlers::OnEndCData);
}

CExpatReader::CExpatReader(IXmlEvents& events, const CExpatOptions& options)
    : m_events(&events), m_maxExpansion(OrUnlimited(options.maxExpansion)) {
    constexpr char kSeparator[] = {IXmlEvents::kSeparator, '\0'};
    Begin(kSeparator, options);
    XML_Parser parser = m_parser.get();
    XML_SetReturnNSTriplet(parser, 1);
    XML_SetElementHandler(parser, &EventHandlers::OnStart, &EventHandlers::OnEnd);
    XML_SetStartNamespaceDeclHandler(parser, &EventHandlers::OnNamespace);
    XML_SetCharacterDataHandler(parser, &EventHandlers::OnText);
    XML_SetCdataSectionHandler(parser, &EventHandlers::OnStartCData, &EventHandlers::OnEndCData);
    XML_SetCommentHandler(parser, &EventHandlers::OnComment);
    XML_SetProcessingInstructionHandler(parser, &EventHandlers::OnProcessingInstruction);
    XML_SetStartDoctypeDeclHandler(parser, &EventHandlers::OnDoctype);
}

/// What both kinds share.
void CExpatReader::Begin(const char* separator, const CExpatOptions& options) {
    const char* const encoding = options.isUtf8 ? "UTF-8" : nullptr;
    const CMemoryCount uncounted(nullptr);
    AllowMemory();
    m_parser.reset(XML_ParserCreate_MM(encoding, &kParserMemory, separator));
    XML_Parser parser = m_parser.get();
    if (parser == nullptr) throw std::bad_alloc();
    XML_SetUserData(parser, this);
    XML_SetEntityDeclHandler(parser, &Handlers::OnEntity);
    XML_SetAttlistDeclHandler(parser, &Handlers::OnAttribute);
    XML_SetUnknownEncodingHandler(parser, &Handlers::OnUnknownEncoding, this);
    LimitEntities();
}

CExpatReader::~CExpatReader() = default;

/// The text that entities add is counted by expat itself, from version 2.4 on.
void CExpatReader::LimitEntities() {
#if XML_MAJOR_VERSION > 2 || (XML_MAJOR_VERSION == 2 && XML_MINOR_VERSION >= 4)
    XML_SetBillionLaughsAttackProtectionMaximumAmplification(m_parser.get(),
                                                             static_cast<float>(kMaxExpansionRatio));
    XML_SetBillionLaughsAttackProtectionActivationThreshold(m_parser.get(), m_maxExpansion);
#endif
}

void CExpatReader::CountDeclaredAttribute(const char* element) {
    if (++m_declaredAttributes[element] > kMaxDeclaredAttributes) {
        throw CTreeLimitPassed{"the document type declares more than %llu attributes for one element",
                               kMaxDeclaredAttributes};
    }
}

/// Counts what the document type adds by default attributes, and by elements in entities.
void CExpatReader::CountElement(const char** attributes) {
    // All elements of an entity are where its reference is.
    const std::int64_t place = XML_GetCurrentByteIndex(m_parser.get());
    const bool isInEntity = place == m_elementPlace;
    m_elementPlace = place;
    const char** added = attributes + (isInEntity ? 0 : XML_GetSpecifiedAttributeCount(m_parser.get()));
    std::size_t length = isInEntity ? sizeof(CXmlElement) : 0;
    for (; *added != nullptr; added += 2)
        length += sizeof(CXmlAttribute) + std::strlen(added[1]);
    if (length > 0) CountExpansion(length);
    for (; *attributes != nullptr; attributes += 2) {
        const std::size_t nameLength = std::strlen(*attributes);
        if (nameLength > kLongNamespace) Count(m_nameExpansion, nameLength, kTooLongNames);
    }
}

void CExpatReader::CountExpansion(std::size_t length) {
    Count(m_expansion, length,
          "entities and default attributes add more to the document than the limit of %llu bytes");
}

void CExpatReader::Count(std::uint64_t& counted, std::size_t length, const char* message) const {
    counted += length;
    if (counted <= m_maxExpansion) return;
    const auto read = static_cast<std::uint64_t>(XML_GetCurrentByteIndex(m_parser.get()));
    if (counted / kMaxExpansionRatio > read) throw CTreeLimitPassed{message, m_maxExpansion};
}

/// Runs the parser over a piece of the text.
template <class Action>
void CExpatReader::Run(std::size_t length, Action parse) {
    m_memoryLeft += std::min(UINT64_MAX - m_memoryLeft, length * kMaxExpansionRatio);
    int status;
    {
        const CMemoryCount count(&m_memoryLeft);
        status = parse();
    }
    Check(status);
}

std::size_t CExpatReader::WholeLimit() noexcept {
    return g_wholeLimit;
}

void SetWholeLimit(std::size_t limit) noexcept {
    g_wholeLimit = limit == 0 ? kWholeLimit : limit;
}

void CExpatReader::ParseWhole(const char* text, std::size_t length) {
    if (length > WholeLimit()) {
        const std::size_t piece = std::min(kPiece, WholeLimit());
        for (; length > piece; length -= piece, text += piece)
            Run(piece, [&] { return XML_Parse(m_parser.get(), text, static_cast<int>(piece), XML_FALSE); });
    }
    Run(length, [&] { return XML_Parse(m_parser.get(), text, static_cast<int>(length), XML_TRUE); });
}

void* CExpatReader::GetBuffer(std::size_t length) {
    const CMemoryCount uncounted(nullptr);
    void* const buffer = XML_GetBuffer(m_parser.get(), static_cast<int>(length));
    if (buffer == nullptr) Check(XML_STATUS_ERROR);
    return buffer;
}

bool CExpatReader::ParseBuffer(std::size_t length, bool isLast) {
    Run(length, [&] {
        return XML_ParseBuffer(m_parser.get(), static_cast<int>(length), isLast ? XML_TRUE : XML_FALSE);
    });
    const std::int64_t before = m_position;
    m_position = XML_GetCurrentByteIndex(m_parser.get());
    return m_position != before;
}

void CExpatReader::AllowMemory() noexcept {
    m_memoryLeft =
        m_maxExpansion > UINT64_MAX / kMemoryPerExpansion ? UINT64_MAX : m_maxExpansion * kMemoryPerExpansion;
}

void CExpatReader::ParsePiece(const char* text, std::size_t length, bool isLast) {
    AllowMemory();
    const CMemoryCount count(&m_memoryLeft);
    Check(XML_Parse(m_parser.get(), text, static_cast<int>(length), isLast ? XML_TRUE : XML_FALSE));
}

std::uint64_t CExpatReader::GetOffset() const noexcept {
    const XML_Index offset = XML_GetCurrentByteIndex(m_parser.get());
    return offset < 0 ? 0 : static_cast<std::uint64_t>(offset);
}

void CExpatReader::Locate(std::uint64_t offset, std::uint64_t& line, std::uint64_t& column) const {
    line = XML_GetCurrentLineNumber(m_parser.get());
    column = std::uint64_t{XML_GetCurrentColumnNumber(m_parser.get())} + 1;
    int current = 0;
    int size = 0;
    const char* const text = XML_GetInputContext(m_parser.get(), &current, &size);
    const std::uint64_t here = GetOffset();
    if (text == nullptr || offset >= here || here - offset > static_cast<std::uint64_t>(current)) return;
    // Back from the event to the place. Other encodings than UTF-8 count as if each byte were a character.
    const std::string_view before(text, static_cast<std::size_t>(current) - (here - offset));
    const std::string_view between(text + before.size(), here - offset);
    const auto isLineEnd = [&](std::size_t i) {
        return between[i] == '\n' || (between[i] == '\r' && i + 1 < between.size() && between[i + 1] != '\n');
    };
    std::uint64_t lines = 0;
    for (std::size_t i = 0; i < between.size(); ++i)
        lines += isLineEnd(i) ? 1U : 0U;
    const auto isCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    if (lines == 0) {
        column -= static_cast<std::uint64_t>(std::count_if(between.begin(), between.end(), isCharacter));
        return;
    }
    line -= lines;
    const std::size_t start = before.find_last_of("\r\n");
    const std::string_view own = start == before.npos ? before : before.substr(start + 1);
    column = static_cast<std::uint64_t>(std::count_if(own.begin(), own.end(), isCharacter)) + 1;
}

void CExpatReader::Check(int status) {
    if (status == XML_STATUS_OK && m_exception == nullptr) return;
    if (m_builder != nullptr) m_builder->Abandon();
    if (m_exception != nullptr) std::rethrow_exception(m_exception);
    if (m_memoryLeft == 0)
        throw CKvException(Locate(CTreeLimitPassed{kTooLongNames, m_maxExpansion}.Message()));
    throw CKvException(Locate(XML_ErrorString(XML_GetErrorCode(m_parser.get()))));
}

std::string CExpatReader::Locate(const std::string& message) const {
    return FormatString("%s at line %llu", message.c_str(),
                        static_cast<unsigned long long>(XML_GetCurrentLineNumber(m_parser.get())));
}

/// Called while an exception is being handled: keeps it for after the parser's return.
void CExpatReader::Stop() noexcept {
    try {
        throw;
    } catch (const CTreeLimitPassed& e) {
        try {
            m_exception = std::make_exception_ptr(CKvException(Locate(e.Message())));
        } catch (...) {
            m_exception = std::current_exception();
        }
    } catch (...) {
        m_exception = std::current_exception();
    }
    XML_Parser parser = m_parser.get();
    XML_SetElementHandler(parser, nullptr, nullptr);
    XML_SetStartNamespaceDeclHandler(parser, nullptr);
    XML_SetCharacterDataHandler(parser, nullptr);
    XML_SetCdataSectionHandler(parser, nullptr, nullptr);
    XML_SetEntityDeclHandler(parser, nullptr);
    XML_SetAttlistDeclHandler(parser, nullptr);
    XML_StopParser(parser, XML_FALSE);
}

}  // namespace KvXmlLib16::internal
