/// What text writers put around the texts of elements that have nothing else.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace KvXmlLib16::internal {

/// What stands before and after the text of an element in one piece each: line, indentation, prefix, name.
struct CPreparedName {
    /// Characters on both sides of the text.
    static constexpr std::size_t kLongest = 94;
    /// What `PutStart` and `PutEnd` may overwrite after what they put.
    static constexpr std::size_t kSlack = 16;

    std::uint32_t id = 0;
    std::uint32_t level;
    const void* scope;
    std::uint64_t version;
    std::uint8_t startLength;
    std::uint8_t endLength;
    char text[kLongest + kSlack];

    char* PutStart(char* out) const noexcept { return Put(out, text, startLength); }
    char* PutEnd(char* out) const noexcept { return Put(out, text + startLength, endLength); }

private:
    static char* Put(char* out, const char* from, std::size_t length) noexcept {
        std::size_t done = 0;
        do {
            std::memcpy(out + done, from + done, kSlack);
        } while ((done += kSlack) < length);
        return out + length;
    }
};

/// Remembers the names that are written most, by their numbers. What is remembered is good for one level and
/// one state of the writer; everything else is prepared anew.
class CPreparedNames {
public:
    /// What was prepared for a name, or null.
    const CPreparedName* Find(std::uint32_t id, const void* scope, std::uint64_t version,
                              std::size_t level) const noexcept {
        const CPreparedName& name = m_names[id % kNames];
        return name.id == id && name.scope == scope && name.version == version && name.level == level
                   ? &name
                   : nullptr;
    }
    /// Remembers it; null when it is too long.
    const CPreparedName* Keep(std::uint32_t id, const void* scope, std::uint64_t version, std::size_t level,
                              std::string_view start, std::string_view end) noexcept {
        if (start.size() + end.size() > CPreparedName::kLongest || level > UINT32_MAX) return nullptr;
        CPreparedName& name = m_names[id % kNames];
        name.id = id;
        name.scope = scope;
        name.version = version;
        name.level = static_cast<std::uint32_t>(level);
        name.startLength = static_cast<std::uint8_t>(start.size());
        name.endLength = static_cast<std::uint8_t>(end.size());
        start.copy(name.text, start.size());
        end.copy(name.text + start.size(), end.size());
        return &name;
    }

private:
    static constexpr std::size_t kNames = 128;

    std::array<CPreparedName, kNames> m_names;
};

}  // namespace KvXmlLib16::internal
