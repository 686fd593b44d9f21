#include "tests/support/fixture_model.h"

#include <gtest/gtest.h>

#include "tests/support/error_of.h"
#include "tests/support/xml_tree_dump.h"

namespace fixture {

namespace {

constexpr auto kNoRule = CWhitespaceUtils::WhitespaceRule_None;

CWhitespaceUtils::WhitespaceRule RuleOf(ItemType type) {
    return type == ItemType_string ? CWhitespaceUtils::WhitespaceRule_Preserve
                                   : CWhitespaceUtils::WhitespaceRule_Collapse;
}

template <template <RecordGroup, RecordCardinality> class Record, class... Arguments>
CElementInfo* NewSingle(XmlElementGroupType group, RecordCardinality cardinality,
                        const Arguments&... arguments) {
    const bool mandatory = cardinality == kMnd;
    switch (group) {
        case XmlElementGroupType_Sequence:
            if (mandatory) return new Record<RecordGroup::Seq, kMnd>(arguments...);
            return new Record<RecordGroup::Seq, kOpt>(arguments...);
        case XmlElementGroupType_All:
            if (mandatory) return new Record<RecordGroup::All, kMnd>(arguments...);
            return new Record<RecordGroup::All, kOpt>(arguments...);
        default:
            if (mandatory) throw std::logic_error("a choice has no mandatory members");
            return new Record<RecordGroup::Choice, kOpt>(arguments...);
    }
}

template <template <RecordGroup> class Record, class... Arguments>
CElementInfo* NewCol(XmlElementGroupType group, const Arguments&... arguments) {
    if (group == XmlElementGroupType_Sequence) return new Record<RecordGroup::Seq>(arguments...);
    if (group == XmlElementGroupType_All) return new Record<RecordGroup::All>(arguments...);
    return new Record<RecordGroup::Choice>(arguments...);
}
template <RecordGroup group>
using ClsColOf = CElementInfoObjectCol<group, false>;
template <RecordGroup group>
using AbsClsColOf = CElementInfoObjectCol<group, true>;

}  // namespace

CSerializationContext Ignoring(const std::string& letters) {
    CSerializationContext context;
    for (const char letter : letters) {
        if (letter == 'a') context.SetIgnoreUnknownAttributes(true);
        if (letter == 'e') context.SetIgnoreUnknownElements(true);
        if (letter == 'm') context.SetIgnoreMissingMandatoryElements(true);
        if (letter == 'c') context.SetIgnoreInvalidCollectionCounts(true);
        if (letter == 'h') context.SetIgnoreMissingChoice(true);
        if (letter == 'n') context.SetIgnoreNamespaces(true);
    }
    context.SetDefaultNamespaceURI(kNamespace);
    return context;
}

std::string Outcome(const Model& model, const std::string& attributes, const std::string& content,
                    const char* ignore) {
    const std::string start = "<" + std::string(model.Name()) + " xmlns=\"urn:fixture\"";
    const std::string end = "</" + std::string(model.Name()) + ">";
    const std::string prefixes =
        " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:f='urn:fixture'";
    const CSmartPtr<Object> object(new Object(model));
    const CSerializationContext context = Ignoring(ignore);
    std::string xml;
    const std::string error = ErrorOf([&] {
        object->FromXml((start + prefixes + attributes + ">" + content + end).c_str(), context);
        xml = object->ToXml(false, false, EOLType_LF, context);
    });
    if (error != "(no error)") return error;
    xml.erase(0, start.size());
    if (xml.size() > end.size() && xml.compare(xml.size() - end.size(), end.size(), end) == 0)
        xml.erase(xml.size() - end.size());
    return xml;
}

void ExpectOutcomes(const Model& model, const std::vector<OutcomeRow>& rows) {
    for (const OutcomeRow& row : rows) {
        SCOPED_TRACE(std::string(model.Name()) + row.attributes + ": " + row.content + " ignoring [" +
                     row.ignore + "]");
        EXPECT_EQ(Outcome(model, row.attributes, row.content, row.ignore), row.outcome);
    }
}

// --- models ------------------------------------------------------------------------------------------------

Model& Model::New(const char* name, XmlElementGroupType group, XmlElementType type) {
    static auto& all = *new std::vector<Model*>();
    all.push_back(new Model(name, group, type));
    return *all.back();
}

Model& Model::Derived() {
    m_isDerived = true;
    return *this;
}

int Model::Add(PropertyInfo info) {
    m_properties.push_back(std::move(info));
    return static_cast<int>(m_properties.size()) - 1;
}

Model& Model::AddElement(CElementInfo* record) {
    m_elements.insert(m_elements.end() - 1, record);
    return *this;
}

bool Model::Has(const std::string& property) const {
    for (const PropertyInfo& info : m_properties) {
        if (info.name == property) return true;
    }
    return false;
}

int Model::Index(const std::string& property) const {
    for (std::size_t i = 0; i < m_properties.size(); ++i) {
        if (m_properties[i].name == property) return static_cast<int>(i);
    }
    throw std::logic_error("no property " + property);
}

CParentElementInfo* Model::Info() const {
    std::call_once(m_infoIsMade, [this] {
        m_info = new CParentElementInfo(m_group, m_type, m_name, kNamespace,
                                        !m_hasTaglessMembers && m_type == XmlElementType_Element, m_isDerived,
                                        m_textProperty, m_textType, m_textFormat, m_isTextKept);
    });
    return m_info;
}

Model& Model::Text(ItemType type, const char* format, bool isKeptAsText) {
    m_textProperty = Add({"text", type, type == ItemType_string ? "" : nullptr});
    m_textType = type;
    m_textFormat = format;
    m_isTextKept = isKeptAsText;
    return *this;
}

Model& Model::AddAttribute(CAttributeInfo* record) {
    m_attributes.insert(m_attributes.end() - 1, record);
    return *this;
}

Model& Model::Attribute(const char* name, ItemType type, bool optional, const char* initial,
                        const CPrimitiveRestrictions& facets, const char* ns) {
    const int index = Add({name, type, initial});
    return AddAttribute(
        new CAttributeInfoPrimitive(name, ns, index, optional, type, "", RuleOf(type), facets, initial));
}

Model& Model::EnumAttribute(const char* name, bool optional, const char* byDefault) {
    const int index = Add({name, ItemType_i4});
    return AddAttribute(
        new CAttributeInfoEnum(name, "", index, optional, ColorToString, ColorFromString, byDefault));
}

Model& Model::AnyAttribute(const char* name, const char* restriction) {
    PropertyInfo info{name};
    info.makeCollection = [restriction]() -> CSmartPtr<CXmlCollectionBase> {
        return new CAttributeCol(restriction, kNamespace);
    };
    const int index = Add(std::move(info));
    return AddAttribute(new CAttributeInfoAny(name, "", index, true, restriction, kNamespace, nullptr));
}

Model& Model::Prim(const char* name, RecordCardinality cardinality, ItemType type, const char* format,
                   const char* byDefault, const CPrimitiveRestrictions& facets) {
    const int index = Add({name, type});
    return AddElement(NewSingle<CElementInfoPrim>(m_group, cardinality, name, kNamespace, index,
                                                  cardinality == kOpt, type, format, RuleOf(type), facets,
                                                  byDefault));
}

Model& Model::Enum(const char* name, RecordCardinality cardinality, const char* byDefault) {
    const int index = Add({name, ItemType_i4});
    return AddElement(NewSingle<CElementInfoEnum>(m_group, cardinality, name, kNamespace, index,
                                                  cardinality == kOpt, ColorToString, ColorFromString,
                                                  byDefault));
}

Model& Model::AddCls(PropertyInfo info, RecordCardinality cardinality, XmlElementType type,
                     ObjectFactory factory, bool required) {
    const char* name = info.name;
    info.isAlwaysThere = cardinality == kMnd;
    m_hasTaglessMembers |= type != XmlElementType_Element;
    const int index = Add(std::move(info));
    return AddElement(NewSingle<CElementInfoCls>(m_group, cardinality, name, kNamespace, index, type, factory,
                                                 0, required));
}

Model& Model::AbsCls(const char* name, RecordCardinality cardinality, SubstitutionFactory factory) {
    return AddElement(NewSingle<CElementInfoAbsCls>(m_group, cardinality, name, kNamespace, Add({name}),
                                                    XmlElementType_Element, factory));
}

Model& Model::Untpd(const char* name, RecordCardinality cardinality, const char* restriction) {
    const char* tag = *restriction == '\0' ? name : "";
    return AddElement(NewSingle<CElementInfoUntpd>(m_group, cardinality, tag, kNamespace, Add({name}),
                                                   restriction, kNamespace));
}

Model& Model::AddObjectCol(PropertyInfo info, XmlElementType type, bool isAbstract) {
    m_hasTaglessMembers |= type != XmlElementType_Element;
    const char* name = info.name;
    const int index = Add(std::move(info));
    return AddElement(isAbstract ? NewCol<AbsClsColOf>(m_group, name, kNamespace, index, type)
                                 : NewCol<ClsColOf>(m_group, name, kNamespace, index, type));
}

Model& Model::UntpdCol(const char* name, int minOccurs, int maxOccurs, const char* restriction) {
    const char* tag = *restriction == '\0' ? name : "";
    PropertyInfo info{name};
    info.makeCollection = [=]() -> CSmartPtr<CXmlCollectionBase> {
        return new CElementCol(tag, kNamespace, minOccurs, maxOccurs, restriction, kNamespace);
    };
    return AddElement(NewCol<CElementInfoUntpdCol>(m_group, tag, kNamespace, Add(std::move(info))));
}

Model& Model::PrimCol(const char* name, MakeCollection make) {
    PropertyInfo info{name};
    info.makeCollection = std::move(make);
    return AddElement(NewCol<CElementInfoPrimCol>(m_group, name, kNamespace, Add(std::move(info))));
}

Model& Model::AnyCol(const char* name, MakeCollection make) {
    PropertyInfo info{name};
    info.makeCollection = std::move(make);
    return AddElement(NewCol<CElementInfoCol>(m_group, name, kNamespace, Add(std::move(info))));
}

Model& Model::EnumCol(const char* name, int minOccurs, int maxOccurs) {
    PropertyInfo info{name};
    info.makeCollection = [=]() -> CSmartPtr<CXmlCollectionBase> {
        return new CXmlEnumCollection(name, kNamespace, minOccurs, maxOccurs, ColorToString, ColorFromString);
    };
    if (m_group == XmlElementGroupType_All) return AnyCol(name, info.makeCollection);
    const int index = Add(std::move(info));
    if (m_group == XmlElementGroupType_Choice)
        return AddElement(new CElementInfoChoiceEnumCol(name, kNamespace, index));
    return AddElement(new CElementInfoSeqEnumCol(name, kNamespace, index));
}

// --- objects -----------------------------------------------------------------------------------------------

Object::Object(const Model& model) : m_model(model) {
    if (model.Type() == XmlElementType_Element) SetElementName(model.Name());
    Object::Init();
}

void Object::Init() {
    m_values.assign(m_model.m_properties.size(), KvVariant());
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        const Model::PropertyInfo& info = m_model.m_properties[i];
        if (info.initial != nullptr) m_values[i].FromString(info.initial, info.type, kNoRule);
        if (info.isAlwaysThere) Create(info.name);
    }
}

