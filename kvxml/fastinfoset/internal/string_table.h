/// Numbered strings of a Fast Infoset document that is being written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "kvxml/base/internal/words.h"
#include "kvxml/xml/internal/arena.h"

namespace KvXmlLib16::internal {

/// Hash of short texts. Seeded once per process, so that no input can be made whose texts all collide.
class CTextHash {
public:
    static CTextHash Get();

    std::uint32_t operator()(std::string_view text) const noexcept {
        const char* from = text.data();
        std::size_t left = text.size();
        std::uint64_t hash = m_first ^ left;
        for (; left > 16; left -= 16, from += 16)
            hash = Fold(Load<std::uint64_t>(from) ^ m_second, Load<std::uint64_t>(from + 8) ^ hash);
        std::uint64_t low;
        std::uint64_t high = 0;
        if (left >= 8) {
            low = Load<std::uint64_t>(from);
            high = Load<std::uint64_t>(from + left - 8);
        } else if (left >= 4) {
            low = std::uint64_t{Load<std::uint32_t>(from)} << 32 |
                  std::uint64_t{Load<std::uint32_t>(from + left - 4)};
        } else {
            low = left == 0 ? 0 : Byte(from[0]) << 16 | Byte(from[left / 2]) << 8 | Byte(from[left - 1]);
        }
        return Finish(Fold(low ^ m_second, high ^ hash));
    }
    std::uint32_t operator()(std::uint64_t number) const noexcept {
        return Finish(Fold(number ^ m_second, m_first));
    }

private:
    static std::uint64_t Byte(char c) noexcept { return static_cast<unsigned char>(c); }
    /// Both halves of the product, folded.
    static std::uint64_t Fold(std::uint64_t a, std::uint64_t b) noexcept {
#ifdef __SIZEOF_INT128__
        __extension__ using Wide = unsigned __int128;
        const Wide product = static_cast<Wide>(a) * b;
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
#else
        const std::uint64_t aLow = a & 0xFFFFFFFFu, aHigh = a >> 32, bLow = b & 0xFFFFFFFFu, bHigh = b >> 32;
        const std::uint64_t middle = aHigh * bLow + (aLow * bLow >> 32);
        const std::uint64_t cross = aLow * bHigh + (middle & 0xFFFFFFFFu);
        return a * b ^ (aHigh * bHigh + (middle >> 32) + (cross >> 32));
#endif
    }
    static std::uint32_t Finish(std::uint64_t hash) noexcept {
        return static_cast<std::uint32_t>(hash ^ hash >> 32);
    }

    std::uint64_t m_first = 0;
    std::uint64_t m_second = 0;
};

/// Open addressing over numbers of entries that lie elsewhere.
class CIndexSlots {
public:
    CIndexSlots() : m_slots(64) {}

    /// The number of the entry with this hash that `isIt(number)` accepts; 0 when there is none, and then
    /// `Insert` may follow at once.
    template <class IsIt>
    std::uint32_t Find(std::uint32_t hash, IsIt isIt) noexcept {
        const std::size_t mask = m_slots.size() - 1;
        for (m_at = hash & mask; m_slots[m_at].number != 0; m_at = (m_at + 1) & mask) {
            if (m_slots[m_at].hash == hash && isIt(m_slots[m_at].number)) return m_slots[m_at].number;
        }
        return 0;
    }
    void Insert(std::uint32_t hash, std::uint32_t number) {
        m_slots[m_at] = {hash, number};
        if (++m_count * 2 > m_slots.size()) Grow();
    }

private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t number = 0;
    };

    void Grow();

    std::vector<Slot> m_slots;  // the size is a power of two
    std::size_t m_count = 0;
    std::size_t m_at = 0;
};

/// Strings numbered from 1 on in the order in which they are added.
class CStringTable {
public:
    /// No entries are added beyond `limit`.
    explicit CStringTable(std::size_t limit) : m_hash(CTextHash::Get()), m_limit(limit) {}
    CStringTable(const CStringTable&) = delete;
    CStringTable& operator=(const CStringTable&) = delete;

    /// The number of the string, or 0.
    std::uint32_t Find(std::string_view text) noexcept {
        m_lastHash = m_hash(text);
        return m_slots.Find(m_lastHash, [&](std::uint32_t number) {
            const Entry& entry = m_entries[number - 1];
            return entry.length == text.size() && EqualShort(entry.text, text.data(), text.size());
        });
    }
    /// Adds the string that `Find` has just not found; returns its number, or 0 when the table is full.
    std::uint32_t Add(std::string_view text) {
        if (m_entries.size() >= m_limit) return 0;
        m_arena.AppendToRun(text.data(), text.size());
        m_entries.push_back({m_arena.CommitRun(), text.size()});
        const auto number = static_cast<std::uint32_t>(m_entries.size());
        m_slots.Insert(m_lastHash, number);
        return number;
    }
    std::string_view Text(std::uint32_t number) const noexcept {
        return {m_entries[number - 1].text, m_entries[number - 1].length};
    }

private:
    struct Entry {
        const char* text;
        std::size_t length;
    };

    const CTextHash m_hash;
    const std::size_t m_limit;
    CIndexSlots m_slots;
    std::vector<Entry> m_entries;
    CArena m_arena;
    std::uint32_t m_lastHash = 0;
};

}  // namespace KvXmlLib16::internal
