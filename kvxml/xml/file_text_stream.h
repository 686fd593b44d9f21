/// Text stream that writes a file while the document is being produced.
#pragma once

#include <memory>
#include <string>

#include "kvxml/export.h"
#include "kvxml/xml/text_stream.h"

namespace KvXmlLib16 {

namespace internal {
class CFile;
class CPieceEncoder;
}  // namespace internal

/// Writes what was collected at every flush, so that a document of any size needs memory for about one
/// block. A file whose writing failed, or that is destroyed before `End`, is closed and stays as it is.
///
/// Failures throw CKvException with the host's error number, after the file has been closed.
class KVXML_EXPORT CFileTextStream : public CTextStream {
public:
    CFileTextStream(const char* fileName, XmlEncoding encoding);
    ~CFileTextStream() override;

    /// Creates or truncates the file and writes the byte-order mark of UTF-16.
    void Begin() override;
    /// Writes what is left and closes the file.
    void End() override;
    /// Writes what was collected. The bytes of an unfinished UTF-8 character wait for their rest.
    void Flush() override;

private:
    void WriteCollected(bool isLast);
    [[noreturn]] void FailToOpen(int error);
    [[noreturn]] void FailToWrite(int error);

    std::string m_fileName;
    std::unique_ptr<internal::CPieceEncoder> m_encoder;
    std::unique_ptr<internal::CFile> m_file;
};

}  // namespace KvXmlLib16
