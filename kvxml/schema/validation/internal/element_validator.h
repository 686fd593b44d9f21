/// Validates the elements of one document, event by event (XML Schema Part 1, 3.3.4, 3.4.4 and 3.2.4).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kvxml/base/internal/document_name.h"
#include "kvxml/schema/datatypes/internal/simple_type_checker.h"
#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/model/schema_set.h"
#include "kvxml/schema/validation/internal/identity_tracker.h"
#include "kvxml/schema/validation/internal/type_tables.h"

namespace KvXmlLib16::internal {

/// As messages show names and values.
inline std::string Bracket(std::string_view text) {
    return "[" + std::string(text) + "]";
}

/// A name with its namespace, if it has one.
inline std::string Described(const CExpandedName& name) {
    return Bracket(name.localName) +
           (name.namespaceUri.empty() ? std::string() : " of the namespace " + Bracket(name.namespaceUri));
}

/// Where a document stands: places for faults, and the prefixes in scope.
class IDocumentPlace : public IPrefixScope {
public:
    /// A number for the place of the current event. Cheap.
    virtual std::uint64_t GetMark() const = 0;
    /// Fills file, line, column, as far as they are known: those of the current event, or of the start of an
    /// element that is still open.
    virtual void Locate(std::uint64_t mark, CFault& fault) const = 0;
    /// Of the current element.
    virtual std::string GetPath() const = 0;
};

/// The state of one document. What depends on the schema alone is shared with all others.
class CElementValidator : private IIdentityReport {
public:
    explicit CElementValidator(std::shared_ptr<const CSchemaSet> schema);

    /// Place and report must stay until End.
    void Begin(const IDocumentPlace& place, CFaultList& report, bool ignoresNamespaces = false);
    /// `mark`: what the place's GetMark would give now.
    void Start(const CDocumentName& name, const CDocumentAttribute* attributes, std::size_t count,
               std::uint64_t mark);
    /// Characters of the innermost element, not none. `isWhole`: all that it has, told at its end.
    void Text(std::string_view text, bool isWhole = false);
    /// Whether a null child of the name is to be taken as not there, since it is declared here and cannot be
    /// nil.
    bool IsAbsentNull(const CDocumentName& name);
    /// The innermost element is null, which is nil where it may be.
    void Null();
    void EndElement();
    void End();

    const CElementDeclaration* GetElementDeclaration() const noexcept;
    const CTypeDefinition* GetTypeDefinition() const noexcept;
    /// Adds a fault with the place of the current event.
    void Fault(std::string message, const char* constraint, std::string_view attribute = {});

    /// What becomes of an element's characters.
    enum class TextUse : std::uint8_t { None, Note, Keep, OnlyBlanks, RefuseNil, RefuseEmpty };
    /// Of the innermost element; None: nobody need tell of them, OnlyBlanks: only of others.
    TextUse GetTextUse() const noexcept {
        return m_depth == 0 ? TextUse::None : m_frames[m_depth - 1]->textUse;
    }

private:
    struct Frame {
        const CDocumentName* name = nullptr;
        const CElementDeclaration* declaration = nullptr;
        const CTypeDefinition* type = nullptr;  ///< null: nothing is known of it
        const CComplexTypeDefinition* complex = nullptr;
        const CSimpleTypeDefinition* simple = nullptr;  ///< of the content; null: it has none
        const CTypeTable* table = nullptr;              ///< of `complex`
        std::uint64_t mark = 0;                         ///< of the start tag
        CContentModel::State state;
        TextUse textUse = TextUse::None;
        bool isSkipped = false;  ///< neither it nor what it contains is judged
        bool isNil = false;
        bool lacksNil = false;            ///< has xsi:nil, but may not; the empty content is not told as well
        bool isRefused = false;           ///< its value is not valid
        std::uint32_t strangers = 0;      ///< children that the content does not have
        std::vector<std::string> missed;  ///< names that were expected when a later one came
        bool hasChildren = false;
        bool hasCharacters = false;
        bool hasTextFault = false;
        std::string text;  ///< where it is kept
    };
    /// Attributes of the instance namespace on the current element; null: not there.
    struct InstanceAttributes {
        const CDocumentAttribute* type = nullptr;
        const CDocumentAttribute* nil = nullptr;
    };

    void StartIn(Frame& parent, Frame& frame);
    void StartRoot(Frame& frame);
    void StartByWildcard(const CWildcard& wildcard, Frame& frame);
    void Refuse(Frame& parent, Frame& frame, const CContentModel& model);
    CMatch Match(const CContentModel& model, CContentModel::State& state, bool recovers) const;
    const CElementDeclaration* FindElement() const;
    void FindInstanceAttributes();
    std::uint32_t InstanceNumber(const CDocumentName& name) const;
    void Judge(Frame& frame);
    const CTypeDefinition* ReadXsiType(const CElementDeclaration* declaration,
                                       const CTypeDefinition* declared);
    void ReadXsiNil(Frame& frame);
    void SetTextUse(Frame& frame);
    void CheckAttributes(Frame& frame);
    void CheckAttribute(Frame& frame, const CDocumentAttribute& attribute, std::size_t& wildIds);
    void CheckWildAttribute(Frame& frame, const CDocumentAttribute& attribute, std::size_t& wildIds);
    const CTypeTable::Use* FindUse(const CTypeTable& table, const CDocumentName& name) const;
    bool IsAboutDocument(const CDocumentName& name) const;
    void CheckAttributeValue(const CAttributeDeclaration& declaration, const CDocumentAttribute& attribute,
                             const std::string* fixedKey, const CValueConstraint& fixed,
                             std::size_t* wildIds);
    void AddDefaults(Frame& frame);
    void EndContent(Frame& frame, const std::string*& key);
    void CheckSimpleContent(Frame& frame, const std::string*& key);
    void CheckFixedMixed(Frame& frame);
    void TakeReferences(const CCheckedValue& value);
    Frame& Push(const CDocumentName& name);
    void FaultAt(std::uint64_t mark, std::string message, const char* constraint,
                 std::string_view attribute = {});
    std::string Name() const;

    void ReportIdentity(std::string message, const char* constraint, const CIdentityPlace* place) override;
    CIdentityPlace Here(bool withPath) const override;

    std::shared_ptr<const CSchemaSet> m_schema;
    const CTypeTables& m_tables;
    const IDocumentPlace* m_place = nullptr;
    CFaultList* m_report = nullptr;
    bool m_ignoresNamespaces = false;
    std::vector<std::unique_ptr<Frame>> m_frames;  // by depth; kept for their memory
    std::size_t m_depth = 0;
    CIdentityTracker m_identity;
    CCheckedValue m_value;

    // Of the element that starts
    const CDocumentName* m_name = nullptr;
    const CDocumentAttribute* m_attributes = nullptr;
    std::size_t m_attributeCount = 0;
    InstanceAttributes m_instance;
    std::vector<char> m_present;

    struct Reference {
        std::uint64_t line;
        std::uint64_t column;
        std::string path;
    };
    std::unordered_map<std::string, bool> m_ids;          // ID, and whether it was defined
    std::unordered_map<std::string, Reference> m_idrefs;  // the first place of each that is not defined yet
    std::string m_file;
};

}  // namespace KvXmlLib16::internal
