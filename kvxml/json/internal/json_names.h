/// Turns names of JSON members into names of XML elements and attributes.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct XML_ParserStruct;

namespace KvXmlLib16::internal {

/// The namespaces in scope, and the names looked up in them. Texts are UTF-8.
class CJsonNames {
public:
    /// An element's name; `literal` as in the JSON text, `expanded` as the name table of a tree has it.
    struct Name {
        std::string literal;
        std::string expanded;
        std::uint64_t scope = 0;
    };
    /// What is in scope at some point.
    struct Scope {
        std::uint64_t id;
        std::size_t declarations;
    };

    /// Without `namespaces` prefixes are parts of the names and are not looked up.
    explicit CJsonNames(bool namespaces);
    ~CJsonNames();
    CJsonNames(const CJsonNames&) = delete;
    CJsonNames& operator=(const CJsonNames&) = delete;

    bool HasNamespaces() const noexcept { return m_namespaces; }

    /// Null for what is no XML name, or has a prefix that is not in scope. Good until the next call.
    const Name* Element(std::string_view name) {
        Name& known = m_known[Slot(name)];
        if (known.scope == m_scope.id && known.literal == name) return &known;
        return Resolve(name, known) ? &known : nullptr;
    }
    /// True for a well-formed attribute name, or with namespaces, qualified name.
    bool IsName(std::string_view name);
    /// Appends the expanded form of an attribute's name; false when its prefix is not in scope.
    bool ExpandAttribute(std::string_view name, std::string& out) const;

    Scope GetScope() const noexcept { return m_scope; }
    /// Binds a prefix, empty for the default namespace, until `Leave`. False where Namespaces in XML forbids
    /// it.
    bool Declare(std::string_view prefix, std::string_view uri);
    /// Goes back to how things stood when `scope` was asked for.
    void Leave(const Scope& scope) {
        if (m_scope.declarations != scope.declarations) Undo(scope);
    }

private:
    struct Declaration {
        std::string prefix;
        std::string uri;  // before it
        bool isNew;
    };
    struct Release {
        void operator()(XML_ParserStruct* parser) const noexcept;
    };

    static std::size_t Slot(std::string_view name) noexcept {
        if (name.empty()) return 0;
        const auto at = [&](std::size_t i) {
            return static_cast<std::size_t>(static_cast<unsigned char>(name[i]));
        };
        const std::size_t size = name.size();
        return (size * 31 + at(0) * 7 + at(size / 2) * 13 + at(size - 1) * 57) % kSlots;
    }
    bool Resolve(std::string_view name, Name& out);
    bool Expand(std::string_view name, bool isElement, std::string& out) const;
    bool IsNameForParser(std::string_view name);
    void Undo(const Scope& scope);

    static constexpr std::size_t kSlots = 256;

    const bool m_namespaces;
    Scope m_scope{1, 0};
    std::uint64_t m_lastId = 1;
    std::map<std::string, std::string, std::less<>> m_uris;  // by prefix
    std::vector<Declaration> m_declarations;
    std::array<Name, kSlots> m_known;
    std::unique_ptr<XML_ParserStruct, Release> m_parser;
};

}  // namespace KvXmlLib16::internal
