#include "kvxml/objects/internal/write_failure.h"

#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/objects/xml_collection.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/objects/xml_type_collection.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16::internal {

namespace {

bool HasTag(const KvXmlLib16Data::CParentElementInfo& record) {
    return record.GetElementType() == KvXmlLib16Data::XmlElementType_Element;
}

}  // namespace

void CWriteFailure::NoteMember(const CXmlGeneratedClass& owner, int propertyIndex, const std::string& name,
                               CXmlWriter& writer) {
    CFailedPath& path = writer.FailedPath();
    if (!path.steps.empty()) return;
    KvVariant value;
    try {
        owner.ReadProperty(propertyIndex, value);
    } catch (const CKvException&) {
        return;
    }
    if (value.IsValid() && value.PeekXmlObject() == nullptr && value.PeekXmlCollection() == nullptr) {
        const CXmlObjectBase* const base = &owner;
        path.steps.push_back({name, {base, propertyIndex}});
    }
}

void CWriteFailure::NoteItem(const CXmlTypeCollection& collection, std::int32_t index, CXmlWriter& writer) {
    const CXmlObjectBase* const base = &collection;
    writer.FailedPath().steps.push_back({std::string(base->GetElementNameView()), {base, index}});
}

void CWriteFailure::NoteObject(const CXmlGeneratedClass& object, CXmlWriter& writer) {
    if (!HasTag(*object.GetClassInfo())) return;
    auto& steps = writer.FailedPath().steps;
    if (!steps.empty()) {
        Place place{steps.back()};
        VisitChildren(object, place);
        steps.back().position = place.Result();
    }
    const CXmlObjectBase* const base = &object;
    steps.push_back({std::string(object.EffectiveElementName()), {base}});
}

bool CWriteFailure::VisitObject(const CXmlObjectBase& object, Place& place) {
    std::string_view name = object.GetElementNameView();
    if (const auto* generated = dynamic_cast<const CXmlGeneratedClass*>(&object)) {
        if (!HasTag(*generated->GetClassInfo())) return VisitChildren(*generated, place);
        name = generated->EffectiveElementName();
    }
    place.Visit(name, {&object});
    return true;
}

bool CWriteFailure::VisitChildren(const CXmlGeneratedClass& owner, Place& place) {
    const bool isChoice =
        owner.GetClassInfo()->GetElementGroupType() == KvXmlLib16Data::XmlElementGroupType_Choice;
    bool isAny = false;
    for (KvXmlLib16Data::CElementInfo** record = owner.GetClassElementInfo();
         record != nullptr && *record != nullptr; ++record) {
        const int propertyIndex = (*record)->GetPropertyIndex();
        KvVariant value;
        try {
            owner.ReadProperty(propertyIndex, value);
        } catch (const CKvException&) {
            continue;  // then nothing of it was written
        }
        if (const CXmlObjectBase* const object = value.PeekXmlObject()) {
            isAny = VisitObject(*object, place) || isAny;
        } else if (const CXmlCollectionBase* const collection = value.PeekXmlCollection()) {
            if (const auto* objects = dynamic_cast<const CXmlCollection*>(collection)) {
                for (const auto* node = objects->Head(); node != nullptr; node = node->next)
                    isAny = VisitObject(*node->item.Get(), place) || isAny;
            } else {
                const CXmlObjectBase* const base = collection;
                for (std::int32_t i = 0; i < collection->GetCount(); ++i)
                    place.Visit(base->GetElementNameView(), {base, i});
                isAny = isAny || collection->GetCount() > 0;
            }
        } else if (value.IsValid()) {
            const CXmlObjectBase* const base = &owner;
            place.Visit((*record)->GetElementName(), {base, propertyIndex});
            isAny = true;
        }
        if (isChoice && isAny) break;
    }
    return isAny;
}

}  // namespace KvXmlLib16::internal
