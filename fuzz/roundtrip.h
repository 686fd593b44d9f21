/// What the targets that go there and back share.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "kvxml/kvxml.h"

namespace fuzzing {

/// Reports a finding.
[[noreturn]] inline void Fail(const char* what, const std::string& first, const std::string& second) {
    std::fprintf(stderr, "%s:\n%s\n---\n%s\n", what, first.c_str(), second.c_str());
    std::abort();
}

/// What `object` is written as must read back, and be written as the same text again.
template <class T>
void WriteReadWrite(const T& object, bool formatted, const KvXmlLib16::CSerializationContext& context) {
    using namespace KvXmlLib16;
    const std::string first = object.ToXml(true, formatted, EOLType_LF, context);
    const CSmartPtr<T> again(new T());
    try {
        again->FromXml(first.c_str(), context);
    } catch (const CKvException& e) {
        Fail("written document refused", first, e.GetFullMessage());
    }
    const std::string second = again->ToXml(true, formatted, EOLType_LF, context);
    if (first != second) Fail("written document changed", first, second);
}

}  // namespace fuzzing
