/// Validates the elements of one document, event by event (XML Schema Part 1, 3.3.4, 3.4.4 and 3.2.4).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kvxml/schema/datatypes/internal/simple_type_checker.h"
#include "kvxml/schema/model/schema_set.h"
#include "kvxml/schema/validation/internal/identity_tracker.h"
#include "kvxml/schema/validation/internal/type_tables.h"
#include "kvxml/schema/validation/schema_validator.h"

namespace KvXmlLib16 {
struct CXmlReaderAttribute;
}

namespace KvXmlLib16::internal {

/// The state of one document. What depends on the schema alone is kept from document to document.
class CElementValidator : private IIdentityReport, private IPrefixScope {
public:
    explicit CElementValidator(std::shared_ptr<const CSchemaSet> schema);

    /// Reader and report must stay until End.
    void Begin(const CXmlReader& reader, CValidationReport& report);
    void OnEvent();
    void End();

    const CElementDeclaration* GetElementDeclaration() const noexcept;
    const CTypeDefinition* GetTypeDefinition() const noexcept;
    /// Adds a fault with the place of the current event.
    void Fault(std::string message, const char* constraint, std::string_view attribute = {});

private:
    struct Frame {
        const CElementDeclaration* declaration = nullptr;
        const CTypeDefinition* type = nullptr;  ///< null: nothing is known of it
        const CComplexTypeDefinition* complex = nullptr;
        const CTypeTable* table = nullptr;  ///< of `complex`
        CContentModel::State state;
        bool isSkipped = false;  ///< neither it nor what it contains is judged
        bool isNil = false;
        bool lacksNil = false;            ///< has xsi:nil, but may not; the empty content is not told as well
        bool isRefused = false;           ///< its value is not valid
        std::uint32_t strangers = 0;      ///< children that the content does not have
        std::vector<std::string> missed;  ///< names that were expected when a later one came
        bool hasChildren = false;
        bool hasCharacters = false;
        bool hasTextFault = false;
        std::string text;  ///< of simple content, or mixed content with a fixed value
    };

    void Start();
    void StartIn(Frame& parent, Frame& frame);
    void StartRoot(Frame& frame);
    void StartByWildcard(const CWildcard& wildcard, Frame& frame);
    void Refuse(Frame& parent, Frame& frame, const CContentModel& model);
    void Judge(Frame& frame);
    const CTypeDefinition* ReadXsiType(const CElementDeclaration* declaration,
                                       const CTypeDefinition* declared);
    void ReadXsiNil(Frame& frame);
    void CheckAttributes(Frame& frame);
    void CheckAttribute(Frame& frame, const CXmlReaderAttribute& attribute, std::size_t& wildIds);
    void CheckAttributeValue(const CAttributeDeclaration& declaration, const CXmlReaderAttribute& attribute,
                             const std::string* fixedKey, const CValueConstraint& fixed,
                             std::size_t* wildIds);
    void AddDefaults(Frame& frame, const std::vector<bool>& present);
    void Text();
    void EndElement();
    void EndContent(Frame& frame, const std::string*& key);
    void CheckSimpleContent(Frame& frame, const CSimpleTypeDefinition& type, const std::string*& key);
    void CheckFixedMixed(Frame& frame);
    void TakeReferences(const CCheckedValue& value);
    Frame& Push();
    std::string Name() const;

    void ReportIdentity(std::string message, const char* constraint, const CIdentityPlace* place) override;
    CIdentityPlace Here(bool withPath) const override;
    bool Resolve(std::string_view prefix, std::string_view& namespaceUri) const override;

    std::shared_ptr<const CSchemaSet> m_schema;
    CTypeTables m_tables;
    const CXmlReader* m_reader = nullptr;
    CValidationReport* m_report = nullptr;
    std::vector<std::unique_ptr<Frame>> m_frames;  // by depth; kept for their memory
    std::size_t m_depth = 0;
    CIdentityTracker m_identity;
    CCheckedValue m_value;
    std::vector<bool> m_present;
    struct Reference {
        std::uint64_t line;
        std::uint64_t column;
        std::string path;
    };
    std::unordered_map<std::string, bool> m_ids;          // ID, and whether it was defined
    std::unordered_map<std::string, Reference> m_idrefs;  // the first place of each that is not defined yet
};

}  // namespace KvXmlLib16::internal
