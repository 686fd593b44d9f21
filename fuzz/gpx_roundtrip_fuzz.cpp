/// GPX bytes through read, write and read again: what was accepted must be written in a form that reads back
/// to the same text.
#include <cstddef>
#include <cstdint>

#include "examples/gpx/gpx_type.h"
#include "fuzz/roundtrip.h"
#include "kvxml/kvxml.h"

using namespace KvXmlLib16;

namespace {

/// A year is written without leading zeros, so one below 1000 is not a year when it is read again.
bool HasShortYear(const Gpx::CGpxType& gpx) {
    const auto metadata = gpx.GetMetadata();
    if (metadata == nullptr) return false;
    const auto copyright = metadata->GetCopyright();
    return copyright != nullptr && copyright->IsValidYear() && copyright->GetYear() < 1000;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    CSerializationContext context;
    context.SetMaxInflatedSize(1U << 22);
    if ((data[0] & 1) != 0) context.SetIgnoreUnknownElements(true);
    if ((data[0] & 2) != 0) context.SetIgnoreUnknownAttributes(true);
    if ((data[0] & 4) != 0) context.SetIgnoreNamespaces(true);
    if ((data[0] & 8) != 0) context.SetStripCDATA(false);
    const bool formatted = (data[0] & 16) != 0;
    CSmartPtr<Gpx::CGpxType> gpx(new Gpx::CGpxType());
    try {
        gpx->FromXmlStream(data + 1, size - 1, context);
    } catch (const CKvException&) {
        return 0;
    }
    if (HasShortYear(*gpx)) return 0;
    fuzzing::WriteReadWrite(*gpx, formatted, context);
    return 0;
}
