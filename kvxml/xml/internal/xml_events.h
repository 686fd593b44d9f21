/// Receiver of everything that a document consists of, in its order.
#pragma once

#include <cstddef>

namespace KvXmlLib16::internal {

/// What the parser calls for CXmlReader. Texts are zero-terminated UTF-8 unless a length is given, and good
/// during the call only. Exceptions stop the parser and are thrown by the call that parses.
class IXmlEvents {
public:
    /// Between namespace URI, local name and prefix of a name; no XML document can hold it.
    static constexpr char kSeparator = '\x01';

    virtual ~IXmlEvents() = default;

    virtual void OnDeclarePrefix(const char* prefix,
                                 const char* uri) = 0;  ///< before the start that declares it
    /// Pairs of name and value up to a null; the first `specified` of the texts stand in the document.
    virtual void OnStart(const char* name, const char** attributes, int specified) = 0;
    virtual void OnEnd() = 0;
    virtual void OnText(const char* text, std::size_t length) = 0;
    virtual void OnCData(bool isStart) = 0;
    virtual void OnComment(const char* text) = 0;
    virtual void OnProcessingInstruction(const char* target, const char* data) = 0;
    virtual void OnDocumentType(const char* name) = 0;
};

}  // namespace KvXmlLib16::internal
