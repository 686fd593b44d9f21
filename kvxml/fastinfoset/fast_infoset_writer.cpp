#include "kvxml/fastinfoset/fast_infoset_writer.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/fastinfoset/internal/writer_state.h"
#include "kvxml/settings/fast_infoset_vocabulary.h"
#include "kvxml/xml/internal/writer_context.h"
#include "kvxml/xml/internal/xml_name_check.h"

namespace KvXmlLib16 {

using internal::COctetBuffer;
using internal::FailFastInfoset;
namespace form = internal::form;
using namespace internal::item;

namespace {

constexpr std::string_view kDeclarations[] = {
    {},
    "<?xml version='1.0' encoding='finf'?>",
    "<?xml encoding='finf'?>",
    "<?xml encoding='finf' standalone='no'?>",
    "<?xml encoding='finf' standalone='yes'?>",
    "<?xml version='1.0' encoding='finf' standalone='no'?>",
    "<?xml version='1.0' encoding='finf' standalone='yes'?>",
    "<?xml version='1.1' encoding='finf'?>",
    "<?xml version='1.1' encoding='finf' standalone='no'?>",
    "<?xml version='1.1' encoding='finf' standalone='yes'?>",
};

}  // namespace

// --- life ------------------------------------------------------------------------------------------------

CFastInfosetWriter::CFastInfosetWriter(const CFastInfosetContext& settings, FInfoDecl decl,
                                       bool writeDefaultValues)
    : m_settings(settings), m_decl(decl), m_writeDefaultValues(writeDefaultValues) {
    if (decl < FInfoDecl_None || decl > FInfoDecl_Version11StandaloneYes)
        FailFastInfoset("There is no such declaration.");
    SetDeclaresByAttribute(true);
}

CFastInfosetWriter::~CFastInfosetWriter() = default;

void CFastInfosetWriter::BeginOutput() {
    while (GetCurrentContext() != nullptr)
        PopContext();
    m_state = std::make_unique<State>(m_settings);
    COctetBuffer& out = m_state->out;
    out.Append(kDeclarations[m_decl]);
    out.Append(std::string_view("\xE0\x00\x00\x01", 4));
    const CFastInfosetVocabulary* const vocabulary = m_settings.GetExternalVocabulary().get();
    if (vocabulary == nullptr) {
        out.Append(0);
        return;
    }
    out.Append(std::string_view("\x20\x10\x00", 3));  // an initial vocabulary, which is an external one
    m_state->text.PutIdentifier(out, vocabulary->GetUri());
    m_state->LoadVocabulary(*vocabulary);
}

void CFastInfosetWriter::EndDocument() {
    CXmlWriter::EndDocument();
    State& state = Begun();
    if (!state.hasRoot) FailFastInfoset("The document has no element.");
    if (state.isEnded) return;
    state.Terminate();
    state.FlushHalf();
    state.isEnded = true;
}

CBinaryData CFastInfosetWriter::TakeDocument() {
    return m_state == nullptr ? CBinaryData() : m_state->out.Take();
}

CFastInfosetWriter::State& CFastInfosetWriter::Begun() {
    if (m_state == nullptr) throw CKvInvalidStateException("The output has not begun.");
    return *m_state;
}

// --- namespaces ------------------------------------------------------------------------------------------

void CFastInfosetWriter::SetDefaultNamespace(std::string_view uri) {
    CXmlWriter::SetDefaultNamespace(uri);
    if (m_state != nullptr) ++m_state->version;
}

void CFastInfosetWriter::AddNamespaceAlias(std::string_view prefix, std::string_view uri) {
    CXmlWriter::AddNamespaceAlias(prefix, uri);
    if (m_state != nullptr) ++m_state->version;
}

/// Declares a prefix, or the default namespace, in the open start tag, unless that is so already.
void CFastInfosetWriter::Declare(std::string_view prefix, std::string_view uri, bool isByAttribute) {
    State& state = *m_state;
    if (uri == internal::kXmlnsNamespace || (uri == internal::kXmlNamespace) != (prefix == "xml") ||
        prefix == "xmlns")
        FailFastInfoset("The prefix [" + std::string(prefix) + "] can not be declared.");
    if (!prefix.empty() && uri.empty())
        FailFastInfoset("The prefix [" + std::string(prefix) + "] can not be undeclared.");
    const std::uint32_t ns = state.NamespaceNumber(uri);
    std::uint32_t number = prefix.empty() ? kNoPrefix : state.prefixes.Find(prefix);
    const bool isKnown = prefix.empty() || number != 0;
    if (!isKnown) {
        if (!internal::IsXmlName(prefix, false))
            FailFastInfoset("[" + std::string(prefix) + "] is not a valid XML name.");
        number = state.prefixes.Add(prefix);
        if (number == 0) FailFastInfoset("There are too many prefixes.");
    }
    if (number >= state.bindings.size()) state.bindings.resize(number + 1);
    State::Binding& binding = state.bindings[number];
    const bool isInForce = isKnown && binding.ns == ns;
    if (!isInForce && binding.element == state.element)
        FailFastInfoset("The prefix [" + std::string(prefix) + "] is declared twice.");
    binding.element = state.element;
    if (isInForce && binding.isByAttribute >= isByAttribute) return;
    state.undo.push_back({GetCurrentContext()->depth, number, binding.ns, binding.isByAttribute});
    binding.ns = ns;
    binding.isByAttribute = isByAttribute;
    ++state.version;
    if (isInForce) return;

    COctetBuffer& out = state.declarations;
    out.Append(kNamespaceAttribute | (prefix.empty() ? 0 : kWithPrefix) | (uri.empty() ? 0 : kWithNamespace));
    if (!prefix.empty()) {
        if (isKnown)
            out.Commit(form::Number2(out.Reserve(6), 0x80, number));
        else
            state.text.PutIdentifier(out, prefix);
    }
    if (ns != kNoNamespace) {
        if (state.isNamespaceKnown[ns])
            out.Commit(form::Number2(out.Reserve(6), 0x80, ns));
        else
            state.text.PutIdentifier(out, uri);
        state.isNamespaceKnown[ns] = true;
    }
}

/// The prefix that names in this namespace have, as the prefixes in scope say, declared where it is not.
std::uint32_t CFastInfosetWriter::PrefixFor(std::uint32_t ns, bool isElement) {
    State& state = *m_state;
    if (ns == kNoNamespace) {
        if (isElement && state.bindings[kNoPrefix].ns != kNoNamespace) Declare({}, {});
        return kNoPrefix;
    }
    if (ns == kXmlPrefix) return kXmlPrefix;
    const std::string_view uri = state.namespaces.Text(ns);
    const NamespaceScope& scope = *GetCurrentContext()->scope;
    if (isElement && uri == scope.defaultNamespace) {
        Declare({}, uri);
        return kNoPrefix;
    }
    const NamespaceScope::Alias* alias = scope.Find(uri);
    if (alias == nullptr) alias = &InventPrefix(uri);
    const std::string_view prefix = alias->Prefix();
    Declare(prefix, uri);
    return state.prefixes.Find(prefix);
}

/// The namespace that a prefix in a name is declared for.
std::uint32_t CFastInfosetWriter::DeclaredNamespace(std::string_view prefix) {
    State& state = *m_state;
    const std::uint32_t number = state.prefixes.Find(prefix);
    if (number == 0 || number >= state.bindings.size() || state.bindings[number].ns == kNoNamespace)
        FailFastInfoset("The prefix [" + std::string(prefix) + "] is not declared.");
    return state.bindings[number].ns;
}

// --- elements --------------------------------------------------------------------------------------------

void CFastInfosetWriter::WriteStartElement(std::string_view localName, std::string_view namespaceUri) {
    State& state = Begun();
    CXmlWriterContext* const parent = GetCurrentContext();
    if (parent != nullptr) {
        ++parent->childCount;
        if (parent->startTagOpen) CloseStartTag();
    } else if (state.hasRoot) {
        FailFastInfoset("The document has an element already.");
    }
    PushContext();
    state.FlushHalf();
    state.startAt = state.out.Size();
    state.hasAttributes = false;
    ++state.element;
    if (parent == nullptr) {
        state.hasRoot = true;
        ++state.version;
        const NamespaceScope& scope = *GetCurrentContext()->scope;
        // It would take an element without namespace in.
        const bool isOutside = namespaceUri.empty() && localName.find(':') == localName.npos;
        if (!scope.defaultNamespace.empty() && !isOutside) Declare({}, scope.defaultNamespace);
        for (const NamespaceScope::Alias& alias : scope.aliases)
            if (!IsXmlNamespace(alias.uri)) Declare(alias.Prefix(), alias.uri);
    }
    if (namespaceUri.empty()) {
        state.isPending = true;
        state.pendingName = localName;
        return;
    }
    NameEntry& entry = state.elements.Entry(state.NamespaceNumber(namespaceUri), localName);
    if (entry.version == state.version)
        state.PutElementName(entry, entry.prefix);
    else
        WriteElementName(entry, PrefixFor(entry.ns, true));
}

/// Writes a name with a prefix that is in scope and will be as long as nothing is declared.
void CFastInfosetWriter::WriteElementName(NameEntry& entry, std::uint32_t prefix) {
    State& state = *m_state;
    if (entry.prefix != prefix || entry.number == 0) entry.number = state.elements.Number(entry, prefix);
    entry.prefix = prefix;
    entry.version = state.version;
    state.PutElementName(entry, prefix);
}

void CFastInfosetWriter::WritePendingStart() {
    State& state = *m_state;
    state.isPending = false;
    const std::string_view name = state.pendingName;
    const std::size_t colon = name.find(':');
    if (colon != name.npos) {
        const std::uint32_t ns = DeclaredNamespace(name.substr(0, colon));
        WriteElementName(state.elements.Entry(ns, name.substr(colon + 1)),
                         state.prefixes.Find(name.substr(0, colon)));
        return;
    }
    // A default namespace that an attribute has declared takes the element in.
    const State::Binding& binding = state.bindings[kNoPrefix];
    const bool isTakenIn = binding.ns != kNoNamespace && (binding.isByAttribute || state.isRaw);
    NameEntry& entry = state.elements.Entry(isTakenIn ? binding.ns : kNoNamespace, name);
    WriteElementName(entry, isTakenIn ? kNoPrefix : PrefixFor(kNoNamespace, true));
}

/// Completes the start tag: what was waiting for declarations, the declarations, the end of the attributes.
void CFastInfosetWriter::CloseStartTag() {
    State& state = *m_state;
    GetCurrentContext()->startTagOpen = false;
    if (state.isPending) WritePendingStart();
    if (!state.deferred.empty()) WriteDeferredAttributes();
    if (state.declarations.Size() != 0) {
        COctetBuffer& declarations = state.declarations;
        declarations.Append(kTerminator);
        unsigned char& lead = state.out[state.startAt];
        const unsigned withAttributes = lead & kHasAttributes;
        lead = static_cast<unsigned char>(lead & ~kHasAttributes);
        state.scratch.assign(1, static_cast<char>(kWithNamespaces | withAttributes));
        state.scratch += declarations.View();
        state.out.Insert(state.startAt, state.scratch);
        declarations.Clear();
    }
    if (state.hasAttributes) state.Terminate();
}

void CFastInfosetWriter::WriteText(std::string_view text, ItemType type, bool isDefaultValue) {
    if (text.empty() || (isDefaultValue && !m_writeDefaultValues)) return;
    constexpr std::string_view kSectionStart = "<![CDATA[";
    constexpr std::string_view kSectionEnd = "]]>";
    State& state = Begun();
    StartContent();
    internal::CRepetition& repetition = state.elements.last->repetition;
    if (!m_lossless && text.substr(0, kSectionStart.size()) == kSectionStart) {
        for (;;) {
            const std::size_t start = text.find(kSectionStart);
            const std::size_t end =
                start == text.npos ? text.npos : text.find(kSectionEnd, start + kSectionStart.size());
            if (end == text.npos) break;
            const std::size_t content = start + kSectionStart.size();
            if (start != 0) state.text.PutText(state.out, text.substr(0, start), ItemType_string, repetition);
            state.text.PutSection(state.out, text.substr(content, end - content));
            text.remove_prefix(end + kSectionEnd.size());
        }
    }
    if (!text.empty()) state.text.PutText(state.out, text, type, repetition);
}

/// In front of content of the open element.
void CFastInfosetWriter::StartContent() {
    if (GetCurrentContext() == nullptr) throw CKvInvalidStateException("No element is open.");
    if (GetCurrentContext()->startTagOpen) CloseStartTag();
    m_state->FlushHalf();
}

void CFastInfosetWriter::WriteEndElement() {
    State& state = Begun();
    CXmlWriterContext* const context = GetCurrentContext();
    if (context == nullptr) throw CKvInvalidStateException("No element is open.");
    if (context->startTagOpen) CloseStartTag();
    state.Terminate();
    const bool hasOwnScope = context->parent == nullptr || context->parent->scope != context->scope;
    if (hasOwnScope || (!state.undo.empty() && state.undo.back().depth == context->depth)) {
        ++state.version;
        for (; !state.undo.empty() && state.undo.back().depth == context->depth; state.undo.pop_back()) {
            const State::Undo& undo = state.undo.back();
            state.bindings[undo.prefix].ns = undo.ns;
            state.bindings[undo.prefix].isByAttribute = undo.isByAttribute;
        }
    }
    PopContext();
}

// --- attributes ------------------------------------------------------------------------------------------

void CFastInfosetWriter::RequireOpenStartTag() const {
    const CXmlWriterContext* const context = GetCurrentContext();
    if (context == nullptr || !context->startTagOpen)
        throw CKvException("Attributes must be added before elements");
}

void CFastInfosetWriter::WriteAttribute(std::string_view localName, std::string_view namespaceUri,
                                        std::string_view value, ItemType type) {
    RequireOpenStartTag();
    State& state = *m_state;
    bool isDeferred = state.isPending || !state.deferred.empty();  // the order stays
    if (namespaceUri.empty()) {
        constexpr std::string_view kXmlns = "xmlns";
        if (localName.substr(0, kXmlns.size()) == kXmlns) {
            if (localName.size() == kXmlns.size()) return Declare({}, value, true);
            if (localName[kXmlns.size()] == ':')
                return Declare(localName.substr(kXmlns.size() + 1), value, true);
        }
        isDeferred = isDeferred || localName.find(':') != localName.npos;
    }
    if (isDeferred) {
        state.deferredText.append(localName).append(namespaceUri).append(value);
        state.deferred.push_back({localName.size(), namespaceUri.size(), value.size(), type});
        return;
    }
    WriteAttributeNow(localName, namespaceUri, value, type);
}

void CFastInfosetWriter::WriteDeferredAttributes() {
    State& state = *m_state;
    std::string_view rest = state.deferredText;
    for (const State::DeferredAttribute& attribute : state.deferred) {
        const auto take = [&rest](std::size_t length) {
            const std::string_view taken = rest.substr(0, length);
            rest.remove_prefix(length);
            return taken;
        };
        const std::string_view localName = take(attribute.localLength);
        const std::string_view uri = take(attribute.uriLength);
        WriteAttributeNow(localName, uri, take(attribute.valueLength), attribute.type);
    }
    state.deferred.clear();
    state.deferredText.clear();
}

void CFastInfosetWriter::WriteAttributeNow(std::string_view localName, std::string_view namespaceUri,
                                           std::string_view value, ItemType type) {
    State& state = *m_state;
    const std::size_t colon = namespaceUri.empty() ? localName.find(':') : localName.npos;
    NameEntry* entry;
    std::uint32_t prefix = kNoPrefix;
    if (colon != localName.npos) {
        const std::uint32_t ns = DeclaredNamespace(localName.substr(0, colon));
        prefix = state.prefixes.Find(localName.substr(0, colon));
        entry = &state.attributes.Entry(ns, localName.substr(colon + 1));
    } else {
        entry = &state.attributes.Entry(state.NamespaceNumber(namespaceUri), localName);
        if (entry->ns != kNoNamespace)
            prefix = entry->version == state.version ? entry->prefix : PrefixFor(entry->ns, false);
    }
    if (entry->element == state.element)
        FailFastInfoset("The attribute [" + std::string(localName) + "] is written twice.");
    entry->element = state.element;
    if (entry->prefix != prefix || entry->number == 0)
        entry->number = state.attributes.Number(*entry, prefix);
    entry->prefix = prefix;
    entry->version = colon != localName.npos ? 0 : state.version;

    COctetBuffer& out = state.out;
    if (!state.hasAttributes) {
        state.hasAttributes = true;
        out[state.startAt] |= kHasAttributes;
    }
    if (entry->number != 0) {
        out.Commit(form::Number2(out.Reserve(6), 0, entry->number));
    } else {
        state.PutName(out, kLiteralAttribute, prefix, *entry);
        state.attributes.Count(*entry, prefix);
    }
    state.text.PutValue(out, value, type, entry->repetition);
}

void CFastInfosetWriter::WriteTypeAttribute(std::string_view typeNamespaceUri, std::string_view typeName,
                                            ItemType type) {
    RequireOpenStartTag();
    // An element without namespace can not have the default one declared.
    const bool isOutside = m_state->isPending && m_state->pendingName.find(':') == std::string::npos;
    std::string value;
    if (typeNamespaceUri == GetCurrentContext()->scope->defaultNamespace && !isOutside) {
        if (!typeNamespaceUri.empty()) Declare({}, typeNamespaceUri);
    } else if (!typeNamespaceUri.empty()) {
        const std::uint32_t prefix = PrefixFor(m_state->NamespaceNumber(typeNamespaceUri), false);
        value.append(m_state->prefixes.Text(prefix)).append(1, ':');
    }
    value += typeName;
    WriteAttribute("type", internal::kInstanceNamespace, value, type);
}

void CFastInfosetWriter::WriteNilAttribute() {
    WriteAttribute("nil", internal::kInstanceNamespace, "true", ItemType_boolean);
}

}  // namespace KvXmlLib16
