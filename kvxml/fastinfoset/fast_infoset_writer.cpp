#include "kvxml/fastinfoset/fast_infoset_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/ascii.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/fastinfoset/internal/octet_buffer.h"
#include "kvxml/fastinfoset/internal/string_table.h"
#include "kvxml/fastinfoset/internal/text_output.h"
#include "kvxml/objects/xml_tree_writer.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/settings/fast_infoset_vocabulary.h"
#include "kvxml/xml/internal/xml_name_check.h"
#include "kvxml/xml/xml_document.h"

namespace KvXmlLib16 {

using internal::COctetBuffer;
using internal::CStringTable;
using internal::FailFastInfoset;
namespace form = internal::form;

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

constexpr std::uint32_t kLimit = CFastInfosetContext::kMaxTableEntries;
constexpr std::uint32_t kXmlPrefix = 1;  // number of the prefix, and of its namespace
constexpr std::uint32_t kNoPrefix = 0;
constexpr std::uint32_t kNoNamespace = 0;

// First octets of items.
constexpr unsigned kTerminator = 0xF0;
constexpr unsigned kTwoTerminators = 0xFF;
constexpr unsigned kHasAttributes = 0x40;
constexpr unsigned kWithNamespaces = 0x38;
constexpr unsigned kNamespaceAttribute = 0xCC;
constexpr unsigned kInstruction = 0xE1;
constexpr unsigned kComment = 0xE2;
constexpr unsigned kLiteralElement = 0x3C;
constexpr unsigned kLiteralAttribute = 0x78;
constexpr unsigned kWithPrefix = 2;
constexpr unsigned kWithNamespace = 1;

constexpr std::string_view kBlanks = " \t\r\n";

struct NumberHash {
    internal::CTextHash hash = internal::CTextHash::Get();
    std::size_t operator()(std::uint64_t number) const noexcept { return hash(number); }
};

}  // namespace

/// A namespace and a local name, of elements or of attributes.
struct CFastInfosetWriter::NameEntry {
    std::string_view local;  // in the code page of the caller
    std::uint32_t id = 0;
    std::uint32_t ns = kNoNamespace;
    std::uint32_t prefix = kNoPrefix;  // with which it was written last
    std::uint32_t number = 0;          // of the name with that prefix
    std::uint64_t version = 0;         // of the namespaces in scope for which that holds; 0: none
    std::uint64_t element = 0;         // the last one that had this attribute
    internal::CRepetition repetition;  // of the values or texts
    NameEntry* next = nullptr;         // what followed last time
};

struct CFastInfosetWriter::State {
    /// The names of elements or of attributes.
    struct Names {
        /// The entry of a name that is checked when it is new.
        NameEntry& Entry(std::uint32_t ns, std::string_view local) {
            NameEntry* const expected = last->next;
            if (expected != nullptr && expected->ns == ns && expected->local.size() == local.size() &&
                internal::EqualShort(expected->local.data(), local.data(), local.size()))
                return *(last = expected);
            return *(last = last->next = &Find(ns, local));
        }
        NameEntry& Find(std::uint32_t ns, std::string_view local);
        /// The number of the name with this prefix; 0 when it has none.
        std::uint32_t& Number(const NameEntry& entry, std::uint32_t prefix) {
            return numbers[std::uint64_t{entry.id} << 32 | prefix];
        }

        /// Numbers a name that was written in full, as readers do.
        void Count(NameEntry& entry, std::uint32_t prefix) {
            if (count < kLimit) entry.number = Number(entry, prefix) = ++count;
        }

        NameEntry none;
        NameEntry* last = &none;
        std::uint32_t count = 0;
        std::deque<NameEntry> entries;
        internal::CIndexSlots slots;
        std::unordered_map<std::uint64_t, std::uint32_t, NumberHash> numbers;
        internal::CTextHash hash = internal::CTextHash::Get();
        internal::CArena arena;
    };

    struct Binding {
        std::uint32_t ns = kNoNamespace;
        std::uint64_t element = 0;  // the last one that declared or needed the prefix
        bool isByAttribute = false;
    };
    struct Undo {
        std::int32_t depth;
        std::uint32_t prefix;
        std::uint32_t ns;
        bool isByAttribute;
    };
    struct DeferredAttribute {
        std::size_t localLength;
        std::size_t uriLength;
        std::size_t valueLength;
        ItemType type;
    };

    explicit State(const CFastInfosetContext& context);

