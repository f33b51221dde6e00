// Resolves the external entities a SAX reader meets: first asks the host
// (a "ResolveEntity" event at the head of the queue and the instance's
// callback), then looks relative system ids up in the search directories.
#pragma once

#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/sax/InputSource.hpp>

#include "lumxml.h"
#include "sax/sax_events.h"

namespace lumxml {

class LumSAXEntityResolver : public xercesc::EntityResolver {
public:
    static constexpr int kMaxDirectories = 16;

    // `searchPath`: comma-separated directories (null or empty for none).
    // Without an instance (the one-shot validation) only the directories
    // are searched: no event, no host callback.
    LumSAXEntityResolver(SaxParserInstance* instance, const char* searchPath,
                         sax::IdMemo* memo = nullptr);
    ~LumSAXEntityResolver() override;
    LumSAXEntityResolver(const LumSAXEntityResolver&) = delete;
    LumSAXEntityResolver& operator=(const LumSAXEntityResolver&) = delete;

    xercesc::InputSource* resolveEntity(const XMLCh* const publicId,
                                        const XMLCh* const systemId) override;

    // The directories in order, each ending in a slash (null past the last).
    const XMLCh* directory(int index) const;

    // Drops the directories and reads them again from `searchPath`: the
    // restart after "StartDocument" keeps this resolver but takes the
    // search path as the host left it in the record.
    void readSearchPath(const char* searchPath);

private:
    void addDirectory(const char* begin, const char* end);
    void releaseDirectories();
    // The host's answer (arg3, else arg4); throws LumSAXException when
    // the callback answers 1.
    xercesc::InputSource* askHost(const XMLCh* publicId, const XMLCh* systemId);
    xercesc::InputSource* searchDirectories(const XMLCh* systemId) const;

    SaxParserInstance* instance_;
    sax::IdMemo* memo_;
    XMLCh** directories_;
};

}  // namespace lumxml
