#include "kvxml/settings/serialization_context.h"

#include <cstring>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/settings/fast_infoset_context.h"
#include "kvxml/settings/internal/shared_settings.h"
#include "kvxml/settings/json_context.h"

namespace KvXmlLib16 {

namespace {

#define KVXML_IGNORE_CONFLICT                                                                         \
    "The parser can only ignore additional elements, or ignore the fact that some required ones are " \
    "missing, you can not ignore both\n"

constexpr const char* kUnknownConflict = KVXML_IGNORE_CONFLICT
    "Set IgnoreMissingMandatoryElements to false before setting IgnoreUnknownElements to true";
constexpr const char* kMissingConflict = KVXML_IGNORE_CONFLICT
    "Set IgnoreUnknownElements to false before setting IgnoreMissingMandatoryElements to true";
constexpr const char* kInvalidIndent =
    "IndentChars can only contain Whitespace characters, i.e. \\t or spaces";

#undef KVXML_IGNORE_CONFLICT

}  // namespace

CSerializationContext::CSerializationContext() : m_shared(std::make_unique<Shared>()), m_indentChars("\t") {}

CSerializationContext::CSerializationContext(const CSerializationContext& other) : CSerializationContext() {
    *this = other;
}

CSerializationContext& CSerializationContext::operator=(const CSerializationContext& other) {
    if (this == &other) return *this;
    m_shared->Set(other.m_shared->Get());
    m_documentCheck = other.m_documentCheck;
    m_defaultNamespaceUri = other.m_defaultNamespaceUri;
    m_namespaceAliases = other.m_namespaceAliases;
    m_processingInstructions = other.m_processingInstructions;
    m_inLineSchema = other.m_inLineSchema;
    m_indentChars = other.m_indentChars;
    m_maxInflatedSize = other.m_maxInflatedSize;
    m_maxExpansion = other.m_maxExpansion;
    m_maxDistinctNames = other.m_maxDistinctNames;
    m_maxElementDepth = other.m_maxElementDepth;
    m_maxInflationRatio = other.m_maxInflationRatio;
    m_schemaType = other.m_schemaType;
    m_writeTypeAttribute = other.m_writeTypeAttribute;
    m_ignoreInvalidCollectionCounts = other.m_ignoreInvalidCollectionCounts;
    m_ignoreMissingChoice = other.m_ignoreMissingChoice;
    m_ignoreMissingMandatoryElements = other.m_ignoreMissingMandatoryElements;
    m_ignoreUnknownElements = other.m_ignoreUnknownElements;
    m_ignoreUnknownAttributes = other.m_ignoreUnknownAttributes;
    m_ignoreNamespaces = other.m_ignoreNamespaces;
    m_noOptionalAttributeDefaultOutput = other.m_noOptionalAttributeDefaultOutput;
    m_writeDefaultElementValues = other.m_writeDefaultElementValues;
    m_stripCDATA = other.m_stripCDATA;
    return *this;
}

CSerializationContext::~CSerializationContext() = default;

CSerializationContext& DefaultContext() {
    return CSerializationContext::GetDefaultContext();
}

CSerializationContext& CSerializationContext::GetDefaultContext() {
    static CSerializationContext context;
    return context;
}

void CSerializationContext::SetIgnoreUnknownElements(bool value) {
    if (value && m_ignoreMissingMandatoryElements) throw CKvInvalidStateException(kUnknownConflict);
    m_ignoreUnknownElements = value;
}

void CSerializationContext::SetIgnoreMissingMandatoryElements(bool value) {
    if (value && m_ignoreUnknownElements) throw CKvInvalidStateException(kMissingConflict);
    m_ignoreMissingMandatoryElements = value;
}

void CSerializationContext::SetDefaultNamespaceURI(const char* value) {
    m_defaultNamespaceUri = internal::OrEmpty(value);
}

void CSerializationContext::SetInLineSchema(const char* value) {
    m_inLineSchema = internal::OrEmpty(value);
}

void CSerializationContext::SetIndentChars(const char* value) {
    if (value == nullptr) value = "";
    if (value[std::strspn(value, " \t")] != '\0') throw CKvInvalidParamException(kInvalidIndent);
    m_indentChars = value;
}

const CAttributeCol* CSerializationContext::FindAdditionalRootAttributes() const noexcept {
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    return m_shared->pointers.rootAttributes.get();
}

CFastInfosetContext& CSerializationContext::GetFIContext() const {
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    std::shared_ptr<CFastInfosetContext>& settings = m_shared->pointers.fastInfoset;
    if (settings == nullptr) settings = std::make_shared<CFastInfosetContext>();
    return *settings;
}

CJsonContext& CSerializationContext::GetJsonContext() const {
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    std::shared_ptr<CJsonContext>& settings = m_shared->pointers.json;
    if (settings == nullptr) settings = std::make_shared<CJsonContext>();
    return *settings;
}

}  // namespace KvXmlLib16
