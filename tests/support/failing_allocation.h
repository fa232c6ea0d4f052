#pragma once
#include <cstddef>

namespace testing_support {

// While it lives, every allocation through operator new of at least
// `fromBytes` bytes fails with std::bad_alloc, as on a machine whose memory
// has run out. Works in the test programs that link failing_allocation.cpp,
// for the code linked into them (not for a DLL they load).
class AllocationsFail {
public:
    explicit AllocationsFail(std::size_t fromBytes = 0);
    ~AllocationsFail();
    AllocationsFail(const AllocationsFail&) = delete;
    AllocationsFail& operator=(const AllocationsFail&) = delete;

private:
    std::size_t previous_;
};

}  // namespace testing_support
