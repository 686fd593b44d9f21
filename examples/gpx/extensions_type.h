/// GPX 1.1 type extensionsType: elements of other schemas, kept as they are.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/element.h"
#include "kvxml/objects/xml_generated_class.h"

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

    // any element of another namespace than GPX's: any number
    KvXmlLib16::CSmartPtr<KvXmlLib16::CElementCol> GetAny();
    bool IsValidAny() const { return m_any != nullptr && m_any->GetCount() > 0; }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_any,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[2];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    KvXmlLib16::CSmartPtr<KvXmlLib16::CElementCol> m_any;
};

}  // namespace Gpx
