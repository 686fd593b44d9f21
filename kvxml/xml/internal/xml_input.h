/// Bytes of a document, piece by piece: from memory, a file or a stream, inflated where they are compressed.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/platform/internal/file.h"
#include "kvxml/types/internal/compression.h"

namespace KvXmlLib16::internal {

/// One input. Read errors are CKvException with the file's name and the host's error number.
class CXmlInput {
public:
    explicit CXmlInput(const InflateLimits& limits) : m_limits(limits) {}
    CXmlInput(const CXmlInput&) = delete;
    CXmlInput& operator=(const CXmlInput&) = delete;

    void OpenMemory(const void* data, std::size_t length);
    void OpenFile(const char* fileName);
    void OpenStream(std::istream& stream);

    /// Fills the buffer; fewer bytes than asked for only at the end of the input, then and later nothing
    /// more.
    std::size_t Read(char* buffer, std::size_t length);

private:
    void Begin();
    void ReadPlain(unsigned char* buffer, std::size_t length, std::size_t& got);

    const InflateLimits m_limits;
    std::string_view m_memory;
    CFile m_file;
    std::string m_fileName;
    std::istream* m_stream = nullptr;
    std::vector<unsigned char> m_raw;  // compressed bytes, or the first ones of plain input
    const unsigned char* m_next = nullptr;
    std::size_t m_rest = 0;
    bool m_isLast = false;
    std::unique_ptr<CInflater> m_inflater;
};

}  // namespace KvXmlLib16::internal
