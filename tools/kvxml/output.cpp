#include "tools/kvxml/output.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "tools/kvxml/messages.h"

namespace tool {

namespace {

constexpr std::size_t kMaximumTransfer = std::size_t{1} << 30;
constexpr int kMaximumLinks = 40;
constexpr std::array<int, 5> kFatalSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU};

// --- signals -----------------------------------------------------------------------------------------------

char g_temporary[PATH_MAX];  // what a fatal signal removes; empty: nothing. Changed while these are blocked.

extern "C" void OnFatalSignal(int signal) {
    if (g_temporary[0] != '\0') unlink(g_temporary);
    // The handler was reset on entry; once it returns, the signal ends the process.
    raise(signal);
}

/// Holds fatal signals back while a temporary file comes or goes.
class CSignalGuard {
public:
    CSignalGuard() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : kFatalSignals)
            sigaddset(&signals, signal);
        sigprocmask(SIG_BLOCK, &signals, &m_before);
    }
    CSignalGuard(const CSignalGuard&) = delete;
    CSignalGuard& operator=(const CSignalGuard&) = delete;
    ~CSignalGuard() { sigprocmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before;
};

// --- paths -------------------------------------------------------------------------------------------------

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

/// The number of the open descriptor that the path stands for, or -1.
int DescriptorOf(const std::string& path) {
    if (path == "-" || path == "/dev/stdout") return STDOUT_FILENO;
    if (path == "/dev/stderr") return STDERR_FILENO;
    for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
        if (path.compare(0, folder.size(), folder) != 0) continue;
        char* end = nullptr;
        const char* const digits = path.c_str() + folder.size();
        const long number = std::strtol(digits, &end, 10);
        if (end != digits && *end == '\0' && number >= 0 && number <= INT_MAX)
            return static_cast<int>(number);
    }
    return -1;
}

/// What the symbolic link points to, seen from where the link is seen from; empty when it is none.
std::string LinkTarget(const std::string& path) {
    char target[PATH_MAX];
    const ssize_t length = readlink(path.c_str(), target, sizeof(target));
    if (length <= 0) return std::string();
    std::string result(target, static_cast<std::size_t>(length));
    return result.front() == '/' ? result : FolderOf(path) + result;
}

void WriteAll(int handle, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(handle, bytes.data(), std::min(bytes.size(), kMaximumTransfer));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) throw CFailure("cannot write", count < 0 ? errno : EIO);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

/// Puts the new name of a file on the disk. The file is whole under either name, so nothing depends on it.
void SynchronizeFolder(const std::string& folder) {
    const int handle = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    fsync(handle);
    close(handle);
}

}  // namespace

// --- compression -------------------------------------------------------------------------------------------

struct COutput::CCompressor {
    CCompressor() {
        constexpr int kGzip = 16;  // added to the window size
        constexpr int kMemoryLevel = 8;
        if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + kGzip, kMemoryLevel,
                         Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    CCompressor(const CCompressor&) = delete;
    CCompressor& operator=(const CCompressor&) = delete;
    ~CCompressor() { deflateEnd(&stream); }

    /// Compresses the bytes; the last ones end the stream.
    void Add(std::string_view bytes, bool isLast, int handle) {
        do {
            const std::size_t length = std::min(bytes.size(), kMaximumTransfer);
            stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
            stream.avail_in = static_cast<uInt>(length);
            bytes.remove_prefix(length);
            do {
                stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
                stream.avail_out = static_cast<uInt>(buffer.size());
                deflate(&stream, isLast && bytes.empty() ? Z_FINISH : Z_NO_FLUSH);
                WriteAll(handle, {buffer.data(), buffer.size() - stream.avail_out});
            } while (stream.avail_out == 0);
        } while (!bytes.empty());
    }

    z_stream stream{};
    std::array<char, std::size_t{1} << 16> buffer;
};

// --- output ------------------------------------------------------------------------------------------------

COutput::COutput(const std::string& name, bool gzip) {
    if (gzip) m_compressor = std::make_unique<CCompressor>();
    Locate(name);
}

COutput::~COutput() {
    if (m_ownsHandle) close(m_handle);
    if (m_temporary.empty()) return;
    const CSignalGuard guard;
    unlink(m_temporary.c_str());
    g_temporary[0] = '\0';
}

/// Follows symbolic links to the target and opens what it is to be written through.
void COutput::Locate(const std::string& name) {
    m_target = name;
    for (int links = 0;; ++links) {
        m_handle = DescriptorOf(m_target);
        if (m_handle >= 0) return;
        std::string next = LinkTarget(m_target);
        if (next.empty()) break;
        if (links >= kMaximumLinks) throw CFailure("", ELOOP);
        m_target = std::move(next);
    }
    m_replaces = stat(m_target.c_str(), &m_existing) == 0;
    if (!m_replaces) {
        if (errno != ENOENT) throw CFailure("", errno);
        CreateTemporary();
        return;
    }
    if (S_ISDIR(m_existing.st_mode)) throw CFailure("", EISDIR);
    if (faccessat(AT_FDCWD, m_target.c_str(), W_OK, AT_EACCESS) != 0) throw CFailure("", errno);
    if (S_ISREG(m_existing.st_mode))
        CreateTemporary();
    else
        Open();
}

void COutput::CreateTemporary() {
    std::random_device random;
    const CSignalGuard guard;
    do {
        char suffix[32];
        std::snprintf(suffix, sizeof(suffix), ".kvxml-%08x.tmp", random());
        m_temporary = FolderOf(m_target) + suffix;
        m_handle = open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY,
                        m_replaces ? 0600 : 0666);
    } while (m_handle < 0 && (errno == EEXIST || errno == EINTR));
    if (m_handle < 0) {
        m_temporary.clear();
        throw CFailure("cannot create a file beside it", errno);
    }
    m_ownsHandle = true;
    std::snprintf(g_temporary, sizeof(g_temporary), "%s", m_temporary.c_str());
}

