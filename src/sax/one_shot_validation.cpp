// lumSAXParse: a whole file validated in one go with a Xerces SAX parser of
// its own, no events. Only the record's options and search path are read;
// the first error found is left in the record's error text.
#include "sax/parser_parts.h"
#include "sax/sax_parser.h"

#include <memory>

#include <xercesc/parsers/SAXParser.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLException.hpp>

#include "dom/load/back_slash_path.h"
#include "dom/load/dom_tree_error_reporter.h"
#include "frame/host_codec.h"
#include "frame/platform.h"
#include "sax/hardened_validator.h"
#include "sax/sax_entity_resolver.h"

namespace lumxml {
namespace sax {
namespace pull {

using namespace xercesc;

int32_t validate(SaxParserInstance& instance) {
    std::unique_ptr<LumSAXEntityResolver> resolver;
    HeapRef heap(OwnedHeap::create());  // outlives the parser
    HardenedValidator parser(heap.get());
    if ((instance.flags & kFlagValidate) != 0) {
        parser.setValidationScheme(SAXParser::Val_Always);
        if (hasText(instance.searchPath)) {
            // Not tied to a driven instance: it only searches the directories.
            resolver = std::make_unique<LumSAXEntityResolver>(nullptr, instance.searchPath);
            parser.setEntityResolver(resolver.get());
        }
    }
    parser.setDoNamespaces((instance.flags & kFlagNoNamespaces) == 0);
    // The record's limit guards the one-shot validation too (it stops at
    // the first fatal error, so the limit error ends it).
    std::unique_ptr<SecurityManager> manager;
    if (instance.entityExpansionLimit >= 0) {
        manager = std::make_unique<SecurityManager>();
        manager->setEntityExpansionLimit(static_cast<XMLSize_t>(instance.entityExpansionLimit));
        parser.setSecurityManager(manager.get());
    }
    DOMTreeErrorReporter reporter;
    parser.setErrorHandler(&reporter);

    if (instance.inputKind != 0) {
        reportOf(instance).fixed("Not supported", LUM_ERR_NOT_SUPPORTED);
        return 0;
    }
    if (instance.fileName == nullptr) {
        reportOf(instance).fixed("No input file specified", LUM_ERR_NO_INPUT_FILE);
        return 0;
    }
    // lumxml's own limits come with the record's limit, as on the pull reader.
    if (manager != nullptr)
        parser.armBudget(static_cast<uint64_t>(instance.entityExpansionLimit),
                         platform::fileSize(instance.fileName));
    try {
        XmlString name(pathForXerces(instance.fileName).c_str());
        parser.parseBudgeted(name.get());
    } catch (const XMLException& failure) {
        writePrefixed(instance, "Error parsing file: ", failure.getMessage(), LUM_ERR_PARSE);
        return 0;
    }
    if (reporter.sawErrors()) copyReporterText(instance, reporter);
    parser.setEntityResolver(nullptr);
    parser.setErrorHandler(nullptr);
    return 1;
}

}  // namespace pull
}  // namespace sax
}  // namespace lumxml
