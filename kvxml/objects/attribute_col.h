/// Untyped attributes: name, namespace and text, as wildcards and extra root attributes need them.
///
///     CSmartPtr<CAttributeCol> attributes = element.GetAttributes();
///     attributes->Set("lang", "", "de");
///     for (const CAttribute* attribute : *attributes) ...
#pragma once

#include <string>
#include <string_view>

#include "kvxml/base/shared_name.h"
#include "kvxml/export.h"
#include "kvxml/objects/xml_collection.h"

namespace KvXmlLib16 {

class CXmlAttribute;
class CXmlElement;

namespace internal {
class CAttributeNames;
class CTreeOutput;
}  // namespace internal

/// One untyped attribute. It remembers the prefix that its document used, and for xsi:type the namespace
/// that the prefix in the value stands for, so that the value keeps its meaning in another document.
class KVXML_EXPORT CAttribute : public CXmlObjectBase {
public:
    CAttribute();
    /// CKvInvalidParamException for a name that is empty or no XML name.
    CAttribute(const char* name, const char* ns, const char* value);
    /// A copy of an attribute of a document.
    explicit CAttribute(const CXmlAttribute& attribute);
    CAttribute(const CAttribute&);
    CAttribute& operator=(const CAttribute&);
    CAttribute(CAttribute&&) noexcept;
    CAttribute& operator=(CAttribute&&) noexcept;
    ~CAttribute() override;

    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return GetNamespace(); }
    std::string GetNamespace() const override { return std::string(m_namespace.View()); }
    /// The namespace without a copy; valid until it is changed.
    std::string_view GetNamespaceView() const noexcept { return m_namespace.View(); }

    std::string GetName() const { return GetElementName(); }
    /// The name without a copy; valid until it is changed.
    std::string_view GetNameView() const noexcept { return GetElementNameView(); }
    /// CKvInvalidParamException for a name that is empty or no XML name.
    void SetName(const char* name);
    /// Null and empty: no namespace.
    void SetNamespace(const char* ns);
    /// The prefix that output uses for the namespace when it has none yet and this one is free; empty: one is
    /// invented.
    std::string GetPrefix() const { return std::string(m_prefix.View()); }
    /// CKvInvalidParamException for a prefix that is not empty and no XML name.
    void SetPrefix(const char* prefix);
    const std::string& GetValue() const noexcept { return m_value; }
    /// The new value is plain text, for xsi:type as well; see SetTypeValue.
    void SetValue(std::string value);
    /// Makes the value the name of a type, as xsi:type has it: output writes it with whatever prefix the
    /// namespace has there.
    void SetTypeValue(const char* typeNamespace, const char* typeName);

    /// True for the name and the namespace.
    bool Is(std::string_view name, std::string_view ns) const noexcept {
        return GetElementNameView() == name && m_namespace.View() == ns;
    }

protected:
    /// Writes the attribute into the open start tag.
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    /// An attribute is no element: throws CKvException "This should be done by the collection".
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;

private:
    friend class CAttributeCol;
    friend class internal::CObjectGraph;

    void Write(internal::CTreeOutput& output) const;

    internal::CSharedName m_namespace;
    internal::CSharedName m_prefix;
    internal::CSharedName m_valueNamespace;  // of the type that the value names
    bool m_isTypeValue = false;
    std::string m_value;
};

/// Untyped attributes in document order, restricted to namespaces.
class KVXML_EXPORT CAttributeCol : public CXmlTypedCollection<CAttribute> {
public:
    /// `restriction` is a wildcard's namespace list; "##targetNamespace" and "##other" are judged against
    /// `targetNamespace`. CKvInvalidNamespaceException "Namespace Restriction must have a value" without a
    /// list, "Target Namespace must have a value" when such a namespace is needed and null.
    explicit CAttributeCol(const char* restriction = "##any", const char* targetNamespace = "");
    CAttributeCol(const CAttributeCol&);
    CAttributeCol& operator=(const CAttributeCol&);
    CAttributeCol(CAttributeCol&&) noexcept;
    CAttributeCol& operator=(CAttributeCol&&) noexcept;
    ~CAttributeCol() override;

    /// Appends. CKvInvalidNamespaceException "Invalid Namespace [%s]." when the restriction rejects `ns`. A
    /// second attribute of one name and namespace is refused when the attributes are written.
    CSmartPtr<CAttribute> Add(const char* name, const char* ns, const char* value);
    /// Appends an attribute, which is shared. CKvInvalidNamespaceException "Invalid Attribute [%s]. The
    /// attributes namespace is Inappropriate." when the restriction rejects it; writing checks that again.
    void Add(const CSmartPtr<CAttribute>& attribute);
    void push_back(const CSmartPtr<CAttribute>& attribute) { Add(attribute); }
    /// Gives the attribute of that name and namespace a value; appends it when there is none. Errors as
    /// those of a new attribute.
    CSmartPtr<CAttribute> Set(const char* name, const char* ns, const char* value);
    /// First attribute of that name and namespace, or null.
    CSmartPtr<CAttribute> Find(std::string_view name, std::string_view ns) const;
    /// Removes the first attribute of that name and namespace; returns whether there was one.
    bool Remove(std::string_view name, std::string_view ns);
    using CXmlCollection::Remove;

    /// Whether the restriction admits the namespace.
    bool AcceptsNamespace(std::string_view ns) const noexcept;

    /// For the library: appends a copy of a document's attribute; errors as Add.
    void AddFrom(const CXmlAttribute& attribute);
    /// For the library: writes the attributes but those that `except`, which may be null, has too.
    void Write(internal::CTreeOutput& output, const internal::CAttributeNames* except) const;
    /// For the library: whether one is an xsi:type that names a type of no namespace.
    bool HasBareType() const noexcept;

protected:
    /// Writes the attributes into the open start tag. CKvInvalidStateException when two of them have one name
    /// and namespace, or a name is no XML name.
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    /// Attributes are no elements: throws CKvException.
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;

private:
    void CheckNamespace(const CAttribute& attribute) const;
    void CheckUnique() const;

    internal::CSharedName m_restriction;
    internal::CSharedName m_targetNamespace;
};

}  // namespace KvXmlLib16
