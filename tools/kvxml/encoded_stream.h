/// Text stream that turns a document into bytes of any encoding on their way to the output.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kvxml/xml/text_stream.h"
#include "tools/kvxml/output.h"

namespace tool {

/// Turns UTF-8 text of an XML document into another encoding. Characters that the encoding does not have
/// become character references; CFailure where none can stand, in names.
class CEncoder {
public:
    /// Whether documents can be written in the encoding: UTF-16, or one that the host's converter knows and
    /// that has ASCII in it.
    static bool Knows(const std::string& encoding);

    /// The encoding must be known.
    explicit CEncoder(const std::string& encoding);
    CEncoder(const CEncoder&) = delete;
    CEncoder& operator=(const CEncoder&) = delete;
    ~CEncoder();

    /// Appends the converted text to `out`. A character whose end is missing waits for the next call.
    void Convert(std::string_view utf8, std::string& out);
    /// Appends what ends the document, for encodings that have states.
    void Finish(std::string& out);

private:
    void Refer(char32_t character, std::string& out);
    void Follow(const char* end);

    std::string m_encoding;
    void* m_converter;       // iconv_t
    std::string m_text;      // of this call, after what the last one left
    const char* m_at;        // next to be converted
    const char* m_followed;  // up to here the markup is known
    bool m_inTag = false;
    char m_quote = '\0';  // of the attribute value
};

/// The stream that a text writer writes a whole document to.
class CEncodedStream : public KvXmlLib16::CTextStream {
public:
    /// `output` must outlive the stream. The encoding must be UTF-8 or known to `CEncoder`.
    CEncodedStream(COutput& output, const std::string& encoding);

    /// The encoding as the document's declaration names it.
    const std::string& GetDeclaredName() const noexcept { return m_declaredName; }

    void Begin() override;
    void End() override;
    void Flush() override;

private:
    void Pass(bool isLast);

    COutput& m_output;
    std::string m_declaredName;
    std::unique_ptr<CEncoder> m_encoder;  // null for UTF-8
    std::string m_text;
    std::string m_bytes;
};

}  // namespace tool
