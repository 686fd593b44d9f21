#include "kvxml/xml/xml_attribute.h"

#include <type_traits>

#include "kvxml/base/exceptions.h"
#include "kvxml/xml/internal/xml_tree.h"

namespace KvXmlLib16 {

static_assert(std::is_trivially_destructible_v<CXmlAttribute>);
static_assert(sizeof(void*) != 8 || sizeof(CXmlAttribute) == 24);

const std::string& CXmlAttribute::GetLocalName() const noexcept {
    return m_name->local;
}

const std::string& CXmlAttribute::GetNamespaceURI() const noexcept {
    return m_name->uri;
}

const std::string& CXmlAttribute::GetValue() const {
    return m_name->tree->BoxValue(*this);
}

std::string_view CXmlAttribute::GetValueView() const noexcept {
    return m_isBoxed != 0 ? std::string_view(m_value.box->text)
                          : std::string_view(m_value.characters, m_length);
}

const CXmlElement* CXmlAttribute::GetElement() const noexcept {
    return reinterpret_cast<const CXmlElement*>(this - m_index) - 1;
}

std::string CXmlAttribute::GetXPath() const {
    std::string path = GetElement()->GetXPath();
    path += '/';
    if (!m_name->uri.empty()) {
        const std::string& prefix = m_name->tree->FindPrefix(m_name->uri);
        if (!prefix.empty()) path.append(prefix) += ':';
    }
    return path.append(1, '@').append(m_name->local);
}

bool CXmlAttribute::IsNamespaceAttribute() const noexcept {
    return m_name->isNamespaceAttribute;
}

bool CXmlAttribute::IsNilAttribute() const noexcept {
    return m_name->isNilAttribute;
}

CXmlAttribute* CXmlAttributeList::at(std::size_t index) const {
    if (index >= m_count) throw CKvInvalidParamException("Index out of range");
    return m_first + index;
}

}  // namespace KvXmlLib16
