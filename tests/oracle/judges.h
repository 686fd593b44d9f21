/// The judges whose verdicts are compared, behind one interface.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kvxml/schema/model/schema_set.h"

namespace oracle {

/// What a judge says of a schema or a document.
struct CVerdict {
    bool isValid = true;
    std::string reason;  ///< its first message when not
};

/// Judges a schema, then documents by it.
class IJudge {
public:
    virtual ~IJudge() = default;
    virtual const char* Name() const = 0;
    virtual CVerdict Load(const std::string& schema) = 0;
    virtual CVerdict Judge(const std::string& document) = 0;
};

/// The library under test; the schema that it loaded last is what documents are made from.
class COwnJudge : public IJudge {
public:
    const char* Name() const override { return "kvxml"; }
    CVerdict Load(const std::string& schema) override;
    CVerdict Judge(const std::string& document) override;
    const KvXmlLib16::CSchemaSet* GetSchema() const { return m_schema.get(); }

private:
    std::shared_ptr<const KvXmlLib16::CSchemaSet> m_schema;
};

std::unique_ptr<IJudge> MakeXercesJudge();
std::unique_ptr<IJudge> MakeLibxmlJudge();

}  // namespace oracle