void Object::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    const auto index = static_cast<std::size_t>(propertyIndex);
    KvVariant& own = m_values.at(index);
    if (read) {
        // Not counted, so that whoever keeps what it reads for too long is found out.
        if (own.PeekXmlObject() != nullptr)
            value.SetXmlObjectReference(own.PeekXmlObject());
        else if (own.PeekXmlCollection() != nullptr)
            value.SetXmlCollectionReference(own.PeekXmlCollection());
        else if (own.IsValid())
            value = own;
    } else if (value.IsValid() || !m_model.m_properties[index].makeCollection) {
        own = value;
    } else {
        own.SetXmlCollection(m_model.m_properties[index].makeCollection().Get());
    }
}

Object& Object::Set(const std::string& property, std::string_view text) {
    const auto index = static_cast<std::size_t>(m_model.Index(property));
    m_values[index].FromString(text, m_model.m_properties[index].type, kNoRule);
    return *this;
}

Object& Object::Create(const std::string& property) {
    const auto index = static_cast<std::size_t>(m_model.Index(property));
    const CSmartPtr<Object> object = m_model.m_properties[index].makeObject();
    return Hold(property, object.Get());
}

Object& Object::Hold(const std::string& property, Object* object) {
    // An object of a class that depends on the element keeps its own name.
    const auto index = static_cast<std::size_t>(m_model.Index(property));
    const bool hasTag = object->m_model.Type() == XmlElementType_Element;
    if (m_model.m_properties[index].makeObject && hasTag) object->SetElementName(property);
    m_values[index].SetXmlObject(object);
    return *object;
}

