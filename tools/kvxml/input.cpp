#include "tools/kvxml/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "tools/kvxml/messages.h"

namespace tool {

bool IsStandardInput(const std::string& name) {
    return name == "-";
}

std::string InputName(const std::string& name) {
    return IsStandardInput(name) ? "standard input" : name;
}

std::vector<unsigned char> ReadStandardInput() {
    constexpr std::size_t kFirstPiece = std::size_t{1} << 16;
    std::vector<unsigned char> data;
    std::size_t length = 0;
    for (;;) {
        if (data.size() - length < kFirstPiece) data.resize(data.size() * 2 + kFirstPiece);
        const ssize_t count = read(STDIN_FILENO, data.data() + length, data.size() - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw CFailure("cannot read", errno);
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
    }
    data.resize(length);
    return data;
}

void CheckFile(const std::string& fileName) {
    struct stat status;
    if (stat(fileName.c_str(), &status) != 0) throw CFailure("", errno);
    if (S_ISDIR(status.st_mode)) throw CFailure("", EISDIR);
    if (faccessat(AT_FDCWD, fileName.c_str(), R_OK, AT_EACCESS) != 0) throw CFailure("", errno);
}

}  // namespace tool
