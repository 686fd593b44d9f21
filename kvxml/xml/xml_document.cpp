#include "kvxml/xml/xml_document.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "kvxml/fastinfoset/internal/fast_infoset_reader.h"
#include "kvxml/json/internal/json_conversion.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/platform/internal/file.h"
#include "kvxml/runtime/exceptions.h"
#include "kvxml/runtime/format_string.h"
#include "kvxml/runtime/internal/text_settings.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/internal/compression.h"
#include "kvxml/xml/internal/expat_reader.h"
#include "kvxml/xml/internal/xml_tree.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

namespace {

// Files read in chunks are read in chunks of this size, as long as no tag or value is longer.
constexpr std::size_t kChunk = 0x20000;

// Pieces of files that are too large, or of unknown size.
constexpr std::size_t kPiece = std::size_t{1} << 26;
constexpr std::size_t kFirstPiece = std::size_t{1} << 16;

// Stands for an unexpected end of the file where an error number is asked for.
constexpr int kEndOfFile = 38;

/// The first two bytes of gzip and zlib streams, which no XML text begins with.
bool MayBeCompressed(const unsigned char* data, std::size_t length) {
    if (length < 2) return false;
    if (data[0] == 0x1F && data[1] == 0x8B) return true;
    return (data[0] & 0x0F) == 8 && (data[0] << 8 | data[1]) % 31 == 0;
}

[[noreturn]] void ThrowFileError(const char* format, const char* fileName, int error) {
    throw CKvException(FormatString(format, fileName, static_cast<unsigned int>(error)));
}

[[noreturn]] void ThrowReadError(const char* fileName, int error) {
    ThrowFileError("Failed to read the contents of the file [%s] Error [0x%08x]", fileName, error);
}

void OpenFile(internal::CFile& file, const char* fileName) {
    if (const int error = file.OpenForReading(fileName))
        ThrowFileError("Failed to open the file [%s] Error [0x%08x]", fileName, error);
}

/// Reads exactly `length` bytes.
void ReadAll(internal::CFile& file, const char* fileName, void* buffer, std::size_t length) {
    std::size_t got = 0;
    const int error = file.Read(buffer, length, got);
    if (error != 0 || got < length) ThrowReadError(fileName, error != 0 ? error : kEndOfFile);
}

/// Reads from here to the end.
std::vector<unsigned char> ReadToEnd(internal::CFile& file, const char* fileName) {
    std::vector<unsigned char> data;
    std::size_t length = 0;
    for (std::size_t got = 1; got > 0; length += got) {
        if (data.size() - length < kFirstPiece) data.resize(std::max(kFirstPiece, data.size() * 2));
        if (const int error = file.Read(data.data() + length, data.size() - length, got))
            ThrowReadError(fileName, error);
    }
    data.resize(length);
    return data;
}

/// Runs the parser. When it cannot read the encoding that the text declares, but the host's converter can,
/// returns the text in UTF-8, to be parsed instead.
template <class Action>
std::string ParseOrConvert(internal::CExpatReader& reader, std::string_view text, Action parse) {
    try {
        parse();
        return std::string();
    } catch (const CKvException&) {
        const std::string& encoding = reader.GetUnreadEncoding();
        std::string utf8;
        if (encoding.empty() || !internal::EncodingToUtf8(encoding.c_str(), text, utf8)) throw;
        return utf8;
    }
}

/// The whole file.
std::vector<unsigned char> ReadWhole(const char* fileName) {
    internal::CFile file;
    OpenFile(file, fileName);
    std::uint64_t size = 0;
    if (const int error = file.GetSize(size))
        ThrowFileError("Failed to get the size of the file [%s] Error [0x%08x]", fileName, error);
    if (size == 0) return ReadToEnd(file, fileName);  // empty, or of a size not known beforehand
    std::vector<unsigned char> data(static_cast<std::size_t>(size));
    ReadAll(file, fileName, data.data(), data.size());
    return data;
}

/// JSON input as UTF-8 text, and what holds it.
class CJsonInput {
public:
    CJsonInput(const unsigned char* data, std::size_t length, std::size_t maxInflatedSize) {
        if (data == nullptr || length == 0) throw CKvException("JSON Stream is empty!");
        if (internal::Inflate(data, length, maxInflatedSize, m_inflated)) {
            data = m_inflated.GetData();
            length = m_inflated.GetLength();
        }
        m_text = std::string_view(reinterpret_cast<const char*>(data), length);
        if (const char* const utf16 = Utf16NameOf(m_text)) {
            if (!internal::EncodingToUtf8(utf16, m_text, m_utf8))
                throw CKvException("The JSON text is not valid UTF-16.");
            m_text = m_utf8;
        }
        if (m_text.substr(0, 3) == "\xEF\xBB\xBF") m_text.remove_prefix(3);
    }
    explicit CJsonInput(const char* json) : m_text(json == nullptr ? "" : json) {
        if (m_text.empty()) ThrowEmpty();
        if (!internal::IsLocalUtf8()) m_text = m_utf8 = internal::LocalToUtf8(m_text);
    }
    explicit CJsonInput(const wchar_t* json) {
        if (json == nullptr || *json == L'\0') ThrowEmpty();
        m_text = m_utf8 = internal::WideToUtf8(json);
    }
    CJsonInput(const CJsonInput&) = delete;
    CJsonInput& operator=(const CJsonInput&) = delete;

