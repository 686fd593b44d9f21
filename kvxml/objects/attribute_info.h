/// Records that describe the attributes of generated classes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/types/item_type.h"
#include "kvxml/types/primitive_restrictions.h"
#include "kvxml/types/whitespace_utils.h"

namespace KvXmlLib16 {
class CSerializationContext;
class CXmlAttribute;
class CXmlGeneratedClass;
class CXmlObjectBase;
class CXmlWriter;
struct KvVariant;
}  // namespace KvXmlLib16

namespace KvXmlLib16Data {

using KvXmlLib16::CPrimitiveRestrictions;
using KvXmlLib16::CSerializationContext;
using KvXmlLib16::CWhitespaceUtils;
using KvXmlLib16::CXmlAttribute;
using KvXmlLib16::CXmlGeneratedClass;
using KvXmlLib16::CXmlObjectBase;
using KvXmlLib16::CXmlWriter;
using KvXmlLib16::ItemType;
using KvXmlLib16::KvVariant;

/// Base of the attribute records: name, namespace, property and default value of one attribute.
///
/// Records are created once per generated class, never change, and are shared by all instances and threads.
class KVXML_EXPORT CAttributeInfo {
public:
    virtual ~CAttributeInfo();
    /// Writes the owner's attribute into the open start tag, unless it is optional and unset, or optional,
    /// equal to its default and the context leaves such attributes out.
    virtual void AttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                CXmlWriter* writer) = 0;
    /// Takes the attribute into the owner's property when it is this record's. Returns whether it was.
    /// CKvValidationException with the path of the attribute when the value does not fit.
    virtual bool AttributeFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                  CXmlAttribute* attribute) = 0;
    /// Called after all attributes of an element were offered; CKvValidationException "Failed to find the
    /// required Attribute [%s]." when the attribute is required and was not found.
    virtual void Validate(const CSerializationContext& context, bool found) = 0;

    /// As AttributeFromXml for an attribute whose name the record has claimed before. Here it asks again.
    virtual void ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                             CXmlAttribute* attribute);

    const std::string& GetAttributeName() const noexcept { return m_name; }
    const std::string& GetAttributeNamespace() const noexcept { return m_namespace; }
    int GetPropertyIndex() const noexcept { return m_propertyIndex; }

protected:
    /// `optional`: the attribute may be absent. A null `defaultValue` counts as empty, that is none.
    CAttributeInfo(const char* name, const char* ns, int propertyIndex, bool optional,
                   const char* defaultValue);
    CAttributeInfo(const CAttributeInfo&);
    CAttributeInfo& operator=(const CAttributeInfo&);

    bool IsThisAttribute(const CSerializationContext& context, const CXmlAttribute* attribute) const;
    void InvokePropertyGet(const CXmlGeneratedClass* owner, KvVariant& value) const;
    void ReadProperty(const CXmlGeneratedClass* owner, KvVariant& value) const {
        InvokePropertyGet(owner, value);
    }
    void InvokePropertySet(CXmlGeneratedClass* owner, KvVariant& value, const CXmlAttribute& attribute) const;
    /// Reads the property for output. False when it is optional and not set; CKvInvalidParamException when a
    /// required one is not set.
    bool ReadForOutput(const CXmlGeneratedClass* owner, KvVariant& value) const;
    /// Writes `text` unless the context leaves out optional attributes that equal their default.
    void WriteAttribute(const CSerializationContext& context, CXmlWriter* writer, std::string_view text,
                        ItemType type, bool isCanonical) const;
    void RequireFound(bool found) const;

    static void TestNamespace(const CXmlObjectBase* object, const char* ns, const char* allowed,
                              const char* targetNs);
    static bool IsNamespaceValid(const CXmlObjectBase* object, const char* ns, const char* allowed,
                                 const char* targetNs);
    static std::string GetTargetNamespace(const CXmlObjectBase* object);
    static void ToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer, bool isRoot,
                          const char* namespaceUri, const CSerializationContext& context);

    std::uint32_t m_nameId;  // of name and namespace, for writers
    std::string m_name;
    std::string m_namespace;
    int m_propertyIndex;
    bool m_optional;
    std::string m_defaultValue;
};

/// An attribute with a primitive value.
class KVXML_EXPORT CAttributeInfoPrimitive : public CAttributeInfo {
public:
    CAttributeInfoPrimitive(const char* name, const char* ns, int propertyIndex, bool optional,
                            ItemType itemType, const char* formatOverride,
                            CWhitespaceUtils::WhitespaceRule rule, const CPrimitiveRestrictions& restrictions,
                            const char* defaultValue);
    CAttributeInfoPrimitive(const CAttributeInfoPrimitive&);
    CAttributeInfoPrimitive& operator=(const CAttributeInfoPrimitive&);
    ~CAttributeInfoPrimitive() override;

    void AttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                        CXmlWriter* writer) override;
    bool AttributeFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner,
                          CXmlAttribute* attribute) override;
    void Validate(const CSerializationContext& context, bool found) override;
    void ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                     CXmlAttribute* attribute) override;

private:
    void CheckRestriction(const KvVariant& value, std::string_view lexical) const;

    CPrimitiveRestrictions m_restrictions;
    ItemType m_itemType;
    std::string m_formatOverride;
    CWhitespaceUtils::WhitespaceRule m_whitespaceRule;
};

/// An attribute whose value is one of an enumeration; the property travels as i4.
class KVXML_EXPORT CAttributeInfoEnum : public CAttributeInfo {
public:
    /// `enumFromString` throws CKvInvalidValueException for a text that is none of the enumeration.
    CAttributeInfoEnum(const char* name, const char* ns, int propertyIndex, bool optional,
                       const char* (*enumToString)(int), int (*enumFromString)(const char*),
                       const char* defaultValue);
    CAttributeInfoEnum(const CAttributeInfoEnum&);
    CAttributeInfoEnum& operator=(const CAttributeInfoEnum&);
    ~CAttributeInfoEnum() override;

    void AttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                        CXmlWriter* writer) override;
    bool AttributeFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner,
                          CXmlAttribute* attribute) override;
    void Validate(const CSerializationContext& context, bool found) override;
    void ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                     CXmlAttribute* attribute) override;

private:
    const char* (*m_enumToString)(int);
    int (*m_enumFromString)(const char*);
};

/// An attribute wildcard: takes every attribute that no record before it takes and whose namespace it admits.
/// The property is a `CAttributeCol`, which the class makes when it is asked to assign an invalid value.
class KVXML_EXPORT CAttributeInfoAny : public CAttributeInfo {
public:
    /// `restriction` is the wildcard's namespace list; "##targetNamespace" and "##other" are judged against
    /// `targetNamespace`.
    CAttributeInfoAny(const char* name, const char* ns, int propertyIndex, bool optional,
                      const char* restriction, const char* targetNamespace, const char* defaultValue);
    CAttributeInfoAny(const CAttributeInfoAny&);
    CAttributeInfoAny& operator=(const CAttributeInfoAny&);
    ~CAttributeInfoAny() override;

    /// Writes the attributes of the collection. CKvInvalidStateException when two have one name.
    void AttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                        CXmlWriter* writer) override;
    bool AttributeFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner,
                          CXmlAttribute* attribute) override;
    /// A wildcard requires nothing.
    void Validate(const CSerializationContext& context, bool found) override;
    void ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                     CXmlAttribute* attribute) override;

private:
    std::string m_restriction;
    std::string m_targetNamespace;
};

}  // namespace KvXmlLib16Data
