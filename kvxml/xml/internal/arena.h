/// Memory of the nodes of one document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kvxml/xml/string_buffer.h"

namespace KvXmlLib16::internal {

/// Bump allocator that can be wound back to a mark, with one text run growing at its tip.
///
/// Memory comes in chunks that double up to about 1 MB and are freed one by one, without regard to what is in
/// them. The run is what arrives piece by piece: it moves when its chunk gets too small, and either stays
/// (`CommitRun`) or vanishes (`DropRun`). `Allocate` may be called only while the run is empty.
class CArena {
    struct Chunk {
        Chunk* previous;
        std::size_t size;  // of all of it
        char* Begin() noexcept { return reinterpret_cast<char*>(this + 1); }
        char* End() noexcept { return reinterpret_cast<char*>(this) + size; }
    };

public:
    /// A state to come back to. Good as long as nothing older is wound back.
    struct Mark {
        Chunk* chunk;
        char* tip;
    };

    CArena() noexcept = default;
    CArena(const CArena&) = delete;
    CArena& operator=(const CArena&) = delete;
    ~CArena();

    /// Makes the chunks to come at least as large as is worth while for this much input.
    void ExpectInput(std::size_t length) noexcept;

    /// Memory aligned for nodes; throws std::bad_alloc.
    void* Allocate(std::size_t size) {
        if (!Fits(size)) NewChunk(size);
        return Take(size);
    }
    /// Nodes whose size is not known beforehand are written at `AlignedTip`, as far as `Room` goes, and then
    /// kept with `Take`.
    char* AlignedTip() const noexcept {
        return m_tip + (-reinterpret_cast<std::uintptr_t>(m_tip) & (kAlignment - 1));
    }
    char* End() const noexcept { return m_end; }
    bool Fits(std::size_t size) const noexcept {
        char* const begin = AlignedTip();
        return begin <= m_end && size <= static_cast<std::size_t>(m_end - begin);
    }
    /// Keeps `size` bytes, which must fit.
    void* Take(std::size_t size) noexcept {
        char* const begin = AlignedTip();
        m_tip = begin + size;
        m_runEnd = m_tip;
        return begin;
    }
    /// Begins a chunk with room for `size` bytes.
    void NewChunk(std::size_t size);

    /// Adds to the run; throws std::bad_alloc.
    void AppendToRun(const char* text, std::size_t length) {
        if (length > static_cast<std::size_t>(m_end - m_runEnd)) GrowRun(length);
        CStringBuffer::CopyBytes(m_runEnd, text, length);
        m_runEnd += length;
    }
    /// Adds one character; false, with nothing done, when the chunk is full.
    bool AppendToRun(char character) noexcept {
        if (m_runEnd == m_end) return false;
        *m_runEnd++ = character;
        return true;
    }
    const char* Run() const noexcept { return m_tip; }
    std::size_t RunLength() const noexcept { return static_cast<std::size_t>(m_runEnd - m_tip); }
    const char* CommitRun() noexcept {
        const char* const run = m_tip;
        m_tip = m_runEnd;
        return run;
    }
    void DropRun() noexcept { m_runEnd = m_tip; }

    Mark GetMark() const noexcept { return {m_last, m_tip}; }
    /// Gives back everything since the mark.
    void Rewind(const Mark& mark) noexcept;

private:
    static constexpr std::size_t kAlignment = 8;
    static constexpr std::size_t kFirstChunk = 4096;
    static constexpr std::size_t kLargestChunk = std::size_t{1} << 20;

    void GrowRun(std::size_t length);
    void Enter(Chunk* chunk, char* tip) noexcept;
    Chunk* MakeChunk(std::size_t capacity);

    char* m_tip = nullptr;
    char* m_runEnd = nullptr;
    char* m_end = nullptr;
    Chunk* m_last = nullptr;
    Chunk* m_spare = nullptr;  // given back by a rewind, kept for the next need
    std::size_t m_nextSize = kFirstChunk;
};

}  // namespace KvXmlLib16::internal
