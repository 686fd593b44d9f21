#include "kvxml/types/internal/xsd_regex.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <new>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

namespace {

// Backtracking suits nearly every pattern and text, but may go through the whole text at each of its steps
// and take very many. It is given up after this many characters gone through, or that many steps; the other
// way to match keeps all possibilities side by side and goes through the text once.
constexpr std::size_t kBacktrackingWork = std::size_t{1} << 28;
constexpr std::uint32_t kBacktrackingSteps = 2000000;
constexpr std::uint32_t kHeapLimit = 64 * 1024;  // KiB
// Possibilities side by side. Each may be compared with each other at every character, so that a long text
// leaves room for fewer.
constexpr std::size_t kMaxStates = 4000;
constexpr std::size_t kMinStates = 16;
constexpr std::size_t kComparisons = std::size_t{1} << 35;

std::size_t WorkspaceSize(std::size_t textLength) {
    std::size_t states = kMaxStates;
    while (states > kMinStates && states * states > kComparisons / (textLength + 1))
        states -= states / 4;
    return 20 + states * 6;
}

// --- memory: from operator new, as for all else ------------------------------------------------------------

void* Allocate(std::size_t size, void*) {
    return ::operator new(size, std::nothrow);
}

void Free(void* memory, void*) {
    ::operator delete(memory);
}

template <class T>
T* OrBadAlloc(T* made) {
    if (made == nullptr) throw std::bad_alloc();
    return made;
}

pcre2_general_context* Memory() {
    static pcre2_general_context* const memory =
        OrBadAlloc(pcre2_general_context_create(Allocate, Free, nullptr));
    return memory;
}

// What matching needs besides the pattern; one per thread. Made on first use, and again should that fail.
class Scratch {
public:
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() {
        pcre2_match_context_free(m_context);
        pcre2_match_data_free(m_data);
    }

    void Prepare() {
        if (m_data == nullptr) m_data = OrBadAlloc(pcre2_match_data_create(1, Memory()));
        if (m_context != nullptr) return;
        m_context = OrBadAlloc(pcre2_match_context_create(Memory()));
        pcre2_set_heap_limit(m_context, kHeapLimit);
    }
    /// After Prepare.
    void SetMatchLimit(std::uint32_t wanted) {
        if (m_limit == wanted) return;
        m_limit = wanted;
        pcre2_set_match_limit(m_context, wanted);
    }
    pcre2_match_data* Data() noexcept { return m_data; }
    pcre2_match_context* Context() noexcept { return m_context; }
    std::vector<int>& Workspace() noexcept { return m_workspace; }

private:
    pcre2_match_data* m_data = nullptr;
    pcre2_match_context* m_context = nullptr;
    std::uint32_t m_limit = 0;  // as set in the context
    std::vector<int> m_workspace;
};

// Null, and the error, for a pattern that PCRE2 refuses.
pcre2_code* Compile(const std::string& translated, int& error) {
    static pcre2_compile_context* const context = OrBadAlloc(pcre2_compile_context_create(Memory()));
    PCRE2_SIZE offset = 0;
    pcre2_code* const code =
        pcre2_compile(reinterpret_cast<PCRE2_SPTR>(translated.data()), translated.size(),
                      PCRE2_UTF | PCRE2_ANCHORED | PCRE2_NO_AUTO_CAPTURE, &error, &offset, context);
    if (code == nullptr && error == PCRE2_ERROR_HEAP_FAILED) throw std::bad_alloc();
    return code;
}

bool IsLimit(int result) noexcept {
    return result == PCRE2_ERROR_MATCHLIMIT || result == PCRE2_ERROR_DEPTHLIMIT ||
           result == PCRE2_ERROR_HEAPLIMIT || result == PCRE2_ERROR_JIT_STACKLIMIT ||
           result == PCRE2_ERROR_DFA_WSSIZE || result == PCRE2_ERROR_DFA_RECURSE;
}

}  // namespace

