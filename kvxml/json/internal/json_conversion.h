/// Whole JSON texts, given as UTF-8, into XML text or a tree. Errors are those of CJsonTextReader and
/// CJsonReaderToXmlHandler.
#pragma once

#include <string_view>

#include "kvxml/types/binary_data.h"

namespace KvXmlLib16 {

class CSerializationContext;

namespace internal {

class CXmlTreeBuilder;

/// The document as formatted XML text in UTF-8, without declaration.
CBinaryData JsonToXml(std::string_view json, const CSerializationContext& context);

/// Builds the tree that the XML text would give, except for the blanks by which that is formatted.
///
/// False, with the tree unfinished, when an attribute comes after a child element of its object. Then the
/// call is to be repeated with an empty tree and `anyOrder`, which first takes the whole text apart in
/// memory.
bool JsonToTree(std::string_view json, const CSerializationContext& context, CXmlTreeBuilder& builder,
                bool anyOrder);

}  // namespace internal
}  // namespace KvXmlLib16
