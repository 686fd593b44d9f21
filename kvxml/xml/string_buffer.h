/// Text that grows in blocks, so that appending never moves what was appended before.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// A list of blocks that text is appended to. Writers that know how much they are about to add ask for
/// contiguous room with `Reserve`, fill it and `Commit` it.
class KVXML_EXPORT CStringBuffer {
public:
    /// Characters in the first blocks; those of a long text are larger. A longer reservation gets a block of
    /// its own size.
    static constexpr std::size_t kBlockSize = 4095;
    /// Bytes after every reservation that may be overwritten (but not committed), so that short runs can
    /// be copied in fixed widths.
    static constexpr std::size_t kSlack = 32;

    explicit CStringBuffer(std::size_t blockSize = kBlockSize) noexcept;
    CStringBuffer(const CStringBuffer&) = delete;
    CStringBuffer& operator=(const CStringBuffer&) = delete;
    ~CStringBuffer();

    void Append(std::string_view text) {
        if (text.size() > Room()) {
            AppendAcrossBlocks(text);
            return;
        }
        CopyBytes(m_cursor, text.data(), text.size());
        m_cursor += text.size();
    }
    void Append(char character) {
        if (Room() == 0) StartBlock(1);
        *m_cursor++ = character;
    }

    /// Contiguous room for `length` characters at the end of the text, plus `kSlack`. Valid until the next
    /// call of any other function than `Commit`.
    char* Reserve(std::size_t length) {
        if (length > Room()) StartBlock(length);
        return m_cursor;
    }
    /// Ends the text at `end`, which lies in the room that `Reserve` returned.
    void Commit(char* end) noexcept { m_cursor = end; }

    /// Characters appended since the last reset.
    std::size_t GetLength() const noexcept {
        return m_finishedLength + static_cast<std::size_t>(m_cursor - m_begin);
    }
    bool IsEmpty() const noexcept { return GetLength() == 0; }

    /// The whole text, zero-terminated, joined into one block if it was in several. Valid until the next
    /// change.
    std::string_view GetText();
    /// Writes the whole text into `text` (replacing its content) with one allocation of exactly its length.
    /// Returns true when all of it is ASCII.
    bool CopyTo(std::string& text) const;
    /// As above, and leaves the buffer empty; but returns true when all of it is well-formed UTF-8.
    bool MoveTo(std::string& text);
    /// Copies the whole text to `target`, which has room for `GetLength()` characters. Returns true when all
    /// of it is ASCII.
    bool CopyTo(char* target) const noexcept;
    /// Empties the buffer. One block is kept for what comes next.
    void Reset() noexcept;

    /// Calls `function(std::string_view)` for every non-empty block in order. A character of several bytes
    /// may lie across two blocks.
    template <typename Function>
    void ForEachBlock(Function&& function) const {
        for (const Block& block : m_finished)
            if (block.used != 0) function(std::string_view(block.data.get(), block.used));
        if (m_cursor != m_begin)
            function(std::string_view(m_begin, static_cast<std::size_t>(m_cursor - m_begin)));
    }

    /// memcpy that stays inline for the short runs that documents are made of.
    static void CopyBytes(char* target, const char* source, std::size_t length) noexcept {
        if (length > 16) {
            std::memcpy(target, source, length);
        } else if (length >= 8) {
            CopyEnds<std::uint64_t>(target, source, length);
        } else if (length >= 4) {
            CopyEnds<std::uint32_t>(target, source, length);
        } else if (length != 0) {
            const char middle = source[length / 2];
            const char last = source[length - 1];
            target[0] = source[0];
            target[length / 2] = middle;
            target[length - 1] = last;
        }
    }

private:
    struct Block {
        std::unique_ptr<char[]> data;
        std::size_t used;
        std::size_t capacity;
    };

    /// Copies `sizeof(Word)` to twice as many bytes as two words that may overlap.
    template <typename Word>
    static void CopyEnds(char* target, const char* source, std::size_t length) noexcept {
        Word first;
        Word last;
        std::memcpy(&first, source, sizeof(Word));
        std::memcpy(&last, source + length - sizeof(Word), sizeof(Word));
        std::memcpy(target, &first, sizeof(Word));
        std::memcpy(target + length - sizeof(Word), &last, sizeof(Word));
    }

    std::size_t Room() const noexcept { return static_cast<std::size_t>(m_limit - m_cursor); }
    void StartBlock(std::size_t atLeast);
    void AppendAcrossBlocks(std::string_view text);

    char* m_begin = nullptr;
    char* m_cursor = nullptr;
    char* m_limit = nullptr;
    std::size_t m_finishedLength = 0;
    std::vector<Block> m_finished;
    std::unique_ptr<char[]> m_current;
    std::size_t m_blockSize;
};

}  // namespace KvXmlLib16
