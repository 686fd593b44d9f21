#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <mutex>

#include "kvxml/platform/internal/converter.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::size_t kFailed = static_cast<std::size_t>(-1);
// Room for what one call may write at least: a character with its shift sequences.
constexpr std::size_t kMinimumRoom = 64;
// Input of one call. Hosts convert some of it in advance, for nothing when they must stop: pieces shrink at a
// stop and grow again after it, so that text that stops at every character takes time with its length only.
constexpr std::size_t kLongestPiece = 4096;

// Hosts load and unload the modules of their converters here. They lock on their own, but in ways that thread
// sanitizers do not see.
std::mutex g_loading;

}  // namespace

CConverter::CConverter(const char* to, const char* from) noexcept {
    const std::lock_guard<std::mutex> lock(g_loading);
    m_handle = iconv_open(to, from);
}

CConverter::~CConverter() {
    if (!IsOpen()) return;
    const std::lock_guard<std::mutex> lock(g_loading);
    iconv_close(m_handle);
}

iconv_t CConverter::Closed() noexcept {
    return reinterpret_cast<iconv_t>(static_cast<std::intptr_t>(-1));
}

CConverter::Result CConverter::Convert(std::string_view& input, std::string& output) {
    char buffer[2 * kLongestPiece];
    while (!input.empty()) {
        const std::size_t piece = std::min(input.size(), m_piece);
        const bool isLast = piece == input.size();
        char* from = const_cast<char*>(input.data());  // only read, whatever the signature says
        std::size_t fromLeft = piece;
        char* to = buffer;
        std::size_t toLeft = sizeof(buffer);
        const std::size_t result = iconv(m_handle, &from, &fromLeft, &to, &toLeft);
        const int error = errno;
        output.append(buffer, sizeof(buffer) - toLeft);
        input.remove_prefix(piece - fromLeft);
        if (result == kFailed && error != E2BIG) {
            if (error == EINVAL && isLast) return Result::Incomplete;
            const bool isCut = error == EINVAL && (fromLeft < piece || piece < kLongestPiece);
            if (!isCut) {
                m_piece = kShortestPiece;
                return Result::Invalid;
            }
        }
        m_piece = std::min(m_piece * 2, kLongestPiece);
    }
    return Result::Done;
}

void CConverter::Finish(std::string& output) {
    char buffer[kMinimumRoom];
    char* to = buffer;
    std::size_t toLeft = sizeof(buffer);
    iconv(m_handle, nullptr, nullptr, &to, &toLeft);
    output.append(buffer, sizeof(buffer) - toLeft);
}

}  // namespace KvXmlLib16::internal
