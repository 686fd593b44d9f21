/// The octets of a Fast Infoset document, and the forms of lengths and numbers in it (ITU-T X.891, Annex C).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "kvxml/types/binary_data.h"
#include "kvxml/xml/string_buffer.h"

namespace KvXmlLib16::internal {

/// Contiguous memory that grows.
class COctetBuffer {
public:
    COctetBuffer() noexcept = default;
    COctetBuffer(const COctetBuffer&) = delete;
    COctetBuffer& operator=(const COctetBuffer&) = delete;
    ~COctetBuffer() { CBinaryData::FreeData(m_data); }

    std::size_t Size() const noexcept { return m_size; }
    void Clear() noexcept { m_size = 0; }
    unsigned char& operator[](std::size_t at) noexcept { return m_data[at]; }

    /// Room for `length` octets at the end and some more that may be overwritten.
    unsigned char* Reserve(std::size_t length) {
        if (m_capacity - m_size < length + CStringBuffer::kSlack) Grow(length + CStringBuffer::kSlack);
        return m_data + m_size;
    }
    void Commit(const unsigned char* end) noexcept { m_size = static_cast<std::size_t>(end - m_data); }
    void Append(unsigned octet) {
        *Reserve(1) = static_cast<unsigned char>(octet);
        ++m_size;
    }
    void Append(std::string_view octets) {
        unsigned char* const out = Reserve(octets.size());
        if (!octets.empty()) std::memcpy(out, octets.data(), octets.size());
        m_size += octets.size();
    }
    /// Puts `octets` in front of the one at `at`.
    void Insert(std::size_t at, std::string_view octets) {
        Reserve(octets.size());
        std::memmove(m_data + at + octets.size(), m_data + at, m_size - at);
        std::memcpy(m_data + at, octets.data(), octets.size());
        m_size += octets.size();
    }
    std::string_view View() const noexcept { return {reinterpret_cast<const char*>(m_data), m_size}; }
    /// Hands the octets over and is empty then.
    CBinaryData Take();

private:
    void Grow(std::size_t length);

    unsigned char* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

// Each function puts its octets at `out`, which has room for 6, and returns where they end. `lead` holds the
// bits of the first octet in front of the form.

namespace form {

inline unsigned char* Put(unsigned char* out, std::size_t octet) noexcept {
    *out = static_cast<unsigned char>(octet);
    return out + 1;
}
inline unsigned char* Put2(unsigned char* out, std::size_t value) noexcept {
    return Put(Put(out, value >> 8), value);
}
inline unsigned char* Put4(unsigned char* out, std::size_t value) noexcept {
    return Put2(Put2(out, value >> 16), value);
}

/// Length of 1 and more that starts on the second bit.
inline unsigned char* Length2(unsigned char* out, unsigned lead, std::size_t length) noexcept {
    if (length <= 64) return Put(out, lead | (length - 1));
    if (length <= 320) return Put(Put(out, lead | 0x40u), length - 65);
    return Put4(Put(out, lead | 0x60u), length - 321);
}
/// On the fifth bit.
inline unsigned char* Length5(unsigned char* out, unsigned lead, std::size_t length) noexcept {
    if (length <= 8) return Put(out, lead | (length - 1));
    if (length <= 264) return Put(Put(out, lead | 0x08u), length - 9);
    return Put4(Put(out, lead | 0x0Cu), length - 265);
}
/// On the seventh bit.
inline unsigned char* Length7(unsigned char* out, unsigned lead, std::size_t length) noexcept {
    if (length <= 2) return Put(out, lead | (length - 1));
    if (length <= 258) return Put(Put(out, lead | 0x02u), length - 3);
    return Put4(Put(out, lead | 0x03u), length - 259);
}

/// Number from 1 on that starts on the second bit: of an attribute name, with 0x80 as lead of a string.
inline unsigned char* Number2(unsigned char* out, unsigned lead, std::uint32_t number) noexcept {
    if (number <= 64) return Put(out, lead | (number - 1));
    if (number <= 8256) return Put2(out, (lead | 0x40u) << 8 | (number - 65));
    number -= 8257;
    return Put2(Put(out, lead | 0x60u | number >> 16), number);
}
/// On the third bit: of an element name.
inline unsigned char* Number3(unsigned char* out, unsigned lead, std::uint32_t number) noexcept {
    if (number <= 32) return Put(out, lead | (number - 1));
    if (number <= 2080) return Put2(out, (lead | 0x20u) << 8 | (number - 33));
    if (number <= 526368) {
        number -= 2081;
        return Put2(Put(out, lead | 0x28u | number >> 16), number);
    }
    number -= 526369;
    return Put2(Put2(out, (lead | 0x30u) << 8 | number >> 16), number);
}
/// On the fourth bit: of a text.
inline unsigned char* Number4(unsigned char* out, unsigned lead, std::uint32_t number) noexcept {
    if (number <= 16) return Put(out, lead | (number - 1));
    if (number <= 1040) return Put2(out, (lead | 0x10u) << 8 | (number - 17));
    if (number <= 263184) {
        number -= 1041;
        return Put2(Put(out, lead | 0x14u | number >> 16), number);
    }
    number -= 263185;
    return Put2(Put2(out, (lead | 0x18u) << 8 | number >> 16), number);
}

}  // namespace form
}  // namespace KvXmlLib16::internal
