/// The formats that documents are converted from and to.
#pragma once

#include <string>
#include <string_view>

#include "kvxml/settings/serialization_context.h"
#include "kvxml/xml/xml_document.h"
#include "tools/kvxml/output.h"

namespace tool {

/// How output is laid out.
struct Layout {
    std::string encoding = "utf-8";
    bool compact = false;
    int indent = -1;  // blanks per level; -1: as the library does
};

/// A format, with the functions that slot it in. `-` as input is standard input.
struct Format {
    const char* option;  // what --from and --to call it
    std::string_view suffixes[2];
    /// Settings for reading; null where there are none.
    void (*prepare)(KvXmlLib16::CSerializationContext& context);
    void (*read)(const std::string& input, KvXmlLib16::CXmlDocument& document);
    void (*write)(const KvXmlLib16::CXmlElement& root, COutput& output, const Layout& layout,
                  const KvXmlLib16::CSerializationContext& context);
};

/// The format with this option name, or null.
const Format* FindFormat(std::string_view option);
/// The format that the file's name tells, with or without ".gz" at its end; XML when it tells none.
const Format& FormatOf(std::string_view fileName);
/// Whether the name ends in ".gz".
bool IsGzipName(std::string_view fileName);

}  // namespace tool
