#include "kvxml/schema/schema.h"
#include "tests/oracle/judges.h"

namespace oracle {

using namespace KvXmlLib16;

namespace {

CVerdict VerdictOf(const CFaultList& faults) {
    if (faults.IsEmpty()) return {};
    return {false, ToText(faults.GetFaults().front())};
}

}  // namespace

CVerdict COwnJudge::Load(const std::string& schema) {
    CSchemaLoader loader;
    loader.AddText(schema, "schema.xsd");
    CFaultList faults;
    m_schema = loader.Load(faults);
    return VerdictOf(faults);
}

CVerdict COwnJudge::Judge(const std::string& document) {
    return VerdictOf(
        CSchemaValidator(m_schema).ValidateBuffer(document.data(), document.size(), "document.xml"));
}

}  // namespace oracle