    std::string_view Text() const noexcept { return m_text; }

private:
    /// The name of its encoding if the text is UTF-16: it begins with a byte-order mark, or one of its first
    /// two bytes is zero, since the first character of JSON is ASCII.
    static const char* Utf16NameOf(std::string_view text) noexcept {
        const std::string_view first = text.substr(0, 2);
        if (first == "\xFF\xFE" || first == "\xFE\xFF") return "UTF-16";
        if (first.size() < 2 || (first[0] == '\0') == (first[1] == '\0')) return nullptr;
        return first[0] == '\0' ? "UTF-16BE" : "UTF-16LE";
    }
    [[noreturn]] static void ThrowEmpty() { throw CKvException("JSON String is empty!"); }

    CBinaryData m_inflated;
    std::string m_utf8;
    std::string_view m_text;
};

}  // namespace

/// A reader with what it fills.
struct CXmlDocument::CReading {
    CReading(CXmlDocument& document, Encoding encoding, std::size_t expectedInput)
        : builder(document.Tree(), document.m_filter, document.m_context->GetMaxElementDepth(),
                  !internal::IsLocalUtf8()),
          reader(builder, {document.m_schemaType != SchemaType_NoNamespaces,
                           !document.m_context->GetStripCDATA(), encoding == Encoding::Utf8}) {
        document.Tree().Arena().ExpectInput(expectedInput);
    }

    internal::CXmlTreeBuilder builder;
    internal::CExpatReader reader;
};

CXmlDocument::CXmlDocument() : CXmlDocument(nullptr, CSerializationContext::GetDefaultContext()) {}

CXmlDocument::CXmlDocument(const CSerializationContext& context) : CXmlDocument(nullptr, context) {}

CXmlDocument::CXmlDocument(ElementFilter filter)
    : CXmlDocument(filter, CSerializationContext::GetDefaultContext()) {}

CXmlDocument::CXmlDocument(ElementFilter filter, const CSerializationContext& context)
    : m_filter(filter), m_context(&context), m_schemaType(context.GetSchemaType()) {}

CXmlDocument::CXmlDocument(CXmlDocument&& other) noexcept
    : m_tree(std::move(other.m_tree)),
      m_filter(other.m_filter),
      m_context(other.m_context),
      m_schemaType(other.m_schemaType) {
    if (m_tree != nullptr) m_tree->SetDocument(this);
}

CXmlDocument& CXmlDocument::operator=(CXmlDocument&& other) noexcept {
    if (this == &other) return *this;
    m_tree = std::move(other.m_tree);
    m_filter = other.m_filter;
    m_context = other.m_context;
    m_schemaType = other.m_schemaType;
    if (m_tree != nullptr) m_tree->SetDocument(this);
    return *this;
}

CXmlDocument::~CXmlDocument() = default;

void CXmlDocument::Cleanup() {
    m_tree.reset();
}

internal::CXmlTree& CXmlDocument::Tree() {
    if (m_tree == nullptr) m_tree = std::make_unique<internal::CXmlTree>(this, !internal::IsLocalUtf8());
    return *m_tree;
}

CXmlElement* CXmlDocument::GetDocumentElement() noexcept {
    return m_tree == nullptr ? nullptr : m_tree->GetRoot();
}

const CXmlElement* CXmlDocument::GetDocumentElement() const noexcept {
    return m_tree == nullptr ? nullptr : m_tree->GetRoot();
}

std::string CXmlDocument::LookupNamespaceFromAlias(const char* prefix) const {
    if (m_tree == nullptr) return std::string();
    const auto& prefixes = m_tree->Prefixes();
    const auto found = prefixes.find(std::string_view(prefix == nullptr ? "" : prefix));
    return found == prefixes.end() ? std::string() : found->second;
}

