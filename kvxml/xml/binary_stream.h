/// Streams that hold finished bytes.
#pragma once

#include <string>
#include <utility>

#include "kvxml/export.h"
#include "kvxml/settings/xml_encoding.h"
#include "kvxml/types/binary_data.h"

namespace KvXmlLib16 {

/// Holds one buffer of bytes.
class KVXML_EXPORT CBinaryStream {
public:
    CBinaryStream();
    /// Shares `data`; nothing is copied.
    explicit CBinaryStream(const CBinaryData& data);
    CBinaryStream(const CBinaryStream&) = delete;
    CBinaryStream& operator=(const CBinaryStream&) = delete;
    virtual ~CBinaryStream();

    CBinaryData& GetData() noexcept { return m_data; }
    const CBinaryData& GetData() const noexcept { return m_data; }

private:
    CBinaryData m_data;
};

/// Writes its buffer to a file in one go.
class KVXML_EXPORT CFileBinaryStream : public CBinaryStream {
public:
    /// `encoding` decides about the byte-order mark only: bytes that are not text (compressed, say) take
    /// `XmlEncoding_None`.
    CFileBinaryStream(const CBinaryData& data, const char* fileName, XmlEncoding encoding);
    ~CFileBinaryStream() override;

    /// Creates or truncates the file, writes the byte-order mark of UTF-16, then all bytes. A failure closes
    /// the file and throws CKvException with the host's error number.
    void Write();

private:
    std::string m_fileName;
    XmlEncoding m_encoding;
};

}  // namespace KvXmlLib16
