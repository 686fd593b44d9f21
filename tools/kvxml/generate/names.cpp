#include "tools/kvxml/generate/names.h"

#include <cstdio>

#include "tools/kvxml/utf8.h"

namespace tool::generate {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
char ToUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// What a sign is called in an enumerator; null: it only parts words.
const char* NameOfSign(unsigned long code) {
    switch (code) {
        case '+':
            return "Plus";
        case '*':
            return "Star";
        case '%':
            return "Percent";
        case '<':
            return "Less";
        case '>':
            return "Greater";
        case '=':
            return "Equal";
        case '!':
            return "Not";
        case '&':
            return "And";
        case '|':
            return "Or";
        case '#':
            return "Hash";
        case '@':
            return "At";
        case '$':
            return "Dollar";
        case '/':
            return "Slash";
        case '~':
            return "Tilde";
        case '^':
            return "Caret";
        case '?':
            return "Question";
        default:
            return nullptr;
    }
}

std::string ToName(std::string_view text, bool namesSigns) {
    std::string name;
    bool beginsWord = true;
    for (std::size_t at = 0; at < text.size();) {
        const bool isFirst = at == 0;
        const Character character = FirstCharacter(text.substr(at));
        const unsigned long code = character.code;
        at += character.length;
        const char c = code < 0x80 ? static_cast<char>(code) : '\0';
        if (c != '\0' && (IsLetter(c) || IsDigit(c))) {
            // "1.0" is not "10".
            const bool partsDigits = beginsWord && IsDigit(c) && !name.empty() && IsDigit(name.back());
            if (partsDigits) name += '_';
            name += beginsWord ? ToUpper(c) : c;
            beginsWord = false;
        } else if (code >= 0x80) {
            char number[24];
            std::snprintf(number, sizeof number, "U%04lX", code);
            name += number;
            beginsWord = false;
        } else {
            beginsWord = true;
            if (!namesSigns) continue;
            if (const char* const sign = NameOfSign(code)) {
                name += sign;
            } else if (code == '-' && isFirst) {
                name += "Minus";
            }
        }
    }
    if (!name.empty() && IsDigit(name[0])) name.insert(name.begin(), 'V');
    while (name.size() > 1 && name[0] == '_')
        name.erase(name.begin());
    if (!name.empty()) name[0] = ToUpper(name[0]);
    if (!name.empty() && IsDigit(name[0])) name.insert(name.begin(), 'V');
    if (name == "_") name.clear();
    // Two underscores in a row are the compiler's.
    for (std::size_t at; (at = name.find("__")) != std::string::npos;)
        name.erase(at, 1);
    return name;
}

}  // namespace

std::string ToPascal(std::string_view text) {
    return ToName(text, false);
}

std::string ToEnumerator(std::string_view text) {
    std::string name = ToName(text, true);
    if (name.empty()) name = text.empty() ? "Empty" : "Value";
    // Macros of the C library and of common platforms.
    static const std::set<std::string> kMacros = {
        "NULL",   "EOF",   "NAN",      "INFINITY", "TRUE",     "FALSE", "DOMAIN", "OVERFLOW", "UNDERFLOW",
        "BUFSIZ", "ERROR", "RAND_MAX", "DELETE",   "OPTIONAL", "VOID",  "CONST",  "HUGE_VAL", "INFINITE",
        "IN",     "OUT",   "INT_MAX",  "SIG_ERR",  "STRICT",   "EDOM",  "ERANGE", "NO_ERROR", "IGNORE"};
    if (kMacros.count(name) != 0) name += '_';
    return name;
}

std::string ToMemberVariable(std::string_view pascal) {
    std::string name = "m_" + std::string(pascal);
    if (name[2] >= 'A' && name[2] <= 'Z') name[2] = static_cast<char>(name[2] - 'A' + 'a');
    return name;
}

std::string ToLiteral(std::string_view text) {
    std::string literal = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isQuestion = c == '?' && literal.back() == '?';  // no trigraphs
        if (c == '"' || c == '\\') {
            literal += '\\';
            literal += c;
        } else if (c == '\n') {
            literal += "\\n";
        } else if (byte < 0x20 || byte >= 0x7F || isQuestion) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\%03o", byte);
            literal += escape;
        } else {
            literal += c;
        }
    }
    return literal + "\"";
}

std::string CNameScope::Take(const std::string& wanted) {
    std::string name = wanted;
    for (int number = 2; !m_taken.insert(name).second; ++number)
        name = wanted + (wanted.empty() || !IsDigit(wanted.back()) ? "" : "_") + std::to_string(number);
    return name;
}

}  // namespace tool::generate
