#include "kvxml/objects/table_class.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/attribute_col.h"
#include "kvxml/objects/element.h"
#include "kvxml/objects/internal/table_access.h"
#include "kvxml/objects/internal/table_objects.h"
#include "kvxml/objects/internal/table_reader.h"
#include "kvxml/objects/internal/table_records.h"
#include "kvxml/objects/internal/table_writer.h"
#include "kvxml/objects/table_members.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16 {

using internal::CTableAccess;
using internal::CTableMember;
using internal::CTableNode;
using internal::CTableObjectRules;
using internal::CTableReader;
using internal::CTableRecords;
using internal::CTableWriter;
using internal::IsMemberUsed;
using internal::PlaceIn;
using internal::VisitHeldType;

namespace {

const CTableRecords& RecordsOf(const CTableClass& object) {
    return CTableRecords::Of(object.GetClassTable());
}

/// The member that lives at `place`; every place that accessors pass is one.
const CTableMember& MemberAt(const CTableClass& object, const void* place) {
    const CTableRecords& records = RecordsOf(object);
    const int index = records.MemberAt(object, place);
    if (index < 0) throw CKvInvalidParamException("The data member is none of the class's table.");
    return records.members[static_cast<std::size_t>(index)];
}

/// Makes the member as in a new object.
void UnsetMember(CTableClass& object, const CTableMember& record) {
    const CMember& member = *record.member;
    const CMemberPlace& place = member.place;
    if (member.bit != CMember::kNoBit) CTableAccess::Mark(object, member.bit, false);
    if (member.nilBit != CMember::kNoBit) CTableAccess::Mark(object, member.nilBit, false);
    switch (place.GetKind()) {
        case CMemberPlace::Kind::Object:
            return place.Object(object).Reset();
        case CMemberPlace::Kind::Collection:
            return place.Collection(object).Reset();
        case CMemberPlace::Kind::Attributes:
            return place.Attributes(object).Reset();
        case CMemberPlace::Kind::Untyped:
            return place.Untyped(object).Reset();
        default:
            break;
    }
    VisitHeldType(record.value->Item(), [&](auto* tag) {
        using T = std::remove_pointer_t<decltype(tag)>;
        // While an attribute is missing its default holds; an element that is missing has no value.
        const bool hasDefault = record.defaultValue.IsValid() && member.kind == CMember::Kind::Attribute;
        PlaceIn<T>(place, object) = hasDefault ? CTableAccess::ValueOf<T>(record.defaultValue) : T();
    });
}

}  // namespace

CTableClass::CTableClass(const char* elementName) {
    if (elementName != nullptr) SetElementName(elementName);
}

CTableClass::~CTableClass() = default;

std::string CTableClass::GetNamespace() const {
    return GetClassTable().namespaceUri;
}

std::string CTableClass::GetTargetNamespace() const {
    return GetClassTable().namespaceUri;
}

// --- accessors ---------------------------------------------------------------------------------------------

bool CTableClass::IsSetFar(std::uint16_t bit) const noexcept {
    const std::size_t word = bit / 64 - 1U;
    return word < m_moreBits.size() && (m_moreBits[word] >> bit % 64 & 1) != 0;
}

void CTableClass::MarkSetFar(std::uint16_t bit, bool isSet) {
    const std::size_t word = bit / 64 - 1U;
    if (word >= m_moreBits.size()) {
        if (!isSet) return;
        m_moreBits.resize(word + 1);
    }
    const std::uint64_t mask = std::uint64_t{1} << bit % 64;
    m_moreBits[word] = isSet ? m_moreBits[word] | mask : m_moreBits[word] & ~mask;
}

void CTableClass::Choose(const void* place) {
    const CTableRecords& records = RecordsOf(*this);
    const CTableMember& chosen = MemberAt(*this, place);
    if (chosen.node == CTableMember::kNoNode) return;
    std::uint16_t inner = chosen.node;
    while (inner != 0) {
        const std::uint16_t outer = records.nodes[inner].parent;
        const CTableNode& group = records.nodes[outer];
        if (group.kind == CContentNode::Kind::Choice) {
            for (std::size_t i = outer + 1U; i < group.end; ++i) {
                const bool isOther = i < inner || i >= records.nodes[inner].end;
                if (isOther && records.nodes[i].kind == CContentNode::Kind::Member) {
                    const CTableMember& other = records.members[records.nodes[i].member];
                    if (IsMemberUsed(*this, other)) UnsetMember(*this, other);
                }
            }
        }
        inner = outer;
    }
}

