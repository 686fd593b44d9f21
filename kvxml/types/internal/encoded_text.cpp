#include "kvxml/types/internal/encoded_text.h"

#include "kvxml/platform/internal/code_page.h"

namespace KvXmlLib16::internal {

CBinaryData Utf8FromWide(std::wstring_view text) {
    return CBinaryData(std::string_view(WideToUtf8(text)));
}

CBinaryData Utf16LeFromLocal(std::string_view text) {
    const std::string utf16 = IsLocalUtf8() ? Utf8ToUtf16Le(text) : Utf8ToUtf16Le(LocalToUtf8(text));
    return CBinaryData(std::string_view(utf16));
}

}  // namespace KvXmlLib16::internal
