#include "kvxml/types/internal/xsd_regex.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <new>

#include "kvxml/runtime/exceptions.h"
#include "kvxml/runtime/format_string.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::uint32_t kMatchLimit =
    2000000;  // backtracking steps, besides those that a byte of text may take
constexpr std::uint32_t kMatchLimitPerByte = 8;
constexpr std::uint32_t kHeapLimit = 64 * 1024;  // KiB
constexpr std::size_t kJitStackStart = 32 * 1024;
constexpr std::size_t kJitStackMaximum = 64 * 1024 * 1024;

// What matching needs besides the pattern; one per thread.
struct Scratch {
    pcre2_match_data* data = pcre2_match_data_create(1, nullptr);
    pcre2_match_context* context = pcre2_match_context_create(nullptr);
    pcre2_jit_stack* stack = nullptr;

    Scratch() {
        if (context == nullptr) return;
        pcre2_set_heap_limit(context, kHeapLimit);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    // Long texts need more than the small stack that compiled patterns start with. False when it is in use.
    bool EnlargeStack() {
        if (stack != nullptr) return false;
        stack = pcre2_jit_stack_create(kJitStackStart, kJitStackMaximum, nullptr);
        pcre2_jit_stack_assign(context, nullptr, stack);
        return stack != nullptr;
    }
    ~Scratch() {
        pcre2_jit_stack_free(stack);
        pcre2_match_context_free(context);
        pcre2_match_data_free(data);
    }
};

}  // namespace

CXsdRegex::CXsdRegex(std::string_view pattern) {
    const std::string translated = TranslateXsdPattern(pattern);
    int error = 0;
    PCRE2_SIZE offset = 0;
    pcre2_code* const code =
        pcre2_compile(reinterpret_cast<PCRE2_SPTR>(translated.data()), translated.size(),
                      PCRE2_UTF | PCRE2_ANCHORED | PCRE2_NO_AUTO_CAPTURE, &error, &offset, nullptr);
    if (code == nullptr) {
        PCRE2_UCHAR text[256];
        pcre2_get_error_message(error, text, sizeof text);
        throw CKvException(FormatString("Invalid Regular Expression: %s Error: '%s'",
                                        std::string(pattern).c_str(), reinterpret_cast<const char*>(text)));
    }
    pcre2_jit_compile(code, PCRE2_JIT_COMPLETE);  // without it the interpreter does the work
    m_code = code;
}

CXsdRegex::~CXsdRegex() {
    pcre2_code_free(static_cast<pcre2_code*>(m_code));
}

std::shared_ptr<const CXsdRegex> CXsdRegex::Get(const std::string& pattern) {
    // Kept until the process ends: members with static storage may outlive any static object of this file.
    static auto* const mutex = new std::mutex;
    static auto* const known = new std::map<std::string, std::weak_ptr<const CXsdRegex>>;
    const std::lock_guard<std::mutex> lock(*mutex);
    std::weak_ptr<const CXsdRegex>& entry = (*known)[pattern];
    std::shared_ptr<const CXsdRegex> regex = entry.lock();
    if (regex == nullptr) {
        regex = std::make_shared<const CXsdRegex>(pattern);
        entry = regex;
    }
    return regex;
}

CXsdRegex::Result CXsdRegex::Match(std::string_view text) const {
    thread_local Scratch scratch;
    if (scratch.data == nullptr || scratch.context == nullptr) throw std::bad_alloc();
    const auto* const code = static_cast<const pcre2_code*>(m_code);
    const auto* const subject = reinterpret_cast<PCRE2_SPTR>(text.empty() ? "" : text.data());
    constexpr std::size_t kMaxBytes = (UINT32_MAX - kMatchLimit) / kMatchLimitPerByte;
    const auto bytes = static_cast<std::uint32_t>(std::min(text.size(), kMaxBytes));
    pcre2_set_match_limit(scratch.context, kMatchLimit + bytes * kMatchLimitPerByte);
    int result = pcre2_match(code, subject, text.size(), 0, 0, scratch.data, scratch.context);
    if (result == PCRE2_ERROR_JIT_STACKLIMIT && scratch.EnlargeStack()) {
        result = pcre2_match(code, subject, text.size(), 0, 0, scratch.data, scratch.context);
    }
    if (result >= 0) return Result::Match;
    switch (result) {
        case PCRE2_ERROR_MATCHLIMIT:
        case PCRE2_ERROR_DEPTHLIMIT:
        case PCRE2_ERROR_HEAPLIMIT:
        case PCRE2_ERROR_JIT_STACKLIMIT:
            return Result::LimitExceeded;
        case PCRE2_ERROR_NOMEMORY:
            throw std::bad_alloc();
        default:
            return Result::NoMatch;  // or ill-formed UTF-8
    }
}

}  // namespace KvXmlLib16::internal