CXsdRegex::CXsdRegex(std::string_view pattern) : m_pattern(pattern) {
    int error = 0;
    pcre2_code* const code = Compile(TranslateXsdPattern(pattern, false), error);
    if (code == nullptr) {
        PCRE2_UCHAR text[256];
        pcre2_get_error_message(error, text, sizeof text);
        throw CKvException(FormatString("Invalid Regular Expression: %s Error: '%s'", m_pattern.c_str(),
                                        reinterpret_cast<const char*>(text)));
    }
    m_isJit = pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) == 0;  // else the interpreter does the work
    m_code = code;
}

CXsdRegex::~CXsdRegex() {
    pcre2_code_free(static_cast<pcre2_code*>(m_code));
    pcre2_code_free(static_cast<pcre2_code*>(m_sideBySideCode));
}

const void* CXsdRegex::SideBySideCode() const {
    std::call_once(m_sideBySideOnce, [this] {
        int error = 0;
        m_sideBySideCode = Compile(TranslateXsdPattern(m_pattern, true), error);
    });
    return m_sideBySideCode != nullptr ? m_sideBySideCode : m_code;
}

std::shared_ptr<const CXsdRegex> CXsdRegex::Get(const std::string& pattern) {
    // Kept until the process ends: members with static storage may outlive any static object of this file.
    static auto* const mutex = new std::mutex;
    static auto* const known = new std::map<std::string, std::weak_ptr<const CXsdRegex>>;
    const std::lock_guard<std::mutex> lock(*mutex);
    const auto entry = known->find(pattern);
    std::shared_ptr<const CXsdRegex> regex = entry == known->end() ? nullptr : entry->second.lock();
    if (regex != nullptr) return regex;
    regex = std::make_shared<const CXsdRegex>(pattern);
    // Patterns that nobody holds any more are forgotten whenever the number of entries has doubled.
    static std::size_t nextCleaning = 64;
    if (known->size() >= nextCleaning) {
        std::erase_if(*known, [](const auto& other) { return other.second.expired(); });
        nextCleaning = std::max<std::size_t>(64, known->size() * 2);
    }
    (*known)[pattern] = regex;
    return regex;
}

CXsdRegex::Result CXsdRegex::Match(std::string_view text, bool isAscii) const {
    thread_local Scratch scratch;
    scratch.Prepare();
    const auto* const code = static_cast<const pcre2_code*>(m_code);
    const auto* const subject = reinterpret_cast<PCRE2_SPTR>(text.empty() ? "" : text.data());
    const std::size_t steps = kBacktrackingWork / (text.size() + 1);
    scratch.SetMatchLimit(static_cast<std::uint32_t>(std::min<std::size_t>(steps, kBacktrackingSteps)));
    // The fast path of compiled patterns takes the text as it is, which for ASCII is well-formed UTF-8.
    int result = m_isJit && isAscii
                     ? pcre2_jit_match(code, subject, text.size(), 0, 0, scratch.Data(), scratch.Context())
                     : pcre2_match(code, subject, text.size(), 0, 0, scratch.Data(), scratch.Context());
    if (IsLimit(result)) {
        const std::size_t workspace = WorkspaceSize(text.size());
        scratch.Workspace().resize(workspace);
        scratch.SetMatchLimit(UINT32_MAX);  // counts something else here
        result = pcre2_dfa_match(static_cast<const pcre2_code*>(SideBySideCode()), subject, text.size(), 0,
                                 PCRE2_NO_UTF_CHECK | PCRE2_DFA_SHORTEST, scratch.Data(), scratch.Context(),
                                 scratch.Workspace().data(), workspace);
    }
    if (result >= 0) return Result::Match;
    if (result == PCRE2_ERROR_NOMEMORY) throw std::bad_alloc();
    return IsLimit(result) ? Result::LimitExceeded : Result::NoMatch;  // or ill-formed UTF-8
}

}  // namespace KvXmlLib16::internal