std::string CXmlDocument::LookupAliasFromNamespace(const char* uri) const {
    return m_tree == nullptr ? std::string() : m_tree->FindPrefix(uri == nullptr ? "" : uri);
}

// --- loading ----------------------------------------------------------------------------------------------

void CXmlDocument::Load(const char* fileName) {
    if (fileName == nullptr) fileName = "";
    Cleanup();
    if (internal::IsAsyncFromXmlFile()) {
        LoadInChunks(fileName);
    } else {
        LoadWhole(fileName);
    }
}

void CXmlDocument::LoadXmlStream(const unsigned char* data, std::size_t length) {
    Cleanup();
    if (data == nullptr || length == 0) throw CKvException("XML Stream is empty!");
    Parse(data, length);
}

void CXmlDocument::LoadXml(const char* xml) {
    Cleanup();
    if (xml == nullptr || *xml == '\0') throw CKvException("XML String is empty!");
    const std::string_view text(xml);
    ParseText(reinterpret_cast<const unsigned char*>(text.data()), text.size(), Encoding::Declared);
}

void CXmlDocument::LoadXml(const wchar_t* xml) {
    Cleanup();
    const std::string text = internal::WideToUtf8(xml == nullptr ? L"" : xml);
    ParseText(reinterpret_cast<const unsigned char*>(text.data()), text.size(), Encoding::Utf8);
}

void CXmlDocument::Parse(const unsigned char* data, std::size_t length) {
    CBinaryData inflated;
    if (internal::Inflate(data, length, m_context->GetMaxInflatedSize(), inflated)) {
        data = inflated.GetData();
        length = inflated.GetLength();
    }
    if (TryParseFastInfoset(data, length)) return;
    ParseText(data, length, Encoding::Declared);
}

/// False, with nothing done, for anything that does not begin as Fast Infoset.
bool CXmlDocument::TryParseFastInfoset(const unsigned char* data, std::size_t length) {
    if (!internal::IsFastInfoset(data, length)) return false;
    internal::CXmlTreeBuilder builder(Tree(), m_filter, m_context->GetMaxElementDepth(),
                                      !internal::IsLocalUtf8());
    Tree().Arena().ExpectInput(length * 2);
    internal::CFastInfosetReader reader(Tree(), builder, m_context->GetFIContext(),
                                        {m_schemaType != SchemaType_NoNamespaces, !m_context->GetStripCDATA(),
                                         m_context->GetMaxInflatedSize()},
                                        std::string_view(reinterpret_cast<const char*>(data), length));
    reader.Parse();
    return true;
}

void CXmlDocument::ParseText(const unsigned char* data, std::size_t length, Encoding encoding) {
    const std::string_view text(reinterpret_cast<const char*>(data), length);
    std::string utf8;
    {
        CReading reading(*this, encoding, length);
        utf8 = ParseOrConvert(reading.reader, text,
                              [&] { reading.reader.ParseWhole(text.data(), text.size()); });
    }
    if (!utf8.empty()) ParseConverted(utf8);
}

void CXmlDocument::ParseConverted(const std::string& utf8) {
    Cleanup();
    ParseText(reinterpret_cast<const unsigned char*>(utf8.data()), utf8.size(), Encoding::Utf8);
}

void CXmlDocument::LoadWhole(const char* fileName) {
    internal::CFile file;
    OpenFile(file, fileName);
    std::uint64_t size = 0;
    if (const int error = file.GetSize(size))
        ThrowFileError("Failed to get the size of the file [%s] Error [0x%08x]", fileName, error);
    if (size == 0) {  // an empty file, or one whose size is not known beforehand
        const std::vector<unsigned char> data = ReadToEnd(file, fileName);
        Parse(data.data(), data.size());
        return;
    }
    if (size > internal::CExpatReader::WholeLimit()) {
        LoadLarge(file, fileName, size);
        return;
    }
    // The file goes straight into the parser's own buffer.
    const auto length = static_cast<std::size_t>(size);
    auto reading = std::make_unique<CReading>(*this, Encoding::Declared, length);
    auto* const data = static_cast<unsigned char*>(reading->reader.GetBuffer(length));
    ReadAll(file, fileName, data, length);
    file.Close();
    CBinaryData inflated;
    if (internal::Inflate(data, length, m_context->GetMaxInflatedSize(), inflated)) {
        reading.reset();
        if (TryParseFastInfoset(inflated.GetData(), inflated.GetLength())) return;
        ParseText(inflated.GetData(), inflated.GetLength(), Encoding::Declared);
        return;
    }
    if (TryParseFastInfoset(data, length)) return;
    const std::string utf8 =
        ParseOrConvert(reading->reader, std::string_view(reinterpret_cast<const char*>(data), length),
                       [&] { reading->reader.ParseBuffer(length, true); });
    reading.reset();
    if (!utf8.empty()) ParseConverted(utf8);
}

