#include "kvxml/platform/internal/code_page.h"

#include <langinfo.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/platform/internal/converter.h"

namespace KvXmlLib16::internal {

namespace {

constexpr unsigned int kSystemCodePage = 0;
constexpr unsigned int kUtf8CodePage = 65001;
constexpr std::string_view kReplacementUtf8 = "\xEF\xBF\xBD";

std::atomic<bool> g_asciiOnly{false};
std::atomic<unsigned int> g_localCodePage{kThreadCodePage};

struct CodePageName {
    unsigned int codePage;
    const char* name;
};

// Windows numbers whose converter is not called "CP" and the number.
constexpr CodePageName kCodePageNames[] = {
    {936, "GBK"},           {950, "BIG5"},          {1361, "JOHAB"},        {10000, "MACINTOSH"},
    {20127, "US-ASCII"},    {20866, "KOI8-R"},      {20932, "EUC-JP"},      {20936, "GB2312"},
    {20949, "EUC-KR"},      {21866, "KOI8-U"},      {28591, "ISO-8859-1"},  {28592, "ISO-8859-2"},
    {28593, "ISO-8859-3"},  {28594, "ISO-8859-4"},  {28595, "ISO-8859-5"},  {28596, "ISO-8859-6"},
    {28597, "ISO-8859-7"},  {28598, "ISO-8859-8"},  {28599, "ISO-8859-9"},  {28600, "ISO-8859-10"},
    {28601, "ISO-8859-11"}, {28603, "ISO-8859-13"}, {28604, "ISO-8859-14"}, {28605, "ISO-8859-15"},
    {28606, "ISO-8859-16"}, {38598, "ISO-8859-8"},  {50220, "ISO-2022-JP"}, {50225, "ISO-2022-KR"},
    {51932, "EUC-JP"},      {51936, "GB2312"},      {51949, "EUC-KR"},      {54936, "GB18030"},
    {65000, "UTF-7"},
};

// The name of the local code page, or null when it is UTF-8. `buffer` may hold the result.
const char* LocalCharset(char (&buffer)[16]) noexcept {
    const unsigned int codePage = LocalCodePage();
    if (codePage == kUtf8CodePage) return nullptr;
    if (codePage == kSystemCodePage || codePage == kThreadCodePage) {
        const char* charset = nl_langinfo(CODESET);
        // The first is the usual answer, the others are what hosts call the code set of the C locale.
        for (const char* name : {"UTF-8", "utf8", "ANSI_X3.4-1968", "US-ASCII", "646", "ASCII", ""}) {
            if (std::strcmp(charset, name) == 0) return nullptr;
        }
        return charset;
    }
    const auto* entry = std::find_if(std::begin(kCodePageNames), std::end(kCodePageNames),
                                     [&](const CodePageName& name) { return name.codePage == codePage; });
    if (entry != std::end(kCodePageNames)) return entry->name;
    std::snprintf(buffer, sizeof(buffer), "CP%u", codePage);
    return buffer;
}

// A few characters, of which every code page beyond ASCII has some.
constexpr std::string_view kSamples[] = {"\u00E9", "\u0416", "\u05D0", "\u0627",
                                         "\u0E01", "\u20AC", "\u65E5", "\uD55C"};

// Both directions of the local code page that a thread used last.
struct LocalConverter {
    std::string charset;
    CConverter toLocal;
    CConverter fromLocal;
    bool asciiCompatible = false;  // text of ASCII bytes is the same in both
    std::string questionMark;
};

// Whether ASCII characters stand for themselves and never, as in shift sequences, for others.
bool IsAsciiCompatible(LocalConverter& local) {
    std::string ascii;
    for (int c = 1; c < 0x80; ++c)
        ascii.push_back(static_cast<char>(c));
    std::string_view rest = ascii;
    std::string converted;
    const CConverter::Result outcome = local.fromLocal.Convert(rest, converted);
    if (outcome != CConverter::Result::Done || converted != ascii) return false;
    for (std::string_view sample : kSamples) {
        converted.clear();
        local.toLocal.Reset();
        if (local.toLocal.Convert(sample, converted) == CConverter::Result::Done && IsAllAscii(converted))
            return false;
    }
    return true;
}

LocalConverter& OpenLocal(const char* charset) {
    thread_local LocalConverter current;
    if (current.charset == charset) return current;
    LocalConverter opened;
    opened.charset = charset;
    opened.toLocal = CConverter(charset, "UTF-8");
    opened.fromLocal = CConverter("UTF-8", charset);
    if (!opened.toLocal.IsOpen() || !opened.fromLocal.IsOpen())
        throw CKvException("Unknown code page [" + std::string(charset) + "]");
    std::string_view question = "?";
    opened.toLocal.Convert(question, opened.questionMark);
    opened.toLocal.Finish(opened.questionMark);
    opened.asciiCompatible = IsAsciiCompatible(opened);
    current = std::move(opened);
    return current;
}

}  // namespace

bool IsAsciiOnly() noexcept {
    return g_asciiOnly.load(std::memory_order_relaxed);
}

void SetAsciiOnly(bool value) noexcept {
    g_asciiOnly.store(value, std::memory_order_relaxed);
}

unsigned int LocalCodePage() noexcept {
    return g_localCodePage.load(std::memory_order_relaxed);
}

void SetLocalCodePage(unsigned int codePage) noexcept {
    g_localCodePage.store(codePage, std::memory_order_relaxed);
}

bool IsLocalUtf8() noexcept {
    char buffer[16];
    return IsAsciiOnly() || LocalCharset(buffer) == nullptr;
}

std::string Utf8ToLocal(std::string_view utf8) {
    char buffer[16];
    const char* charset = IsAsciiOnly() ? nullptr : LocalCharset(buffer);
    if (charset == nullptr || utf8.empty()) return std::string(utf8);
    LocalConverter& local = OpenLocal(charset);
    if (local.asciiCompatible && IsAllAscii(utf8)) return std::string(utf8);

    std::string result;
    local.toLocal.Reset();
    while (local.toLocal.Convert(utf8, result) != CConverter::Result::Done) {
        local.toLocal.Finish(result);
        result.append(local.questionMark);
        // One "?" for the whole character.
        do {
            utf8.remove_prefix(1);
        } while (!utf8.empty() && (static_cast<unsigned char>(utf8.front()) & 0xC0) == 0x80);
    }
    local.toLocal.Finish(result);
    return result;
}

std::string LocalToUtf8(std::string_view text) {
    if (IsAsciiOnly()) return std::string(text);
    char buffer[16];
    const char* charset = LocalCharset(buffer);
    if (charset == nullptr) return RepairUtf8(text);
    if (text.empty()) return std::string();
    LocalConverter& local = OpenLocal(charset);
    if (local.asciiCompatible && IsAllAscii(text)) return std::string(text);

    std::string result;
    local.fromLocal.Reset();
    CConverter::Result outcome = CConverter::Result::Done;
    while ((outcome = local.fromLocal.Convert(text, result)) != CConverter::Result::Done) {
        local.fromLocal.Finish(result);
        result.append(kReplacementUtf8);
        text.remove_prefix(outcome == CConverter::Result::Incomplete ? text.size() : 1);
    }
    local.fromLocal.Finish(result);
    return result;
}

}  // namespace KvXmlLib16::internal