void CTableClass::ThrowNotSet(const void* place) const {
    throw CKvInvalidStateException(
        FormatString("The member [%s] is not set.", MemberAt(*this, place).Label()));
}

const CXmlObjectBase& CTableClass::Held(const CSmartPtr<CXmlObjectBase>& place) const {
    if (place == nullptr) ThrowNotSet(&place);
    return *place;
}

CXmlObjectBase& CTableClass::Made(CSmartPtr<CXmlObjectBase>& place) {
    if (place == nullptr) place = CTableObjectRules::New(MemberAt(*this, &place));
    return *place;
}

void CTableClass::Take(CSmartPtr<CXmlObjectBase>& place, CXmlObjectBase* object) {
    const CTableMember& member = MemberAt(*this, &place);
    if (object == nullptr) return UnsetMember(*this, member);
    CTableObjectRules::Admit(member, *object);
    Choose(&place);
    place = object;
}

CXmlCollectionBase& CTableClass::Made(CSmartPtr<CXmlCollectionBase>& place) {
    if (place == nullptr || place->empty()) Choose(&place);
    if (place == nullptr) place = CTableObjectRules::NewList(*this, MemberAt(*this, &place));
    return *place;
}

CAttributeCol& CTableClass::Made(CSmartPtr<CAttributeCol>& place) {
    if (place == nullptr) place = new CAttributeCol();
    return *place;
}

void CTableClass::Unset(const void* place) {
    UnsetMember(*this, MemberAt(*this, place));
}

// --- properties --------------------------------------------------------------------------------------------

void CTableClass::Init() {
    for (const CTableMember& member : RecordsOf(*this).members)
        UnsetMember(*this, member);
    m_bits = 0;
    m_moreBits.clear();
    m_isNil = false;
}

std::uint64_t CTableClass::GetUsedProperties() const {
    const auto& members = RecordsOf(*this).members;
    std::uint64_t used = 0;
    for (std::size_t i = 0; i < members.size() && i < 64; ++i)
        used |= std::uint64_t{IsMemberUsed(*this, members[i])} << i;
    return used;
}

void CTableClass::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    const auto& members = RecordsOf(*this).members;
    if (propertyIndex < 0 || static_cast<std::size_t>(propertyIndex) >= members.size()) return;
    const CTableMember& record = members[static_cast<std::size_t>(propertyIndex)];
    if (read) {
        const CMemberPlace& place = record.member->place;
        const bool isThere = place.GetKind() == CMemberPlace::Kind::Collection
                                 ? place.Collection(*this) != nullptr
                                 : IsMemberUsed(*this, record);
        if (isThere) internal::GetMember(*this, record, value);
    } else {
        internal::SetMember(*this, record, value);
    }
}

CParentElementInfo* CTableClass::GetClassInfo() const {
    return RecordsOf(*this).classInfo.get();
}

CElementInfo** CTableClass::GetClassElementInfo() const {
    return const_cast<CElementInfo**>(RecordsOf(*this).elementInfo.data());
}

CAttributeInfo** CTableClass::GetClassAttributeInfo() const {
    return const_cast<CAttributeInfo**>(RecordsOf(*this).attributeInfo.data());
}

// --- the driver --------------------------------------------------------------------------------------------

CXmlElement* CTableClass::FromXml_Int(CXmlElement* element, CXmlElement* cursor,
                                      const CSerializationContext& context, bool) {
    return CTableReader::ReadRoot(*this, *element, cursor, context);
}

void CTableClass::ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                            const CSerializationContext& context, bool) const {
    CTableWriter(*writer, context).WriteRoot(*this, isRoot, namespaceUri);
}

void CTableClass::AttributesToXml_Int(CXmlWriter* writer, const CSerializationContext& context) const {
    CTableWriter(*writer, context).WriteAttributes(*this);
}

}  // namespace KvXmlLib16
