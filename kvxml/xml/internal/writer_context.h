/// What the library's writers keep of open elements and of namespaces in scope.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/base/internal/words.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

/// Where an element stands in writing a collection.
enum CXmlWriter::ArrayMode : std::int32_t {
    kArrayNone = 0,
    kArrayStarting = 1,
    kArrayOpen = 2,
    kArrayEnded = 3,
};

struct CXmlWriter::NamespaceAlias {
    std::string uri;
    std::string qualifier;  // the prefix and the colon after it

    std::string_view Prefix() const noexcept { return {qualifier.data(), qualifier.size() - 1}; }
};

/// Default namespace and prefixes that hold for an element, shared by all descendants that change nothing.
struct CXmlWriter::NamespaceScope {
    using Alias = NamespaceAlias;

    /// What is registered for `uri`, or null. Valid until the scope changes.
    const Alias* Find(std::string_view uri) const noexcept {
        if (lastFound < aliases.size() && Equal(aliases[lastFound].uri, uri)) return &aliases[lastFound];
        return FindSorted(uri);
    }
    /// Registers a prefix that is not empty and returns what was registered.
    const Alias& Set(std::string_view prefix, std::string_view uri);
    void Remove(std::string_view uri) noexcept;
    /// Whether names in this namespace need no prefix.
    bool IsDefault(std::string_view uri) const noexcept { return Equal(uri, defaultNamespace); }
    bool IsPrefixUsed(std::string_view prefix) const noexcept;

    std::string defaultNamespace;
    std::vector<Alias> aliases;         // ascending by URI
    mutable std::size_t lastFound = 0;  // index that the next search tries first
    std::vector<std::string> unnamed;   // before the document element: declared with any prefix
    unsigned firstFree = 0;             // no invented prefix before this one is free

private:
    static bool Equal(std::string_view left, std::string_view right) noexcept {
        return left.size() == right.size() && internal::EqualByWords(left.data(), right.data(), left.size());
    }
    const Alias* FindSorted(std::string_view uri) const noexcept;
    std::size_t Position(std::string_view uri) const noexcept;
};

/// State of one open element. Contexts are kept for reuse when their element ends.
class CXmlWriter::CXmlWriterContext {
public:
    CXmlWriterContext() = default;
    CXmlWriterContext(const CXmlWriterContext&) = delete;
    CXmlWriterContext& operator=(const CXmlWriterContext&) = delete;
    ~CXmlWriterContext() = default;

    /// The longest name, with its qualifier, that is kept in place.
    static constexpr std::size_t kShortName = 48;

    std::int32_t childCount = 0;
    std::int32_t depth = 0;
    ArrayMode arrayMode = kArrayNone;
    bool startTagOpen = false;
    bool isArrayOpen = false;         // for formats with brackets: that of a collection is to be closed
    std::size_t qualifierLength = 0;  // of the prefix and colon that the name begins with
    std::size_t nameLength = 0;       // of the whole name, which the end tag repeats
    char shortName[kShortName] = {};  // the name, when it fits
    std::string longName;             // the name, when it does not
    CXmlWriterContext* parent = nullptr;
    const NamespaceScope* scope = nullptr;  // the effective one: m_ownScope or an ancestor's

private:
    friend class CXmlWriter;
    std::unique_ptr<NamespaceScope> m_ownScope;  // kept for reuse; in force only if `scope` points to it
    CXmlWriterContext* m_reusable = nullptr;     // the context of the next level, when there was one
};

inline CXmlWriter::CXmlWriterContext* CXmlWriter::PushContext() {
    CXmlWriterContext* context = m_current != nullptr ? m_current->m_reusable : m_first;
    if (context == nullptr) context = AddContext();
    context->childCount = 0;
    context->arrayMode = kArrayNone;
    context->startTagOpen = true;
    if (m_current != nullptr) {
        context->depth = m_current->depth + 1;
        context->scope = m_current->scope;
    } else {
        context->depth = 0;
        EnterDocument(*context);
    }
    m_current = context;
    return context;
}

inline const CXmlWriter::CXmlWriterContext* CXmlWriter::PeekContext() const noexcept {
    return m_current->m_reusable;
}

inline void CXmlWriter::PopContext() noexcept {
    m_current = m_current->parent;
}

}  // namespace KvXmlLib16
