#include "counting_new.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace lumtest {
namespace heap {

namespace {

std::atomic<int64_t> blocksOut{0};
std::atomic<int64_t> bytesOut{0};
std::atomic<int64_t> allocationsMade{0};

// The numbering of allocations for failure injection; 0 fails nothing.
std::atomic<int64_t> numbered{0};
std::atomic<int64_t> failAt{0};
std::atomic<bool> failOnward{false};
std::atomic<bool> refused{false};
std::atomic<bool> numbering{false};

// Each block carries its size and its number in front, 16 bytes that keep
// the alignment.
constexpr size_t kHeader = 16;
struct Header {
    uint64_t size;
    int64_t number;  // its place in the numbering, 0 outside it
};

// Which numbered blocks are still out, to name the ones a session left.
constexpr int64_t kTracked = 1 << 16;
std::atomic<uint8_t> outByNumber[kTracked];

// LUMTEST_TRAP_ALLOCATION=k calls trapped() on the k-th numbered
// allocation: a place for a debugger's breakpoint.
int64_t trapAt() {
    static const int64_t at = [] {
        const char* text = std::getenv("LUMTEST_TRAP_ALLOCATION");
        return text != nullptr ? std::atoll(text) : -1;
    }();
    return at;
}
__attribute__((noinline)) void trapped() { asm volatile(""); }

// Called on every refusal: a place for a debugger's breakpoint.
__attribute__((noinline)) void refusing() { asm volatile(""); }

// Numbers the allocation (0 outside the numbering) and says whether to
// refuse it.
bool refuseThisOne(int64_t& index) {
    index = 0;
    if (!numbering.load(std::memory_order_relaxed)) return false;
    index = numbered.fetch_add(1, std::memory_order_relaxed) + 1;
    if (index == trapAt()) trapped();
    const int64_t target = failAt.load(std::memory_order_relaxed);
    if (target == 0) return false;
    const bool refuse = index == target || (index > target && failOnward.load());
    if (refuse) {
        refused.store(true);
        refusing();
    }
    return refuse;
}

void* take(size_t size) noexcept {
    int64_t index = 0;
    if (refuseThisOne(index)) return nullptr;
    auto* raw = static_cast<unsigned char*>(std::malloc(size + kHeader));
    if (raw == nullptr) return nullptr;
    auto* header = reinterpret_cast<Header*>(raw);
    header->size = size;
    header->number = index;
    if (index > 0 && index < kTracked) outByNumber[index].store(1, std::memory_order_relaxed);
    blocksOut.fetch_add(1, std::memory_order_relaxed);
    bytesOut.fetch_add(static_cast<int64_t>(size), std::memory_order_relaxed);
    allocationsMade.fetch_add(1, std::memory_order_relaxed);
    return raw + kHeader;
}

void give(void* block) noexcept {
    if (block == nullptr) return;
    auto* raw = static_cast<unsigned char*>(block) - kHeader;
    const auto* header = reinterpret_cast<const Header*>(raw);
    if (header->number > 0 && header->number < kTracked)
        outByNumber[header->number].store(0, std::memory_order_relaxed);
    blocksOut.fetch_sub(1, std::memory_order_relaxed);
    bytesOut.fetch_sub(static_cast<int64_t>(header->size), std::memory_order_relaxed);
    std::free(raw);
}

void* takeOrThrow(size_t size) {
    void* block = take(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

Counts now() {
    Counts counts;
    counts.blocks = blocksOut.load();
    counts.bytes = bytesOut.load();
    counts.allocations = allocationsMade.load();
    return counts;
}

void failFrom(int64_t n, bool onward) {
    for (auto& out : outByNumber) out.store(0, std::memory_order_relaxed);
    numbered.store(0);
    failAt.store(n);
    failOnward.store(onward);
    refused.store(false);
    numbering.store(true);
}

int64_t stopFailing() {
    numbering.store(false);
    failAt.store(0);
    return numbered.load();
}

void countFrom() { failFrom(0, false); }

bool refusedAny() { return refused.load(); }

int64_t firstNumberedOut() {
    const int64_t end = std::min(numbered.load(), kTracked - 1);
    for (int64_t i = 1; i <= end; ++i)
        if (outByNumber[i].load(std::memory_order_relaxed) != 0) return i;
    return 0;
}

}  // namespace heap
}  // namespace lumtest

// ---- The replaced global allocation functions ----------------------------------

using lumtest::heap::give;
using lumtest::heap::take;
using lumtest::heap::takeOrThrow;

void* operator new(std::size_t size) { return takeOrThrow(size); }
void* operator new[](std::size_t size) { return takeOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void operator delete(void* block) noexcept { give(block); }
void operator delete[](void* block) noexcept { give(block); }
void operator delete(void* block, std::size_t) noexcept { give(block); }
void operator delete[](void* block, std::size_t) noexcept { give(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { give(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { give(block); }
