#include <gtest/gtest.h>

#include <windows.h>

#include "common/failure.h"
#include "platform/clsRegistry.h"
#include "raised.h"

using namespace corvan;

namespace {

constexpr int32_t kCurrentUser = static_cast<int32_t>(0x80000001u);
const std::string kKey = "Software\\CorvanTests\\Registry";

struct RawValue {
    LONG status = -1;
    DWORD type = 0;
    std::string bytes;
};

RawValue ReadRaw(const std::string& name) {
    RawValue raw;
    char buffer[512];
    DWORD size = sizeof buffer;
    raw.status = RegGetValueA(HKEY_CURRENT_USER, kKey.c_str(), name.c_str(), RRF_RT_ANY | RRF_NOEXPAND, &raw.type,
                              buffer, &size);
    if (raw.status == ERROR_SUCCESS) raw.bytes.assign(buffer, size);
    else raw.type = 0;
    return raw;
}

class RegistryTest : public ::testing::Test {
protected:
    void SetUp() override { RegDeleteTreeA(HKEY_CURRENT_USER, kKey.c_str()); }
    void TearDown() override { RegDeleteTreeA(HKEY_CURRENT_USER, kKey.c_str()); }
    clsRegistry registry;
};

}  // namespace

// One value of each registry type reaches the registry as planned (the rules
// that choose the type are tested natively); type 0, no registry form,
// answers false and writes nothing.
TEST_F(RegistryTest, SetRegValueChoosesTheTypeFromTheValue) {
    const struct {
        const char* name;
        RegVariant data;
        DWORD type;
        std::string bytes;
    } cases[] = {
        {"Zero", RegVariant::String("0"), REG_SZ, std::string("0\0", 2)},
        {"Expand", RegVariant::String("%TEMP%\\x"), REG_EXPAND_SZ, std::string("%TEMP%\\x\0", 9)},
        {"Long", RegVariant::Long(0x01020304), REG_DWORD, std::string("\x04\x03\x02\x01", 4)},
        {"Bin", RegVariant::Bytes({0, 7, 255}), REG_BINARY, std::string("\x00\x07\xFF", 3)},
        {"Flag", RegVariant::Boolean(true), 0, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(registry.SetRegValue(kCurrentUser, kKey, c.name, c.data, RegVariant::Integer(1)), c.type != 0);
        const RawValue raw = ReadRaw(c.name);
        EXPECT_EQ(raw.status, c.type ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(raw.type, c.type);
        EXPECT_EQ(raw.bytes, c.bytes);
    }
    // A key that cannot be created (a missing root) is a plain false.
    EXPECT_FALSE(registry.SetRegValue(0x12345, kKey, "X", RegVariant::Long(1)));
}

TEST_F(RegistryTest, SetRegValueReRaisesWithItsCallInTheSource) {
    const Failure f = testing_support::Raised(
        [&] { registry.SetRegValue(kCurrentUser, kKey, "Empty", RegVariant::Bytes({}), RegVariant::Integer(3)); });
    EXPECT_EQ(f.Number(), 9);
    EXPECT_EQ(f.Description(), "Subscript out of range");
    EXPECT_EQ(f.Source(), "CorvanInstaller - clsRegistry.SetRegValue(-2147483647," + kKey + ",Empty,,[3]");
    EXPECT_EQ(ReadRaw("Empty").status, ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryTest, GetRegSettingReadsEachTypeItsOwnWay) {
    SetEnvironmentVariableA("CORVAN_H3_DIR", "C:\\work");
    const struct {
        const char* name;
        DWORD type;
        std::string bytes;
        RegVariant expected;
    } cases[] = {
        {"Text", REG_SZ, std::string("hello\0", 6), RegVariant::String("hello")},
        {"Expand", REG_EXPAND_SZ, std::string("%CORVAN_H3_DIR%\\x\0", 18), RegVariant::String("C:\\work\\x")},
        {"Multi", REG_MULTI_SZ, std::string("a\0bc\0\0", 6), RegVariant::String(std::string("a\0bc\0", 5))},
        {"Dword", REG_DWORD, std::string("\x04\x03\x02\x01", 4), RegVariant::Long(0x01020304)},
        {"Big", REG_DWORD_BIG_ENDIAN, std::string("\x01\x02\x03\x04", 4), RegVariant::Long(0x01020304)},
        {"Bin", REG_BINARY, std::string("\x09\x08\x07", 3), RegVariant::Bytes({9, 8, 7, 0})},
        {"Blank", REG_SZ, std::string(), RegVariant::String("")},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, kKey.c_str(), c.name, c.type, c.bytes.data(),
                                  static_cast<DWORD>(c.bytes.size())),
                  ERROR_SUCCESS);
        EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, c.name, RegVariant()), c.expected) << c.name;
        EXPECT_EQ(registry.LastValueType(), static_cast<int32_t>(c.type)) << c.name;
    }

    // Missing values and keys give the default back as it came, kind and all,
    // and leave the remembered type alone.
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Missing", RegVariant::Integer(5)), RegVariant::Integer(5));
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey + "\\Nope", "Text", RegVariant::Double(2.5)),
              RegVariant::Double(2.5));
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Missing", RegVariant()), RegVariant());
    EXPECT_EQ(registry.LastValueType(), REG_SZ);
}

TEST_F(RegistryTest, DeleteKeyRemovesAValueAndDeleteBranchASubkey) {
    ASSERT_TRUE(registry.SetRegValue(kCurrentUser, kKey, "Gone", RegVariant::Long(1)));
    ASSERT_TRUE(registry.SetRegValue(kCurrentUser, kKey + "\\Child", "Inside", RegVariant::Long(1)));

    EXPECT_TRUE(registry.DeleteKey(kCurrentUser, kKey, "Gone"));
    EXPECT_FALSE(registry.DeleteKey(kCurrentUser, kKey, "Gone"));
    EXPECT_EQ(ReadRaw("Gone").status, ERROR_FILE_NOT_FOUND);

    const int32_t child = registry.OpenRegKey(kCurrentUser, kKey + "\\Child");
    EXPECT_NE(child, 0);
    registry.CloseRegKey(child);
    EXPECT_TRUE(registry.DeleteBranch(kCurrentUser, kKey, "Child"));
    EXPECT_FALSE(registry.DeleteBranch(kCurrentUser, kKey, "Child"));
    EXPECT_EQ(registry.OpenRegKey(kCurrentUser, kKey + "\\Child"), 0);
    EXPECT_FALSE(registry.DeleteBranch(kCurrentUser, kKey + "\\Nope", "Child"));
}

TEST_F(RegistryTest, ExpandEnvStrLeavesUnknownNamesAlone) {
    SetEnvironmentVariableA("CORVAN_H3_NAME", "dealer");
    EXPECT_EQ(registry.ExpandEnvStr("x%CORVAN_H3_NAME%y"), "xdealery");
    EXPECT_EQ(registry.ExpandEnvStr("%CORVAN_H3_UNSET%"), "%CORVAN_H3_UNSET%");
    EXPECT_EQ(registry.ExpandEnvStr(""), "");
}
