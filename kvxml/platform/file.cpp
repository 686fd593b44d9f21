#if !defined(_FILE_OFFSET_BITS)
#define _FILE_OFFSET_BITS 64  // files beyond 2 GiB on 32-bit hosts
#endif

#include "kvxml/platform/internal/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

namespace KvXmlLib16::internal {

namespace {

// Hosts refuse, or shorten, transfers beyond this.
constexpr std::size_t kMaximumTransfer = 1U << 30;
// A smaller piece is not worth a call, and would make the kernel write pages that soon change again.
constexpr std::uint64_t kWriteBehindPiece = 1U << 20;
constexpr mode_t kNewFileMode = 0666;  // before the umask

// The injected fault. `g_hasFault` alone is looked at when there is none.
std::atomic<bool> g_hasFault{false};
char g_faultOperation[8];
int g_faultError;
int g_faultAfter;

// What the operation that begins shall suffer: 0 for nothing.
int TakeFault(const char* operation) noexcept {
    if (!g_hasFault.load(std::memory_order_acquire)) return 0;
    if (std::strcmp(g_faultOperation, operation) != 0) return 0;
    if (g_faultAfter > 0) {
        --g_faultAfter;
        return 0;
    }
    if (g_faultError == EINTR) g_hasFault.store(false, std::memory_order_release);
    return g_faultError;
}

bool IsFailure(int fault) noexcept {
    return fault > 0 && fault != EINTR;
}

// Calls until the call is not interrupted; `fault` may interrupt the first one.
template <class Call>
auto Repeat(int fault, Call call) noexcept {
    bool interrupted = fault == EINTR;
    for (;;) {
        const auto result = interrupted ? decltype(call())(-1) : call();
        if (result != -1 || (!interrupted && errno != EINTR)) return result;
        interrupted = false;
    }
}

int Open(const char* fileName, int flags, int& handle) noexcept {
    const int fault = TakeFault("open");
    if (IsFailure(fault)) return fault;
    if (fileName == nullptr) fileName = "";
    handle = Repeat(fault, [&] { return open(fileName, flags | O_CLOEXEC | O_NOCTTY, kNewFileMode); });
    return handle == -1 ? errno : 0;
}

}  // namespace

int CFile::OpenForReading(const char* fileName) noexcept {
    Close();
    if (const int error = Open(fileName, O_RDONLY, m_handle)) return error;
    struct stat status;
    if (fstat(m_handle, &status) == 0 && S_ISDIR(status.st_mode)) {
        Close();
        return EISDIR;
    }
#if defined(POSIX_FADV_SEQUENTIAL)
    posix_fadvise(m_handle, 0, 0, POSIX_FADV_SEQUENTIAL);
#endif
    return 0;
}

int CFile::CreateForWriting(const char* fileName) noexcept {
    Close();
    return Open(fileName, O_WRONLY | O_CREAT | O_TRUNC, m_handle);
}

int CFile::GetSize(std::uint64_t& size) noexcept {
    const int fault = TakeFault("size");
    if (IsFailure(fault)) return fault;
    struct stat status;
    if (fstat(m_handle, &status) != 0) return errno;
    size = status.st_size < 0 ? 0 : static_cast<std::uint64_t>(status.st_size);
    return 0;
}

int CFile::Read(void* buffer, std::size_t length, std::size_t& got) noexcept {
    got = 0;
    int fault = TakeFault("read");
    if (IsFailure(fault)) return fault;
    if (fault == kFaultEndOfFile) return 0;
    const std::size_t limit = fault == kFaultShortTransfer ? 1 : kMaximumTransfer;
    while (got < length) {
        char* const target = static_cast<char*>(buffer) + got;
        const ssize_t count =
            Repeat(fault, [&] { return read(m_handle, target, std::min(length - got, limit)); });
        fault = 0;
        if (count < 0) return errno;
        if (count == 0) break;
        got += static_cast<std::size_t>(count);
    }
    return 0;
}

void CFile::AdviseWillNeed(std::uint64_t offset, std::size_t length) noexcept {
#if defined(POSIX_FADV_WILLNEED)
    posix_fadvise(m_handle, static_cast<off_t>(offset), static_cast<off_t>(length), POSIX_FADV_WILLNEED);
#else
    static_cast<void>(offset);
    static_cast<void>(length);
#endif
}

int CFile::Write(const void* data, std::size_t length) noexcept {
    int fault = TakeFault("write");
    if (IsFailure(fault)) return fault;
    const std::size_t limit = fault == kFaultShortTransfer ? 1 : kMaximumTransfer;
    std::size_t done = 0;
    while (done < length) {
        const char* const source = static_cast<const char*>(data) + done;
        const ssize_t count =
            Repeat(fault, [&] { return write(m_handle, source, std::min(length - done, limit)); });
        fault = 0;
        if (count < 0) return errno;
        if (count == 0) return EIO;  // a host that takes nothing and names no error
        done += static_cast<std::size_t>(count);
        m_written += static_cast<std::uint64_t>(count);
    }
    return 0;
}

void CFile::AdviseWriteBehind() noexcept {
#if defined(SYNC_FILE_RANGE_WRITE)
    if (m_written - m_writeBehind < kWriteBehindPiece) return;
    sync_file_range(m_handle, static_cast<off_t>(m_writeBehind),
                    static_cast<off_t>(m_written - m_writeBehind), SYNC_FILE_RANGE_WRITE);
    m_writeBehind = m_written;
#endif
}

int CFile::Close() noexcept {
    if (!IsOpen()) return 0;
    const int fault = TakeFault("close");
    const int result = close(m_handle);
    const int error = errno;
    m_handle = kNoHandle;
    m_written = 0;
    m_writeBehind = 0;
    if (IsFailure(fault)) return fault;
    // An interrupted close has closed the handle, which may belong to another thread by now.
    return result == 0 || error == EINTR ? 0 : error;
}

void InjectFileFault(const FileFault* fault) noexcept {
    g_hasFault.store(false, std::memory_order_release);
    if (fault == nullptr || fault->error == 0) return;
    std::strncpy(g_faultOperation, fault->operation, sizeof(g_faultOperation) - 1);
    g_faultError = fault->error;
    g_faultAfter = fault->after;
    g_hasFault.store(true, std::memory_order_release);
}

}  // namespace KvXmlLib16::internal
