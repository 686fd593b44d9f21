/// GPX 1.1 type extensionsType: content of other schemas.
///
/// Untyped content is not kept: whatever the element holds is accepted and skipped when it is read, and an
/// empty element is written back. `HasDroppedContent` tells whether anything was lost.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <string>

#include "kvxml/runtime/xml_generated_class.h"

namespace Gpx {

class CExtensionsType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CExtensionsType() : CExtensionsType(nullptr) {}
    explicit CExtensionsType(const char* elementName);
    CExtensionsType(const CExtensionsType&) = delete;
    CExtensionsType& operator=(const CExtensionsType&) = delete;
    ~CExtensionsType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    /// The element that was read had attributes, child elements or text, which were not kept.
    bool HasDroppedContent() const { return m_hasDroppedContent; }

protected:
    KvXmlLib16::CXmlElement* FromXml_Int(KvXmlLib16::CXmlElement* element, KvXmlLib16::CXmlElement* cursor,
                                         const KvXmlLib16::CSerializationContext& context,
                                         bool suppressChoiceError) override;
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;

private:
    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[1];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    bool m_hasDroppedContent = false;
};

}  // namespace Gpx
