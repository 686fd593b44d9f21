/// Settings of JSON input and output, held by the serialization context.
#pragma once

#include <cstdint>
#include <string>

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// How much of an XML document its JSON form keeps.
enum JsonRoundTrip : std::int32_t {
    /// Local names only: attributes and text are members without marks, namespaces are lost.
    JsonRoundTrip_None = 0,
    /// Attributes are marked with "@" and text with "#text"; namespaces are lost.
    JsonRoundTrip_NoNamespaces = 1,
    /// As the former, and namespaces are kept: prefixes, "@xmlns" declarations and type attributes.
    JsonRoundTrip_Full = 2,
};

/// A plain value; the one inside a serialization context is shared by the context's copies.
class KVXML_EXPORT CJsonContext {
public:
    CJsonContext();
    ~CJsonContext();
    CJsonContext(const CJsonContext& other);
    CJsonContext& operator=(const CJsonContext& other);

    /// How names and text are mapped. Default JsonRoundTrip_Full.
    JsonRoundTrip GetSupportRoundtrip() const noexcept { return m_supportRoundtrip; }
    void SetSupportRoundtrip(JsonRoundTrip value) noexcept { m_supportRoundtrip = value; }

    /// Name of the element that JSON input becomes the value of, for input that does not name one itself.
    /// Default empty: the input is an object with one member, the document element.
    std::string GetRootElementName() const { return m_rootElementName; }
    const std::string& GetRootElementNameRef() const noexcept { return m_rootElementName; }
    void SetRootElementName(const char* value);
    void SetRootElementName(const std::string& value) { m_rootElementName = value; }

    /// Name of the items when the input is an array: with a root element name, it becomes an element of that
    /// name with one child of this name for each item. Default empty: such input is refused.
    std::string GetArrayItemName() const { return m_arrayItemName; }
    const std::string& GetArrayItemNameRef() const noexcept { return m_arrayItemName; }
    void SetArrayItemName(const char* value);
    void SetArrayItemName(const std::string& value) { m_arrayItemName = value; }

    /// Whether input may have "// ..." and "/* ... */" comments between its tokens. Default true.
    bool GetAllowComments() const noexcept { return m_allowComments; }
    /// Sets whether it may.
    void GetAllowComments(bool value) noexcept { m_allowComments = value; }

    /// Whether strings of input are taken as they are. Default false, as if they stood in XML text: a text
    /// that begins with "<![CDATA[" holds a CDATA section, tabs in the values of attributes become blanks,
    /// and carriage returns in them are left out. (Texts of elements never have carriage returns.)
    bool GetExactStrings() const noexcept { return m_exactStrings; }
    void SetExactStrings(bool value) noexcept { m_exactStrings = value; }

    /// Whether strings are escaped in output as RFC 8259 has it, so that any value gives valid JSON. Default
    /// false: quotation marks, backslashes and some control characters are written as they are.
    bool GetEscapeStrings() const noexcept { return m_escapeStrings; }
    void SetEscapeStrings(bool value) noexcept { m_escapeStrings = value; }

private:
    std::string m_rootElementName;
    std::string m_arrayItemName;
    JsonRoundTrip m_supportRoundtrip = JsonRoundTrip_Full;
    bool m_allowComments = true;
    bool m_exactStrings = false;
    bool m_escapeStrings = false;
};

}  // namespace KvXmlLib16
