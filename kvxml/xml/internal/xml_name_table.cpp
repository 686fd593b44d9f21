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

CXmlNameTable::CXmlNameTable(CXmlTree* tree, bool convert) : m_tree(tree), m_convert(convert), m_slots(64) {
    m_none.nextElement = m_none.otherElement = m_none.firstAttribute = m_none.nextAttribute = &m_none;
}

const CXmlNameEntry* CXmlNameTable::Intern(std::string_view uri, std::string_view local) {
    if (uri.empty()) return Find(local);
    m_raw.assign(uri).append(1, kSeparator).append(local);
    return Find(m_raw);
}

CXmlNameEntry* CXmlNameTable::Find(std::string_view raw) {
    const std::size_t hash = Hash(raw);
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    for (; m_slots[slot] != nullptr; slot = (slot + 1) & mask) {
        if (m_slots[slot]->hash == hash && m_slots[slot]->raw == raw) return m_slots[slot];
    }
    if (m_names.size() >= m_maxNames)
        throw CTreeLimitPassed{"there are more distinct names than the limit of %llu", m_maxNames};
    std::unique_ptr<CXmlNameEntry> name = Make(raw);
    name->hash = hash;
    m_names.push_back(std::move(name));
    CXmlNameEntry* const added = m_names.back().get();
    m_slots[slot] = added;
    if (m_names.size() * 2 > m_slots.size()) Grow();
    return added;
}

std::unique_ptr<CXmlNameEntry> CXmlNameTable::Make(std::string_view raw) const {
    auto name = std::make_unique<CXmlNameEntry>();
    name->raw = raw;
    const std::string converted = m_convert ? Utf8ToLocal(raw) : std::string(raw);
    const std::size_t separator = converted.rfind(kSeparator);
    if (separator == std::string::npos) {
        name->local = converted;
    } else {
        name->uri = converted.substr(0, separator);
        name->local = converted.substr(separator + 1);
    }
    name->tree = m_tree;
    if (name->uri == kInstanceNamespace || name->uri == kXmlnsNamespace) {
        name->isNamespaceAttribute =
            std::find(std::begin(kNamespaceAttributes), std::end(kNamespaceAttributes), name->local) !=
            std::end(kNamespaceAttributes);
        name->isNilAttribute = name->local == "nil";
    }
    auto* const none = const_cast<CXmlNameEntry*>(&m_none);
    name->nextElement = name->otherElement = name->firstAttribute = name->nextAttribute = none;
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
