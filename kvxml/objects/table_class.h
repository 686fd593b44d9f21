/// Base of the classes that `kvxml generate` writes: everything that they do, by their tables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/export.h"
#include "kvxml/objects/class_table.h"
#include "kvxml/objects/nillable.h"
#include "kvxml/objects/xml_generated_class.h"

namespace KvXmlLib16 {

/// An object of a class made from a schema. One thread at a time changes an object; any number of threads may
/// read, copy and write it while none does.
///
/// Copies of objects are made by Clone and CopyFrom; objects are compared by `==`.
class KVXML_EXPORT CTableClass : public CXmlGeneratedClass, public INillable {
public:
    CTableClass(const CTableClass&) = delete;
    CTableClass& operator=(const CTableClass&) = delete;
    ~CTableClass() override;

    CXmlObjectBase* GetBase() override { return this; }
    std::string GetNamespace() const override;
    std::string GetTargetNamespace() const override;
    /// The table of the object's own class.
    virtual const CClassTable& GetClassTable() const noexcept = 0;

    /// The element is written as nil, with its attributes only (`xsi:nil`). Only where the schema lets the
    /// element be nil; what else it holds is not written.
    bool IsNil() const noexcept override { return m_isNil; }
    void SetNil(bool isNil) noexcept override { m_isNil = isNil; }

protected:
    /// Null: the object is written under the name of the member that holds it, or of its class.
    explicit CTableClass(const char* elementName = nullptr);

    // --- for accessors --------------------------------------------------------------------------------

    bool IsSet(std::uint16_t bit) const noexcept {
        return bit < 64 ? (m_bits >> bit & 1) != 0 : IsSetFar(bit);
    }
    void MarkSet(std::uint16_t bit) noexcept {
        if (bit < 64) {
            m_bits |= std::uint64_t{1} << bit;
        } else {
            MarkSetFar(bit, true);
        }
    }
    void MarkUnset(std::uint16_t bit) noexcept {
        if (bit < 64) {
            m_bits &= ~(std::uint64_t{1} << bit);
        } else {
            MarkSetFar(bit, false);
        }
    }
    /// Before a member of a choice is set: unsets the members of the other branches. `place`: the data
    /// member.
    void Choose(const void* place);
    /// The object that a member holds; CKvInvalidStateException "The member [%s] is not set." when it holds
    /// none. `place`: the data member.
    const CXmlObjectBase& Held(const CSmartPtr<CXmlObjectBase>& place) const;
    /// The same, made when there is none.
    CXmlObjectBase& Made(CSmartPtr<CXmlObjectBase>& place);
    /// Takes an object (null: unsets the member). CKvInvalidParamException for one of a class that the member
    /// does not admit.
    void Take(CSmartPtr<CXmlObjectBase>& place, CXmlObjectBase* object);
    /// The collection of a repeated member, made when there is none.
    CXmlCollectionBase& Made(CSmartPtr<CXmlCollectionBase>& place);
    CAttributeCol& Made(CSmartPtr<CAttributeCol>& place);
    /// CKvInvalidStateException "The member [%s] is not set." for the member that lives at `place`.
    [[noreturn]] void ThrowNotSet(const void* place) const;
    /// The member at `place` becomes as in a new object.
    void Unset(const void* place);

    // --- the driver -----------------------------------------------------------------------------------

    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    void AttributesToXml_Int(CXmlWriter* writer, const CSerializationContext& context) const override;
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;
    void AccessProperty(int propertyIndex, bool read, KvVariant& value) override;
    CParentElementInfo* GetClassInfo() const override;
    CElementInfo** GetClassElementInfo() const override;
    CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    friend class CMemberPlace;
    friend class internal::CTableAccess;
    template <class T>
    friend class CObjectsOf;
    template <class T>
    friend class CValuesOf;

    bool IsSetFar(std::uint16_t bit) const noexcept;
    void MarkSetFar(std::uint16_t bit, bool isSet);

    std::uint64_t m_bits = 0;
    std::vector<std::uint64_t> m_moreBits;  // from bit 64 on
    bool m_isNil = false;
};

/// Object as `T`, or null when it is of another class. By the tables: no type information of C++ is needed.
template <class T>
T* As(CTableClass& object) noexcept {
    for (const CClassTable* table = &object.GetClassTable(); table != nullptr; table = table->base) {
        if (table == &T::kTable) return static_cast<T*>(&object);
    }
    return nullptr;
}
template <class T>
const T* As(const CTableClass& object) noexcept {
    return As<T>(const_cast<CTableClass&>(object));
}

}  // namespace KvXmlLib16
