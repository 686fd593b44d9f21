#include "kvxml/fastinfoset/internal/octet_cursor.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

std::uint32_t COctetCursor::SequenceLength() {
    const unsigned first = Octet();
    if (first < 0x80) return first + 1;
    if (first >= 0x90) FailBefore("Reserved bits are set in a length");
    const std::uint32_t length = ((first & 0x0F) << 16 | Number(2)) + 129;
    if (length > 1048576) FailAt(Offset() - 3, "A length is above the limit of its form");
    return length;
}

std::uint32_t COctetCursor::LongIndex() {
    if (Peek() > 0x0F) Fail("Reserved bits are set in an index");
    return Number(3);
}

std::uint64_t COctetCursor::LongLength(std::uint64_t base) {
    const std::uint64_t length = base + Number(4);
    if (length > 0x100000000) FailAt(Offset() - 4, "A length is above the limit of its form");
    return length;
}

void COctetCursor::FailAt(std::size_t offset, const std::string& what) {
    throw CKvException(FormatString("Failed to parse FastInfoset. %s at octet %llu", what.c_str(),
                                    static_cast<unsigned long long>(offset)));
}

}  // namespace KvXmlLib16::internal