    /// In front of an item: the octet that is half full is filled up.
    void FlushHalf() {
        if (!isHalf) return;
        isHalf = false;
        out.Append(kTerminator);
    }
    void Terminate() {
        if (isHalf) out.Append(kTwoTerminators);
        isHalf = !isHalf;
    }
    std::uint32_t NamespaceNumber(std::string_view uri) {
        if (uri.empty()) return kNoNamespace;
        if (lastNamespace != kNoNamespace && uri == namespaces.Text(lastNamespace)) return lastNamespace;
        std::uint32_t number = namespaces.Find(uri);
        if (number == 0) number = AddNamespace(uri);
        return lastNamespace = number;
    }
    std::uint32_t AddNamespace(std::string_view uri);
    void LoadVocabulary(const CFastInfosetVocabulary& vocabulary);
    /// Puts the name whose number, or 0, the entry has for the prefix.
    void PutElementName(NameEntry& entry, std::uint32_t prefix) {
        if (entry.number != 0) {
            out.Commit(form::Number3(out.Reserve(6), 0, entry.number));
            return;
        }
        PutName(out, kLiteralElement, prefix, entry);
        elements.Count(entry, prefix);
    }
    void PutName(COctetBuffer& to, unsigned lead, std::uint32_t prefix, const NameEntry& entry);
    void PutIdentifier(COctetBuffer& to, CStringTable& table, std::string_view text);

    CFastInfosetContext settings;
    COctetBuffer out;
    internal::CTextOutput text;
    bool isHalf = false;
    bool hasRoot = false;
    bool isEnded = false;

    CStringTable prefixes{kLimit};
    CStringTable namespaces{kLimit};
    CStringTable localNames{kLimit};
    CStringTable targets{kLimit};
    Names elements;
    Names attributes;
    std::uint32_t lastNamespace = kNoNamespace;
    std::vector<bool> isNamespaceKnown;  // by number: the reader has it

    // Namespaces in scope
    std::vector<Binding> bindings;  // by number of the prefix
    std::vector<Undo> undo;
    std::uint64_t version = 1;

    // The start tag that is open
    std::size_t startAt = 0;
    std::uint64_t element = 0;
    bool hasAttributes = false;
    COctetBuffer declarations;
    bool isPending = false;   // the name, and with it all attributes, waits for declarations
    std::string pendingName;  // in no namespace, perhaps with a prefix
    std::vector<DeferredAttribute> deferred;
    std::string deferredText;
    std::string scratch;
};

CFastInfosetWriter::NameEntry& CFastInfosetWriter::State::Names::Find(std::uint32_t ns,
                                                                      std::string_view local) {
    const auto hashed = hash(local) ^ ns * 0x9E3779B9u;
    const std::uint32_t found = slots.Find(hashed, [&](std::uint32_t number) {
        return entries[number - 1].ns == ns && entries[number - 1].local == local;
    });
    if (found != 0) return entries[found - 1];
    if (!internal::IsXmlName(local, false))
        FailFastInfoset("[" + std::string(local) + "] is not a valid XML name.");
    arena.AppendToRun(local.data(), local.size());
    NameEntry& entry = entries.emplace_back();
    entry.local = {arena.CommitRun(), local.size()};
    entry.ns = ns;
    entry.id = static_cast<std::uint32_t>(entries.size());
    slots.Insert(hashed, entry.id);
    return entry;
}

CFastInfosetWriter::State::State(const CFastInfosetContext& context) : settings(context), text(settings) {
    prefixes.Find("xml");
    prefixes.Add("xml");
    AddNamespace(internal::kXmlNamespace);
    isNamespaceKnown[kXmlPrefix] = true;
    bindings.resize(kXmlPrefix + 1);
    bindings[kXmlPrefix].ns = kXmlPrefix;
}

/// Numbers are given when declarations are written, in the order of which readers number them.
std::uint32_t CFastInfosetWriter::State::AddNamespace(std::string_view uri) {
    namespaces.Find(uri);
    const std::uint32_t number = namespaces.Add(uri);
    if (number == 0) FailFastInfoset("There are too many namespaces.");
    isNamespaceKnown.resize(number + 1);
    return number;
}

/// A prefix, namespace, local name or target: its number, or itself when it is new.
void CFastInfosetWriter::State::PutIdentifier(COctetBuffer& to, CStringTable& table,
                                              std::string_view string) {
    const std::uint32_t number = table.Find(string);
    if (number != 0) {
        to.Commit(form::Number2(to.Reserve(6), 0x80, number));
        return;
    }
    table.Add(string);
    text.PutIdentifier(to, string);
}

void CFastInfosetWriter::State::PutName(COctetBuffer& to, unsigned lead, std::uint32_t prefix,
                                        const NameEntry& entry) {
    to.Append(lead | (prefix != kNoPrefix ? kWithPrefix : 0) |
              (entry.ns != kNoNamespace ? kWithNamespace : 0));
    if (prefix != kNoPrefix) to.Commit(form::Number2(to.Reserve(6), 0x80, prefix));
    if (entry.ns != kNoNamespace) to.Commit(form::Number2(to.Reserve(6), 0x80, entry.ns));
    PutIdentifier(to, localNames, entry.local);
}

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

