/// Generated-style classes from descriptions: one class, `Object`, behaves as its `Model` says.
///
///     const Model& PointModel() {
///         static const Model& model = Model::New("Point").Attribute("id", ItemType_i4)
///                                         .Prim("X", kMnd, ItemType_r8).Prim("Y", kMnd, ItemType_r8);
///         return model;
///     }
///     using Point = Typed<PointModel>;
///
///     Point point;
///     point.Set("X", "1.5").Set("Y", "2");
///     EXPECT_EQ(point.Dump(), "Point{X=r8:1.5 Y=r8:2}");
///     ExpectOutcomes(PointModel(), {{" id='1'", "<X>1</X><Y>2</Y>", "", " id=\"1\"><X>1</X><Y>2</Y>"}});
#pragma once

#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/fixture_classes.h"

namespace fixture {

inline constexpr RecordCardinality kMnd = RecordCardinality::Mnd;
inline constexpr RecordCardinality kOpt = RecordCardinality::Opt;

class Object;

/// Collections of objects, whatever their class.
class ObjectList {
public:
    virtual ~ObjectList() = default;
    virtual Object& At(int index) = 0;
    virtual Object& AddNew() = 0;
    virtual void AddObject(Object* object) = 0;
};

/// Tables of a class, with what the generator would make of each property. Members keep the order in which
/// they are added. Lives for good.
class Model {
public:
    using MakeCollection = std::function<CSmartPtr<CXmlCollectionBase>()>;

    static Model& New(const char* name, XmlElementGroupType group = XmlElementGroupType_Sequence,
                      XmlElementType type = XmlElementType_Element);
    /// Derived in the schema.
    Model& Derived();
    /// Simple content; with `isKeptAsText` a string whatever the type is.
    Model& Text(ItemType type, const char* format = "", bool isKeptAsText = false);

    Model& Attribute(const char* name, ItemType type, bool optional = true, const char* initial = nullptr,
                     const CPrimitiveRestrictions& facets = {}, const char* ns = "");
    Model& EnumAttribute(const char* name, bool optional = true, const char* byDefault = nullptr);
    Model& AnyAttribute(const char* name, const char* restriction);

    /// Optional members are nillable.
    Model& Prim(const char* name, RecordCardinality cardinality, ItemType type, const char* format = "",
                const char* byDefault = nullptr, const CPrimitiveRestrictions& facets = {});
    Model& Enum(const char* name, RecordCardinality cardinality, const char* byDefault = nullptr);
    template <class T>
    Model& Cls(const char* name, RecordCardinality cardinality, bool required = true);
    Model& AbsCls(const char* name, RecordCardinality cardinality, SubstitutionFactory factory);
    Model& Untpd(const char* name, RecordCardinality cardinality, const char* restriction = "");
    /// Collections; -1: unbounded.
    template <class T>
    Model& ClsCol(const char* name, int minOccurs, int maxOccurs);
    /// T: base of all that the factory makes.
    template <class T>
    Model& AbsClsCol(const char* name, int minOccurs, int maxOccurs, SubstitutionFactory factory);
    Model& UntpdCol(const char* name, int minOccurs, int maxOccurs, const char* restriction = "");
    /// Of primitive values: `C` is the class of the collection.
    template <class C>
    Model& PrimCol(const char* name, int minOccurs, int maxOccurs);
    Model& PrimCol(const char* name, MakeCollection make);
    /// In an all-group, by the record for any collection.
    Model& EnumCol(const char* name, int minOccurs, int maxOccurs);
    /// Of anything, by the record that knows nothing of its items.
    Model& AnyCol(const char* name, MakeCollection make);

    const char* Name() const { return m_name; }
    XmlElementGroupType Group() const { return m_group; }
    XmlElementType Type() const { return m_type; }
    bool Has(const std::string& property) const;
    int Index(const std::string& property) const;

private:
    friend class Object;

    struct PropertyInfo {
        const char* name;
        ItemType type = ItemType_Unknown;
        const char* initial = nullptr;
        MakeCollection makeCollection = {};
        std::function<CSmartPtr<Object>()> makeObject = {};
        bool isAlwaysThere = false;
    };

    Model(const char* name, XmlElementGroupType group, XmlElementType type)
        : m_name(name), m_group(group), m_type(type) {}
    int Add(PropertyInfo info);
    Model& AddElement(CElementInfo* record);
    Model& AddAttribute(CAttributeInfo* record);
    Model& AddCls(PropertyInfo info, RecordCardinality cardinality, XmlElementType type,
                  ObjectFactory factory, bool required);
    Model& AddObjectCol(PropertyInfo info, XmlElementType type, bool isAbstract);
    CParentElementInfo* Info() const;

    const char* m_name;
    XmlElementGroupType m_group;
    XmlElementType m_type;
    bool m_isDerived = false;
    bool m_hasTaglessMembers = false;  // the attributes of which are not unknown
    int m_textProperty = -1;
    ItemType m_textType = ItemType_Unknown;
    const char* m_textFormat = "";
    bool m_isTextKept = false;
    std::vector<PropertyInfo> m_properties;
    mutable std::once_flag m_infoIsMade;
    mutable CParentElementInfo* m_info = nullptr;
    std::vector<CElementInfo*> m_elements{nullptr};
    std::vector<CAttributeInfo*> m_attributes{nullptr};
};

/// An object of the class that a model describes.
class Object : public CXmlGeneratedClass {
public:
    explicit Object(const Model& model);
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    using CXmlGeneratedClass::IsElementInList;
    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return kNamespace; }
    std::string GetNamespace() const override { return kNamespace; }

