/// What reader, writer and records of generated classes reach of the classes that they drive.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>

#include "kvxml/base/shared_name.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/table_class.h"
#include "kvxml/objects/variant.h"
#include "kvxml/objects/xml_collection.h"

namespace KvXmlLib16::internal {

class CTableAccess {
public:
    // --- objects
    static void SetName(CXmlObjectBase& object, const CSharedName& name) { object.SetElementName(name); }
    static std::string_view NameOf(const CXmlObjectBase& object) { return object.GetElementNameView(); }
    static CXmlObjectBase* PrepareNew(CXmlObjectBase* object) { return CXmlObjectBase::PrepareNew(object); }
    static bool BeginRead(CXmlObjectBase& object) noexcept { return object.BeginRead().isNew; }
    static void Write(const CXmlObjectBase& object, CXmlWriter& writer, const char* ns,
                      const CSerializationContext& context) {
        object.ToXml_Int(&writer, false, ns, context, false);
    }
    static void Read(CXmlObjectBase& object, CXmlElement& element, CXmlElement* cursor,
                     const CSerializationContext& context) {
        object.FromXml_Int(&element, cursor, context, false);
    }
    static std::string_view NameToWrite(const CTableClass& object) { return object.EffectiveElementName(); }
    static void WriteStart(const CTableClass& object, CXmlWriter& writer, bool isRoot, std::string_view name,
                           std::string_view ns, const CSerializationContext& context) {
        object.WriteStart(&writer, isRoot, name, ns, context);
    }
    static std::string_view WriteInLineSchema(CXmlWriter& writer, const CSerializationContext& context) {
        return CXmlGeneratedClass::WriteInLineSchema(&writer, context);
    }
    static std::uint64_t IdOf(const KvXmlLib16Data::CParentElementInfo& record) noexcept {
        return record.m_id;
    }

    // --- objects of generated classes
    static void Init(CTableClass& object) { object.Init(); }
    static bool IsSet(const CTableClass& object, std::uint16_t bit) noexcept { return object.IsSet(bit); }
    static void Mark(CTableClass& object, std::uint16_t bit, bool isSet) {
        isSet ? object.MarkSet(bit) : object.MarkUnset(bit);
    }
    static void Choose(CTableClass& object, const void* place) { object.Choose(place); }

    // --- collections and variants
    static void Append(CXmlCollection& list, CSmartPtr<CXmlObjectBase> item) {
        list.Insert(nullptr, std::move(item));
    }
    static const CCollectionNode* Head(const CXmlCollection& list) noexcept { return list.Head(); }
    template <class T>
    static void SetVariant(KvVariant& variant, ItemType type, T value) noexcept {
        variant.Set(type, std::move(value));
    }
    template <class T>
    static const T& ValueOf(const KvVariant& variant) noexcept {
        return variant.As<T>();
    }
};

}  // namespace KvXmlLib16::internal
