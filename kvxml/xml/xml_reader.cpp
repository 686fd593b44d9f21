#include "kvxml/xml/xml_reader.h"

#include <algorithm>
#include <exception>
#include <unordered_set>
#include <utility>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/internal/xml_reader_impl.h"
#include "kvxml/xml/internal/xml_tree.h"
#include "kvxml/xml/internal/xml_tree_builder.h"
#include "kvxml/xml/xml_document.h"

namespace KvXmlLib16 {

using internal::CEventName;
using internal::CXmlEventQueue;

namespace {

constexpr std::size_t kPiece = 65536;
constexpr std::size_t kMaxPiece = std::size_t{1} << 26;

// Beyond so many bytes nobody counts lines a second time.
constexpr std::uint64_t kMostRecounted = std::uint64_t{1} << 20;

}  // namespace

void CXmlReader::Impl::Begin(std::string_view documentName) {
    fileName = documentName;
    buffer.clear();
    held = {};
    bufferStart = 0;
    piece = kPiece;
    isUtf8 = isLast = hasBegun = isPushing = false;
    converted.clear();
    error = nullptr;
    pump.reset();
    position = firstPosition = openPosition = {};
    event = nullptr;
    kind = XmlEvent::None;
    offset = 0;
    name = nullptr;
    isAfterEnd = false;
    attributes.clear();
    open.clear();
    otherCounts.clear();
    lastElement = 0;
    bindings.clear();
    scope = lastScope = 0;
    input = std::make_unique<internal::CXmlInput>(inflateLimits);
    StartParser();
}

void CXmlReader::Impl::StartParser() {
    parser.reset();
    queue = std::make_unique<CXmlEventQueue>(maxNames, maxDepth);
    internal::CExpatOptions options;
    options.isUtf8 = isUtf8;
    options.maxExpansion = maxExpansion;
    internal::IXmlEvents* receiver = queue.get();
    if (pump != nullptr) receiver = pump.get();
    parser = std::make_unique<internal::CExpatReader>(*receiver, options);
    queue->SetParser(parser.get());
}

/// Counts lines up to a place that is still held.
void CXmlReader::Impl::CountTo(std::uint64_t where) const {
    const std::uint64_t from = position.GetOffset();
    if (where <= from || from < bufferStart) return;
    const auto start = static_cast<std::size_t>(std::min<std::uint64_t>(from - bufferStart, held.size()));
    const auto end = static_cast<std::size_t>(std::min<std::uint64_t>(where - bufferStart, held.size()));
    position.Advance(held.substr(start, end - start));
}

/// Lines are counted forward; only of the element that holds the current place the start is asked for later.
const internal::CTextPosition& CXmlReader::Impl::Locate(std::uint64_t where) const {
    if (where == openPosition.GetOffset() && where < bufferStart) return openPosition;
    if (where < position.GetOffset() && where >= firstPosition.GetOffset() &&
        where - firstPosition.GetOffset() <= kMostRecounted) {
        position = firstPosition;
    }
    CountTo(where);
    return position;
}

/// Reads and parses pieces until there is an event. False at the end of the document.
bool CXmlReader::Impl::Fill() {
    while (queue->IsEmpty()) {
        if (error != nullptr) {
            kind = XmlEvent::None;
            offset = errorOffset;
            std::rethrow_exception(std::exchange(error, nullptr));
        }
        if (isLast || input == nullptr) return false;
        queue->Clear();
        ReadPiece();
    }
    return true;
}

void CXmlReader::Impl::ReadPiece() {
    // What the parser is not done with stays, for the places of what begins there.
    const std::uint64_t done = parser->GetOffset();
    if (!open.empty() && open.back().offset >= bufferStart) openPosition = Locate(open.back().offset);
    CountTo(done);
    firstPosition = position;
    if (done > bufferStart) {
        const auto drop =
            static_cast<std::size_t>(std::min<std::uint64_t>(done - bufferStart, buffer.size()));
        buffer.erase(0, drop);
        bufferStart += drop;
    }
    const std::size_t before = buffer.size();
    buffer.resize(before + piece);
    std::size_t got = 0;
    try {
        got = input->Read(buffer.data() + before, piece);
    } catch (...) {
        buffer.resize(before);
        held = buffer;
        isLast = true;
        throw;
    }
    buffer.resize(before + got);
    isLast = got < piece;
    held = buffer;
    Parse(held.substr(before));
    piece = parser->GetOffset() > done ? kPiece : std::min(piece * 2, kMaxPiece);
}

/// `bytes`: the end of those that are held.
void CXmlReader::Impl::Parse(std::string_view bytes) {
    if (!hasBegun) {
        position.Begin(held);
        if (isUtf8) position.SetUtf8();  // the converted text still declares what it was
        firstPosition = position;
    }
    hasBegun = true;
    try {
        parser->ParsePiece(bytes.data(), bytes.size(), isLast);
    } catch (const CKvException&) {
        if (!parser->GetUnreadEncoding().empty() && converted.empty()) return ConvertAll();
        error = std::current_exception();
        errorOffset = parser->GetOffset();
        isLast = true;
    } catch (...) {
        error = std::current_exception();
        errorOffset = parser->GetOffset();
        isLast = true;
    }
}

/// The parser does not know the encoding, which stands at the very beginning: nothing was delivered yet.
void CXmlReader::Impl::ConvertAll() {
    const std::exception_ptr reason = std::current_exception();
    std::string all(held);
    buffer.clear();
    held = {};
    while (!isLast) {
        const std::size_t before = all.size();
        all.resize(before + kPiece);
        const std::size_t got = input->Read(all.data() + before, kPiece);
        all.resize(before + got);
        isLast = got < kPiece;
    }
    if (!internal::EncodingToUtf8(parser->GetUnreadEncoding().c_str(), all, converted)) {
        error = reason;
        return;
    }
    isUtf8 = true;
    isLast = hasBegun = false;
    bufferStart = 0;
    position = firstPosition = {};
    StartParser();
    input = std::make_unique<internal::CXmlInput>(internal::InflateLimits());
    input->OpenMemory(converted.data(), converted.size());
}

// --- the caller's place ------------------------------------------------------------------------------------

/// The element that ended with the last event is no longer open.
void CXmlReader::Impl::Leave() noexcept {
    if (!isAfterEnd) return;
    bindings.resize(open.back().bindings);
    scope = open.back().scope;
    while (otherCounts.size() > open.back().otherCounts) {
        const OtherCount& other = otherCounts.back();
        other.name->parent = other.parent;
        other.name->count = other.count;
        otherCounts.pop_back();
    }
    open.pop_back();
    isAfterEnd = false;
}

void CXmlReader::Impl::Enter(const CEventName* entered, std::uint64_t place) {
    name = entered;
    const std::uint64_t parent = open.empty() ? 0 : open.back().number;
    if (name->parent != parent) {
        otherCounts.push_back({name, name->parent, name->count});
        name->parent = parent;
        name->count = 0;
    }
    open.push_back({name, ++name->count, bindings.size(), scope, place, ++lastElement, otherCounts.size()});
}

void CXmlReader::Impl::Take(const CXmlEventQueue::Event& taken) {
    Leave();
    event = &taken;
    kind = taken.kind;
    offset = taken.offset;
    attributes.clear();
    name = nullptr;
    if (kind == XmlEvent::StartElement) {
        TakeStart();
    } else if (kind == XmlEvent::EndElement) {
        isAfterEnd = true;
        name = open.back().name;
    }
}

void CXmlReader::Impl::TakeStart() {
    Enter(event->name, event->offset);
    if (event->declarationCount != 0) {
        scope = ++lastScope;
        for (std::size_t i = 0; i < event->declarationCount; ++i) {
            const CXmlEventQueue::Declaration& declared = queue->Declarations()[event->firstDeclaration + i];
            bindings.push_back({*declared.prefix, *declared.uri});
        }
    }
    for (std::size_t i = 0; i < event->attributeCount; ++i) {
        const CXmlEventQueue::Attribute& attribute = queue->Attributes()[event->firstAttribute + i];
        attributes.push_back({attribute.name->namespaceUri, attribute.name->localName, attribute.name->prefix,
                              queue->ViewOf(attribute.value), attribute.isDefaulted});
    }
}

CXmlReader::CXmlReader() : CXmlReader(CSerializationContext::GetDefaultContext()) {}

CXmlReader::CXmlReader(const CSerializationContext& context) : m_impl(std::make_unique<Impl>()) {
    m_impl->inflateLimits = {context.GetMaxInflatedSize(), context.GetMaxInflationRatio()};
    m_impl->maxExpansion = context.GetMaxExpansion();
    m_impl->maxNames = internal::OrUnlimited<std::uint64_t>(context.GetMaxDistinctNames());
    m_impl->maxDepth = internal::OrUnlimited<std::uint64_t>(context.GetMaxElementDepth());
}

CXmlReader::CXmlReader(CXmlReader&&) noexcept = default;
CXmlReader& CXmlReader::operator=(CXmlReader&&) noexcept = default;
CXmlReader::~CXmlReader() = default;

void CXmlReader::OpenFile(const char* fileName) {
    m_impl->Begin(fileName);
    m_impl->input->OpenFile(fileName);
}

void CXmlReader::OpenBuffer(const void* data, std::size_t length, std::string_view name) {
    m_impl->Begin(name);
    m_impl->input->OpenMemory(data, length);
}

void CXmlReader::OpenStream(std::istream& stream, std::string_view name) {
    m_impl->Begin(name);
    m_impl->input->OpenStream(stream);
}

bool CXmlReader::Read() {
    Impl& impl = *m_impl;
    if (!impl.queue || (impl.queue->IsEmpty() && !impl.Fill())) {
        impl.kind = XmlEvent::None;
        impl.attributes.clear();
        return false;
    }
    impl.Take(impl.queue->Pop());
    return true;
}

XmlEvent CXmlReader::GetEvent() const noexcept {
    return m_impl->kind;
}

bool CXmlReader::IsStart(std::string_view localName) const noexcept {
    return m_impl->kind == XmlEvent::StartElement && m_impl->name->localName == localName;
}

bool CXmlReader::IsStart(std::string_view namespaceUri, std::string_view localName) const noexcept {
    return IsStart(localName) && m_impl->name->namespaceUri == namespaceUri;
}

std::string_view CXmlReader::GetLocalName() const noexcept {
    if (m_impl->name != nullptr) return m_impl->name->localName;
    return m_impl->kind == XmlEvent::None ? std::string_view() : m_impl->queue->ViewOf(m_impl->event->target);
}

std::string_view CXmlReader::GetNamespaceUri() const noexcept {
    return m_impl->name == nullptr ? std::string_view() : m_impl->name->namespaceUri;
}

std::string_view CXmlReader::GetPrefix() const noexcept {
    return m_impl->name == nullptr ? std::string_view() : m_impl->name->prefix;
}

std::string_view CXmlReader::GetText() const noexcept {
    return m_impl->kind == XmlEvent::None ? std::string_view() : m_impl->queue->ViewOf(m_impl->event->text);
}

// --- attributes and prefixes -------------------------------------------------------------------------------

std::size_t CXmlReader::GetAttributeCount() const noexcept {
    return m_impl->attributes.size();
}

const CXmlReaderAttribute& CXmlReader::GetAttributeAt(std::size_t index) const noexcept {
    return m_impl->attributes[index];
}

const CXmlReaderAttribute* CXmlReader::FindAttribute(std::string_view namespaceUri,
                                                     std::string_view localName) const noexcept {
    for (const CXmlReaderAttribute& attribute : m_impl->attributes) {
        if (attribute.localName == localName && attribute.namespaceUri == namespaceUri) return &attribute;
    }
    return nullptr;
}

std::string_view CXmlReader::GetAttribute(std::string_view localName) const noexcept {
    const CXmlReaderAttribute* const found = FindAttribute({}, localName);
    return found == nullptr ? std::string_view() : found->value;
}

bool CXmlReader::LookupNamespace(std::string_view prefix, std::string_view& namespaceUri) const noexcept {
    if (prefix == "xml") {
        namespaceUri = internal::kXmlNamespace;
        return true;
    }
    for (auto binding = m_impl->bindings.rbegin(); binding != m_impl->bindings.rend(); ++binding) {
        if (binding->prefix != prefix) continue;
        namespaceUri = binding->uri;
        return true;
    }
    return false;
}

std::uint64_t CXmlReader::GetScopeNumber() const noexcept {
    return m_impl->scope;
}

std::vector<std::pair<std::string_view, std::string_view>> CXmlReader::GetScope() const {
    // Of several declarations of a prefix only the last one counts.
    std::vector<std::pair<std::string_view, std::string_view>> scope;
    std::unordered_set<std::string_view> known;
    for (auto binding = m_impl->bindings.rbegin(); binding != m_impl->bindings.rend(); ++binding) {
        if (known.insert(binding->prefix).second) scope.emplace_back(binding->prefix, binding->uri);
    }
    return scope;
}

// --- places ------------------------------------------------------------------------------------------------

std::uint32_t CXmlReader::GetDepth() const noexcept {
    return static_cast<std::uint32_t>(m_impl->open.size());
}

std::string CXmlReader::GetPath() const {
    std::string path;
    for (const Impl::Open& element : m_impl->open) {
        path += '/';
        if (!element.name->prefix.empty()) path.append(element.name->prefix) += ':';
        path += element.name->localName;
        if (element.position > 1) path.append(1, '[').append(std::to_string(element.position)) += ']';
    }
    return path;
}

std::uint64_t CXmlReader::GetLine() const {
    return m_impl->Locate(m_impl->Offset()).GetLine();
}

std::uint64_t CXmlReader::GetColumn() const {
    return m_impl->Locate(m_impl->Offset()).GetColumn();
}

std::uint64_t CXmlReader::GetOffset() const noexcept {
    return m_impl->Offset();
}

const std::string& CXmlReader::GetFileName() const noexcept {
    return m_impl->fileName;
}

// --- subtrees ----------------------------------------------------------------------------------------------

void CXmlReader::SkipSubtree() {
    const std::uint32_t depth = GetDepth();
    while (Read()) {
        if (GetEvent() == XmlEvent::EndElement && GetDepth() == depth) return;
    }
}

namespace {

/// Hands the elements of a subtree to the builder of a tree.
class SubtreeBuilder {
public:
    explicit SubtreeBuilder(internal::CXmlTreeBuilder& builder) : m_builder(builder) {}

