/// Whether a Fast Infoset document begins with a declaration, and with which one.
#pragma once

#include <cstdint>

namespace KvXmlLib16 {

/// ITU-T X.891 allows an XML-like declaration in front of the binary document, by which tools that look at
/// the first bytes of a file tell it from other binary data. There are nine of them, fixed to the octet.
/// They say nothing about the document that a reader of it heeds.
enum FInfoDecl : std::int32_t {
    /// The document begins with the binary identification.
    FInfoDecl_None = 0,
    /// <?xml version='1.0' encoding='finf'?>
    FInfoDecl_Write = 1,
    /// <?xml encoding='finf'?>
    FInfoDecl_NoVersion = 2,
    /// <?xml encoding='finf' standalone='no'?>
    FInfoDecl_NoVersionStandaloneNo = 3,
    /// <?xml encoding='finf' standalone='yes'?>
    FInfoDecl_NoVersionStandaloneYes = 4,
    /// <?xml version='1.0' encoding='finf' standalone='no'?>
    FInfoDecl_Version10StandaloneNo = 5,
    /// <?xml version='1.0' encoding='finf' standalone='yes'?>
    FInfoDecl_Version10StandaloneYes = 6,
    /// <?xml version='1.1' encoding='finf'?>
    FInfoDecl_Version11 = 7,
    /// <?xml version='1.1' encoding='finf' standalone='no'?>
    FInfoDecl_Version11StandaloneNo = 8,
    /// <?xml version='1.1' encoding='finf' standalone='yes'?>
    FInfoDecl_Version11StandaloneYes = 9,
};

}  // namespace KvXmlLib16
