#include "kvxml/xml/internal/tree_output.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/ascii.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/settings/namespace_alias_map.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/internal/writer_context.h"
#include "kvxml/xml/internal/xml_name_check.h"

namespace KvXmlLib16::internal {

namespace {

// Scopes with more prefixes than that are not made larger.
constexpr std::size_t kMaxPrefixes = CPrefixList::kMaxCount + 1;

// Longer namespaces are not compared per element.
constexpr std::size_t kLongUri = 1024;

/// Whether the namespace can be among the writer's own declarations.
bool IsPlain(std::string_view uri) noexcept {
    return uri.size() <= kLongUri &&
           std::none_of(uri.begin(), uri.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

/// A text that is no namespace and that nothing else has in common.
std::string NewStandIn() {
    static constinit std::atomic<std::uint64_t> last{0};
    return "\x01" + std::to_string(++last);
}

/// Names that begin like "xml" are for the standards.
bool IsReserved(std::string_view prefix) noexcept {
    return prefix.size() >= 3 && EqualsIgnoreAsciiCase(prefix.substr(0, 3), "xml");
}

/// Whether no declaration may bind the namespace.
bool IsReservedNamespace(std::string_view uri) noexcept {
    return uri == kXmlNamespace || uri == kXmlnsNamespace;
}

void RefuseReserved(std::string_view uri) {
    if (IsReservedNamespace(uri)) {
        throw CKvInvalidStateException(
            FormatString("The namespace [%s] can not be declared.", std::string(uri).c_str()));
    }
}

}  // namespace

bool BeginsAsMarkup(std::string_view text) noexcept {
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && text[start] == '<';
}

CTreeOutput::CTreeOutput(CXmlWriter& writer, const CSerializationContext& context)
    : m_writer(writer),
      m_text(dynamic_cast<CXmlTextWriter*>(&writer)),
      m_declares(writer.m_declaresByAttribute),
      m_context(context),
      m_allowColon(context.GetSchemaType() == SchemaType_NoNamespaces) {}

CTreeOutput::~CTreeOutput() {
    if (m_unformattedDepth != 0) m_text->SetFormatted(true);
}

const CTreeOutput::Scope& CTreeOutput::CurrentScope() const noexcept {
    return m_writer.m_current != nullptr ? *m_writer.m_current->scope : *m_writer.m_documentScope;
}

// --- names -------------------------------------------------------------------------------------------------

void CTreeOutput::CheckName(const Name& name) {
    const auto key = reinterpret_cast<std::uintptr_t>(name.key);
    const void*& checked = m_checked[(key >> 4 ^ key >> 10) % m_checked.size()];
    if (checked == name.key) return;
    CheckNameSlowly(name);
    checked = name.key;
}

void CTreeOutput::CheckNameSlowly(const Name& name) {
    if (!IsXmlName(name.local, m_allowColon)) {
        throw CKvInvalidStateException(
            FormatString("[%s] is not a valid XML name.", std::string(name.local).c_str()));
    }
}

/// What scopes have in place of the namespace.
std::string_view CTreeOutput::ScopeUri(std::string_view uri) {
    if (uri.size() <= kLongUri) return uri;
    std::string_view& known = m_standInsByAddress[uri.data()];
    if (!known.empty()) return known;
    const auto found = m_standIns.find(uri);
    return known = found != m_standIns.end() ? found->second
                                             : m_standIns.emplace(uri, NewStandIn()).first->second;
}

bool CTreeOutput::HasPrefixInScope(std::string_view uri) {
    return CurrentScope().Find(ScopeUri(uri)) != nullptr;
}

std::string CTreeOutput::FreePrefix() const {
    std::string prefix;
    for (std::size_t n = m_ownQualifiers.size(); prefix.empty() || CurrentScope().IsPrefixUsed(prefix); ++n)
        prefix = "NS" + std::to_string(n);
    return prefix;
}

bool CTreeOutput::IsUsable(std::string_view prefix) const {
    return !prefix.empty() && !IsReserved(prefix) && !CurrentScope().IsPrefixUsed(prefix) &&
           IsXmlName(prefix, false);
}

/// Declares the prefix in the open start tag, for this element and what is in it.
void CTreeOutput::Declare(std::string_view prefix, std::string_view uri) {
    std::string name = "xmlns";
    if (!prefix.empty()) name.append(1, ':').append(prefix);
    m_writer.WriteAttribute(name, {}, uri, ItemType_string);
}

// --- document ----------------------------------------------------------------------------------------------

void CTreeOutput::BeginDocument(std::string_view rootUri, std::string_view rootPrefix,
                                const CPrefixList* prefixes) {
    for (const std::string& instruction : m_context.GetProcessingInstructions())
        m_writer.WriteRaw(instruction);
    // What was read without namespaces has its declarations among its attributes.
    if (!m_allowColon) {
        for (const auto& [uri, alias] : m_context.GetNamespaceAliases())
            m_writer.AddNamespaceAlias(alias, uri);
    }
    const Scope& scope = *m_writer.m_documentScope;
    const std::string& wanted = m_context.GetDefaultNamespaceURIRef();
    std::string_view defaultNamespace = wanted.empty() ? std::string_view(scope.defaultNamespace) : wanted;
    if (rootUri.empty()) {
        defaultNamespace = {};  // it would take the document element in
    } else if (defaultNamespace.empty()) {
        defaultNamespace = rootPrefix.empty() && scope.Find(rootUri) == nullptr ? rootUri
                           : prefixes != nullptr                                ? prefixes->DefaultNamespace()
                                                                                : std::string_view();
        if (!IsPlain(defaultNamespace) || IsReservedNamespace(defaultNamespace)) defaultNamespace = {};
    }
    m_writer.SetDefaultNamespace(std::string(defaultNamespace));
    const auto offer = [&](std::string_view prefix, std::string_view uri) {
        if (!uri.empty() && IsPlain(uri) && !IsReservedNamespace(uri) && scope.Find(uri) == nullptr &&
            IsUsable(prefix)) {
            m_writer.AddNamespaceAlias(prefix, uri);
        }
    };
    if (prefixes != nullptr) {
        for (const CPrefixList::Item& item : prefixes->Items())
            offer(item.prefix.View(), item.uri.View());
    }
    if (rootUri != defaultNamespace) offer(rootPrefix, rootUri);
    m_rest = prefixes;
}

/// Second prefixes of namespaces, and namespaces that need escaping.
void CTreeOutput::DeclareRest() {
    for (const CPrefixList::Item& item : m_rest->Items()) {
        if (!m_ownQualifiers.empty()) break;
        const std::string_view uri = item.uri.View();
        if (uri.empty() || IsReservedNamespace(uri) || !IsUsable(item.prefix.View())) continue;
        Declare(item.prefix.View(), uri);
        if (!HasPrefixInScope(uri)) m_writer.AddNamespaceAlias(item.prefix.View(), ScopeUri(uri));
    }
    m_rest = nullptr;
}

// --- elements ----------------------------------------------------------------------------------------------

void CTreeOutput::StartElement(const Name& name) {
    if (m_writer.GetDepth() >= static_cast<std::int64_t>(OrUnlimited(m_context.GetMaxElementDepth()))) {
        throw CKvException(FormatString("The elements are nested deeper than the limit of %u.",
                                        m_context.GetMaxElementDepth()));
    }
    CheckName(name);
    if (m_declares) {
        const Scope& scope = CurrentScope();
        if (m_expectsBareType || name.uri.size() > kLongUri) {
            StartWithPrefix(name);
            return;
        }
        if (name.uri != scope.defaultNamespace && (name.uri.empty() || scope.Find(name.uri) == nullptr)) {
            StartDeclaring(name);
            return;
        }
    }
    m_writer.WriteStartElement(name.local, name.uri);
}

void CTreeOutput::StartDeclaring(const Name& name) {
    const std::size_t prefixes = CurrentScope().aliases.size();
    if (prefixes < kMaxPrefixes && !name.uri.empty() && !name.prefix.empty()) {
        RefuseReserved(name.uri);
        if (IsUsable(name.prefix)) {
            m_name.assign(name.prefix).append(1, ':').append(name.local);
            m_writer.WriteStartElement(m_name, {});
            Declare(name.prefix, name.uri);
            m_writer.AddNamespaceAlias(name.prefix, name.uri);
            return;
        }
        if (IsPlain(name.uri) && (m_text != nullptr || m_writer.m_current == nullptr)) {
            m_writer.WriteStartElement(name.local, name.uri);  // with a prefix that the writer invents
            return;
        }
    }
    RefuseReserved(name.uri);
    // The document element has its default namespace declared by the writer already.
    if (m_writer.m_current == nullptr && !CurrentScope().defaultNamespace.empty()) {
        if (!name.uri.empty() && IsPlain(name.uri)) {
            m_writer.WriteStartElement(name.local, name.uri);
            return;
        }
        m_writer.SetDefaultNamespace({});
    }
    m_writer.WriteStartElement(name.local, {});
    Declare({}, name.uri);
    m_writer.SetDefaultNamespace(name.uri);
}

/// Starts an element that is to be independent of the default namespace, or whose namespace is long.
void CTreeOutput::StartWithPrefix(const Name& name) {
    const bool dropsDefault = m_expectsBareType && !CurrentScope().defaultNamespace.empty();
    m_expectsBareType = false;
    if (m_writer.m_current == nullptr && dropsDefault) m_writer.SetDefaultNamespace({});
    const bool undeclares = m_writer.m_current != nullptr && dropsDefault;
    const std::string_view uri = ScopeUri(name.uri);
    const Scope::Alias* const alias = uri.empty() ? nullptr : CurrentScope().Find(uri);
    const bool declares = !uri.empty() && alias == nullptr;
    std::string prefix;
    if (declares) {
        RefuseReserved(name.uri);
        prefix = IsUsable(name.prefix) ? std::string(name.prefix) : FreePrefix();
    } else if (alias != nullptr) {
        prefix = alias->Prefix();
    }
    m_name = prefix;
    if (!prefix.empty()) m_name += ':';
    m_name += name.local;
    m_writer.WriteStartElement(m_name, {});
    if (declares) {
        Declare(prefix, name.uri);
        if (CurrentScope().aliases.size() < kMaxPrefixes)
            m_writer.AddNamespaceAlias(prefix, uri);
        else
            m_ownQualifiers.emplace(uri, prefix + ':');
    }
    if (undeclares) {
        Declare({}, {});
        m_writer.SetDefaultNamespace({});
    }
}

void CTreeOutput::WriteInLineSchema(bool hasText) {
    const std::string& schema = m_context.GetInLineSchemaRef();
    if (schema.empty()) return;
    if (BeginsAsMarkup(schema))
        m_writer.WriteRawContent(schema, !hasText);
    else
        m_writer.WriteRawAfterSpace(schema);
}

void CTreeOutput::Text(std::string_view text, bool hasChildren, bool keepBlanks) {
    if (text.empty() && !keepBlanks) return;
    if (hasChildren && m_text != nullptr && m_text->GetFormatted()) {
        m_unformattedDepth = m_writer.GetDepth();
        m_text->SetFormatted(false);
    }
    if (!text.empty()) m_writer.WriteText(text, ItemType_string, false);
}

void CTreeOutput::EndElement() {
    if (m_unformattedDepth != 0 && m_unformattedDepth == m_writer.GetDepth()) {
        m_unformattedDepth = 0;
        m_text->SetFormatted(true);
        m_writer.m_current->childCount = 0;  // the end tag stays on the line of the text
    }
    m_writer.WriteEndElement();
}

// --- attributes --------------------------------------------------------------------------------------------

/// The prefix and colon for a namespace that is not empty; declares it where needed.
std::string_view CTreeOutput::Qualifier(std::string_view namespaceUri, std::string_view prefix) {
    const std::string_view uri = ScopeUri(namespaceUri);
    const Scope& scope = CurrentScope();
    if (const Scope::Alias* const alias = scope.Find(uri)) return alias->qualifier;
    RefuseReserved(namespaceUri);
    if (scope.aliases.size() >= kMaxPrefixes) {
        const auto found = m_ownQualifiers.find(uri);
        if (found != m_ownQualifiers.end()) return found->second;
        std::string own = FreePrefix();
        Declare(own, namespaceUri);
        own += ':';
        return m_ownQualifiers.emplace(uri, std::move(own)).first->second;
    }
    if (IsUsable(prefix)) {
        Declare(prefix, namespaceUri);
        m_writer.AddNamespaceAlias(prefix, uri);
    } else {
        Declare(m_writer.InventPrefix(uri).Prefix(), namespaceUri);
    }
    return CurrentScope().Find(uri)->qualifier;
}

void CTreeOutput::WriteAttribute(const Name& name, std::string_view value) {
    CheckName(name);
    if (name.uri.empty()) {
        if (name.local == "xmlns" && !m_allowColon) {
            throw CKvInvalidStateException(FormatString("[%s] is not a valid XML name.", "xmlns"));
        }
    } else if (m_declares && (name.uri.size() > kLongUri || CurrentScope().Find(name.uri) == nullptr)) {
        m_name.assign(Qualifier(name.uri, name.prefix)).append(name.local);
        m_writer.WriteAttribute(m_name, {}, value, ItemType_string);
        return;
    }
    m_writer.WriteAttribute(name.local, name.uri, value, ItemType_string);
}

void CTreeOutput::WriteTypeAttribute(const Name& name, std::string_view value,
                                     std::string_view typeNamespace) {
    const CTypeName type(value);
    if (!m_declares) {
        m_writer.WriteTypeAttribute(typeNamespace, type.local, ItemType_string);
        return;
    }
    if (typeNamespace.empty() ||
        (!type.hasPrefix && typeNamespace == std::string_view(CurrentScope().defaultNamespace))) {
        WriteAttribute(name, value);
        return;
    }
    const std::string_view qualifier = Qualifier(typeNamespace, type.prefix);
    if (type.hasPrefix && qualifier.substr(0, qualifier.size() - 1) == type.prefix)
        WriteAttribute(name, value);
    else
        WriteAttribute(name, std::string(qualifier).append(type.local));
}

void CTreeOutput::EndAttributes() {
    if (m_rest != nullptr && m_declares) DeclareRest();
    if (!m_ownQualifiers.empty()) m_ownQualifiers.clear();
}

}  // namespace KvXmlLib16::internal
