#include "kvxml/io/internal/input_file.h"

#include <algorithm>
#include <cstdint>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::size_t kFirstPiece = std::size_t{1} << 16;

}  // namespace

void ThrowFileError(const char* format, const char* fileName, int error) {
    throw CKvException(FormatString(format, fileName, static_cast<unsigned int>(error)));
}

void ThrowReadError(const char* fileName, int error) {
    ThrowFileError("Failed to read the contents of the file [%s] Error [0x%08x]", fileName, error);
}

void OpenFile(CFile& file, const char* fileName) {
    if (const int error = file.OpenForReading(fileName))
        ThrowFileError("Failed to open the file [%s] Error [0x%08x]", fileName, error);
}

void ReadAll(CFile& file, const char* fileName, void* buffer, std::size_t length) {
    std::size_t got = 0;
    const int error = file.Read(buffer, length, got);
    if (error != 0 || got < length) ThrowReadError(fileName, error != 0 ? error : kEndOfFile);
}

std::vector<unsigned char> ReadToEnd(CFile& file, const char* fileName) {
    std::vector<unsigned char> data;
    std::size_t length = 0;
    for (std::size_t got = 1; got > 0; length += got) {
        if (data.size() - length < kFirstPiece) data.resize(std::max(kFirstPiece, data.size() * 2));
        if (const int error = file.Read(data.data() + length, data.size() - length, got))
            ThrowReadError(fileName, error);
    }
    data.resize(length);
    return data;
}

std::vector<unsigned char> ReadWhole(const char* fileName) {
    CFile file;
    OpenFile(file, fileName);
    std::uint64_t size = 0;
    if (const int error = file.GetSize(size))
        ThrowFileError("Failed to get the size of the file [%s] Error [0x%08x]", fileName, error);
    if (size == 0) return ReadToEnd(file, fileName);  // empty, or of a size not known beforehand
    std::vector<unsigned char> data(static_cast<std::size_t>(size));
    ReadAll(file, fileName, data.data(), data.size());
    return data;
}

}  // namespace KvXmlLib16::internal
