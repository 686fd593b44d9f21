/// Writes parsed elements as they are, without objects in between.
///
///     CXmlDocument document;
///     document.Load("in.xml");
///     WriteXmlTree(*document.GetDocumentElement(), writer);
#pragma once

#include "kvxml/export.h"
#include "kvxml/settings/default_context.h"

namespace KvXmlLib16 {

class CSerializationContext;
class CXmlElement;
class CXmlWriter;

/// Writes `element` and all that is in it; what `CElement` says about texts, blanks and prefixes holds here
/// as well. When `writer` has no open element, the element is written as document root: with the context's
/// processing instructions, prefixes, default namespace, inline schema and additional root attributes, and
/// with the prefixes of its document. The caller begins and ends the document.
///
/// Takes no stack per level. CKvException beyond the context's maximum element depth,
/// CKvInvalidStateException for a name that the output cannot represent; what was written until then stays.
KVXML_EXPORT void WriteXmlTree(const CXmlElement& element, CXmlWriter& writer,
                               const CSerializationContext& context = DefaultContext());

}  // namespace KvXmlLib16
