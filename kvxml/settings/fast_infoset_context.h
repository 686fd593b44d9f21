/// Settings of Fast Infoset input and output, held by the serialization context.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "kvxml/export.h"

namespace KvXmlLib16 {

class CFastInfosetVocabulary;

/// A plain value; the one inside a serialization context is shared by the context's copies.
class KVXML_EXPORT CFastInfosetContext {
public:
    /// No table holds more entries, whatever is set.
    static constexpr std::uint32_t kMaxTableEntries = 1048576;

    CFastInfosetContext();
    ~CFastInfosetContext();
    CFastInfosetContext(const CFastInfosetContext& other);
    CFastInfosetContext& operator=(const CFastInfosetContext& other);

    /// Texts and attribute values of up to so many bytes are numbered as they are written, and written as
    /// their numbers when they come again. Those of a name whose values hardly ever come again are passed
    /// over. 0: none are numbered. Default 32.
    std::uint32_t GetMaxIndexedLength() const noexcept { return m_maxIndexedLength; }
    void SetMaxIndexedLength(std::uint32_t value) noexcept { m_maxIndexedLength = value; }

    /// So many texts, and as many attribute values, are numbered at most; at most `kMaxTableEntries` in any
    /// case. Readers keep as many. Names are always numbered. Default 32,768.
    std::uint32_t GetMaxTableEntries() const noexcept { return m_maxTableEntries; }
    void SetMaxTableEntries(std::uint32_t value) noexcept { m_maxTableEntries = value; }

    /// Write numbers, truth values and binary data in binary form, for readers that take them as they are.
    /// Done where the text is the one that the binary form stands for, so that nothing changes; other texts
    /// remain. Small numbers get longer, binary data shorter. Default false.
    bool GetWriteTypedValues() const noexcept { return m_writeTypedValues; }
    void SetWriteTypedValues(bool value) noexcept { m_writeTypedValues = value; }

    /// Write text that consists of the characters of numbers, or of dates and times, with four bits each
    /// where that is shorter. Default false.
    bool GetUseRestrictedAlphabets() const noexcept { return m_useRestrictedAlphabets; }
    void SetUseRestrictedAlphabets(bool value) noexcept { m_useRestrictedAlphabets = value; }

    /// The vocabulary that written documents name and begin with, and that is known for reading; null for
    /// none, the default. Only those who know it can read what is written.
    const std::shared_ptr<const CFastInfosetVocabulary>& GetExternalVocabulary() const noexcept {
        return m_externalVocabulary;
    }
    void SetExternalVocabulary(std::shared_ptr<const CFastInfosetVocabulary> value) noexcept;

    /// Makes a vocabulary known for reading, in place of one with the same URI. Null is passed over.
    void AddKnownVocabulary(std::shared_ptr<const CFastInfosetVocabulary> value);
    /// The vocabulary of this URI among the known ones and the one for writing; null when there is none.
    std::shared_ptr<const CFastInfosetVocabulary> FindVocabulary(std::string_view uri) const;

private:
    std::vector<std::shared_ptr<const CFastInfosetVocabulary>> m_knownVocabularies;
    std::shared_ptr<const CFastInfosetVocabulary> m_externalVocabulary;
    std::uint32_t m_maxIndexedLength = 32;
    std::uint32_t m_maxTableEntries = 32768;
    bool m_writeTypedValues = false;
    bool m_useRestrictedAlphabets = false;
};

}  // namespace KvXmlLib16