Object& Object::At(const std::string& property) {
    return dynamic_cast<Object&>(*(*this)[property].PeekXmlObject());
}

CXmlCollectionBase& Object::Collection(const std::string& property) {
    KvVariant& value = (*this)[property];
    if (!value.IsValid()) {
        KvVariant unset;
        AccessProperty(m_model.Index(property), false, unset);
    }
    return *value.PeekXmlCollection();
}

Object& Object::AddValues(const std::string& property, const std::vector<std::string>& texts) {
    CElement run("run", kNamespace);
    for (const std::string& text : texts)
        run.AddElement(property.c_str(), kNamespace, text.c_str());
    CXmlDocument document;
    document.LoadXml(run.ToXml().c_str());
    Collection(property).FromXmlElement(document.GetDocumentElement());
    return *this;
}

ObjectList& Object::List(const std::string& property) {
    return dynamic_cast<ObjectList&>(Collection(property));
}

std::string Object::Dump() const {
    const auto dumpObject = [](CXmlObjectBase* object) {
        const auto* own = dynamic_cast<const Object*>(object);
        if (own != nullptr) return own->Dump();
        CXmlDocument document;  // prefixes do not count
        document.LoadXml(object->ToXml().c_str());
        return testsupport::Dump(document);
    };
    std::string text = m_model.Type() == XmlElementType_Element ? Name() : m_model.Name();
    if (Name() != m_model.Name() && m_model.Type() == XmlElementType_Element)
        text += std::string("/") + m_model.Name();
    const auto* nillable = dynamic_cast<const INillable*>(this);
    if (nillable != nullptr && nillable->IsNil()) text += "(nil)";
    text += '{';
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        const KvVariant& value = m_values[i];
        if (!value.IsValid()) continue;
        CXmlCollectionBase* const collection = value.PeekXmlCollection();
        if (collection != nullptr && collection->GetCount() == 0) continue;
        if (text.back() != '{') text += ' ';
        text += std::string(m_model.m_properties[i].name) + '=';
        if (value.IsNil()) {
            text += "nil";
        } else if (value.PeekXmlObject() != nullptr) {
            text += dumpObject(value.PeekXmlObject());
        } else if (collection != nullptr) {
            text += '[';
            if (dynamic_cast<CXmlTypeCollection*>(collection) != nullptr) {
                static const Model& listModel = Model::New("List").AnyCol("values", nullptr);
                const CSmartPtr<Object> list(new Object(listModel));
                (*list)["values"].SetXmlCollection(collection);
                text += list->ToXml(false, false);
            }
            for (int item = 0; item < collection->GetCount(); ++item) {
                if (item > 0) text += ' ';
                if (auto* objects = dynamic_cast<ObjectList*>(collection)) {
                    text += objects->At(item).Dump();
                } else if (auto* elements = dynamic_cast<CElementCol*>(collection)) {
                    text += dumpObject(elements->Item(item).Get());
                } else if (auto* attributes = dynamic_cast<CAttributeCol*>(collection)) {
                    const auto attribute = attributes->Item(item);
                    text += attribute->GetName() + '=' + attribute->GetValue();
                }
            }
            text += ']';
        } else {
            text += value.GetType() + ':' + value.ToString("");
        }
    }
    return text + '}';
}

}  // namespace fixture
