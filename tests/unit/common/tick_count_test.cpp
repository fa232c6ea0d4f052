#include "common/tick_count.h"

#include <gtest/gtest.h>

namespace {

// The 64-bit count that Windows XP does not have, extended from GetTickCount.
TEST(TickCount, ExtendsTheThirtyTwoBitCountAcrossItsWrap) {
    struct Case {
        std::uint64_t last;
        std::uint32_t now;
        std::uint64_t expected;
    } const cases[] = {
        {0, 12345, 12345},                                  // the first reading
        {1000, 1500, 1500},                                 // time goes on
        {0xFFFFFF00ull, 0x100, 0x100000100ull},             // the count wrapped
        {0x2FFFFFF00ull, 0x100, 0x300000100ull},            // and again, later
        {0x100000100ull, 0xFFFFFF00u, 0x100000100ull},      // a reading taken before the wrap, handed in late
        {5000, 4000, 5000},                                 // a late reading never goes back
        {5000, 5000 + 40u * 24 * 3600 * 1000, 5000 + 40ull * 24 * 3600 * 1000},  // 40 days without a call
    };
    for (const Case& c : cases) EXPECT_EQ(corvan::ExtendTickCount(c.last, c.now), c.expected) << c.last << " " << c.now;
}

}  // namespace
