/// Whether a Fast Infoset document begins with a declaration.
#pragma once

#include <cstdint>

namespace KvXmlLib16 {

/// ITU-T X.891 allows an XML-like declaration in front of the binary document, by which tools that look at
/// the first bytes of a file tell it from other binary data.
enum FInfoDecl : std::int32_t {
    /// The document begins with the binary identification.
    FInfoDecl_None = 0,
    /// The document begins with a declaration such as "<?xml version='1.0' encoding='finf'?>".
    FInfoDecl_Write = 1,
};

}  // namespace KvXmlLib16