void CFastInfosetWriter::State::LoadVocabulary(const CFastInfosetVocabulary& vocabulary) {
    const auto add = [](CStringTable& table, const std::vector<std::string>& strings) {
        for (const std::string& string : strings) {
            if (table.Find(string) == 0) table.Add(string);
        }
    };
    add(prefixes, vocabulary.GetPrefixes());
    for (const std::string& uri : vocabulary.GetNamespaces()) {
        const std::uint32_t number = AddNamespace(uri);
        isNamespaceKnown[number] = true;
    }
    add(localNames, vocabulary.GetLocalNames());
    for (const std::string& value : vocabulary.GetAttributeValues())
        text.AddKnownValue(value);
    for (const std::string& known : vocabulary.GetTexts())
        text.AddKnownText(known);
    const auto addNames = [this](Names& names, const std::vector<CFastInfosetVocabulary::Name>& added) {
        for (const CFastInfosetVocabulary::Name& name : added) {
            const std::uint32_t ns =
                name.namespaceUri.empty() ? kNoNamespace : namespaces.Find(name.namespaceUri);
            const std::uint32_t prefix = name.prefix.empty() ? kNoPrefix : prefixes.Find(name.prefix);
            names.Number(names.Find(ns, name.localName), prefix) = ++names.count;
        }
    };
    addNames(elements, vocabulary.GetElementNames());
    addNames(attributes, vocabulary.GetAttributeNames());
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
        if (!scope.defaultNamespace.empty()) Declare({}, scope.defaultNamespace);
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
    const bool isTakenIn = binding.ns != kNoNamespace && binding.isByAttribute;
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
    std::string value;
    if (typeNamespaceUri == GetCurrentContext()->scope->defaultNamespace) {
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

// --- between elements ------------------------------------------------------------------------------------

/// In front of a comment or processing instruction, which may stand outside of the document element as well.
void CFastInfosetWriter::StartItem() {
    Begun();
    if (GetCurrentContext() != nullptr) return StartContent();
    m_state->FlushHalf();
}

void CFastInfosetWriter::WriteComment(std::string_view text) {
    std::string apart;
    for (const char character : text) {
        if (character == '-' && !apart.empty() && apart.back() == '-') apart += ' ';
        apart += character;
    }
    if (!apart.empty() && apart.back() == '-') apart += ' ';
    StartItem();
    m_state->out.Append(kComment);
    m_state->text.PutOther(m_state->out, apart);
}

void CFastInfosetWriter::WriteInstruction(std::string_view text) {
    const std::size_t targetLength = std::min(text.find_first_of(kBlanks), text.size());
    const std::string_view target = text.substr(0, targetLength);
    if (!internal::IsXmlName(target, false) || internal::EqualsIgnoreAsciiCase(target, "xml"))
        FailFastInfoset("[" + std::string(target) + "] is not a valid target of a processing instruction.");
    text.remove_prefix(targetLength);
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    StartItem();
    State& state = *m_state;
    state.out.Append(kInstruction);
    state.PutIdentifier(state.out, state.targets, target);
    state.text.PutOther(state.out, text);
}

void CFastInfosetWriter::WriteRaw(std::string_view text) {
    if (!TryWriteMarkup(text)) FailFastInfoset("Raw text must be processing instructions and comments.");
}

void CFastInfosetWriter::WriteRawAfterSpace(std::string_view text) {
    if (TryWriteMarkup(text)) return;
    StartItem();
    // Without namespaces all declarations stay, also those for prefixes in values.
    CSerializationContext context;
    context.SetSchemaType(SchemaType_NoNamespaces);
    CXmlDocument document(context);
    try {
        document.LoadXml(std::string(text).c_str());
    } catch (const CKvException& e) {
        FailFastInfoset("Raw text must be an element. " + e.GetMessage());
    }
    WriteXmlTree(*document.GetDocumentElement(), *this, context);
}

/// Writes processing instructions and comments. False, with nothing written, when there is anything else.
bool CFastInfosetWriter::TryWriteMarkup(std::string_view text) {
    const auto next = [&text](std::string_view& item) {
        text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
        const bool isComment = text.substr(0, 4) == "<!--";
        if (!isComment && text.substr(0, 2) != "<?") return false;
        const std::string_view end = isComment ? "-->" : "?>";
        const std::size_t at = text.find(end, isComment ? 4 : 2);
        if (at == text.npos) return false;
        item = text.substr(0, at);
        text.remove_prefix(at + end.size());
        return true;
    };
    std::string_view item;
    const std::string_view all = text;
    while (next(item)) {
    }
    if (!text.empty()) return false;
    text = all;
    while (next(item)) {
        if (item[1] == '!')
            WriteComment(item.substr(4));
        else
            WriteInstruction(item.substr(2));
    }
    return true;
}

}  // namespace KvXmlLib16
