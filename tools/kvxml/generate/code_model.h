/// The plan of a schema with its names in C++.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kvxml/schema/binding/binding_plan.h"
#include "tools/kvxml/generate/names.h"

namespace tool::generate {

using namespace KvXmlLib16;

/// What the user has a say in.
struct CodeOptions {
    std::string name;                                             ///< of the files
    std::vector<std::pair<std::string, std::string>> namespaces;  ///< target namespace to namespace of C++
    std::vector<std::pair<std::string, std::string>> renames;     ///< path in the schema to name
    unsigned parts = 1;                                           ///< number of sources
    std::string banner;                                           ///< what made the files, and of what
};

struct CppMember {
    const CMemberPlan* plan = nullptr;
    std::string name;      ///< as in GetName
    std::string variable;  ///< the data member
    std::uint16_t bit = 0xFFFF;
    std::uint16_t nilBit = 0xFFFF;
};

struct CppClass {
    const CClassPlan* plan = nullptr;
    std::string name;
    std::string scope;  ///< namespace of C++, "A::B"
    const CppClass* base = nullptr;
    std::vector<CppMember> members;  ///< as in the plan; inherited ones as in the base
    std::uint32_t bits = 0;          ///< used by the class and its bases
    CNameScope names;                ///< of members, those of bases included

    std::string Qualified() const { return scope + "::" + name; }
};

struct CppEnum {
    const CEnumPlan* plan = nullptr;
    std::string name;
    std::string scope;
    std::vector<std::string> enumerators;

    std::string Qualified() const { return scope + "::" + name; }
};

/// All classes and enumerations with their names: bases before derived classes, otherwise in the order of the
/// plan.
class CCodeModel {
public:
    CCodeModel(std::shared_ptr<const CBindingPlan> plan, const CodeOptions& options);

    const CBindingPlan& GetPlan() const noexcept { return *m_plan; }
    const std::vector<const CppClass*>& GetClasses() const noexcept { return m_order; }
    const std::vector<std::unique_ptr<CppEnum>>& GetEnumerations() const noexcept { return m_enums; }
    const CppClass& ClassOf(const CClassPlan& plan) const { return *m_byPlan.at(&plan); }
    const CppEnum& EnumOf(const CEnumPlan& plan) const { return *m_byEnum.at(&plan); }
    /// Type of one value in C++: "std::string", "std::int32_t", "Orders::EStatusType".
    std::string ValueType(const CValuePlan& value) const;
    /// Classes of global elements.
    std::vector<const CppClass*> GetRoots() const;
    /// Namespace of C++ of what concerns the whole schema: that of its first document.
    const std::string& MainScope() const noexcept { return m_mainScope; }
    /// Renames that named nothing in the schema.
    std::vector<std::string> GetUnusedRenames() const;

private:
    std::string ScopeOf(std::string_view namespaceUri);
    std::string Renamed(const std::string& path, const std::string& name);
    void NameClasses();
    void NameClass(const CClassPlan& plan, const std::string& wanted, const std::string& second);
    void NameGroups();
    void NameEnumerations();
    void NameMembers(CppClass& one);
    void NameMember(CppClass& one, CppMember& member);
    void Place(const CClassPlan& plan);
    std::string GroupName(const CClassPlan& group) const;

    std::shared_ptr<const CBindingPlan> m_plan;
    const CodeOptions& m_options;
    std::string m_mainScope;
    std::map<std::string, std::string, std::less<>> m_scopes;
    CNameScope m_scopeNames;
    std::map<std::string, CNameScope> m_names;  // by namespace of C++
    std::vector<std::unique_ptr<CppClass>> m_classes;
    std::vector<const CppClass*> m_order;
    std::vector<std::unique_ptr<CppEnum>> m_enums;
    std::map<const CClassPlan*, CppClass*> m_byPlan;
    std::map<const CEnumPlan*, const CppEnum*> m_byEnum;
    std::set<const CClassPlan*> m_placed;
    std::set<std::string> m_usedRenames;
};

/// The type in C++ that values of a kind are held in.
std::string TypeOfItem(ItemType item);
/// Whether a value is worth no reference.
bool IsPassedByValue(const CValuePlan& value);
/// The member's values live in a collection.
inline bool IsCollection(const CMemberPlan& plan) {
    return plan.IsRepeated() || (plan.value != nullptr && plan.value->list != nullptr);
}
/// The member is one simple value with a bit that says whether it is set.
inline bool IsScalar(const CMemberPlan& plan) {
    return plan.value != nullptr && !IsCollection(plan);
}

}  // namespace tool::generate