/// Opens a device or a pipe.
void COutput::Open() {
    do {
        m_handle = open(m_target.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    } while (m_handle < 0 && errno == EINTR);
    if (m_handle < 0) throw CFailure("", errno);
    m_ownsHandle = true;
}

/// Gives the file owner, group and permissions of the one that it replaces, as far as the host permits.
void COutput::KeepPermissions() {
    constexpr mode_t kBits = 07777;
    mode_t mode = m_existing.st_mode & kBits;
    // Who may not give files away keeps the group at least. Nobody gets rights that they did not have.
    if (fchown(m_handle, m_existing.st_uid, m_existing.st_gid) != 0) {
        mode &= ~static_cast<mode_t>(S_ISUID);
        if (fchown(m_handle, static_cast<uid_t>(-1), m_existing.st_gid) != 0)
            mode &= ~static_cast<mode_t>(S_IRWXG | S_ISGID);
    }
    fchmod(m_handle, mode);
    struct stat now;
    if (fstat(m_handle, &now) != 0) throw CFailure("", errno);
    const auto note = [this](const std::string& what) {
        m_remark += (m_remark.empty() ? "not kept: " : ", ") + what;
    };
    if (now.st_uid != m_existing.st_uid) note("owner");
    if (now.st_gid != m_existing.st_gid) note("group");
    if ((now.st_mode & kBits) != (m_existing.st_mode & kBits)) {
        char text[64];
        std::snprintf(text, sizeof(text), "permissions (%04o instead of %04o)",
                      static_cast<unsigned>(now.st_mode & kBits),
                      static_cast<unsigned>(m_existing.st_mode & kBits));
        note(text);
    }
}

/// Puts the content of the file on the disk, where the file system can do that.
void COutput::Synchronize() const {
    int result;
    do {
        result = fsync(m_handle);
    } while (result != 0 && errno == EINTR);
    const bool isUnsupported = errno == EINVAL || errno == ENOTSUP || errno == ENOSYS;
    if (result != 0 && !isUnsupported) throw CFailure("cannot write", errno);
}

void COutput::Write(std::string_view bytes) {
    if (bytes.empty()) return;
    if (m_compressor != nullptr)
        m_compressor->Add(bytes, false, m_handle);
    else
        WriteAll(m_handle, bytes);
}

void COutput::Commit() {
    if (m_compressor != nullptr) m_compressor->Add({}, true, m_handle);
    if (m_temporary.empty()) {
        if (!m_ownsHandle) {
            // A copy is closed to learn of what only closing reveals; the descriptor itself is not ours.
            m_handle = dup(m_handle);
            if (m_handle < 0) return;
            m_ownsHandle = true;
        }
        CloseHandle();
        return;
    }
    if (m_replaces) KeepPermissions();
    Synchronize();
    CloseHandle();
    {
        const CSignalGuard guard;
        if (rename(m_temporary.c_str(), m_target.c_str()) != 0) throw CFailure("cannot replace it", errno);
        m_temporary.clear();
        g_temporary[0] = '\0';
    }
    SynchronizeFolder(FolderOf(m_target));
}

bool COutput::IsTerminal() const {
    return isatty(m_handle) == 1;
}

void COutput::CloseHandle() {
    m_ownsHandle = false;
    if (close(m_handle) != 0 && errno != EINTR) throw CFailure("cannot write", errno);
}

std::string OutputName(const std::string& name) {
    return name == "-" ? "standard output" : name;
}

void PrepareProcess() {
    // The wrong direction makes every use of such a descriptor fail, as it would have.
    for (const int handle : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(handle, F_GETFD) == -1 && errno == EBADF) {
            if (open("/dev/null", handle == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) std::_Exit(1);
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
#if defined(SIGXFSZ)
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    for (const int signal : kFatalSignals) {
        struct sigaction action;
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
        std::memset(&action, 0, sizeof(action));
        action.sa_handler = OnFatalSignal;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace tool
