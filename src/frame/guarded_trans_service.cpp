#include "frame/guarded_trans_service.h"

#include "frame/parse_budget.h"

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// ICU's own limit for converter names (UCNV_MAX_CONVERTER_NAME_LENGTH).
constexpr XMLSize_t kLongestName = 59;

bool isPlainName(const XMLCh* name) {
    if (name == nullptr) return false;
    XMLSize_t length = 0;
    for (; name[length] != 0; ++length)
        if (name[length] >= 0x80 || length >= kLongestName) return false;
    return length > 0;
}

class GuardedTransService final : public XMLTransService {
public:
    explicit GuardedTransService(XMLTransService* inner) : inner_(inner) {}
    // Never destroyed: Xerces is never terminated, and the base destructor
    // would free the intrinsic encoding table the inner service shares.

    int compareIString(const XMLCh* const a, const XMLCh* const b) override {
        return inner_->compareIString(a, b);
    }
    int compareNIString(const XMLCh* const a, const XMLCh* const b,
                        const XMLSize_t maxChars) override {
        return inner_->compareNIString(a, b, maxChars);
    }
    const XMLCh* getId() const override { return inner_->getId(); }
    XMLLCPTranscoder* makeNewLCPTranscoder(MemoryManager* manager) override {
        return inner_->makeNewLCPTranscoder(manager);
    }
    // Every reader Xerces makes asks this once: the one hook there is for
    // counting entity expansions (frame/parse_budget.h).
    bool supportsSrcOfs() const override {
        ParseBudget::noteReaderMade();
        return inner_->supportsSrcOfs();
    }
    void upperCase(XMLCh* const text) override { inner_->upperCase(text); }
    void lowerCase(XMLCh* const text) override { inner_->lowerCase(text); }

protected:
    // Reached only for names that are not among Xerces' intrinsic encodings.
    XMLTranscoder* makeNewXMLTranscoder(const XMLCh* const encodingName,
                                        XMLTransService::Codes& resValue,
                                        const XMLSize_t blockSize,
                                        MemoryManager* const manager) override {
        if (!isPlainName(encodingName)) {
            resValue = XMLTransService::UnsupportedEncoding;
            return nullptr;
        }
        return inner_->makeNewTranscoderFor(encodingName, resValue, blockSize, manager);
    }

private:
    XMLTransService* inner_;
};

}  // namespace

void guardTranscodingService() {
    XMLTransService* current = XMLPlatformUtils::fgTransService;
    if (current == nullptr || dynamic_cast<GuardedTransService*>(current) != nullptr) return;
    XMLPlatformUtils::fgTransService = new GuardedTransService(current);
}

}  // namespace lumxml
