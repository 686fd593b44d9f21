#include "kvxml/xml/internal/arena.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

namespace KvXmlLib16::internal {

namespace {

// What the host's allocator keeps beside a block: chunks together with it fill whole pages.
constexpr std::size_t kAllocatorOverhead = 16;

}  // namespace

CArena::~CArena() {
    std::free(m_spare);
    while (m_last != nullptr) {
        Chunk* const previous = m_last->previous;
        std::free(m_last);
        m_last = previous;
    }
}

void CArena::ExpectInput(std::size_t length) noexcept {
    while (m_nextSize < kLargestChunk && m_nextSize < length)
        m_nextSize *= 2;
}

void CArena::Enter(Chunk* chunk, char* tip) noexcept {
    m_last = chunk;
    m_tip = tip;
    m_runEnd = tip;
    m_end = chunk == nullptr ? nullptr : chunk->End();
}

CArena::Chunk* CArena::MakeChunk(std::size_t capacity) {
    if (m_spare != nullptr && m_spare->size - sizeof(Chunk) >= capacity) {
        Chunk* const chunk = m_spare;
        m_spare = nullptr;
        return chunk;
    }
    if (capacity > std::numeric_limits<std::size_t>::max() / 4) throw std::bad_alloc();
    const std::size_t size = std::max(m_nextSize - kAllocatorOverhead, capacity + sizeof(Chunk));
    auto* const chunk = static_cast<Chunk*>(std::malloc(size));
    if (chunk == nullptr) throw std::bad_alloc();
    chunk->size = size;
    m_nextSize = std::min(m_nextSize * 2, kLargestChunk);
    return chunk;
}

void CArena::NewChunk(std::size_t size) {
    Chunk* const chunk = MakeChunk(size + kAlignment);
    chunk->previous = m_last;
    Enter(chunk, chunk->Begin());
}

void CArena::GrowRun(std::size_t length) {
    const std::size_t run = RunLength();
    if (length > std::numeric_limits<std::size_t>::max() / 8) throw std::bad_alloc();
    const std::size_t capacity = run == 0 ? length : 2 * (run + length);
    Chunk* chunk = m_last;
    if (chunk != nullptr && m_tip == chunk->Begin() && run > 0) {
        // The chunk holds nothing but the run, so no one points into it.
        chunk = static_cast<Chunk*>(std::realloc(chunk, capacity + sizeof(Chunk)));
        if (chunk == nullptr) throw std::bad_alloc();
        chunk->size = capacity + sizeof(Chunk);
    } else {
        chunk = MakeChunk(capacity);
        chunk->previous = m_last;
        if (run > 0) std::memcpy(chunk->Begin(), m_tip, run);
    }
    Enter(chunk, chunk->Begin());
    m_runEnd = m_tip + run;
}

void CArena::Rewind(const Mark& mark) noexcept {
    while (m_last != mark.chunk) {
        Chunk* const chunk = m_last;
        m_last = chunk->previous;
        if (chunk->size > kLargestChunk || (m_spare != nullptr && m_spare->size >= chunk->size)) {
            std::free(chunk);
        } else {
            std::free(m_spare);
            m_spare = chunk;
        }
    }
    Enter(mark.chunk, mark.tip);
}

}  // namespace KvXmlLib16::internal
