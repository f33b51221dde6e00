// The one boundary guard: no exception ever leaves an export.
//
// Each family catches the Xerces exceptions it gives meaning to; whatever
// still escapes is reported here as "Unexpected exception" (or the export's
// own wording of it) with code 13 (LUM_ERR_UNEXPECTED).
#pragma once

#include <utility>

#include "frame/error_report.h"

namespace lumxml {

template <class Body>
void guardExport(ErrorReport report, Body&& body,
                 const char* unexpected = "Unexpected exception") noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        try {
            report.formatted(LUM_ERR_UNEXPECTED, unexpected);
        } catch (...) {
        }
    }
}

// For exports that answer a value and have no error buffer: `fallback`
// is returned when anything escapes.
template <class Result, class Body>
Result guardValue(Result fallback, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return fallback;
    }
}

}  // namespace lumxml
