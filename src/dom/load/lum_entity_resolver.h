// Finds relative external entities (DTDs, external parsed entities,
// schemas) in a list of directories given by the host: in each directory,
// first as a local file, then as a URL.
#pragma once

#include <cstddef>

#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/sax/InputSource.hpp>

namespace lumxml {

class LumEntityResolver : public XERCES_CPP_NAMESPACE::EntityResolver {
public:
    static constexpr size_t kMaxDirectories = 16;

    // `list`: directory names separated by commas; blank pieces are skipped.
    explicit LumEntityResolver(const char* list);
    ~LumEntityResolver() override;
    LumEntityResolver(const LumEntityResolver&) = delete;
    LumEntityResolver& operator=(const LumEntityResolver&) = delete;

    // A new source the parser owns, or null to let the parser resolve the
    // entity itself. `publicId` is not used.
    XERCES_CPP_NAMESPACE::InputSource* resolveEntity(const XMLCh* const publicId,
                                                     const XMLCh* const systemId) override;

    // From now on an id found through a directory must stay inside it
    // (dom/load/directory_confinement.h); one that leaves it is not found there.
    void confineToDirectories() { confined_ = true; }

    // The stored directories (each ending in a separator), in list order.
    size_t directoryCount() const;
    const XMLCh* directory(size_t index) const { return directories_[index]; }

private:
    void storeDirectory(const char* piece, size_t length);
    XERCES_CPP_NAMESPACE::InputSource* findIn(const XMLCh* directory, const XMLCh* systemId);

    XMLCh* directories_[kMaxDirectories] = {};
    bool confined_ = false;
};

// True when `systemId` names its entity absolutely: an absolute path, a URL
// with a scheme, or a path with a drive letter. Such ids are never looked up
// in the directory list.
bool isAbsoluteSystemId(const XMLCh* systemId);

}  // namespace lumxml
