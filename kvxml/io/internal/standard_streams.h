/// Streams of the standard library as places to read from and write to. Failures are CKvException, whether or
/// not the stream throws by itself.
#pragma once

#include <ios>
#include <iosfwd>
#include <string>
#include <string_view>

#include "kvxml/types/binary_data.h"
#include "kvxml/xml/internal/text_encoding.h"
#include "kvxml/xml/text_stream.h"

namespace KvXmlLib16::internal {

/// Keeps a stream from throwing as long as it lives, so that its state tells.
class CQuietStream {
public:
    explicit CQuietStream(std::ios& stream) : m_stream(stream), m_mask(stream.exceptions()) {
        stream.exceptions(std::ios::goodbit);
    }
    CQuietStream(const CQuietStream&) = delete;
    CQuietStream& operator=(const CQuietStream&) = delete;
    ~CQuietStream();

private:
    std::ios& m_stream;
    std::ios::iostate m_mask;
};

/// All that is left in the stream.
std::string ReadRest(std::istream& in);

/// A stream that one document is written to.
class COutput {
public:
    explicit COutput(std::ostream& out);

    void Write(std::string_view bytes);
    void Flush();
    /// Writes and flushes.
    void WriteLast(const CBinaryData& data);

private:
    std::ostream& m_out;
    CQuietStream m_quiet;
};

/// Passes text on at every flush, so that a document of any size needs memory for about one block.
class COutputTextStream : public CTextStream {
public:
    COutputTextStream(COutput& output, XmlEncoding encoding) : CTextStream(encoding), m_output(output) {}

    void End() override;
    void Flush() override;

private:
    COutput& m_output;
    CPieceEncoder m_encoder;
};

}  // namespace KvXmlLib16::internal
