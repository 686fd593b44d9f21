#include "kvxml/xml/string_buffer.h"

#include <algorithm>
#include <utility>

#include "kvxml/platform/internal/code_page.h"

namespace KvXmlLib16 {

namespace {

/// Blocks grow with the text up to this size.
constexpr std::size_t kLargestGrownBlock = 32768;

/// A longer block is not worth keeping for what comes after a reset.
constexpr std::size_t kLongestKeptBlock = 65536;

}  // namespace

CStringBuffer::CStringBuffer(std::size_t blockSize) noexcept
    : m_blockSize(std::max<std::size_t>(blockSize, 1)) {}

CStringBuffer::~CStringBuffer() = default;

void CStringBuffer::StartBlock(std::size_t atLeast) {
    const std::size_t capacity =
        std::max({m_blockSize, atLeast, std::min(m_finishedLength, kLargestGrownBlock)});
    std::unique_ptr<char[]> block(new char[capacity + kSlack]);
    const auto used = static_cast<std::size_t>(m_cursor - m_begin);
    if (used != 0) {
        m_finished.push_back({nullptr, used, static_cast<std::size_t>(m_limit - m_begin)});
        m_finished.back().data = std::move(m_current);
        m_finishedLength += used;
    }
    m_current = std::move(block);
    m_begin = m_cursor = m_current.get();
    m_limit = m_begin + capacity;
}

void CStringBuffer::AppendAcrossBlocks(std::string_view text) {
    while (!text.empty()) {
        if (Room() == 0) StartBlock(1);
        const std::size_t part = std::min(text.size(), Room());
        std::memcpy(m_cursor, text.data(), part);
        m_cursor += part;
        text.remove_prefix(part);
    }
}

std::string_view CStringBuffer::GetText() {
    if (!m_finished.empty()) {
        const std::size_t length = GetLength();
        std::unique_ptr<char[]> joined(new char[length + kSlack]);
        CopyTo(joined.get());
        m_finished.clear();
        m_finishedLength = 0;
        m_current = std::move(joined);
        m_begin = m_current.get();
        m_cursor = m_limit = m_begin + length;
    }
    if (m_current == nullptr) return {"", 0};
    *m_cursor = '\0';  // the slack has room for it
    return {m_begin, static_cast<std::size_t>(m_cursor - m_begin)};
}

bool CStringBuffer::CopyTo(char* target) const noexcept {
    bool ascii = true;
    ForEachBlock([&](std::string_view block) {
        std::memcpy(target, block.data(), block.size());
        target += block.size();
        ascii = ascii && internal::IsAllAscii(block);
    });
    return ascii;
}

bool CStringBuffer::CopyTo(std::string& text) const {
    bool ascii = true;
    std::string result;
    result.reserve(GetLength());
    ForEachBlock([&](std::string_view block) {
        result.append(block);
        ascii = ascii && internal::IsAllAscii(block);
    });
    text = std::move(result);
    return ascii;
}

bool CStringBuffer::MoveTo(std::string& text) {
    constexpr std::size_t kLongestPart = 3;  // of a character that goes on in the next block
    std::string result;
    result.reserve(GetLength());
    std::size_t wellFormed = 0;
    const auto add = [&](const char* data, std::size_t length) {
        result.append(data, length);
        // Looked at while it is in the cache.
        if (result.size() - wellFormed <= length + kLongestPart)
            wellFormed += internal::WellFormedUtf8Length(std::string_view(result).substr(wellFormed));
    };
    for (Block& block : m_finished) {
        add(block.data.get(), block.used);
        block.data.reset();  // given back while it is in the cache, and for a lower peak
    }
    add(m_begin, static_cast<std::size_t>(m_cursor - m_begin));
    Reset();
    text = std::move(result);
    return wellFormed == text.size();
}

void CStringBuffer::Reset() noexcept {
    m_finished.clear();
    m_finishedLength = 0;
    m_cursor = m_begin;
    if (static_cast<std::size_t>(m_limit - m_begin) > kLongestKeptBlock) {
        m_current.reset();
        m_begin = m_cursor = m_limit = nullptr;
    }
}

}  // namespace KvXmlLib16
