/// What the hand-bound classes of the namespace "urn:fixture" share; most tests use those that are made from
/// descriptions (fixture_model.h).
#pragma once

#include <atomic>
#include <mutex>
#include <string>
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
        s_ready.store(true, std::memory_order_release);
    }

    inline static std::atomic<bool> s_ready{false};
    inline static CParentElementInfo* s_info = nullptr;
    inline static CElementInfo** s_elements = nullptr;
    inline static CAttributeInfo** s_attributes = nullptr;
};

template <class T>
CSmartPtr<T> Make() {
    return CSmartPtr<T>(new T());
}

/// No child elements and no attributes at all.
class Empty final : public Bound<Empty> {
public:
    Empty();
    static void MakeTables(Tables& tables);
};

enum Color { Color_red, Color_green, Color_blue };
/// Throws for negative numbers; null for others that are no color.
const char* ColorToString(int value);
int ColorFromString(const char* text);

/// A kind of primitive value, its name in element names, and a value of it.
struct ScalarText {
    ItemType type;
    const char* name;
    const char* text;
};
extern const std::vector<ScalarText> kScalars;

}  // namespace fixture
