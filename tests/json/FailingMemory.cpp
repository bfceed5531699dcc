#include "tests/json/FailingMemory.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <malloc.h>
#include <new>

namespace kestrav {
namespace {

bool failing = false;
bool failed = false;
long long allowed = 0;
FailingMemory::Later later = FailingMemory::Later::succeed;
long long pieces = 0;

bool fails() noexcept {
    if (!failing) return false;
    if (allowed-- > 0) return false;
    failed = true;
    failing = later == FailingMemory::Later::fail;
    return true;
}

void* allocated(std::size_t size) {
    void* memory = fails() ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    ++pieces;
    return memory;
}

void released(void* memory) noexcept {
    if (memory == nullptr) return;
    --pieces;
    std::memset(memory, 0xDD, ::malloc_usable_size(memory));
    std::free(memory);
}

}  // namespace

void FailingMemory::failAfter(long long count, Later afterwards) noexcept {
    failing = true;
    failed = false;
    allowed = count;
    later = afterwards;
}

bool FailingMemory::stopFailing() noexcept {
    failing = false;
    return failed;
}

long long FailingMemory::living() noexcept {
    return pieces;
}

int FailingMemory::failInTurn(Later afterwards, const std::function<void()>& work,
                              const std::function<void()>& afterFailure) {
    for (int failures = 0;; ++failures) {
        bool raised = false;
        failAfter(failures, afterwards);
        try {
            work();
        } catch (const std::bad_alloc&) {
            raised = true;
        }
        const bool hasFailed = stopFailing();
        EXPECT_EQ(raised, hasFailed) << "allocation " << failures;
        if (!hasFailed) return failures;
        afterFailure();
    }
}

}  // namespace kestrav

void* operator new(std::size_t size) {
    return kestrav::allocated(size);
}
// std::stable_sort asks in this way, and gives back to the same delete as everybody.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept try {
    return kestrav::allocated(size);
} catch (const std::bad_alloc&) {
    return nullptr;
}
void operator delete(void* memory) noexcept {
    kestrav::released(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    kestrav::released(memory);
}
