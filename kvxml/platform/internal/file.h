/// Files as the library needs them: sequential reads and writes, whole or in pieces.
///
/// Functions report the host's error number and throw nothing; callers put it into their messages. Calls
/// are repeated on EINTR and short transfers, and handles are close-on-exec.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace KvXmlLib16::internal {

/// RAII file handle.
class CFile {
public:
    CFile() = default;
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    ~CFile() { Close(); }

    /// Opens for sequential reading and tells the kernel so. Returns 0 or the error number. A directory is
    /// refused with the host's "is a directory" error. A file that was open before is closed.
    int OpenForReading(const char* fileName) noexcept;
    /// Creates or truncates for writing. Returns 0 or the error number. A file that was open before is
    /// closed.
    int CreateForWriting(const char* fileName) noexcept;
    bool IsOpen() const noexcept { return m_handle != kNoHandle; }
    /// Size in bytes as the file system reports it (0 for pipes and /proc files). Returns 0 or the error
    /// number.
    int GetSize(std::uint64_t& size) noexcept;

    /// Reads until `length` bytes have arrived or the file ends; `got` is what arrived, also on failure.
    /// Sequential; works on pipes. Returns 0 or the error number.
    int Read(void* buffer, std::size_t length, std::size_t& got) noexcept;
    /// Tells the kernel that the range will be wanted soon; never fails.
    void AdviseWillNeed(std::uint64_t offset, std::size_t length) noexcept;
    /// Writes all bytes at the current end of what was written. Returns 0 or the error number.
    int Write(const void* data, std::size_t length) noexcept;
    /// Starts write-behind of what was written so far; never fails. Cheap enough to be called after every
    /// write: the kernel is asked only when a sizeable piece has collected.
    void AdviseWriteBehind() noexcept;
    /// Closes; returns 0 or the error number (a full disk may show only here). No-op when not open.
    int Close() noexcept;

private:
    static constexpr int kNoHandle = -1;

    int m_handle = kNoHandle;
    std::uint64_t m_written = 0;      // bytes written so far
    std::uint64_t m_writeBehind = 0;  // of these, bytes whose write-behind has been started
};

/// Tests only: makes the next file operations fail or come up short, to reach the failure paths.
/// `operation` is "open", "size", "read", "write" or "close"; `after` operations of that kind succeed first.
///
/// `error` is an error number that every later operation of that kind reports, or 0 to remove the fault, or
/// one of the constants below. EINTR is what the host's calls are interrupted with, once. A read or write
/// that is to fail transfers nothing.
struct FileFault {
    const char* operation;
    int error;
    int after;
};
/// Reads report the end of the file.
inline constexpr int kFaultEndOfFile = -1;
/// Each call of the host transfers one byte.
inline constexpr int kFaultShortTransfer = -2;

/// One fault at a time; null removes it. Not to be changed while other threads use files.
void InjectFileFault(const FileFault* fault) noexcept;

}  // namespace KvXmlLib16::internal
