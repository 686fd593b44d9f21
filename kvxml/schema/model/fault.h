/// What is wrong with a schema or a document, and where.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/schema/model/schema_export.h"

namespace KvXmlLib16 {

/// One violation of a rule of XML Schema.
struct CFault {
    std::string file;          ///< as it was named when it was opened; empty for text in memory
    std::uint64_t line = 0;    ///< from 1; 0 when not known
    std::uint64_t column = 0;  ///< in characters, from 1; 0 when not known
    std::string path;          ///< of the element at fault, "/orders/order[2]/@id"; empty when not known
    std::string message;       ///< one sentence
    std::string constraint;    ///< the rule's name in the recommendation, "cos-nonambig"; may be empty
};

/// Text of a fault, "orders.xml:12:7: The element [x] ... (cvc-complex-type.2.4)".
KVXML_SCHEMA_EXPORT std::string ToText(const CFault& fault);

/// Collects faults up to a limit; further ones are only counted. One thread at a time.
class KVXML_SCHEMA_EXPORT CFaultList {
public:
    static constexpr std::size_t kDefaultLimit = 100;

    /// 0: no limit.
    explicit CFaultList(std::size_t limit = kDefaultLimit) noexcept : m_limit(limit) {}

    void Add(CFault fault);
    bool IsEmpty() const noexcept { return m_count == 0; }
    /// All faults that were added, also those that were not kept; who adds them may stop when the list is
    /// full.
    std::size_t GetCount() const noexcept { return m_count; }
    bool IsFull() const noexcept { return m_limit != 0 && m_count >= m_limit; }
    const std::vector<CFault>& GetFaults() const noexcept { return m_faults; }
    void Clear() noexcept;

private:
    std::size_t m_limit;
    std::size_t m_count = 0;
    std::vector<CFault> m_faults;
};

}  // namespace KvXmlLib16
