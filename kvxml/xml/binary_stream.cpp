#include "kvxml/xml/binary_stream.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/platform/internal/file.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/text_encoding.h"

namespace KvXmlLib16 {

CBinaryStream::CBinaryStream() = default;

CBinaryStream::CBinaryStream(const CBinaryData& data) : m_data(data) {}

CBinaryStream::~CBinaryStream() = default;

CFileBinaryStream::CFileBinaryStream(const CBinaryData& data, const char* fileName, XmlEncoding encoding)
    : CBinaryStream(data), m_fileName(internal::OrEmpty(fileName)), m_encoding(encoding) {}

CFileBinaryStream::~CFileBinaryStream() = default;

void CFileBinaryStream::Write() {
    internal::CFile file;
    int error = file.CreateForWriting(m_fileName.c_str());
    if (error == 0 && internal::IsUtf16(m_encoding))
        error = file.Write(internal::kUtf16Mark.data(), internal::kUtf16Mark.size());
    if (error == 0 && GetData().GetLength() != 0)
        error = file.Write(GetData().GetData(), GetData().GetLength());
    const int closeError = file.Close();
    if (error == 0) error = closeError;
    if (error != 0)
        throw CKvException(FormatString("Failed to write data to the file [%s] error [0x%08X]",
                                        m_fileName.c_str(), static_cast<unsigned>(error)));
}

}  // namespace KvXmlLib16
