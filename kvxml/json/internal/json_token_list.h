/// The tokens of JSON text in memory, to be handed on with the attributes of every object first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/json/internal/json_scanner.h"

namespace KvXmlLib16::internal {

/// A handler of CJsonScanner that keeps what it is told; the text must live as long.
class CJsonTokenList {
public:
    void Name(const CJsonText& name) { Add(Kind::Name, Keep(name), name.isSpecial); }
    void String(const CJsonText& text) { Add(Kind::String, Keep(text), text.isSpecial); }
    void Number(std::string_view text) { Add(Kind::Number, text, false); }
    void Boolean(bool value) { Add(value ? Kind::True : Kind::False, {}, false); }
    void Null() { Add(Kind::Null, {}, false); }
    void StartObject(int) { Open(Kind::Object); }
    void EndObject() { Close(); }
    void StartArray(int) { Open(Kind::Array); }
    void EndArray() { Close(); }
    void Item() { ++m_open.back().items; }
    /// The path where reading the text has come to, as CJsonToXml has it.
    std::string GetErrorPath() const;

    /// Tells a handler of the same kind. Recurses per level, of which the scanner has few.
    template <class Handler>
    void Replay(Handler& handler) const {
        for (std::size_t at = 0; at < m_tokens.size(); at = m_tokens[at].next)
            ReplayValue(handler, at, 0);
    }

private:
    enum class Kind : std::uint8_t { Name, String, Number, True, False, Null, Object, Array };
    struct Token {
        std::string_view text;
        std::size_t next;  // after it and all that is in it
        Kind kind;
        bool isSpecial;
    };

    struct Container {
        std::size_t token;
        std::size_t items;  // begun so far
    };

    std::string_view Keep(const CJsonText& text) {
        return text.isStable ? text.text : m_texts.emplace_back(text.text);
    }
    void Add(Kind kind, std::string_view text, bool isSpecial) {
        m_tokens.push_back({text, m_tokens.size() + 1, kind, isSpecial});
    }
    void Open(Kind kind) {
        m_open.push_back({m_tokens.size(), 0});
        Add(kind, {}, false);
    }
    void Close() {
        m_tokens[m_open.back().token].next = m_tokens.size();
        m_open.pop_back();
    }

    template <class Handler>
    void ReplayValue(Handler& handler, std::size_t at, int depth) const {
        const Token& token = m_tokens[at];
        switch (token.kind) {
            case Kind::Name:
                return;
            case Kind::String:
                handler.String({token.text, true, token.isSpecial});
                return;
            case Kind::Number:
                handler.Number(token.text);
                return;
            case Kind::True:
            case Kind::False:
                handler.Boolean(token.kind == Kind::True);
                return;
            case Kind::Null:
                handler.Null();
                return;
            case Kind::Object:
                handler.StartObject(depth);
                ReplayMembers(handler, at, depth, true);
                ReplayMembers(handler, at, depth, false);
                handler.EndObject();
                return;
            case Kind::Array:
                handler.StartArray(depth);
                for (std::size_t item = at + 1; item < token.next; item = m_tokens[item].next) {
                    handler.Item();
                    ReplayValue(handler, item, depth + 1);
                }
                handler.EndArray();
                return;
        }
    }
    template <class Handler>
    void ReplayMembers(Handler& handler, std::size_t object, int depth, bool attributes) const {
        for (std::size_t at = object + 1; at < m_tokens[object].next; at = m_tokens[at + 1].next) {
            const Token& name = m_tokens[at];
            if ((name.text.substr(0, 1) == "@") != attributes) continue;
            handler.Name({name.text, true, name.isSpecial});
            ReplayValue(handler, at + 1, depth + 1);
        }
    }

    std::vector<Token> m_tokens;
    std::vector<Container> m_open;
    std::deque<std::string> m_texts;  // those that are no parts of the input
};

}  // namespace KvXmlLib16::internal
