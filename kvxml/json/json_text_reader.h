/// Reads JSON text and tells a handler what it finds.
///
///     struct CCount : CJsonReaderDefaultHandler {
///         void OnNumber(const std::string&) override { ++numbers; }
///         ...
///     };
///     CJsonTextReader reader(std::make_unique<CCount>());
///     reader.Read(text);
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "kvxml/export.h"

namespace KvXmlLib16 {

class CJsonContext;

/// What a reader tells, in the order of the text. Names and strings come without their escapes, in the local
/// code page; the depth of the outermost value is 0. What a handler throws leaves the reader.
class KVXML_EXPORT IJsonReaderHandler {
public:
    virtual ~IJsonReaderHandler();
    virtual void OnStartDocument() = 0;
    virtual void OnEndDocument() = 0;
    virtual void OnName(const std::string& name) = 0;
    virtual void OnString(const std::string& value) = 0;
    /// The number as it stands in the text.
    virtual void OnNumber(const std::string& text) = 0;
    virtual void OnStartObject(int depth) = 0;
    virtual void OnEndObject() = 0;
    virtual void OnStartArray(int depth) = 0;
    virtual void OnEndArray() = 0;
    virtual void OnBoolean(bool value) = 0;
    virtual void OnNull() = 0;
};

/// A handler may be one of these as well: then syntax errors tell the path of the item being read.
class KVXML_EXPORT IErrorPathProvider {
public:
    virtual ~IErrorPathProvider();
    virtual std::string GetErrorPath() const = 0;
};

/// Does nothing; for handlers that want some of the events only.
class KVXML_EXPORT CJsonReaderDefaultHandler : public IJsonReaderHandler {
public:
    ~CJsonReaderDefaultHandler() override;
    void OnStartDocument() override;
    void OnEndDocument() override;
    void OnName(const std::string& name) override;
    void OnString(const std::string& value) override;
    void OnNumber(const std::string& text) override;
    void OnStartObject(int depth) override;
    void OnEndObject() override;
    void OnStartArray(int depth) override;
    void OnEndArray() override;
    void OnBoolean(bool value) override;
    void OnNull() override;
};

/// Nesting is limited, and no input makes the reader recurse.
///
/// Syntax errors are CKvValidationException "... at line %d, position %d.", lines counted from 1, positions
/// being the number of bytes of the line that were read. Strings must be well-formed UTF-8 (converted from
/// the local code page where that is another) without zero characters and unpaired surrogates.
class KVXML_EXPORT CJsonTextReader {
public:
    /// Values may be nested this deep unless said otherwise.
    static constexpr std::int32_t kDefaultMaxDepth = 100;

    /// Comments are allowed; there is no root element name.
    explicit CJsonTextReader(std::unique_ptr<IJsonReaderHandler> handler);
    /// Takes the names of root element and items, and whether comments are allowed, from the settings.
    CJsonTextReader(std::unique_ptr<IJsonReaderHandler> handler, const CJsonContext& settings,
                    std::int32_t maxDepth = kDefaultMaxDepth);
    CJsonTextReader(const CJsonTextReader&) = delete;
    CJsonTextReader& operator=(const CJsonTextReader&) = delete;
    virtual ~CJsonTextReader();

    /// Reads the first value of the text; what comes after it is not looked at. A text of blanks and
    /// comments has no value. With a root element name the value is reported as the member of that name of
    /// an object of its own; with an item name as well, an array as the member of that name of an object in
    /// between.
    void Read(std::string_view json);

    /// Owned by the reader.
    IJsonReaderHandler* GetHandler() const noexcept { return m_handler.get(); }

private:
    std::unique_ptr<IJsonReaderHandler> m_handler;
    std::int32_t m_maxDepth = kDefaultMaxDepth;
    bool m_allowComments = true;
    std::string m_rootElementName;  // in UTF-8
    std::string m_arrayItemName;
};

}  // namespace KvXmlLib16
