#include <gtest/gtest.h>

#include <vector>

#include "common/failure.h"
#include "platform/group_walk.h"
#include "raised.h"

using corvan::AnyGroupIsAdministrators;

// IsAdmin's walk over synthetic group lists: under Wine the user is always
// an administrator, so only here can the walk be seen to say no.
TEST(GroupWalk, FindsAdministratorsWithinTheRecordsRoom) {
    const struct {
        uint32_t count;
        int administrators;  // index of the Administrators group, -1 for none
        bool admin;
        int error;
    } cases[] = {
        {0, -1, false, 0},    {3, 0, true, 0},      {3, 2, true, 0},     {3, -1, false, 0},
        {101, 100, true, 0},  {100, -1, false, 0},  {150, 20, true, 0},  {150, -1, false, 9},
        {150, 120, false, 9},  // past the record's room: found too late
    };
    for (const auto& c : cases) {
        std::vector<size_t> asked;
        auto isAdministrators = [&](size_t index) {
            asked.push_back(index);
            return static_cast<int>(index) == c.administrators;
        };
        if (c.error) {
            EXPECT_EQ(testing_support::Raised([&] { AnyGroupIsAdministrators(c.count, isAdministrators); }).Number(),
                      c.error)
                << c.count << " groups";
            EXPECT_EQ(asked.size(), 101u) << "no group past the record is read";
        } else {
            EXPECT_EQ(AnyGroupIsAdministrators(c.count, isAdministrators), c.admin) << c.count << " groups";
        }
    }
}