    std::string Name() const { return GetElementName(); }
    void SetName(const char* name) { SetElementName(name); }
    const Model& GetModel() const { return m_model; }

    KvVariant& operator[](const std::string& property) {
        return m_values[static_cast<std::size_t>(m_model.Index(property))];
    }
    /// Sets a primitive or enumeration value from its text.
    Object& Set(const std::string& property, std::string_view text);
    /// Sets a new object, of the member's class or `T`, and returns it.
    Object& Create(const std::string& property);
    template <class T>
    Object& Create(const std::string& property) {
        return Hold(property, new T());
    }
    Object& Hold(const std::string& property, Object* object);
    /// The object or, with an index, the item that a property holds.
    Object& At(const std::string& property);
    Object& At(const std::string& property, int index) { return List(property).At(index); }
    /// Appends a new item, of the collection's class or `T`, and returns it.
    Object& Add(const std::string& property) { return List(property).AddNew(); }
    template <class T>
    Object& Add(const std::string& property) {
        CSmartPtr<Object> item(new T());
        List(property).AddObject(item.Get());
        return *item;
    }
    /// Appends values, by their texts, to a collection of primitive values.
    Object& AddValues(const std::string& property, const std::vector<std::string>& texts);
    /// The collection that a property holds, made when there is none.
    CXmlCollectionBase& Collection(const std::string& property);
    ObjectList& List(const std::string& property);

    /// All that is set, but empty collections, deep: "Name{property=type:text property=nil property=Name{...}
    /// property=[...]}".
    std::string Dump() const;

protected:
    void AccessProperty(int propertyIndex, bool read, KvVariant& value) override;
    CParentElementInfo* GetClassInfo() const override { return m_model.Info(); }
    CElementInfo** GetClassElementInfo() const override {
        return const_cast<CElementInfo**>(m_model.m_elements.data());
    }
    CAttributeInfo** GetClassAttributeInfo() const override {
        return const_cast<CAttributeInfo**>(m_model.m_attributes.data());
    }
    void Init() override;

private:
    const Model& m_model;
    std::vector<KvVariant> m_values;
};

/// A class of its own for each model.
template <const Model& (*model)()>
class Typed : public Object {
public:
    Typed() : Object(model()) {}
    static const Model& TheModel() { return model(); }
};

/// The same, with an element that may be nil.
template <const Model& (*model)()>
class TypedNillable final : public Typed<model>, public INillable {
public:
    bool IsNil() const override { return m_nil; }
    void SetNil(bool nil) override { m_nil = nil; }

protected:
    void Init() override {
        Object::Init();
        m_nil = false;
    }

private:
    bool m_nil = false;
};

template <class T>
class TypedList final : public CXmlTypedCollection<T>, public ObjectList {
public:
    using CXmlTypedCollection<T>::CXmlTypedCollection;
    Object& At(int index) override { return *this->Item(index); }
    Object& AddNew() override {
        if constexpr (std::is_default_constructible_v<T>) {
            return *this->CreateNew();
        } else {
            throw std::logic_error("items of many classes");
        }
    }
    void AddObject(Object* object) override { this->Add(CSmartPtr<T>(dynamic_cast<T*>(object))); }
};

/// What becomes of attributes and content of the root: the rest of the start tag and the content as they are
/// written back, or the failure. The prefixes xsi and f are declared.
struct OutcomeRow {
    std::string attributes;
    std::string content;
    const char* ignore;  // as for Ignoring
    std::string outcome;
};
void ExpectOutcomes(const Model& model, const std::vector<OutcomeRow>& rows);
std::string Outcome(const Model& model, const std::string& attributes, const std::string& content,
                    const char* ignore = "");

/// Context with the ignore settings of the letters: unknown (a)ttributes, unknown (e)lements, (m)issing
/// mandatory elements, (c)ounts, missing c(h)oices, (n)amespaces; output without prefixes.
CSerializationContext Ignoring(const std::string& letters);

template <class T>
Model& Model::Cls(const char* name, RecordCardinality cardinality, bool required) {
    PropertyInfo info{name};
    info.makeObject = [] { return CSmartPtr<Object>(new T()); };
    return AddCls(
        std::move(info), cardinality, T::TheModel().Type(),
        [](int, const char*) -> CSmartPtr<CXmlObjectBase> { return new T(); }, required);
}

template <class C>
Model& Model::PrimCol(const char* name, int minOccurs, int maxOccurs) {
    return PrimCol(name, [=]() -> CSmartPtr<CXmlCollectionBase> {
        return new C(name, kNamespace, minOccurs, maxOccurs);
    });
}

template <class T>
Model& Model::ClsCol(const char* name, int minOccurs, int maxOccurs) {
    PropertyInfo info{name};
    info.makeCollection = [=]() -> CSmartPtr<CXmlCollectionBase> {
        const bool tagged = T::TheModel().Type() == XmlElementType_Element;
        return new TypedList<T>(name, kNamespace, minOccurs, maxOccurs, tagged);
    };
    return AddObjectCol(std::move(info), T::TheModel().Type(), false);
}

template <class T>
Model& Model::AbsClsCol(const char* name, int minOccurs, int maxOccurs, SubstitutionFactory factory) {
    PropertyInfo info{name};
    info.makeCollection = [=]() -> CSmartPtr<CXmlCollectionBase> {
        return new TypedList<T>(name, kNamespace, minOccurs, maxOccurs, factory);
    };
    return AddObjectCol(std::move(info), XmlElementType_Element, true);
}

}  // namespace fixture
