#include "kvxml/xml/internal/xml_input.h"

#include <algorithm>
#include <cstring>
#include <istream>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::size_t kRawPiece = 65536;

}  // namespace

void CXmlInput::OpenMemory(const void* data, std::size_t length) {
    m_isMemory = m_isLast = true;
    m_next = static_cast<const unsigned char*>(data);
    m_rest = length;
    FindCompression();
}

void CXmlInput::OpenFile(const char* fileName) {
    m_fileName = fileName;
    if (const int error = m_file.OpenForReading(fileName)) {
        throw CKvException(FormatString("Failed to open the file [%s] Error [0x%08x]", fileName,
                                        static_cast<unsigned>(error)));
    }
    Begin();
}

void CXmlInput::OpenStream(std::istream& stream) {
    m_stream = &stream;
    Begin();
}

/// Looks at the first bytes.
void CXmlInput::Begin() {
    m_raw.resize(kRawPiece);
    std::size_t got = 0;
    ReadPlain(m_raw.data(), m_raw.size(), got);
    m_isLast = got < m_raw.size();
    m_next = m_raw.data();
    m_rest = got;
    FindCompression();
}

void CXmlInput::FindCompression() {
    if (CInflater::IsCompressed(m_next, m_rest)) m_inflater = std::make_unique<CInflater>(m_limits);
}

void CXmlInput::ReadPlain(unsigned char* buffer, std::size_t length, std::size_t& got) {
    got = 0;
    if (m_file.IsOpen()) {
        if (const int error = m_file.Read(buffer, length, got)) {
            throw CKvException(FormatString("Failed to read the contents of the file [%s] Error [0x%08x]",
                                            m_fileName.c_str(), static_cast<unsigned>(error)));
        }
    } else {
        m_stream->read(reinterpret_cast<char*>(buffer), static_cast<std::streamsize>(length));
        got = static_cast<std::size_t>(m_stream->gcount());
        if (m_stream->bad()) throw CKvException("Failed to read from the stream.");
    }
}

std::size_t CXmlInput::Read(char* buffer, std::size_t length) {
    auto* const out = reinterpret_cast<unsigned char*>(buffer);
    std::size_t made = 0;
    if (m_inflater == nullptr) {
        made = std::min(length, m_rest);
        if (made != 0) std::memcpy(out, m_next, made);
        m_next += made;
        m_rest -= made;
        if (made < length && !m_isLast) {
            std::size_t got = 0;
            ReadPlain(out + made, length - made, got);
            m_isLast = got < length - made;
            made += got;
        }
        return made;
    }
    while (made < length && !m_inflater->IsAtEnd()) {
        if (m_rest < 3 && !m_isLast) {
            std::memmove(m_raw.data(), m_next, m_rest);
            std::size_t got = 0;
            ReadPlain(m_raw.data() + m_rest, m_raw.size() - m_rest, got);
            m_isLast = got < m_raw.size() - m_rest;
            m_next = m_raw.data();
            m_rest += got;
        }
        const std::size_t got = m_inflater->Inflate(m_next, m_rest, m_isLast, out + made, length - made);
        if (got == 0 && m_isLast && m_rest == 0) break;
        made += got;
    }
    return made;
}

}  // namespace KvXmlLib16::internal
