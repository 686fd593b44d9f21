#include "kvxml/xml/xml_writer.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/xml/internal/failed_path.h"
#include "kvxml/xml/internal/writer_context.h"

namespace KvXmlLib16 {

namespace {

/// The candidates for invented prefixes, in order: AA, AB, ... AZ, BA, ... and past ZZ with an underscore and
/// then small letters as first character; then numbered ones.
std::string PrefixCandidate(unsigned n) {
    constexpr std::string_view kFirst = "ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz";
    constexpr unsigned kLetters = 26;
    if (n / kLetters >= kFirst.size()) return std::string(1, 'N').append(std::to_string(n));
    return {kFirst[n / kLetters], static_cast<char>('A' + n % kLetters)};
}

}  // namespace

// --- CXmlWriter::NamespaceScope ------------------------------------------------------------------------

std::size_t CXmlWriter::NamespaceScope::Position(std::string_view uri) const noexcept {
    const auto found =
        std::lower_bound(aliases.begin(), aliases.end(), uri,
                         [](const Alias& alias, std::string_view value) { return alias.uri < value; });
    return static_cast<std::size_t>(found - aliases.begin());
}

const CXmlWriter::NamespaceScope::Alias* CXmlWriter::NamespaceScope::FindSorted(
    std::string_view uri) const noexcept {
    const std::size_t position = Position(uri);
    if (position == aliases.size() || aliases[position].uri != uri) return nullptr;
    lastFound = position;
    return &aliases[position];
}

const CXmlWriter::NamespaceScope::Alias& CXmlWriter::NamespaceScope::Set(std::string_view prefix,
                                                                         std::string_view uri) {
    std::string qualifier(prefix);
    qualifier += ':';
    const std::size_t position = Position(uri);
    if (position == aliases.size() || aliases[position].uri != uri) {
        aliases.insert(aliases.begin() + static_cast<std::ptrdiff_t>(position),
                       Alias{std::string(uri), std::move(qualifier)});
    } else {
        aliases[position].qualifier = std::move(qualifier);
        firstFree = 0;
    }
    return aliases[position];
}

void CXmlWriter::NamespaceScope::Remove(std::string_view uri) noexcept {
    const std::size_t position = Position(uri);
    if (position == aliases.size() || aliases[position].uri != uri) return;
    aliases.erase(aliases.begin() + static_cast<std::ptrdiff_t>(position));
    firstFree = 0;
}

bool CXmlWriter::NamespaceScope::IsPrefixUsed(std::string_view prefix) const noexcept {
    return std::any_of(aliases.begin(), aliases.end(),
                       [prefix](const Alias& alias) { return alias.Prefix() == prefix; });
}

// --- CXmlWriter ----------------------------------------------------------------------------------------

CXmlWriter::CXmlWriter() : m_documentScope(std::make_unique<NamespaceScope>()) {
    m_documentScope->Set("xml", internal::kXmlNamespace);
}

CXmlWriter::~CXmlWriter() {
    while (m_first != nullptr) {
        CXmlWriterContext* const next = m_first->m_reusable;
        delete m_first;
        m_first = next;
    }
}

internal::CFailedPath& CXmlWriter::FailedPath() {
    if (m_failedPath == nullptr) m_failedPath = std::make_unique<internal::CFailedPath>();
    return *m_failedPath;
}

void CXmlWriter::BeginOutput() {}

void CXmlWriter::WriteSimpleAttribute(const SimpleName& name, std::string_view value, bool) {
    WriteAttribute(name.localName, name.namespaceUri, value, name.type);
}

void CXmlWriter::WriteSimpleElement(const SimpleName& name, std::string_view text, bool isDefaultValue,
                                    bool) {
    WriteStartElement(name.localName, name.namespaceUri);
    WriteText(text, name.type, isDefaultValue);
    WriteEndElement();
}

void CXmlWriter::WriteRawContent(std::string_view text, bool) {
    WriteRawAfterSpace(text);
}

std::uint32_t CXmlWriter::NewNameId() noexcept {
    static constinit std::atomic<std::uint32_t> last{0};
    std::uint32_t id = last.load(std::memory_order_relaxed);
    do {
        if (id == UINT32_MAX) return 0;
    } while (!last.compare_exchange_weak(id, id + 1, std::memory_order_relaxed));
    return id + 1;
}

void CXmlWriter::EndDocument() {
    if (m_current != nullptr) throw CKvException("An Element has not been closed.");
}

void CXmlWriter::SetDefaultNamespace(std::string_view uri) {
    NamespaceScope& scope = m_current != nullptr ? OwnScope(*m_current) : *m_documentScope;
    scope.defaultNamespace = uri;
}

void CXmlWriter::AddNamespaceAlias(std::string_view prefix, std::string_view uri) {
    if (IsXmlNamespace(uri)) return;
    NamespaceScope& scope = m_current != nullptr ? OwnScope(*m_current) : *m_documentScope;
    if (!prefix.empty()) {
        scope.Set(prefix, uri);
        return;
    }
    scope.Remove(uri);
    if (m_current == nullptr && !uri.empty()) scope.unnamed.emplace_back(uri);
}

std::int32_t CXmlWriter::GetDepth() const noexcept {
    return m_current == nullptr ? 0 : m_current->depth + 1;
}

void CXmlWriter::BeginArray() noexcept {
    if (m_current != nullptr) m_current->arrayMode = kArrayStarting;
}

void CXmlWriter::EndArray() noexcept {
    if (m_current != nullptr) m_current->arrayMode = kArrayEnded;
}

bool CXmlWriter::IsXmlNamespace(std::string_view uri) noexcept {
    return uri == internal::kXmlNamespace;
}

CXmlWriter::CXmlWriterContext* CXmlWriter::AddContext() {
    auto context = std::make_unique<CXmlWriterContext>();
    context->parent = m_current;
    return (m_current != nullptr ? m_current->m_reusable : m_first) = context.release();
}

void CXmlWriter::EnterDocument(CXmlWriterContext& context) {
    if (context.m_ownScope == nullptr) context.m_ownScope = std::make_unique<NamespaceScope>();
    NamespaceScope& scope = *context.m_ownScope;
    scope = NamespaceScope();
    ForgetNames();
    if (!IsXmlNamespace(m_documentScope->defaultNamespace))
        scope.defaultNamespace = m_documentScope->defaultNamespace;
    // What a start tag cannot declare without being ill-formed is left out: such a namespace gets an
    // invented prefix when it is used.
    for (const NamespaceScope::Alias& alias : m_documentScope->aliases) {
        const bool isXml = alias.uri == internal::kXmlNamespace;
        if (alias.uri.empty() || alias.uri == internal::kXmlnsNamespace || alias.Prefix() == "xmlns")
            continue;
        if (isXml != (alias.Prefix() == "xml") || scope.IsPrefixUsed(alias.Prefix())) continue;
        scope.aliases.push_back(alias);
    }
    context.scope = &scope;
    for (const std::string& uri : m_documentScope->unnamed)
        if (uri != scope.defaultNamespace && scope.Find(uri) == nullptr) InventPrefix(scope, uri);
}

CXmlWriter::NamespaceScope& CXmlWriter::OwnScope(CXmlWriterContext& context) {
    if (context.m_ownScope == nullptr) context.m_ownScope = std::make_unique<NamespaceScope>();
    if (context.scope != context.m_ownScope.get()) {
        *context.m_ownScope = *context.scope;
        context.scope = context.m_ownScope.get();
    }
    ForgetNames();  // callers are about to change it
    return *context.m_ownScope;
}

const CXmlWriter::NamespaceScope::Alias& CXmlWriter::InventPrefix(std::string_view uri) {
    return InventPrefix(OwnScope(*m_current), uri);
}

const CXmlWriter::NamespaceScope::Alias& CXmlWriter::InventPrefix(NamespaceScope& scope,
                                                                  std::string_view uri) {
    unsigned n = scope.firstFree;
    std::string prefix = PrefixCandidate(n);
    while (scope.IsPrefixUsed(prefix))
        prefix = PrefixCandidate(++n);
    const NamespaceScope::Alias& registered = scope.Set(prefix, uri);
    scope.firstFree = n + 1;
    return registered;
}

}  // namespace KvXmlLib16
