#include "kvxml/fastinfoset/internal/octet_buffer.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace KvXmlLib16::internal {

namespace {

constexpr std::size_t kFirstCapacity = 4096;

}  // namespace

void COctetBuffer::Grow(std::size_t length) {
    const std::size_t capacity = std::max({m_capacity * 2, m_size + length, kFirstCapacity});
    void* const grown =
        m_data != nullptr ? std::realloc(m_data, capacity) : CBinaryData::AllocateData(capacity);
    if (grown == nullptr) throw std::bad_alloc();
    m_data = static_cast<unsigned char*>(grown);
    m_capacity = capacity;
}

CBinaryData COctetBuffer::Take() {
    if (m_size == 0) return CBinaryData();
    if (void* const shrunk = std::realloc(m_data, m_size)) {
        m_data = static_cast<unsigned char*>(shrunk);
        m_capacity = m_size;
    }
    CBinaryData data(m_data, m_size, true);
    m_data = nullptr;
    m_size = m_capacity = 0;
    return data;
}

}  // namespace KvXmlLib16::internal
