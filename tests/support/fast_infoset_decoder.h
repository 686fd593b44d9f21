/// A decoder of Fast Infoset documents that shares nothing with the library and forgives nothing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace testsupport {

/// What a document must have been written with.
struct KnownStrings {
    std::string uri;
    std::vector<std::string> prefixes, namespaces, localNames, values, texts;
    std::vector<std::string> elements, attributes;  // as "{uri}local", with the prefixes beside them
    std::vector<std::string> elementPrefixes, attributePrefixes;
};

/// The document in the form of `Dump`, comments and processing instructions in front of what they precede as
/// "<!--...-->" and "<?...?>" and CDATA sections with their marks. std::runtime_error for octets that break a
/// rule of the format, a longer form than needed, a string or name in full that has a number, a namespace
/// that is not in scope.
std::string DecodeFastInfoset(std::string_view octets, const KnownStrings* known = nullptr);

}  // namespace testsupport
