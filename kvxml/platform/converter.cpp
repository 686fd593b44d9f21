#include <cerrno>
#include <cstdint>
#include <mutex>

#include "kvxml/platform/internal/converter.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::size_t kFailed = static_cast<std::size_t>(-1);
// Room for what one call may write at least: a character with its shift sequences.
constexpr std::size_t kMinimumRoom = 64;

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
    while (!input.empty()) {
        const std::size_t start = output.size();
        output.resize(start + input.size() + input.size() / 2 + kMinimumRoom);
        char* from = const_cast<char*>(input.data());  // only read, whatever the signature says
        std::size_t fromLeft = input.size();
        char* to = output.data() + start;
        std::size_t toLeft = output.size() - start;
        const std::size_t result = iconv(m_handle, &from, &fromLeft, &to, &toLeft);
        const int error = errno;
        output.resize(output.size() - toLeft);
        input.remove_prefix(input.size() - fromLeft);
        if (result != kFailed || error == E2BIG) continue;
        return error == EINVAL ? Result::Incomplete : Result::Invalid;
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
