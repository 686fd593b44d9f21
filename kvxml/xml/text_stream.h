/// The sink that writers put their text into, kept in memory until it is asked for.
///
///     CTextStream stream(XmlEncoding_UTF8);
///     CXmlTextWriter writer(&stream);
///     ...
///     CBinaryData bytes = stream.ToBinaryData();
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/settings/xml_encoding.h"
#include "kvxml/xml/string_buffer.h"

namespace KvXmlLib16 {

class CBinaryData;

/// Collects text in the local code page and turns it into bytes of the output encoding at the end.
class KVXML_EXPORT CTextStream {
public:
    /// Buffered characters from which writers call `Flush`.
    static constexpr std::size_t kFlushLength = 4096;

    explicit CTextStream(XmlEncoding encoding = XmlEncoding_UTF8) noexcept;
    CTextStream(const CTextStream&) = delete;
    CTextStream& operator=(const CTextStream&) = delete;
    virtual ~CTextStream();

    /// Starts a document: drops what was collected.
    virtual void Begin();
    /// Finishes a document.
    virtual void End();
    /// Hands collected text on; here, where the text is to stay, does nothing.
    virtual void Flush();

    XmlEncoding GetEncoding() const noexcept { return m_encoding; }
    CStringBuffer& GetBuffer() noexcept { return m_buffer; }
    const CStringBuffer& GetBuffer() const noexcept { return m_buffer; }
    /// Characters collected and not yet flushed.
    std::size_t GetBufferedLength() const noexcept { return m_buffer.GetLength(); }
    void Append(std::string_view text) { m_buffer.Append(text); }
    void Append(char character) { m_buffer.Append(character); }

    /// False when `Flush` is known to do nothing, so that writers need not call it.
    bool NeedsFlush() const noexcept;

    /// The collected text as bytes in the stream's encoding, without byte-order mark. Text that is
    /// ill-formed in the local code page comes out as U+FFFD. CKvException for an encoding that is none.
    CBinaryData ToBinaryData() const;
    /// Moves the collected text out, in the local code page; ill-formed UTF-8 becomes U+FFFD.
    std::string TakeText();

private:
    CStringBuffer m_buffer;
    XmlEncoding m_encoding;
};

}  // namespace KvXmlLib16
