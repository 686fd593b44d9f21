#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include "tests/oracle/judges.h"

namespace oracle {

namespace {

template <auto Free>
struct CFree {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};
template <class T, auto Free>
using Handle = std::unique_ptr<T, CFree<Free>>;

/// Keeps the first message; `data` is a CVerdict.
void Keep(void* data, xmlError* error) {
    auto& verdict = *static_cast<CVerdict*>(data);
    if (error->level < XML_ERR_ERROR || !verdict.isValid) return;
    verdict.isValid = false;
    verdict.reason = error->message == nullptr ? "" : error->message;
    while (!verdict.reason.empty() && verdict.reason.back() == '\n')
        verdict.reason.pop_back();
}

class CLibxmlJudge final : public IJudge {
public:
    const char* Name() const override { return "libxml2"; }

    CVerdict Load(const std::string& schema) override {
        CVerdict verdict;
        const Handle<xmlSchemaParserCtxt, xmlSchemaFreeParserCtxt> parser(
            xmlSchemaNewMemParserCtxt(schema.data(), static_cast<int>(schema.size())));
        xmlSchemaSetParserStructuredErrors(parser.get(), &Keep, &verdict);
        m_schema.reset(xmlSchemaParse(parser.get()));
        if (m_schema == nullptr && verdict.isValid) verdict = {false, "no schema"};
        return verdict;
    }

    CVerdict Judge(const std::string& document) override {
        CVerdict verdict;
        const Handle<xmlDoc, xmlFreeDoc> tree(
            xmlReadMemory(document.data(), static_cast<int>(document.size()), "memory", nullptr,
                          XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
        if (tree == nullptr) return {false, "not well-formed"};
        const Handle<xmlSchemaValidCtxt, xmlSchemaFreeValidCtxt> validator(
            xmlSchemaNewValidCtxt(m_schema.get()));
        xmlSchemaSetValidStructuredErrors(validator.get(), &Keep, &verdict);
        const int status = xmlSchemaValidateDoc(validator.get(), tree.get());
        if (status != 0 && verdict.isValid) verdict = {false, "status " + std::to_string(status)};
        return verdict;
    }

private:
    Handle<xmlSchema, xmlSchemaFree> m_schema;
};

}  // namespace

std::unique_ptr<IJudge> MakeLibxmlJudge() {
    return std::make_unique<CLibxmlJudge>();
}

}  // namespace oracle
