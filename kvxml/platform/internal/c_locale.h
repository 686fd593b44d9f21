/// Runs C library calls in the "C" locale, whatever the process or thread has set.
#pragma once

namespace KvXmlLib16::internal {

/// Switches the calling thread to the "C" locale for its lifetime and back afterwards.
class CScopedCLocale {
public:
    CScopedCLocale() noexcept;
    ~CScopedCLocale();
    CScopedCLocale(const CScopedCLocale&) = delete;
    CScopedCLocale& operator=(const CScopedCLocale&) = delete;

private:
    void* m_previous;
};

}  // namespace KvXmlLib16::internal
