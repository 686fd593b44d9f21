#include "kvxml/fastinfoset/internal/fast_infoset_reader.h"

#include <algorithm>
#include <string_view>

#include "kvxml/runtime/exceptions.h"

namespace KvXmlLib16::internal {

namespace {

// Identification and version that a document without declaration begins with.
constexpr std::string_view kIdentification("\xE0\x00\x00\x01", 4);

// Declarations are at most this long: version, encoding and standalone, in this order.
constexpr std::size_t kLongestDeclaration = 64;

bool HasDeclaration(std::string_view text) {
    text = text.substr(0, kLongestDeclaration);
    if (text.substr(0, 6) != "<?xml ") return false;
    text = text.substr(0, text.find("?>"));
    return text.find(" encoding='finf'") != std::string_view::npos;
}

}  // namespace

bool TryParseFastInfoset(CXmlDocument&, const unsigned char* data, std::size_t length) {
    if (data == nullptr) return false;
    const std::string_view text(reinterpret_cast<const char*>(data), length);
    if (text.substr(0, kIdentification.size()) != kIdentification && !HasDeclaration(text)) return false;
    throw CKvException("The Fast Infoset format is not built in yet.");
}

}  // namespace KvXmlLib16::internal
