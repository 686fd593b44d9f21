/// Any bytes as a schema document, which may open no other file. By a schema that is valid, an empty element
/// is judged for each global declaration.
#include <cstddef>
#include <cstdint>

#include "fuzz/schema_judge.h"

using namespace KvXmlLib16;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto schema = fuzzing::LoadSchema({reinterpret_cast<const char*>(data), size});
    if (schema == nullptr) return 0;
    constexpr std::size_t kMostElements = 20;
    for (std::size_t i = 0; i < schema->GetElements().size() && i < kMostElements; ++i) {
        const CExpandedName& name = schema->GetElements()[i]->name;
        std::string document("<e:" + std::string(name.localName) + " xmlns:e='");
        for (const char c : name.namespaceUri)
            document += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '\'' ? "&apos;" : std::string(1, c);
        document += name.namespaceUri.empty() ? std::string() : "'/>";
        if (name.namespaceUri.empty()) document = "<" + std::string(name.localName) + "/>";
        fuzzing::JudgeDocument(schema, document);
    }
    return 0;
}
