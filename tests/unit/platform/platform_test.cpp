#include <gtest/gtest.h>

#include "../table.h"
#include "platform/group_walk.h"
#include "platform/guid_text.h"
#include "platform/legacy_products.h"
#include "platform/reg_types.h"
#include "raised.h"

using namespace corvan;
using namespace corvan::reg;
using namespace corvan::legacy;
using testing_support::Raised;

namespace {

std::vector<uint8_t> Hex(const std::string& hex) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) bytes.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

RegVariant Value(const std::string& kind, const std::string& v) {
    if (kind == "String") return RegVariant::String(v);
    if (kind == "Integer") return RegVariant::Integer(static_cast<int16_t>(std::stoi(v)));
    if (kind == "Long") return RegVariant::Long(static_cast<int32_t>(std::stol(v, nullptr, 0)));
    if (kind == "Bytes") return RegVariant::Bytes(Hex(v));
    if (kind == "Boolean") return RegVariant::Boolean(v == "1");
    if (kind == "Double") return RegVariant::Double(std::stod(v));
    if (kind == "Date") return RegVariant::Date(std::stod(v));
    return RegVariant();
}

}  // namespace

TEST(RegistryTypes, EachValuePlansItsTypeAndBytes) {
    for (const auto& c : unit_table::Table("platform.txt", "registry types")) {
        const RegWrite plan = PlanRegWrite(Value(c[0], c[1]));
        std::vector<uint8_t> bytes(c[1].begin(), c[1].end());
        bytes.push_back(0);
        EXPECT_EQ(plan.type, std::stoi(c[2])) << c.where;
        EXPECT_EQ(plan.data, c[0] == "String" ? bytes : Hex(c[3])) << c.where;
        EXPECT_EQ(plan.write, plan.type != 0) << c.where;
        EXPECT_EQ(plan.status, plan.type != 0 ? 0 : 13) << c.where;
    }
    for (const auto& c : unit_table::Table("platform.txt", "display"))
        EXPECT_EQ(Value(c[0], c[1]).DisplayText(), c[2]) << c.where;
    // A DWORD type with a value that is no integer writes nothing and is no
    // error; binary with a text is 26001.
    const RegWrite none = PlanRegWriteAs(kRegDwordBigEndian, RegVariant::String("7"));
    EXPECT_EQ(none.status + none.write, 0);
    EXPECT_EQ(Raised([] { PlanRegWriteAs(kRegBinary, RegVariant::String("abc")); }).Number(), 26001);
    const uint8_t tail[8] = {0x0a, 0xb, 0, 1, 2, 3, 0xfe, 0xff};
    EXPECT_EQ(GuidText(0xab, 0xc, 0xdef0, tail), "{000000AB-000C-DEF0-0A0B-00010203FEFF}");
}

// IsAdmin's walk over synthetic group lists: under Wine the user is always
// an administrator, so only here can the walk be seen to say no. The record
// has room for 101 groups: past it, error 9 and no further group read.
TEST(GroupWalk, FindsAdministratorsWithinTheRecordsRoom) {
    const struct { uint32_t count; int administrators; int expected; } cases[] = {  // -1 none; 1 admin, 9 the error
        {0, -1, 0}, {3, 0, 1}, {3, 2, 1}, {3, -1, 0}, {101, 100, 1}, {100, -1, 0}, {150, 20, 1}, {150, -1, 9}, {150, 120, 9}};
    for (const auto& c : cases) {
        size_t asked = 0;
        auto isAdministrators = [&](size_t index) { return ++asked, static_cast<int>(index) == c.administrators; };
        if (c.expected == 9) {
            EXPECT_EQ(Raised([&] { AnyGroupIsAdministrators(c.count, isAdministrators); }).Number(), 9) << c.count;
            EXPECT_EQ(asked, 101u) << "no group past the record is read";
        } else {
            EXPECT_EQ(AnyGroupIsAdministrators(c.count, isAdministrators), c.expected == 1) << c.count;
        }
    }
}

// First-list codes land at their own index; the first pass stops at the first
// second-list code; only exact codes (upper case, braces) count.
TEST(LegacyProducts, EachListsCodesAtTheirIndex) {
    int pumps = 0;
    LegacyScan scan = ScanLegacyProducts({"{D467BA79-DA39-411B-9C75-11599878C293}", "{OTHER}",
                                                  "{111C572F-D130-4E21-BB26-89D59C8C9EA0}"}, [&pumps] { ++pumps; });
    EXPECT_EQ(std::vector<bool>({scan.installed, scan.firstListFound, scan.secondListFound}), std::vector<bool>({true, true, false}));
    EXPECT_EQ(scan.found, (std::vector<std::string>{"", "{111C572F-D130-4E21-BB26-89D59C8C9EA0}", "",
                                                    "{D467BA79-DA39-411B-9C75-11599878C293}", "", ""}));
    EXPECT_EQ(pumps, 2);
    scan = ScanLegacyProducts({"{OTHER}", "{3F21AE9F-9C13-4166-B245-97B5D01C1E8A}", "{FC2280EB-CD85-452F-8850-464B3003B69B}"});
    EXPECT_EQ(std::vector<bool>({scan.installed, scan.firstListFound}), std::vector<bool>({true, false}));
    EXPECT_EQ(scan.found, (std::vector<std::string>{"", "", "", "", "{3F21AE9F-9C13-4166-B245-97B5D01C1E8A}", "3"}));
    for (const char* code : {"{90110409-6000-11D3-8CFE-0150048383C9}", "{7ee17af3-3434-11d5-ac76-00010262094c}",
                             "7EE17AF3-3434-11D5-AC76-00010262094C"}) {
        scan = ScanLegacyProducts({code});
        EXPECT_FALSE(scan.installed) << code;
        EXPECT_EQ(scan.found, std::vector<std::string>(6)) << code;
    }
}
