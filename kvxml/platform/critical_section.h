/// Recursive lock that guards the metadata tables.
#pragma once

#include <mutex>

namespace KvXmlLib16 {

/// A lock that the thread holding it may take again. Satisfies the standard's Lockable requirements, so
/// `std::lock_guard<CKVCriticalSection>` works. Unlocking from another thread is a caller error.
class CKVCriticalSection {
public:
    CKVCriticalSection() = default;
    CKVCriticalSection(const CKVCriticalSection&) = delete;
    CKVCriticalSection& operator=(const CKVCriticalSection&) = delete;

    void Enter() { m_mutex.lock(); }
    void Leave() { m_mutex.unlock(); }

    void lock() { Enter(); }
    void unlock() { Leave(); }
    bool try_lock() { return m_mutex.try_lock(); }

private:
    std::recursive_mutex m_mutex;
};

}  // namespace KvXmlLib16
