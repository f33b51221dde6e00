// Xerces-C asks ICU for a converter by the encoding name a document
// declares. ICU 72's ucnv_openU copies that name into a 60-byte stack
// buffer through the default converter, which is UTF-8 on Linux: a
// declared name of fewer than 60 characters but more than 60 UTF-8 bytes
// overflows it. The pull reader goes on after fatal errors, so a document
// whose (already reported) invalid encoding name is non-ASCII reaches that
// call. GuardedTransService sits in front of Xerces' transcoding service and
// answers "unsupported encoding" for any name that is not plain ASCII of
// fewer than 60 characters, the only names ICU's converter table holds.
#pragma once

namespace lumxml {

// Puts the guard in front of Xerces' transcoding service (once; Xerces
// must be started).
void guardTranscodingService();

}  // namespace lumxml
