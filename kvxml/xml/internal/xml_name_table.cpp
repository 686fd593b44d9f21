#include "kvxml/xml/internal/xml_name_table.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <iterator>
#include <random>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/base/internal/words.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/xml/internal/tree_limits.h"

namespace KvXmlLib16::internal {

namespace {

// URIs beyond this length are not repeated per name.
constexpr std::size_t kLongUri = 256;

constexpr std::string_view kNamespaceAttributes[] = {"xmlns", "type", "schemaLocation",
                                                     "noNamespaceSchemaLocation"};

/// Differs from process to process, so that no document can be made whose names all collide.
std::uint64_t HashSeed() {
    static const std::uint64_t seed = []() -> std::uint64_t {
        try {
            std::random_device device;
            return std::uint64_t{device()} << 32 | device();
        } catch (const std::exception&) {  // a host without a source of randomness
            return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) *
                   0x9E3779B97F4A7C15U;
        }
    }();
    return seed;
}

std::uint64_t Mix(std::uint64_t value) {
    value ^= value >> 32;
    value *= 0xD6E8FEB86659FD93U;
    return value ^ value >> 29;
}

std::size_t Hash(std::string_view text) {
    std::uint64_t hash = HashSeed() ^ text.size();
    std::size_t at = 0;
    for (; at + 8 <= text.size(); at += 8) {
        hash = Mix(hash ^ Load<std::uint64_t>(text.data() + at)) + HashSeed();
    }
    std::uint64_t rest = 0;
    if (at < text.size()) std::memcpy(&rest, text.data() + at, text.size() - at);
    return static_cast<std::size_t>(Mix(hash ^ rest));
}

}  // namespace

std::size_t CXmlNameTable::RawHash::operator()(std::string_view text) const noexcept {
    return Hash(text);
}

CXmlNameTable::CXmlNameTable(CXmlTree* tree, bool convert)
    : m_tree(tree), m_convert(convert), m_none(m_noNamespace), m_slots(64) {
    m_none.nextElement = m_none.otherElement = m_none.firstAttribute = m_none.nextAttribute = &m_none;
}

const CXmlNamespace& CXmlNameTable::Namespace(std::string_view raw) {
    if (raw.empty()) return m_noNamespace;
    const auto found = m_namespaces.find(raw);
    if (found != m_namespaces.end()) return *found->second;
    auto space = std::make_unique<CXmlNamespace>();
    space->raw = raw;
    space->uri = m_convert ? Utf8ToLocal(raw) : std::string(raw);
    space->hash = Hash(raw);
    const CXmlNamespace& added = *space;
    m_namespaces.emplace(added.raw, std::move(space));
    return added;
}

const CXmlNameEntry* CXmlNameTable::Intern(std::string_view uri, std::string_view local) {
    if (uri.empty()) return Find(m_noNamespace, local);
    const CXmlNamespace*& space = m_interned[uri.data()];
    if (space == nullptr) space = &Namespace(uri);
    return Find(*space, local);
}

CXmlNameEntry* CXmlNameTable::FindElement(const char* raw) {
    if (!m_places.empty()) {
        const auto found = m_places.find(raw);
        if (found != m_places.end() && raw[found->second->raw.size()] == kSeparator)
            return Find(*found->second, raw + found->second->raw.size() + 1);
    }
    CXmlNameEntry* const name = Find(raw);
    if (m_trustsPlaces && name->space.raw.size() > kLongUri) m_places.emplace(raw, &name->space);
    return name;
}

CXmlNameEntry* CXmlNameTable::Find(std::string_view raw) {
    // To compare with the last one is quicker than to look it up.
    const CXmlNamespace*& last = raw.size() > kLongUri ? m_lastLongNamespace : m_lastNamespace;
    const std::size_t length = last->raw.size();
    if (length != 0 && raw.size() > length && raw[length] == kSeparator &&
        raw.compare(0, length, last->raw) == 0 && raw.find(kSeparator, length + 1) == raw.npos)
        return Find(*last, raw.substr(length + 1));
    const std::size_t separator = raw.rfind(kSeparator);
    if (separator == raw.npos) return Find(m_noNamespace, raw);
    last = &Namespace(raw.substr(0, separator));
    return Find(*last, raw.substr(separator + 1));
}

CXmlNameEntry* CXmlNameTable::Find(const CXmlNamespace& space, std::string_view local) {
    const std::size_t hash = Hash(local) ^ space.hash;
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    for (; m_slots[slot] != nullptr; slot = (slot + 1) & mask) {
        const CXmlNameEntry& name = *m_slots[slot];
        if (name.hash == hash && &name.space == &space && name.RawLocal() == local) return m_slots[slot];
    }
    if (m_names.size() >= m_maxNames)
        throw CTreeLimitPassed{"there are more distinct names than the limit of %llu", m_maxNames};
    std::unique_ptr<CXmlNameEntry> name = Make(space, local);
    name->hash = hash;
    m_names.push_back(std::move(name));
    CXmlNameEntry* const added = m_names.back().get();
    m_slots[slot] = added;
    if (m_names.size() * 2 > m_slots.size()) Grow();
    return added;
}

std::unique_ptr<CXmlNameEntry> CXmlNameTable::Make(const CXmlNamespace& space, std::string_view local) {
    auto name = std::make_unique<CXmlNameEntry>(space);
    if (space.raw.empty())
        name->raw = local;
    else if (space.raw.size() <= kLongUri)
        name->raw.assign(space.raw).append(1, kSeparator).append(local);
    if (m_convert) name->ownRawLocal = local;
    name->local = m_convert ? Utf8ToLocal(local) : std::string(local);
    name->tree = m_tree;
    name->judged.namespaceUri = space.raw;
    name->judged.localName = name->RawLocal();
    if (name->uri == kInstanceNamespace || name->uri == kXmlnsNamespace) {
        name->isNamespaceAttribute =
            std::find(std::begin(kNamespaceAttributes), std::end(kNamespaceAttributes), name->local) !=
            std::end(kNamespaceAttributes);
        name->isNilAttribute = name->local == "nil";
        m_hasTypeAttributes = m_hasTypeAttributes || name->local == "type";
    }
    name->nextElement = name->otherElement = name->firstAttribute = name->nextAttribute = &m_none;
    return name;
}

void CXmlNameTable::Grow() {
    std::vector<CXmlNameEntry*> slots(m_slots.size() * 2);
    for (const auto& name : m_names) {
        std::size_t slot = name->hash & (slots.size() - 1);
        while (slots[slot] != nullptr)
            slot = (slot + 1) & (slots.size() - 1);
        slots[slot] = name.get();
    }
    m_slots = std::move(slots);
}

}  // namespace KvXmlLib16::internal
