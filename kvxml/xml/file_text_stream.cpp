#include "kvxml/xml/file_text_stream.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/platform/internal/file.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/text_encoding.h"

namespace KvXmlLib16 {

CFileTextStream::CFileTextStream(const char* fileName, XmlEncoding encoding)
    : CTextStream(encoding),
      m_fileName(internal::OrEmpty(fileName)),
      m_encoder(std::make_unique<internal::CPieceEncoder>()),
      m_file(std::make_unique<internal::CFile>()) {}

CFileTextStream::~CFileTextStream() = default;

void CFileTextStream::Begin() {
    CTextStream::Begin();
    m_encoder->Reset();
    m_file->Close();
    if (const int error = m_file->CreateForWriting(m_fileName.c_str())) FailToOpen(error);
    if (!internal::IsUtf16(GetEncoding())) return;
    if (const int error = m_file->Write(internal::kUtf16Mark.data(), internal::kUtf16Mark.size()))
        FailToOpen(error);
}

void CFileTextStream::Flush() {
    if (GetBufferedLength() != 0) WriteCollected(false);
}

void CFileTextStream::End() {
    if (GetBufferedLength() != 0 || m_encoder->HasPending()) WriteCollected(true);
    if (const int error = m_file->Close()) FailToWrite(error);
}

void CFileTextStream::WriteCollected(bool isLast) {
    const std::string* bytes = nullptr;
    try {
        bytes = &m_encoder->Take(GetBuffer(), GetEncoding(), isLast);
    } catch (...) {
        m_file->Close();
        throw;
    }
    if (bytes->empty()) return;
    if (const int error = m_file->Write(bytes->data(), bytes->size())) FailToWrite(error);
    m_file->AdviseWriteBehind();
}

void CFileTextStream::FailToOpen(int error) {
    m_file->Close();
    throw CKvException(FormatString("Failed to write data to the file [%s] error [0x%08X]",
                                    m_fileName.c_str(), static_cast<unsigned>(error)));
}

void CFileTextStream::FailToWrite(int error) {
    m_file->Close();
    throw CKvException(
        FormatString("Failed to write data to the file. Error [0x%08X]", static_cast<unsigned>(error)));
}

}  // namespace KvXmlLib16
