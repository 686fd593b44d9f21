/// Untyped attributes: name, namespace and text, as wildcards and extra root attributes need them.
#pragma once

#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/metadata/xml_collection.h"

namespace KvXmlLib16 {

/// One untyped attribute.
class KVXML_EXPORT CAttribute : public CXmlObjectBase {
public:
    CAttribute();
    CAttribute(const char* name, const char* ns, const char* value);

    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return m_namespace; }
    std::string GetNamespace() const override { return m_namespace; }

    std::string GetName() const { return GetElementName(); }
    /// CKvInvalidParamException for an empty name.
    void SetName(const char* name);
    void SetNamespace(const char* ns) { m_namespace = ns == nullptr ? "" : ns; }
    const std::string& GetValue() const noexcept { return m_value; }
    void SetValue(std::string value) { m_value = std::move(value); }

protected:
    /// Writes the attribute into the open start tag.
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    /// An attribute is no element: throws CKvException.
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;

private:
    std::string m_namespace;
    std::string m_value;
};

/// Untyped attributes in document order, restricted to namespaces.
class KVXML_EXPORT CAttributeCol : public CXmlTypedCollection<CAttribute> {
public:
    /// `restriction` is a wildcard's namespace list; "##targetNamespace" and "##other" are judged against
    /// `targetNamespace`.
    explicit CAttributeCol(const char* restriction = "##any", const char* targetNamespace = "");

    /// CKvInvalidNamespaceException "Invalid Namespace [%s]." when the restriction rejects `ns`.
    CSmartPtr<CAttribute> Add(const char* name, const char* ns, const char* value);
    /// First attribute of that name and namespace, or null.
    CSmartPtr<CAttribute> Find(std::string_view name, std::string_view ns) const;

protected:
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;

private:
    std::string m_restriction;
    std::string m_targetNamespace;
};

}  // namespace KvXmlLib16
