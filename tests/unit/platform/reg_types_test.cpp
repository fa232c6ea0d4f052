#include <gtest/gtest.h>

#include "platform/guid_text.h"
#include "platform/reg_types.h"
#include "raised.h"

using namespace corvan;
using namespace corvan::reg;

namespace {
std::vector<uint8_t> Text(const std::string& text) {
    std::vector<uint8_t> out(text.begin(), text.end());
    out.push_back(0);  // the byte count includes the terminator
    return out;
}
}  // namespace

// A text is REG_EXPAND_SZ only when a second "%" stands at least two
// characters after the first; kinds without a registry form write nothing.
TEST(RegistryTypes, EachValuePlansItsTypeAndBytes) {
    const struct {
        RegVariant data;
        int32_t type;
        std::vector<uint8_t> bytes;
    } cases[] = {
        {RegVariant::String("0"), kRegSz, Text("0")},
        {RegVariant::String(""), kRegSz, Text("")},
        {RegVariant::String("%TEMP%\\x"), kRegExpandSz, Text("%TEMP%\\x")},
        {RegVariant::String("%a%"), kRegExpandSz, Text("%a%")},
        {RegVariant::String("%%a%"), kRegExpandSz, Text("%%a%")},  // the search starts two past the first
        {RegVariant::String("50%"), kRegSz, Text("50%")},
        {RegVariant::String("%%"), kRegSz, Text("%%")},
        {RegVariant::String("x%%y"), kRegSz, Text("x%%y")},
        {RegVariant::Integer(-2), kRegDword, {0xFE, 0xFF, 0xFF, 0xFF}},
        {RegVariant::Long(0x01020304), kRegDword, {4, 3, 2, 1}},
        {RegVariant::Bytes({1, 2, 3}), kRegBinary, {1, 2, 3}},
        {RegVariant::Boolean(true), 0, {}},
        {RegVariant::Double(1.5), 0, {}},
        {RegVariant::Date(45000.0), 0, {}},
        {RegVariant(), 0, {}},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        const RegWrite plan = PlanRegWrite(cases[i].data);
        EXPECT_EQ(plan.type, cases[i].type) << i;
        EXPECT_EQ(plan.data, cases[i].bytes) << i;
        EXPECT_EQ(plan.write, cases[i].type != 0) << i;
        EXPECT_EQ(plan.status, cases[i].type != 0 ? 0 : 13) << i;
    }
}

TEST(RegistryTypes, AGivenTypeThatDoesNotFitTheValue) {
    // A DWORD type with a value that is no integer writes nothing and is
    // not an error.
    const RegWrite none = PlanRegWriteAs(kRegDwordBigEndian, RegVariant::String("7"));
    EXPECT_EQ(none.status, 0);
    EXPECT_FALSE(none.write);
    EXPECT_EQ(testing_support::Raised([] { PlanRegWriteAs(kRegBinary, RegVariant::String("abc")); }).Number(), 26001);
}

TEST(RegistryTypes, DisplayTextOfEachKind) {
    EXPECT_EQ(RegVariant().DisplayText(), "");
    EXPECT_EQ(RegVariant::Integer(-7).DisplayText(), "-7");
    EXPECT_EQ(RegVariant::Boolean(true).DisplayText(), "True");
    EXPECT_EQ(RegVariant::Double(2.5).DisplayText(), "2.5");
    EXPECT_EQ(RegVariant::Bytes({0x0A, 0xFF}).DisplayText(), "0A FF");
}

TEST(GuidText, PadsEachPartAndUsesUpperCase) {
    const uint8_t tail[8] = {0x0a, 0xb, 0, 1, 2, 3, 0xfe, 0xff};
    EXPECT_EQ(GuidText(0xab, 0xc, 0xdef0, tail), "{000000AB-000C-DEF0-0A0B-00010203FEFF}");
}
