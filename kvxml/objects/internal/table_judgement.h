/// Decisions about single values, types and names that the reader of generated classes asks for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/objects/internal/table_records.h"

namespace KvXmlLib16 {

class CSerializationContext;
class CTableClass;

namespace internal {

/// One flag per member; in place for all but extreme classes.
class CSeenFlags {
public:
    explicit CSeenFlags(std::size_t count) {
        if (count > 64) m_many.resize(count);
    }
    void Set(std::size_t index) {
        if (m_many.empty()) {
            m_few |= std::uint64_t{1} << index;
        } else {
            m_many[index] = true;
        }
    }
    bool Test(std::size_t index) const { return m_many.empty() ? (m_few >> index & 1) != 0 : m_many[index]; }

private:
    std::uint64_t m_few = 0;
    std::vector<bool> m_many;
};

class CTableJudgement {
public:
    /// Gives a member with a simple value the value that the text stands for.
    static void SetText(CTableClass& object, const CTableMember& member, std::string_view text);
    /// Throws unless the value of the member is its fixed one, if it has one.
    static void CheckFixed(const CTableClass& object, const CTableMember& member, std::string_view text);

    /// Refuses what an element with a simple value may not have. Returns whether it is nil.
    static bool JudgeValue(const CSerializationContext& context, const CXmlElement& element, bool isNillable);

    /// The class that xsi:type chooses for an element whose declared one is `declared`.
    static const CClassTable& ClassByType(const CClassTable& declared, const CXmlElement& element,
                                          const CSerializationContext& context);
    /// For objects that exist already: refuses an xsi:type that is not that of the class.
    static void RequireType(const CClassTable& table, const CXmlElement& element,
                            const CSerializationContext& context);

    /// What the content of the node may begin with, for messages.
    static std::string NamesOf(const CTableRecords& records, const CTableNode& node);
    [[noreturn]] static void ThrowRemains(const CXmlElement& parent, const CXmlElement& element);
};

}  // namespace internal
}  // namespace KvXmlLib16
