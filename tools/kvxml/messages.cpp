#include "tools/kvxml/messages.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include "kvxml/base/exceptions.h"
#include "tools/kvxml/progress.h"
#include "tools/kvxml/utf8.h"

namespace tool {

namespace {

// What is left of a text that is longer than both together.
constexpr std::size_t kBeginning = 500;
constexpr std::size_t kEnd = 300;

struct Range {
    char32_t first;
    char32_t last;
};

/// What terminals act upon instead of showing it, or show as nothing.
constexpr Range kEscaped[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},       {0x61C, 0x61C},
    {0x180E, 0x180E}, {0x200B, 0x200F}, {0x2028, 0x202E},   {0x2060, 0x206F},
    {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F},
};

bool IsEscaped(char32_t code) {
    for (const Range& range : kEscaped) {
        if (code >= range.first && code <= range.last) return true;
    }
    return false;
}

void AppendEscaped(const Character& character, std::string& out) {
    char escape[16];
    const auto code = static_cast<unsigned>(character.code);
    const char* const format = !character.isWellFormed || code < 0x80 ? "\\x%02X"
                               : code <= 0xFFFF                       ? "\\u%04X"
                                                                      : "\\U%08X";
    std::snprintf(escape, sizeof(escape), format, code);
    out += escape;
}

void AppendPrintable(std::string_view text, std::string& out) {
    while (!text.empty()) {
        const Character character = FirstCharacter(text);
        if (character.code == '\n')
            out += "; ";
        else if (!character.isWellFormed || IsEscaped(character.code))
            AppendEscaped(character, out);
        else
            out += text.substr(0, character.length);
        text.remove_prefix(character.length);
    }
}

std::string MessageOfException() {
    try {
        throw;
    } catch (const KvXmlLib16::CKvException& e) {
        return e.GetFullMessage();
    } catch (const std::bad_alloc&) {
        return "not enough memory";
    } catch (const std::exception& e) {
        return e.what();
    }
}

void PrintLine(const std::string& line) {
    Progress().Clear();
    std::fputs(("kvxml: " + line + "\n").c_str(), stderr);
}

}  // namespace

CFailure::CFailure(const std::string& attempt, int error)
    : std::runtime_error((attempt.empty() ? attempt : attempt + ": ") + std::strerror(error)) {}

std::string Printable(std::string_view text) {
    std::string line;
    if (text.size() <= kBeginning + kEnd) {
        AppendPrintable(text, line);
    } else {
        AppendPrintable(text.substr(0, CutLength(text, kBeginning)), line);
        line += " [...] ";
        AppendPrintable(text.substr(CutLength(text, text.size() - kEnd)), line);
    }
    return line;
}

void Say(std::string_view message) {
    PrintLine(Printable(message));
}

void Say(const std::string& fileName, std::string_view message) {
    PrintLine(Printable(fileName) + ": " + Printable(message));
}

void SayException(const std::string& fileName) {
    Say(fileName, MessageOfException());
}

void SayException() {
    Say(MessageOfException());
}

int Print(std::string_view text) {
    const bool isPrinted =
        std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (isPrinted) return kDone;
    Say("standard output", "cannot write");
    return kRefused;
}

}  // namespace tool
