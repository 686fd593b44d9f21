/// Faults of components, with their places.
#pragma once

#include <string>
#include <utility>

#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/model/internal/schema_store.h"

namespace KvXmlLib16::internal {

inline void Report(CFaultList& faults, const CSourcePlace& place, std::string message,
                   const char* constraint) {
    CFault fault;
    if (place.document != nullptr) fault.file = place.document->file;
    fault.line = place.line;
    fault.column = place.column;
    fault.message = std::move(message);
    fault.constraint = constraint;
    faults.Add(std::move(fault));
}

/// "[orders/order]", or "[anonymous]".
inline std::string ShownName(const CComponent& component) {
    const std::string path = GetNamePath(component);
    return "[" + (path.empty() ? std::string("anonymous") : path) + "]";
}

inline std::string ShownName(const CExpandedName& name) {
    return "[" + std::string(name.localName) + "]";
}

/// The type is ID or derived from it.
inline bool IsId(const CSimpleTypeDefinition& type) noexcept {
    return type.variety == CSimpleTypeDefinition::Variety::Atomic && type.builtInType == BuiltInType::ID;
}

}  // namespace KvXmlLib16::internal
