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
    /// All of the input, where it lies in memory and is not compressed, before the first Read; else empty.
    std::string_view WholeMemory() const noexcept {
        return m_isMemory && m_inflater == nullptr
                   ? std::string_view(reinterpret_cast<const char*>(m_next), m_rest)
                   : std::string_view();
    }

private:
    void Begin();
    void FindCompression();
    void ReadPlain(unsigned char* buffer, std::size_t length, std::size_t& got);

    const InflateLimits m_limits;
    bool m_isMemory = false;
    CFile m_file;
    std::string m_fileName;
    std::istream* m_stream = nullptr;
    std::vector<unsigned char> m_raw;  // compressed bytes, or the first ones of plain input; not of memory
    const unsigned char* m_next = nullptr;
    std::size_t m_rest = 0;
    bool m_isLast = false;
    std::unique_ptr<CInflater> m_inflater;
};

}  // namespace KvXmlLib16::internal
