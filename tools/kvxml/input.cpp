#include "tools/kvxml/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "tools/kvxml/messages.h"

namespace tool {

namespace {

std::vector<unsigned char> ReadDescriptor(int file) {
    constexpr std::size_t kFirstPiece = std::size_t{1} << 16;
    std::vector<unsigned char> data;
    std::size_t length = 0;
    for (;;) {
        if (data.size() - length < kFirstPiece) data.resize(data.size() * 2 + kFirstPiece);
        const ssize_t count = read(file, data.data() + length, data.size() - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw CFailure("cannot read", errno);
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
    }
    data.resize(length);
    return data;
}

}  // namespace

bool IsStandardInput(const std::string& name) {
    return name == "-";
}

std::string InputName(const std::string& name) {
    return IsStandardInput(name) ? "standard input" : name;
}

std::vector<unsigned char> ReadStandardInput() {
    return ReadDescriptor(STDIN_FILENO);
}

std::vector<unsigned char> ReadAll(const std::string& fileName) {
    const int file = open(fileName.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) throw CFailure("", errno);
    try {
        std::vector<unsigned char> data = ReadDescriptor(file);
        close(file);
        return data;
    } catch (...) {
        close(file);
        throw;
    }
}

bool IsRegularFile(const std::string& fileName) {
    struct stat status;
    return stat(fileName.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

void CheckFile(const std::string& fileName) {
    struct stat status;
    if (stat(fileName.c_str(), &status) != 0) throw CFailure("", errno);
    if (S_ISDIR(status.st_mode)) throw CFailure("", EISDIR);
    if (faccessat(AT_FDCWD, fileName.c_str(), R_OK, AT_EACCESS) != 0) throw CFailure("", errno);
}

}  // namespace tool
