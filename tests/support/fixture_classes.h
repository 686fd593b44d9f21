/// Generated-style classes of the namespace "urn:fixture", bound by hand, that the tests of every format
/// share.
///
///     auto kinds = fixture::Make<fixture::Kinds>();
///     fixture::Fill(*kinds);
///     ... write, read into another one ...
///     fixture::Check(*other);
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

#include "kvxml/kvxml.h"

namespace fixture {

using namespace KvXmlLib16;
using namespace KvXmlLib16Data;

inline constexpr const char* kNamespace = "urn:fixture";
inline constexpr const char* kAttributeNamespace = "urn:fixture:attributes";

class Class;

/// One property of a fixture class. Registers itself with its owner; its index is the order of declaration.
class Property {
public:
    explicit Property(Class& owner);
    Property(const Property&) = delete;
    Property& operator=(const Property&) = delete;
    virtual ~Property() = default;
    virtual void Access(bool read, KvVariant& value) = 0;
    virtual void Reset() = 0;
};

/// Records of one class while they are being made.
struct Tables {
    CParentElementInfo* info = nullptr;
    std::vector<CElementInfo*> elements;
    std::vector<CAttributeInfo*> attributes;
};

/// What all fixture classes share but their tables.
class Class : public CXmlGeneratedClass {
public:
    Class(const Class&) = delete;
    Class& operator=(const Class&) = delete;

    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return kNamespace; }
    std::string GetNamespace() const override { return kNamespace; }

    std::string Name() const { return GetElementName(); }
    void SetName(const char* name) { SetElementName(name); }
    bool Claims(const CSerializationContext& context, const CXmlElement* element) const {
        return IsElementInList(context, element);
    }
    int ElementRecords() const { return GetClassElementInfoCount(); }

protected:
    Class() = default;
    void AccessProperty(int propertyIndex, bool read, KvVariant& value) override {
        m_properties.at(static_cast<std::size_t>(propertyIndex))->Access(read, value);
    }
    void Init() override {
        for (Property* property : m_properties)
            property->Reset();
    }

private:
    friend class Property;
    std::vector<Property*> m_properties;
};

/// Builds the tables of `T` from `T::MakeTables` on first use and keeps them until CleanTables.
template <class T>
class Bound : public Class {
public:
    /// Frees the tables; the next use builds them again.
    static void CleanTables() {
        const std::lock_guard<CKVCriticalSection> lock(m_csInit);
        s_ready = false;
        CleanMetaData(s_info, s_elements, s_attributes);
    }
    /// How often the tables were built.
    static int TableBuilds() { return s_builds; }

protected:
    CParentElementInfo* GetClassInfo() const override { return Built(), s_info; }
    CElementInfo** GetClassElementInfo() const override { return Built(), s_elements; }
    CAttributeInfo** GetClassAttributeInfo() const override { return Built(), s_attributes; }

private:
    static void Built() {
        if (s_ready.load(std::memory_order_acquire)) return;
        const std::lock_guard<CKVCriticalSection> lock(m_csInit);
        if (s_ready) return;
        Tables tables;
        T::MakeTables(tables);
        tables.elements.push_back(nullptr);
        tables.attributes.push_back(nullptr);
        // Never destroyed: objects of static storage may outlive any other static.
        static Tables& kept = *new Tables();
        kept = std::move(tables);
        s_elements = kept.elements.data();
        s_attributes = kept.attributes.data();
        s_info = kept.info;
        ++s_builds;
        s_ready.store(true, std::memory_order_release);
    }

    inline static std::atomic<bool> s_ready{false};
    inline static std::atomic<int> s_builds{0};
    inline static CParentElementInfo* s_info = nullptr;
    inline static CElementInfo** s_elements = nullptr;
    inline static CAttributeInfo** s_attributes = nullptr;
};

template <class T>
CSmartPtr<T> Make() {
    return CSmartPtr<T>(new T());
}

// --- properties --------------------------------------------------------------------------------------------

/// A primitive or enumeration value, or none, or nil; starts as a default when it has one.
class Value final : public Property {
public:
    explicit Value(Class& owner, ItemType type = ItemType_Unknown, const char* initial = nullptr)
        : Property(owner), m_type(type), m_initial(initial) {}
    void Access(bool read, KvVariant& value) override;
    void Reset() override;

    /// Text form; "(none)" and "(nil)" for a value that is not set or nil.
    std::string Text() const;
    void Parse(const char* text, ItemType type) {
        variant.FromString(text, type, CWhitespaceUtils::WhitespaceRule_None);
    }

    KvVariant variant;

private:
    ItemType m_type;
    const char* m_initial;
};

/// A child object. A mandatory one exists from the start, others are null until they are set.
template <class T>
class Child final : public Property {
public:
    Child(Class& owner, const char* elementName, bool mandatory)
        : Property(owner), m_elementName(elementName), m_mandatory(mandatory) {}
    void Access(bool read, KvVariant& value) override {
        if (!read) {
            object = static_cast<T*>(value.PeekXmlObject());
        } else if (object != nullptr) {
            value.SetXmlObject(object.Get());
        }
    }
    void Reset() override {
        object = nullptr;
        if (m_mandatory) Create();
    }
    /// Sets a new object and returns it.
    T& Create() {
        object = new T();
        object->SetName(m_elementName);
        return *object;
    }

