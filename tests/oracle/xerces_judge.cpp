#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "tests/oracle/judges.h"

namespace oracle {

namespace {

using namespace xercesc;

/// Keeps the first message.
class CKeeper final : public ErrorHandler {
public:
    void warning(const SAXParseException&) override {}
    void error(const SAXParseException& fault) override { Keep(fault.getMessage()); }
    void fatalError(const SAXParseException& fault) override { Keep(fault.getMessage()); }
    void resetErrors() override {}

    void Keep(const XMLCh* message) {
        if (!m_verdict.isValid) return;
        char* text = XMLString::transcode(message);
        m_verdict = {false, text == nullptr ? "" : text};
        XMLString::release(&text);
    }
    CVerdict m_verdict;
};

class CXercesJudge final : public IJudge {
public:
    CXercesJudge() { XMLPlatformUtils::Initialize(); }
    ~CXercesJudge() override {
        m_reader.reset();
        m_pool.reset();
        XMLPlatformUtils::Terminate();
    }
    const char* Name() const override { return "Xerces-C"; }

    CVerdict Load(const std::string& schema) override {
        m_reader.reset();
        m_pool = std::make_unique<XMLGrammarPoolImpl>();
        m_reader.reset(XMLReaderFactory::createXMLReader(XMLPlatformUtils::fgMemoryManager, m_pool.get()));
        m_reader->setFeature(XMLUni::fgSAX2CoreValidation, true);
        m_reader->setFeature(XMLUni::fgXercesDynamic, false);
        m_reader->setFeature(XMLUni::fgXercesSchema, true);
        m_reader->setFeature(XMLUni::fgXercesSchemaFullChecking, true);
        m_reader->setFeature(XMLUni::fgXercesUseCachedGrammarInParse, true);
        m_reader->setFeature(XMLUni::fgXercesLoadSchema, false);
        return Run(
            [&](const MemBufInputSource& source) {
                m_reader->loadGrammar(source, Grammar::SchemaGrammarType, true);
            },
            schema);
    }

    CVerdict Judge(const std::string& document) override {
        return Run([&](const MemBufInputSource& source) { m_reader->parse(source); }, document);
    }

private:
    template <class Action>
    CVerdict Run(Action action, const std::string& text) {
        CKeeper keeper;
        m_reader->setErrorHandler(&keeper);
        const MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "memory");
        try {
            action(source);
        } catch (const XMLException& e) {
            keeper.Keep(e.getMessage());
        } catch (const SAXException& e) {
            keeper.Keep(e.getMessage());
        }
        return keeper.m_verdict;
    }

    std::unique_ptr<XMLGrammarPool> m_pool;
    std::unique_ptr<SAX2XMLReader> m_reader;
};

}  // namespace

std::unique_ptr<IJudge> MakeXercesJudge() {
    return std::make_unique<CXercesJudge>();
}

}  // namespace oracle
