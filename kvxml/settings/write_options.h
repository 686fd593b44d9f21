/// How one document is written, by name instead of by position.
///
///     order->ToXmlFile("order.xml.gz", {.formatted = false, .compression = CompressionType_GZip});  // C++20
#pragma once

#include "kvxml/settings/eol_type.h"
#include "kvxml/settings/fast_infoset_decl.h"
#include "kvxml/settings/xml_encoding.h"
#include "kvxml/types/compression_type.h"

namespace KvXmlLib16 {

/// What the To... operations do with one document; settings that outlive it are in CSerializationContext. An
/// operation ignores what does not concern its format. The defaults are those of the operations' own
/// arguments.
struct CWriteOptions {
    /// XML: begin with the XML declaration.
    bool declaration = true;
    /// XML and JSON: a line for each element or member, indented.
    bool formatted = true;
    /// XML and JSON, of bytes; text is in the local code page.
    XmlEncoding encoding = XmlEncoding_UTF8;
    /// XML and JSON: the line ends of formatted output.
    EOLType eol = EOLType_LF;
    /// Of bytes. Files refuse zlib.
    CompressionType compression = CompressionType_None;
    /// Fast Infoset: the declaration that the document begins with.
    FInfoDecl fastInfosetDeclaration = FInfoDecl_None;
};

}  // namespace KvXmlLib16
