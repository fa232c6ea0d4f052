#include <gtest/gtest.h>

#include "platform/legacy_products.h"

using namespace corvan::legacy;

TEST(LegacyProducts, FirstListCodesLandAtTheirOwnIndex) {
    int pumps = 0;
    const LegacyScan scan = ScanLegacyProducts(
        {"{D467BA79-DA39-411B-9C75-11599878C293}", "{OTHER}", "{111C572F-D130-4E21-BB26-89D59C8C9EA0}"},
        [&pumps] { ++pumps; });
    EXPECT_TRUE(scan.installed);
    EXPECT_TRUE(scan.firstListFound);
    EXPECT_FALSE(scan.secondListFound);
    EXPECT_EQ(scan.found, (std::vector<std::string>{"", "{111C572F-D130-4E21-BB26-89D59C8C9EA0}", "",
                                                    "{D467BA79-DA39-411B-9C75-11599878C293}", "", ""}));
    EXPECT_EQ(pumps, 2);
}

TEST(LegacyProducts, TheFirstPassStopsAtTheFirstSecondListCode) {
    const LegacyScan scan = ScanLegacyProducts({"{OTHER}", "{3F21AE9F-9C13-4166-B245-97B5D01C1E8A}",
                                                "{FC2280EB-CD85-452F-8850-464B3003B69B}"});
    EXPECT_TRUE(scan.installed);
    EXPECT_FALSE(scan.firstListFound);
    EXPECT_EQ(scan.found, (std::vector<std::string>{"", "", "", "", "{3F21AE9F-9C13-4166-B245-97B5D01C1E8A}", "3"}));
}

// The installer reports codes upper-case with braces; anything else is
// another product.
TEST(LegacyProducts, OnlyExactCodesOfEitherListCount) {
    for (const char* code : {"{90110409-6000-11D3-8CFE-0150048383C9}", "{7ee17af3-3434-11d5-ac76-00010262094c}",
                             "7EE17AF3-3434-11D5-AC76-00010262094C"}) {
        const LegacyScan scan = ScanLegacyProducts({code});
        EXPECT_FALSE(scan.installed) << code;
        EXPECT_EQ(scan.found, std::vector<std::string>(6)) << code;
    }
}
