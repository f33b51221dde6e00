// Releasing a whole document.
#pragma once

#include <xercesc/dom/DOMDocument.hpp>

namespace lumxml {

// Frees `document`, its heap and every node in it, like
// DOMDocument::release() but without that call's tree walk (see the .cpp).
// Runs in place whatever the depth of the tree.
void releaseDocument(XERCES_CPP_NAMESPACE::DOMDocument* document);

}  // namespace lumxml