    void Start(const CXmlReader& reader) {
        m_texts.clear();
        const std::size_t count = reader.GetAttributeCount();
        for (std::size_t i = 0; i < count; ++i) {
            const CXmlReaderAttribute& attribute = reader.GetAttributeAt(i);
            m_texts.push_back(RawName(attribute.namespaceUri, attribute.localName));
            m_texts.emplace_back(attribute.value);
        }
        m_attributes.clear();
        for (const std::string& text : m_texts)
            m_attributes.push_back(text.c_str());
        m_attributes.push_back(nullptr);
        m_builder.StartElement(RawName(reader.GetNamespaceUri(), reader.GetLocalName()).c_str(),
                               m_attributes.data());
    }

    /// Trees have no carriage returns in their texts.
    void Text(std::string_view text) {
        while (!text.empty()) {
            const std::string_view piece = text.substr(0, text.find('\r'));
            if (!piece.empty()) m_builder.AppendText(piece.data(), piece.size());
            text.remove_prefix(std::min(text.size(), piece.size() + 1));
        }
    }

private:
    static std::string RawName(std::string_view uri, std::string_view local) {
        std::string raw(uri);
        if (!uri.empty()) raw += internal::CXmlNameTable::kSeparator;
        return raw.append(local);
    }

    internal::CXmlTreeBuilder& m_builder;
    std::vector<std::string> m_texts;
    std::vector<const char*> m_attributes;
};

}  // namespace

void CXmlReader::ReadSubtree(CXmlDocument& document) {
    document.Cleanup();
    internal::CXmlTreeBuilder builder(document.Tree(), document.m_filter, *document.m_context,
                                      !internal::IsLocalUtf8());
    SubtreeBuilder subtree(builder);
    try {
        for (const auto& [prefix, uri] : GetScope())
            builder.DeclarePrefix(prefix, uri);
        const std::uint32_t depth = GetDepth();
        subtree.Start(*this);
        while (Read()) {
            if (GetEvent() == XmlEvent::StartElement) {
                for (std::size_t i = m_impl->open.back().bindings; i < m_impl->bindings.size(); ++i)
                    builder.DeclarePrefix(m_impl->bindings[i].prefix, m_impl->bindings[i].uri);
                subtree.Start(*this);
            } else if (GetEvent() == XmlEvent::Text || GetEvent() == XmlEvent::CData) {
                subtree.Text(GetText());
            } else if (GetEvent() == XmlEvent::EndElement) {
                builder.EndElement();
                if (GetDepth() == depth) return;
            }
        }
    } catch (const internal::CTreeLimitPassed& e) {
        builder.Abandon();
        throw CKvException(e.Message() + " at line " + std::to_string(GetLine()));
    } catch (...) {
        builder.Abandon();
        throw;
    }
}

}  // namespace KvXmlLib16
