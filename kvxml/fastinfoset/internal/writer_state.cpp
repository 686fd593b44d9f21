#include "kvxml/fastinfoset/internal/writer_state.h"

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/xml/internal/xml_name_check.h"

namespace KvXmlLib16 {

using internal::COctetBuffer;
using internal::CStringTable;
using internal::FailFastInfoset;
namespace form = internal::form;
using namespace internal::item;

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

}  // namespace KvXmlLib16
