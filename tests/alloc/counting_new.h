// The test executable's own global operator new and delete: every block
// lumxml and Xerces allocate with them (Xerces' memory manager included)
// is counted, and a chosen allocation can be made to fail, as the test
// suites of other XML libraries inject allocation failures.
//
// Only the executables built from tests/alloc link this: a replaced global
// operator new reaches the shared library through dynamic linking.
#pragma once

#include <cstdint>

namespace lumtest {
namespace heap {

// Blocks and bytes out now, and allocations made so far.
struct Counts {
    int64_t blocks = 0;
    int64_t bytes = 0;
    int64_t allocations = 0;
};
Counts now();

// From now on the allocations are numbered from 1; the `n`-th fails, and
// with `onward` every one after it as well.
void failFrom(int64_t n, bool onward);
// Allocations succeed again; answers how many were made (or refused) since
// the last failFrom or countFrom.
int64_t stopFailing();
// Numbers the allocations from now on without failing any.
void countFrom();
// True when at least one allocation was refused since the last failFrom.
bool refusedAny();
// The number of the first allocation since the last failFrom or countFrom
// whose block is still out (0 when none is): run again with
// LUMTEST_TRAP_ALLOCATION set to it to stop a debugger where it was made.
int64_t firstNumberedOut();

}  // namespace heap
}  // namespace lumtest
