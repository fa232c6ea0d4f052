#include "../harness.h"
#include "platform/group_walk.h"
#include "platform/legacy_products.h"
#include "platform/reg_types.h"

using namespace corvan::reg;
using namespace corvan::legacy;

namespace {

std::vector<uint8_t> Hex(const std::string& hex) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) bytes.push_back(uint8_t(std::stoi(hex.substr(i, 2), nullptr, 16)));
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
    for (const auto& c : Table("platform/platform.txt", "registry types")) {
        const RegWrite plan = PlanRegWrite(Value(c[0], c[1]));
        const std::vector<uint8_t> text(c[1].c_str(), c[1].c_str() + c[1].size() + 1);  // with its NUL
        EXPECT_EQ(std::to_string(plan.type) + " " + std::to_string(plan.write) + " " + std::to_string(plan.status), c[2])
            << c.where;
        EXPECT_EQ(plan.data, c[0] == "String" ? text : Hex(c[3])) << c.where;
    }
    // A DWORD type with a value that is no integer writes nothing and is no
    // error; binary with a text is 26001.
    const RegWrite none = PlanRegWriteAs(kRegDwordBigEndian, RegVariant::String("7"));
    EXPECT_EQ(none.status + none.write, 0);
    EXPECT_EQ(Raised([] { PlanRegWriteAs(kRegBinary, RegVariant::String("abc")); }).Number(), 26001);
}

TEST(GroupWalk, FindsAdministratorsWithinTheRecordsRoom) {
    for (const auto& c : Table("platform/platform.txt", "group walk")) {
        size_t asked = 0;
        const auto walk = [&] {
            return AnyGroupIsAdministrators(std::stoul(c[0]), [&](size_t i) { return ++asked, int(i) == std::stoi(c[1]); });
        };
        const std::string result = c[2] == "error 9" ? "error " + std::to_string(Raised(walk).Number()) : walk() ? "1" : "0";
        EXPECT_EQ(result + (result == "error 9" ? " after " + std::to_string(asked) : ""),
                  c[2] + (c[2] == "error 9" ? " after 101" : "")) << c.where;
    }
}

TEST(LegacyProducts, EachListsCodesAtTheirIndex) {
    for (const auto& c : Table("platform/platform.txt", "legacy")) {
        int yields = 0;
        const LegacyScan scan = ScanLegacyProducts(Split(c[0], ';'), [&yields] { ++yields; });
        EXPECT_EQ(std::to_string(scan.installed) + " " + std::to_string(scan.firstListFound) + " " +
                      std::to_string(scan.secondListFound) + " | " + std::to_string(yields),
                  c[1] + " | " + c[3]) << c.where;
        EXPECT_EQ(scan.found, Split(c[2], ';')) << c.where;
    }
}
