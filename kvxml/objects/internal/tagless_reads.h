/// Keeps the reading of members without a tag linear where unknown elements are passed over.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace KvXmlLib16 {

class CXmlElement;

namespace internal {

/// What is known about such members while the children of one element are read, if unknown elements are
/// ignored: then a member that was not found is looked for again after every element that is passed over.
///
/// A sequence that failed has looked at all that follows, so nobody looks again from there on, unless it was
/// for too many items: then it may begin where fewer are left. An all-group that failed is tried again where
/// it came to a halt, not within what it had taken. A choice is tried everywhere, for it looks at one element
/// only.
///
/// Lives on the stack of the thread that reads the element; those of outer elements wait below it.
class CTaglessReads {
public:
    explicit CTaglessReads(CXmlElement& parent) noexcept;
    CTaglessReads(const CTaglessReads&) = delete;
    CTaglessReads& operator=(const CTaglessReads&) = delete;
    ~CTaglessReads();

    /// That of the element whose children are being read; null when nothing is kept for it.
    static CTaglessReads* Of(const CXmlElement* parent) noexcept;

    /// Whether a read of `member` that starts at the child (null: after the last) is known to fail.
    bool IsInVain(const void* member, const CXmlElement* at);
    bool WasTried(const void* member) const noexcept { return Find(member) != nullptr; }
    /// `member` was read from `from` on and not found. With `isIncomplete` part of it was, and the object
    /// said by SetHalt how far that goes.
    void NoteFailure(const void* member, const CXmlElement* from, bool isIncomplete);
    /// Called by an object that lacks something: the child at which it could not go on; null: it has looked
    /// at all of them.
    void SetHalt(const CXmlElement* at) noexcept { m_halt = at; }
    /// `member` cannot be read from `from` on, but perhaps from `until` on.
    void NoteRange(const void* member, const CXmlElement* from, const CXmlElement* until);

    /// A collection of a sequence has read more items than it may have; it would not have if the sequence had
    /// begun at `retryAt`.
    void SetOverflow(const CXmlElement* retryAt) noexcept {
        m_hasOverflow = true;
        m_retryAt = retryAt;
    }
    /// Whether that was said since the last call.
    bool TakeOverflow(const CXmlElement*& retryAt) noexcept {
        if (!m_hasOverflow) return false;
        m_hasOverflow = false;
        retryAt = m_retryAt;
        return true;
    }

private:
    struct Failure {
        const void* member;
        std::uint32_t from;   // position of the first child from which it fails
        std::uint32_t until;  // position of the next child from which it may succeed
    };

    const Failure* Find(const void* member) const noexcept;
    std::uint32_t PositionOf(const CXmlElement* child);

    CXmlElement& m_parent;
    CTaglessReads* const m_outer;
    const CXmlElement* m_halt = nullptr;
    const CXmlElement* m_retryAt = nullptr;
    bool m_hasOverflow = false;
    std::vector<Failure> m_failures;
    std::unordered_map<const CXmlElement*, std::uint32_t> m_positions;  // of the children, once asked for
};

}  // namespace internal
}  // namespace KvXmlLib16
