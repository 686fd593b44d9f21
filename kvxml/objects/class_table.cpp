#include "kvxml/objects/class_table.h"

#include "kvxml/objects/table_class.h"

namespace KvXmlLib16 {

const char* TextAt(const CEnumTable& table, std::int32_t value) noexcept {
    return value >= 0 && value < table.count ? table.texts[value] : "";
}

std::int32_t FindText(const CEnumTable& table, std::string_view text) noexcept {
    for (std::int32_t i = 0; i < table.count; ++i)
        if (text == table.texts[i]) return i;
    return -1;
}

CSmartPtr<CTableClass> NewRootOf(const CClassTable* const* tables, std::size_t count,
                                 std::string_view namespaceUri, std::string_view localName) {
    for (std::size_t i = 0; i < count; ++i) {
        const CClassTable& table = *tables[i];
        if (table.create != nullptr && localName == table.name && namespaceUri == table.namespaceUri)
            return table.create();
    }
    return nullptr;
}

}  // namespace KvXmlLib16
