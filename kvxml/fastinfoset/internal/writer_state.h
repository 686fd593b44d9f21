/// What the writer of Fast Infoset knows of the document: what has a number, what is in scope, what waits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kvxml/base/internal/words.h"
#include "kvxml/fastinfoset/fast_infoset_writer.h"
#include "kvxml/fastinfoset/internal/octet_buffer.h"
#include "kvxml/fastinfoset/internal/string_table.h"
#include "kvxml/fastinfoset/internal/text_output.h"
#include "kvxml/settings/fast_infoset_vocabulary.h"
#include "kvxml/xml/internal/arena.h"

namespace KvXmlLib16 {

namespace internal::item {

inline constexpr std::uint32_t kLimit = CFastInfosetContext::kMaxTableEntries;
inline constexpr std::uint32_t kXmlPrefix = 1;  // number of the prefix, and of its namespace
inline constexpr std::uint32_t kNoPrefix = 0;
inline constexpr std::uint32_t kNoNamespace = 0;

// First octets of items.
inline constexpr unsigned kTerminator = 0xF0;
inline constexpr unsigned kTwoTerminators = 0xFF;
inline constexpr unsigned kHasAttributes = 0x40;
inline constexpr unsigned kWithNamespaces = 0x38;
inline constexpr unsigned kNamespaceAttribute = 0xCC;
inline constexpr unsigned kInstruction = 0xE1;
inline constexpr unsigned kComment = 0xE2;
inline constexpr unsigned kLiteralElement = 0x3C;
inline constexpr unsigned kLiteralAttribute = 0x78;
inline constexpr unsigned kWithPrefix = 2;
inline constexpr unsigned kWithNamespace = 1;

}  // namespace internal::item

namespace internal {

/// For numbers that documents bring.
struct CNumberHash {
    CTextHash hash = CTextHash::Get();
    std::size_t operator()(std::uint64_t number) const noexcept { return hash(number); }
};

}  // namespace internal

/// A namespace and a local name, of elements or of attributes.
struct CFastInfosetWriter::NameEntry {
    std::string_view local;  // in the code page of the caller
    std::uint32_t id = 0;
    std::uint32_t ns = internal::item::kNoNamespace;
    std::uint32_t prefix = internal::item::kNoPrefix;  // with which it was written last
    std::uint32_t number = 0;                          // of the name with that prefix
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
            if (count < internal::item::kLimit) entry.number = Number(entry, prefix) = ++count;
        }

        NameEntry none;
        NameEntry* last = &none;
        std::uint32_t count = 0;
        std::deque<NameEntry> entries;
        internal::CIndexSlots slots;
        std::unordered_map<std::uint64_t, std::uint32_t, internal::CNumberHash> numbers;
        internal::CTextHash hash = internal::CTextHash::Get();
        internal::CArena arena;
    };

    struct Binding {
        std::uint32_t ns = internal::item::kNoNamespace;
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
        out.Append(internal::item::kTerminator);
    }
    void Terminate() {
        if (isHalf) out.Append(internal::item::kTwoTerminators);
        isHalf = !isHalf;
    }
    std::uint32_t NamespaceNumber(std::string_view uri) {
        if (uri.empty()) return internal::item::kNoNamespace;
        if (lastNamespace != internal::item::kNoNamespace && uri == namespaces.Text(lastNamespace))
            return lastNamespace;
        std::uint32_t number = namespaces.Find(uri);
        if (number == 0) number = AddNamespace(uri);
        return lastNamespace = number;
    }
    std::uint32_t AddNamespace(std::string_view uri);
    void LoadVocabulary(const CFastInfosetVocabulary& vocabulary);
    /// Puts the name whose number, or 0, the entry has for the prefix.
    void PutElementName(NameEntry& entry, std::uint32_t prefix) {
        if (entry.number != 0) {
            out.Commit(internal::form::Number3(out.Reserve(6), 0, entry.number));
            return;
        }
        PutName(out, internal::item::kLiteralElement, prefix, entry);
        elements.Count(entry, prefix);
    }
    void PutName(internal::COctetBuffer& to, unsigned lead, std::uint32_t prefix, const NameEntry& entry);
    void PutIdentifier(internal::COctetBuffer& to, internal::CStringTable& table, std::string_view text);

    CFastInfosetContext settings;
    internal::COctetBuffer out;
    internal::CTextOutput text;
    bool isHalf = false;
    bool hasRoot = false;
    bool isEnded = false;

    internal::CStringTable prefixes{internal::item::kLimit};
    internal::CStringTable namespaces{internal::item::kLimit};
    internal::CStringTable localNames{internal::item::kLimit};
    internal::CStringTable targets{internal::item::kLimit};
    Names elements;
    Names attributes;
    std::uint32_t lastNamespace = internal::item::kNoNamespace;
    std::vector<bool> isNamespaceKnown;  // by number: the reader has it

    // Namespaces in scope
    std::vector<Binding> bindings;  // by number of the prefix
    std::vector<Undo> undo;
    std::uint64_t version = 1;

    // The start tag that is open
    std::size_t startAt = 0;
    std::uint64_t element = 0;
    bool hasAttributes = false;
    internal::COctetBuffer declarations;
    bool isRaw = false;       // elements without prefix are in whatever is the default namespace
    bool isPending = false;   // the name, and with it all attributes, waits for declarations
    std::string pendingName;  // in no namespace, perhaps with a prefix
    std::vector<DeferredAttribute> deferred;
    std::string deferredText;
    std::string scratch;
};

}  // namespace KvXmlLib16
