/// Splits JSON text into its tokens.
///
/// The text is UTF-8. The handler is a class of our own, known at compile time:
///
///     void Name(const CJsonText&);  void String(const CJsonText&);
///     void Number(std::string_view);  void Boolean(bool);  void Null();
///     void StartObject(int depth);  void EndObject();  void StartArray(int depth);  void EndArray();
///     void Item();  // before each item of an array
///     std::string GetErrorPath();
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace KvXmlLib16::internal {

/// A name or a string value, good until the handler returns.
struct CJsonText {
    std::string_view text;
    bool isStable = false;   ///< a part of the input, so it lives as long as that does
    bool isSpecial = false;  ///< may hold control characters or characters that are not ASCII
};

/// Largest nesting of values.
inline constexpr int kMaxJsonDepth = 100;

struct CJsonSyntax {
    int maxDepth = kMaxJsonDepth;
    bool allowComments = true;
};

/// What does not depend on the handler: the place in the text, strings, and errors.
class CJsonScannerBase {
protected:
    CJsonScannerBase(std::string_view text, const CJsonSyntax& syntax);
    CJsonScannerBase(const CJsonScannerBase&) = delete;
    CJsonScannerBase& operator=(const CJsonScannerBase&) = delete;
    virtual ~CJsonScannerBase();

    virtual std::string GetErrorPath() = 0;

    /// Reads the next character that is no blank and in no comment; false at the end.
    bool Next() {
        while (m_next != m_end) {
            m_current = *m_next++;
            if (static_cast<unsigned char>(m_current) > ' ') return m_current != '/' || EndsComments();
            if (m_current != ' ' && m_current != '\n' && m_current != '\t' && m_current != '\r') return true;
        }
        return false;
    }
    /// The string after the quotation mark just read.
    CJsonText ReadString();
    /// The number that begins with the character just read.
    std::string_view ReadNumber();
    /// Reads the letters after the first one.
    void ReadLiteral(std::string_view rest, const char* mismatch, const char* atEnd);

    /// Errors about the character just read, and about what is missing at the end.
    [[noreturn]] void FailAtCharacter(const char* format);
    [[noreturn]] void Fail(const char* format);

    char m_current = '\0';
    const int m_maxDepth;
    std::string m_open;  // '{' or '[' for every value that is open

private:
    bool EndsComments();
    CJsonText ReadEscapedString(const char* begin, bool isSpecial);
    void ReadEscape();
    void ReadUnicodeEscape();
    unsigned ReadHexDigits();
    void ReadDigits(const char* atEnd);
    void CheckUtf8(const char* begin);
    std::string CurrentCharacter() const;

    const char* const m_begin;
    const char* const m_end;
    const char* m_next;
    const char* m_illFormed;  // where the text stops being UTF-8
    const bool m_allowComments;
    std::string m_scratch;
};

template <class Handler>
class CJsonScanner final : private CJsonScannerBase {
public:
    /// Both must outlive the scanner.
    CJsonScanner(std::string_view text, const CJsonSyntax& syntax, Handler& handler)
        : CJsonScannerBase(text, syntax), m_handler(handler) {}

    /// Whether the value is an array. To be called before `Run`, if at all.
    bool BeginsWithArray() {
        m_hasBegun = Next();
        m_isAtBegin = false;
        return m_hasBegun && m_current == '[';
    }
    /// Reads one value; what comes after it is not looked at. False when there is none.
    bool Run() {
        if (m_isAtBegin ? !Next() : !m_hasBegun) return false;
        do {
            ReadValue();
        } while (EnterNextValue());
        return true;
    }

private:
    std::string GetErrorPath() override { return m_handler.GetErrorPath(); }

    /// Reads the value that begins with the current character. Of one that holds values, all up to the first
    /// of these that does not.
    void ReadValue() {
        for (;;) {
            const int depth = static_cast<int>(m_open.size());
            if (depth >= m_maxDepth) Fail("JSON exceeded depth limit at line %d, position %d.");
            switch (m_current) {
                case '"':
                    m_handler.String(ReadString());
                    return;
                case '{':
                    m_handler.StartObject(depth);
                    m_open += '{';
                    if (!Next()) {
                        Fail(
                            "Unexpected End of File. Expected Object terminator character '}}' at line %d, "
                            "position %d.");
                    }
                    if (m_current == '}') {
                        m_open.pop_back();
                        m_handler.EndObject();
                        return;
                    }
                    ReadName();
                    break;
                case '[':
                    m_handler.StartArray(depth);
                    m_open += '[';
                    if (!Next()) FailInArray();
                    if (m_current == ']') {
                        m_open.pop_back();
                        m_handler.EndArray();
                        return;
                    }
                    m_handler.Item();
                    break;
                case 'n':
                    ReadLiteral("ull", "Expected 'NULL' at line %d, position %d.",
                                "Unexpected End of File. Expected value 'NULL' at line %d, position %d.");
                    m_handler.Null();
                    return;
                case 't':
                    ReadLiteral("rue", "Expected 'true' at line %d, position %d.",
                                "Unexpected End of File. Expected value 'true' at line %d, position %d.");
                    m_handler.Boolean(true);
                    return;
                case 'f':
                    ReadLiteral("alse", "Expected 'false' at line %d, position %d.",
                                "Unexpected End of File. Expected value 'false' at line %d, position %d.");
                    m_handler.Boolean(false);
                    return;
                default:
                    if (m_current != '-' && (m_current < '0' || m_current > '9')) {
                        FailAtCharacter(
                            "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found "
                            "'%c' at line %d, position %d.");
                    }
                    m_handler.Number(ReadNumber());
                    return;
            }
        }
    }

    /// Closes what ends after the value just read, up to the next value; false at the end of it all.
    bool EnterNextValue() {
        while (!m_open.empty()) {
            if (m_open.back() == '{') {
                if (!Next()) FailInObject();
                if (m_current == ',') {
                    if (!Next()) FailInObject();
                    ReadName();
                    return true;
                }
                if (m_current != '}') {
                    FailAtCharacter(
                        "Expected Object separator character ',', found '%c' at line %d, position %d.");
                }
                m_open.pop_back();
                m_handler.EndObject();
            } else {
                if (!Next()) FailInArray();
                if (m_current == ',') {
                    if (!Next()) FailInArray();
                    m_handler.Item();
                    return true;
                }
                if (m_current != ']') {
                    FailAtCharacter(
                        "Expected Array separator character ',', found '%c' at line %d, position %d.");
                }
                m_open.pop_back();
                m_handler.EndArray();
            }
        }
        return false;
    }

    /// A member's name up to the first character of its value.
    void ReadName() {
        if (m_current != '"') {
            FailAtCharacter(
                "Expected quotation mark character '\"' before Name, found '%c' at line %d, position %d.");
        }
        m_handler.Name(ReadString());
        if (!Next()) {
            Fail(
                "Unexpected End of File. Expected Object Name/Value separator character ':' at line %d, "
                "position %d.");
        }
        if (m_current != ':') {
            FailAtCharacter(
                "Expected Object Name/Value separator character ':', found '%c' at line %d, position %d.");
        }
        if (!Next()) Fail("Unexpected End of File. Expected Object Value at line %d, position %d.");
    }

    [[noreturn]] void FailInObject() {
        Fail("Unexpected End of File. Expected Object terminator character '}' at line %d, position %d.");
    }
    [[noreturn]] void FailInArray() {
        Fail("Unexpected End of File. Expected Array terminator character ']' at line %d, position %d.");
    }

    Handler& m_handler;
    bool m_isAtBegin = true;
    bool m_hasBegun = false;  // there is a value, whose first character is the current one
};

/// Reads the text into a handler. A root element name makes the value that of a member of that name of an
/// object of its own; with an item name, an array becomes a member of that name of an object in between. The
/// names are UTF-8.
template <class Handler>
void ScanJson(std::string_view json, const CJsonSyntax& syntax, const std::string& root,
              const std::string& item, Handler& handler) {
    CJsonScanner<Handler> scanner(json, syntax, handler);
    if (root.empty()) {
        scanner.Run();
        return;
    }
    handler.StartObject(0);
    handler.Name({root, false, false});
    const bool isList = !item.empty() && scanner.BeginsWithArray();
    if (isList) {
        handler.StartObject(1);
        handler.Name({item, false, false});
    }
    scanner.Run();
    if (isList) handler.EndObject();
    handler.EndObject();
}

}  // namespace KvXmlLib16::internal
