#include "kvxml/xml/file_text_stream.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/platform/internal/file.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/text_encoding.h"

namespace KvXmlLib16 {

CFileTextStream::CFileTextStream(const char* fileName, XmlEncoding encoding)
    : CTextStream(encoding),
      m_fileName(internal::OrEmpty(fileName)),
      m_file(std::make_unique<internal::CFile>()) {}

CFileTextStream::~CFileTextStream() = default;

void CFileTextStream::Begin() {
    CTextStream::Begin();
    m_pending.clear();
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
    if (GetBufferedLength() != 0 || !m_pending.empty()) WriteCollected(true);
    if (const int error = m_file->Close()) FailToWrite(error);
}

void CFileTextStream::WriteCollected(bool isLast) {
    CStringBuffer& buffer = GetBuffer();
    const std::size_t kept = m_pending.size();
    m_bytes.assign(m_pending);
    m_bytes.resize(kept + buffer.GetLength());
    const bool ascii = buffer.CopyTo(m_bytes.data() + kept) && kept == 0;
    buffer.Reset();
    m_pending.clear();

    try {
        internal::CheckEncoding(GetEncoding());
        if (!internal::IsLocalUtf8()) {
            m_bytes = internal::LocalToUtf8(m_bytes);
        } else if (!ascii) {
            if (!isLast) {
                const std::size_t unfinished = internal::UnfinishedLength(m_bytes);
                m_pending.assign(m_bytes, m_bytes.size() - unfinished);
                m_bytes.resize(m_bytes.size() - unfinished);
            }
            if (!internal::IsAsciiOnly() && internal::WellFormedUtf8Length(m_bytes) != m_bytes.size())
                m_bytes = internal::RepairUtf8(m_bytes);
        }
        if (internal::IsUtf16(GetEncoding())) m_bytes = internal::Utf8ToUtf16Le(m_bytes);
    } catch (...) {
        m_file->Close();
        throw;
    }
    if (m_bytes.empty()) return;
    if (const int error = m_file->Write(m_bytes.data(), m_bytes.size())) FailToWrite(error);
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