    CSmartPtr<T> object;

private:
    const char* m_elementName;
    bool m_mandatory;
};

/// A collection of child objects, made when it is first needed.
template <class T>
class Children final : public Property {
public:
    using Collection = CXmlTypedCollection<T>;

    Children(Class& owner, const char* elementName, int minOccurs, int maxOccurs)
        : Property(owner), m_elementName(elementName), m_minOccurs(minOccurs), m_maxOccurs(maxOccurs) {}
    void Access(bool read, KvVariant& value) override {
        if (!read) {
            Get();
        } else if (m_collection != nullptr) {
            value.SetXmlCollection(m_collection.Get());
        }
    }
    void Reset() override { m_collection = nullptr; }
    Collection& Get() {
        if (m_collection == nullptr) {
            m_collection = new Collection(m_elementName, kNamespace, m_minOccurs, m_maxOccurs);
        }
        return *m_collection;
    }
    int Count() const { return m_collection == nullptr ? 0 : m_collection->GetCount(); }

private:
    const char* m_elementName;
    int m_minOccurs;
    int m_maxOccurs;
    CSmartPtr<Collection> m_collection;
};

// --- classes -----------------------------------------------------------------------------------------------

enum Color { Color_red, Color_green, Color_blue };
const char* ColorToString(int value);
int ColorFromString(const char* text);

/// Simple content: an r8 written with three digits, and an optional attribute. Other attributes are errors.
class Measure final : public Bound<Measure> {
public:
    Measure();
    static void MakeTables(Tables& tables);

    Value value{*this};
    Value unit{*this};
};

/// Simple content kept as text, not converted.
class RawText final : public Bound<RawText> {
public:
    RawText();
    static void MakeTables(Tables& tables);

    Value value{*this};
};

/// Nillable element with an attribute and a mandatory child.
class Note final : public Bound<Note>, public INillable {
public:
    Note();
    static void MakeTables(Tables& tables);

    bool IsNil() const override { return m_nil; }
    void SetNil(bool nil) override { m_nil = nil; }

    Value id{*this};
    Value text{*this};

protected:
    void Init() override;

private:
    bool m_nil = false;
};

/// Without a tag of its own: its children and its attribute belong to the parent's element.
class Part final : public Bound<Part> {
public:
    Part();
    static void MakeTables(Tables& tables);

    Value mark{*this};
    Value first{*this};
    Value second{*this};
};

/// Holds objects of its own class, single and repeated; unknown attributes are passed over.
class Node final : public Bound<Node> {
public:
    Node();
    static void MakeTables(Tables& tables);

    Value name{*this};
    Child<Node> next{*this, "Next", false};
    Children<Node> nodes{*this, "Node", 0, -1};
};

/// Derived in the schema, so it is written with its type under another name than its own.
class Extended final : public Bound<Extended> {
public:
    Extended();
    static void MakeTables(Tables& tables);

    Value text{*this};
};

/// No child elements and no attributes at all.
class Empty final : public Bound<Empty> {
public:
    Empty();
    static void MakeTables(Tables& tables);
};

/// A kind of primitive value, its name in element names, and a value of it.
struct ScalarText {
    ItemType type;
    const char* name;
    const char* text;
};
extern const std::vector<ScalarText> kScalars;

/// Every record of a sequence and both kinds of attributes.
class Kinds final : public Bound<Kinds> {
public:
    Kinds();
    static void MakeTables(Tables& tables);

    // attributes
    Value id{*this};                       // i4, required
    Value level{*this};                    // enumeration, required
    Value code{*this};                     // string, two capitals
    Value ratio{*this};                    // r8, two digits
    Value size{*this, ItemType_i4, "10"};  // i4, default 10
    Value paint{*this};                    // enumeration, optional
    Value lang{*this};                     // string, in a namespace of its own
    // elements
    Value title{*this};                              // string of 1 to 20 characters, mandatory
    Value count{*this};                              // i4 of 0 to 100, optional, nillable
    Value price{*this};                              // decimal, two digits, default 1.50, mandatory
    Value weight{*this};                             // r8, three digits, optional
    Value color{*this};                              // enumeration, default green, mandatory
    Value shade{*this};                              // enumeration, optional, nillable
    Child<Measure> length{*this, "Length", true};    // mandatory
    Child<Note> note{*this, "Note", false};          // optional
    Child<Part> part{*this, "Part", false};          // optional, without a tag
    Children<Measure> points{*this, "Point", 1, 3};  // one to three
    Children<Node> nodes{*this, "Node", 0, -1};      // any number
};

/// Kinds with all members set, the text with characters that need escaping.
void Fill(Kinds& kinds);
/// Expects what Fill set.
void Check(Kinds& kinds);

/// The XML of a filled Kinds, without declaration, formatted with tabs.
extern const char* const kKindsXml;
/// The smallest document of Kinds that has all that is mandatory.
extern const char* const kSmallKindsXml;

}  // namespace fixture
