#include "kvxml/base/exceptions.h"

#include <cstring>
#include <utility>

namespace KvXmlLib16 {

namespace internal {

CExceptionRoot::~CExceptionRoot() = default;

}  // namespace internal

CKvException::CKvException() = default;

CKvException::CKvException(std::string message) : m_message(std::move(message)) {}

CKvException::CKvException(std::string message, const CKvException& inner)
    : m_message(std::move(message)), m_inner(inner.Clone()) {}

CKvException::CKvException(std::string message, std::string path)
    : m_message(std::move(message)), m_path(std::move(path)) {
    if (!m_path.empty()) m_message.append("\nPath: ").append(m_path);
}

CKvException::CKvException(std::string message, std::string path, const CKvException& inner)
    : CKvException(std::move(message), std::move(path)) {
    m_inner.reset(inner.Clone());
}

CKvException::CKvException(const CKvException& other)
    : CExceptionRoot(other),
      std::exception(other),
      m_message(other.m_message),
      m_path(other.m_path),
      m_inner(other.m_inner ? other.m_inner->Clone() : nullptr) {}

CKvException::CKvException(CKvException&& other) noexcept
    : CExceptionRoot(other),
      std::exception(other),
      m_message(std::move(other.m_message)),
      m_path(std::move(other.m_path)),
      m_inner(std::move(other.m_inner)),
      m_what(other.m_what.exchange(nullptr)) {}

CKvException& CKvException::operator=(const CKvException& other) {
    if (this != &other) {
        std::unique_ptr<CKvException> inner(other.m_inner ? other.m_inner->Clone() : nullptr);
        m_message = other.m_message;
        m_inner = std::move(inner);
        ForgetWhat();
    }
    return *this;
}

CKvException& CKvException::operator=(CKvException&& other) noexcept {
    if (this != &other) {
        m_message = std::move(other.m_message);
        m_inner = std::move(other.m_inner);
        ForgetWhat();
        other.ForgetWhat();
    }
    return *this;
}

CKvException::~CKvException() {
    ForgetWhat();
}

void CKvException::ForgetWhat() noexcept {
    delete[] m_what.exchange(nullptr);
}

CKvException* CKvException::Clone() const {
    return new CKvException(*this);
}

std::string CKvException::GetFullMessage() const {
    std::string result = m_message;
    for (const CKvException* inner = m_inner.get(); inner != nullptr; inner = inner->m_inner.get()) {
        result.append(1, '\n').append(inner->m_message);
    }
    return result;
}

const char* CKvException::what() const noexcept {
    if (m_inner == nullptr) return m_message.c_str();
    if (const char* const known = m_what.load()) return known;
    try {
        const std::string full = GetFullMessage();
        std::unique_ptr<char[]> text(new char[full.size() + 1]);
        std::memcpy(text.get(), full.c_str(), full.size() + 1);
        char* first = nullptr;
        // Another thread may have been faster; then its text stays.
        return m_what.compare_exchange_strong(first, text.get()) ? text.release() : first;
    } catch (...) {
        return m_message.c_str();
    }
}

// Copying, moving, destruction and Clone, the same for every subclass.
#define KVXML_DEFINE_EXCEPTION_COMMON(Class, Base)             \
    Class::Class() = default;                                  \
    Class::Class(const CKvException& other) : Base(other) {}   \
    Class::Class(const Class& other) = default;                \
    Class::Class(Class&& other) noexcept = default;            \
    Class& Class::operator=(const Class& other) = default;     \
    Class& Class::operator=(Class&& other) noexcept = default; \
    Class::~Class() = default;                                 \
    CKvException* Class::Clone() const {                       \
        return new Class(*this);                               \
    }

#define KVXML_DEFINE_EXCEPTION_WITH_PATH(Class, Base)                                                  \
    KVXML_DEFINE_EXCEPTION_COMMON(Class, Base)                                                         \
    Class::Class(std::string message, std::string path) : Base(std::move(message), std::move(path)) {} \
    Class::Class(std::string message, std::string path, const CKvException& inner)                     \
        : Base(std::move(message), std::move(path), inner) {}

KVXML_DEFINE_EXCEPTION_WITH_PATH(CKvValidationException, CKvException)
KVXML_DEFINE_EXCEPTION_WITH_PATH(CKvInvalidNamespaceException, CKvValidationException)
KVXML_DEFINE_EXCEPTION_WITH_PATH(CKvSchemaValidationException, CKvValidationException)

KVXML_DEFINE_EXCEPTION_COMMON(CKvInvalidValueException, CKvValidationException)
CKvInvalidValueException::CKvInvalidValueException(std::string message)
    : CKvValidationException(std::move(message), std::string()) {}
CKvInvalidValueException::CKvInvalidValueException(std::string message, const CKvException& inner)
    : CKvValidationException(std::move(message), std::string(), inner) {}

#define KVXML_DEFINE_EXCEPTION_PLAIN(Class)                                 \
    KVXML_DEFINE_EXCEPTION_COMMON(Class, CKvException)                      \
    Class::Class(std::string message) : CKvException(std::move(message)) {} \
    Class::Class(std::string message, const CKvException& inner) : CKvException(std::move(message), inner) {}

KVXML_DEFINE_EXCEPTION_PLAIN(CKvInvalidStateException)
KVXML_DEFINE_EXCEPTION_PLAIN(CKvInvalidParamException)
KVXML_DEFINE_EXCEPTION_PLAIN(CKvOverFlowException)

}  // namespace KvXmlLib16
