#include "failing_allocation.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {
std::atomic<std::size_t> failFrom{std::numeric_limits<std::size_t>::max()};
}  // namespace

namespace testing_support {

AllocationsFail::AllocationsFail(std::size_t fromBytes) : previous_(failFrom.exchange(fromBytes)) {}
AllocationsFail::~AllocationsFail() { failFrom = previous_; }

}  // namespace testing_support

// The one replaceable allocation function: the runtime's other forms
// (arrays, nothrow) come through it, and its delete is free().
void* operator new(std::size_t size) {
    if (size >= failFrom.load()) throw std::bad_alloc();
    if (void* memory = std::malloc(size ? size : 1)) return memory;
    throw std::bad_alloc();
}
