#include <gtest/gtest.h>

#include "platform/guid_text.h"
#include "platform/reg_types.h"

using namespace corvan;
using namespace corvan::reg;

namespace {
std::vector<uint8_t> Bytes(const std::string& text, bool terminator) {
    std::vector<uint8_t> out(text.begin(), text.end());
    if (terminator) out.push_back(0);
    return out;
}
}  // namespace

TEST(RegistryTypes, ValueKindsChooseTheirRegistryType) {
    EXPECT_EQ(GetValueType(RegVariant::Integer(-1)), kRegDword);
    EXPECT_EQ(GetValueType(RegVariant::Long(0x7FFFFFFF)), kRegDword);
    EXPECT_EQ(GetValueType(RegVariant::String("0")), kRegSz);  // a digit in text stays text
    EXPECT_EQ(GetValueType(RegVariant::Bytes({1})), kRegBinary);
    EXPECT_EQ(GetValueType(RegVariant::Boolean(true)), 0);
    EXPECT_EQ(GetValueType(RegVariant::Double(1.5)), 0);
    EXPECT_EQ(GetValueType(RegVariant::Date(45000.0)), 0);
    EXPECT_EQ(GetValueType(RegVariant()), 0);
}

TEST(RegistryTypes, ExpandableOnlyWhenTheSecondPercentIsTwoCharactersOn) {
    EXPECT_EQ(TextValueType("%TEMP%\\x"), kRegExpandSz);
    EXPECT_EQ(TextValueType("%a%"), kRegExpandSz);
    EXPECT_EQ(TextValueType("%%a%"), kRegExpandSz);  // the search starts two past the first
    EXPECT_EQ(TextValueType("50%"), kRegSz);
    EXPECT_EQ(TextValueType("%%"), kRegSz);
    EXPECT_EQ(TextValueType("x%%y"), kRegSz);
    EXPECT_EQ(TextValueType(""), kRegSz);
}

TEST(RegistryTypes, WritesCarryTheTerminatorOrLittleEndianBytes) {
    RegWrite text = PlanRegWrite(RegVariant::String("%TEMP%\\x"));
    EXPECT_EQ(text.type, kRegExpandSz);
    EXPECT_EQ(text.data, Bytes("%TEMP%\\x", true));
    EXPECT_TRUE(text.write);

    RegWrite empty = PlanRegWrite(RegVariant::String(""));
    EXPECT_EQ(empty.data, std::vector<uint8_t>{0});

    RegWrite dword = PlanRegWrite(RegVariant::Integer(-2));
    EXPECT_EQ(dword.type, kRegDword);
    EXPECT_EQ(dword.data, (std::vector<uint8_t>{0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(PlanRegWrite(RegVariant::Long(0x01020304)).data, (std::vector<uint8_t>{4, 3, 2, 1}));

    RegWrite refused = PlanRegWrite(RegVariant::Boolean(false));
    EXPECT_EQ(refused.status, 13);
    EXPECT_FALSE(refused.write);

    // A DWORD type with a value that is no integer writes nothing and is
    // not an error.
    RegWrite none = PlanRegWriteAs(kRegDwordBigEndian, RegVariant::String("7"));
    EXPECT_EQ(none.status, 0);
    EXPECT_FALSE(none.write);
}

TEST(RegistryTypes, BinaryNeedsANonEmptyByteArray) {
    EXPECT_EQ(PlanRegWrite(RegVariant::Bytes({1, 2, 3})).data, (std::vector<uint8_t>{1, 2, 3}));
    try {
        PlanRegWriteAs(kRegBinary, RegVariant::String("abc"));
        FAIL() << "text accepted as binary";
    } catch (const Failure& f) {
        EXPECT_EQ(f.Number(), 26001);
    }
    try {
        PlanRegWrite(RegVariant::Bytes({}));
        FAIL() << "empty array written";
    } catch (const Failure& f) {
        EXPECT_EQ(f.Number(), 9);
        EXPECT_EQ(f.Description(), "Subscript out of range");
    }
}

TEST(RegistryTypes, SwapEndianReversesTheFourBytes) {
    EXPECT_EQ(SwapEndian(0x01020304), 0x04030201);
    EXPECT_EQ(SwapEndian(0x000000FF), static_cast<int32_t>(0xFF000000u));
    EXPECT_EQ(SwapEndian(SwapEndian(-123456789)), -123456789);
}

TEST(RegistryTypes, ContextExtendsTheSourceAndKeepsNumberAndDescription) {
    const Failure inner(9, "CorvanInstaller", "Subscript out of range");
    const Failure outer = WithContext(inner, " - clsRegistry.OpenRegKey(",
                                      {std::to_string(static_cast<int32_t>(0x80000002u)), "Software\\Talo"}, ")");
    EXPECT_EQ(outer.Number(), 9);
    EXPECT_EQ(outer.Description(), "Subscript out of range");
    EXPECT_EQ(outer.Source(), "CorvanInstaller - clsRegistry.OpenRegKey(-2147483646,Software\\Talo)");
    EXPECT_EQ(WithContext(outer, " - clsRegistry.SwapEndian(", {"5"}).Source(),
              outer.Source() + " - clsRegistry.SwapEndian(5");
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
