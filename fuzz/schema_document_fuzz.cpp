/// A schema and a document, parted by the mark `<?document?>`: the schema is loaded, the document judged by
/// it.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/schema_judge.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::string_view kMark = "<?document?>";
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t mark = input.find(kMark);
    if (mark == std::string_view::npos) return 0;
    if (const auto schema = fuzzing::LoadSchema(input.substr(0, mark)))
        fuzzing::JudgeDocument(schema, input.substr(mark + kMark.size()));
    return 0;
}
