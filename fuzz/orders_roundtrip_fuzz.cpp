/// Bytes of orders through read, write and read again: what was accepted must be written in a form that reads
/// back to the same text.
#include <cstddef>
#include <cstdint>

#include "examples/orders/orders_type.h"
#include "fuzz/roundtrip.h"
#include "kvxml/kvxml.h"

using namespace KvXmlLib16;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    CSerializationContext context;
    context.SetMaxInflatedSize(1U << 22);
    if ((data[0] & 1) != 0) context.SetIgnoreUnknownElements(true);
    if ((data[0] & 2) != 0) context.SetIgnoreUnknownAttributes(true);
    if ((data[0] & 4) != 0) context.SetIgnoreNamespaces(true);
    if ((data[0] & 8) != 0) context.SetIgnoreInvalidCollectionCounts(true);
    if ((data[0] & 16) != 0) context.SetStripCDATA(false);
    const bool formatted = (data[0] & 32) != 0;
    CSmartPtr<Orders::COrdersType> orders(new Orders::COrdersType());
    try {
        orders->FromXmlStream(data + 1, size - 1, context);
    } catch (const CKvException&) {
        return 0;
    }
    fuzzing::WriteReadWrite(*orders, formatted, context);
    return 0;
}