/// A file that the parser cannot take in one piece.
void CXmlDocument::LoadLarge(internal::CFile& file, const char* fileName, std::uint64_t size) {
    auto reading = std::make_unique<CReading>(*this, Encoding::Declared, kPiece);
    const std::size_t piece = std::min(kPiece, internal::CExpatReader::WholeLimit());
    for (bool isFirst = true; size > 0; isFirst = false) {
        const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(size, piece));
        auto* const data = static_cast<unsigned char*>(reading->reader.GetBuffer(length));
        ReadAll(file, fileName, data, length);
        if (isFirst && (MayBeCompressed(data, length) || internal::IsFastInfoset(data, length))) {
            reading.reset();
            OpenFile(file, fileName);
            const std::vector<unsigned char> all = ReadToEnd(file, fileName);
            Parse(all.data(), all.size());
            return;
        }
        size -= length;
        reading->reader.ParseBuffer(length, size == 0);
    }
}

void CXmlDocument::LoadInChunks(const char* fileName) {
    internal::CFile file;
    OpenFile(file, fileName);
    try {
        CReading reading(*this, Encoding::Declared, 0);
        std::uint64_t offset = 0;
        std::size_t chunk = kChunk;
        for (bool isLast = false; !isLast;) {
            std::size_t got = 0;
            if (const int error = file.Read(reading.reader.GetBuffer(chunk), chunk, got)) {
                throw CKvException(FormatString("Failed to read the contents of the file. Error [0x%08x]",
                                                static_cast<unsigned int>(error)));
            }
            if (got == 0 && offset == 0) ThrowReadError(fileName, kEndOfFile);
            offset += got;
            isLast = got < chunk;
            if (!isLast) file.AdviseWillNeed(offset, kChunk);
            chunk = reading.reader.ParseBuffer(got, isLast) ? kChunk : std::min(chunk * 2, kPiece);
        }
        if (GetDocumentElement() == nullptr) throw CKvException("Invalid or empty XML document");
    } catch (const CKvException& e) {
        Cleanup();
        throw CKvException(e);
    } catch (...) {
        Cleanup();
        throw;
    }
}

// --- JSON -------------------------------------------------------------------------------------------------

CBinaryData CXmlDocument::LoadJsonFile(const char* fileName) {
    Cleanup();
    const std::vector<unsigned char> data = ReadWhole(fileName == nullptr ? "" : fileName);
    return LoadJsonStream(data.data(), data.size());
}

CBinaryData CXmlDocument::LoadJsonStream(const unsigned char* data, std::size_t length) {
    Cleanup();
    return internal::JsonToXml(CJsonInput(data, length, m_context->GetMaxInflatedSize()).Text(), *m_context);
}

CBinaryData CXmlDocument::LoadJson(const char* json) {
    Cleanup();
    return internal::JsonToXml(CJsonInput(json).Text(), *m_context);
}

CBinaryData CXmlDocument::LoadJson(const wchar_t* json) {
    Cleanup();
    return internal::JsonToXml(CJsonInput(json).Text(), *m_context);
}

void CXmlDocument::BuildFromJsonFile(const char* fileName) {
    const std::vector<unsigned char> data = ReadWhole(fileName == nullptr ? "" : fileName);
    BuildFromJsonStream(data.data(), data.size());
}

void CXmlDocument::BuildFromJsonStream(const unsigned char* data, std::size_t length) {
    BuildTree(CJsonInput(data, length, m_context->GetMaxInflatedSize()).Text());
}

void CXmlDocument::BuildFromJson(const char* json) {
    BuildTree(CJsonInput(json).Text());
}

void CXmlDocument::BuildFromJson(const wchar_t* json) {
    BuildTree(CJsonInput(json).Text());
}

void CXmlDocument::BuildTree(std::string_view json) {
    for (const bool anyOrder : {false, true}) {
        Cleanup();
        internal::CXmlTreeBuilder builder(Tree(), m_filter, m_context->GetMaxElementDepth(),
                                          !internal::IsLocalUtf8());
        Tree().Arena().ExpectInput(json.size());
        if (internal::JsonToTree(json, *m_context, builder, anyOrder)) return;
    }
}

}  // namespace KvXmlLib16
