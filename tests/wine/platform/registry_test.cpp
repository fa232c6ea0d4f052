#include <gtest/gtest.h>

#include <windows.h>

#include "common/failure.h"
#include "platform/clsRegistry.h"

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
    HKEY key = nullptr;
    if ((raw.status = RegOpenKeyExA(HKEY_CURRENT_USER, kKey.c_str(), 0, KEY_QUERY_VALUE, &key)) != ERROR_SUCCESS) {
        return raw;
    }
    char buffer[512];
    DWORD size = sizeof buffer;
    raw.status = RegQueryValueExA(key, name.c_str(), nullptr, &raw.type, reinterpret_cast<BYTE*>(buffer), &size);
    if (raw.status == ERROR_SUCCESS) raw.bytes.assign(buffer, size);
    RegCloseKey(key);
    return raw;
}

void WriteRaw(const std::string& name, DWORD type, const std::string& bytes) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kKey.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegSetValueExA(key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                   static_cast<DWORD>(bytes.size()));
    RegCloseKey(key);
}

class RegistryTest : public ::testing::Test {
protected:
    void SetUp() override { RegDeleteTreeA(HKEY_CURRENT_USER, kKey.c_str()); }
    void TearDown() override { RegDeleteTreeA(HKEY_CURRENT_USER, kKey.c_str()); }
    clsRegistry registry;
};

}  // namespace

TEST_F(RegistryTest, SetRegValueChoosesTheTypeFromTheValue) {
    struct Case {
        const char* name;
        RegVariant data;
        DWORD type;
        std::string bytes;
    };
    const Case cases[] = {
        {"Zero", RegVariant::String("0"), REG_SZ, std::string("0\0", 2)},
        {"Expand", RegVariant::String("%TEMP%\\x"), REG_EXPAND_SZ, std::string("%TEMP%\\x\0", 9)},
        {"Percent", RegVariant::String("50%"), REG_SZ, std::string("50%\0", 4)},
        {"Adjacent", RegVariant::String("%%"), REG_SZ, std::string("%%\0", 3)},
        {"Small", RegVariant::Integer(-1), REG_DWORD, std::string("\xFF\xFF\xFF\xFF", 4)},
        {"Long", RegVariant::Long(0x01020304), REG_DWORD, std::string("\x04\x03\x02\x01", 4)},
        {"Bin", RegVariant::Bytes({0, 7, 255}), REG_BINARY, std::string("\x00\x07\xFF", 3)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_TRUE(registry.SetRegValue(kCurrentUser, kKey, c.name, c.data, RegVariant::Integer(1)));
        const RawValue raw = ReadRaw(c.name);
        ASSERT_EQ(raw.status, ERROR_SUCCESS);
        EXPECT_EQ(raw.type, c.type);
        EXPECT_EQ(raw.bytes, c.bytes);
    }
}

TEST_F(RegistryTest, SetRegValueRefusesKindsWithoutARegistryForm) {
    EXPECT_FALSE(registry.SetRegValue(kCurrentUser, kKey, "Flag", RegVariant::Boolean(true)));
    EXPECT_FALSE(registry.SetRegValue(kCurrentUser, kKey, "Ratio", RegVariant::Double(0.5)));
    EXPECT_FALSE(registry.SetRegValue(kCurrentUser, kKey, "Nothing", RegVariant()));
    EXPECT_EQ(ReadRaw("Flag").status, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(ReadRaw("Ratio").status, ERROR_FILE_NOT_FOUND);
    // A key that cannot be created (a missing root) is a plain false.
    EXPECT_FALSE(registry.SetRegValue(0x12345, kKey, "X", RegVariant::Long(1)));
}

TEST_F(RegistryTest, SetRegValueReRaisesWithItsCallInTheSource) {
    try {
        registry.SetRegValue(kCurrentUser, kKey, "Empty", RegVariant::Bytes({}), RegVariant::Integer(3));
        FAIL() << "an empty byte array was written";
    } catch (const Failure& f) {
        EXPECT_EQ(f.Number(), 9);
        EXPECT_EQ(f.Description(), "Subscript out of range");
        EXPECT_EQ(f.Source(), "CorvanInstaller - clsRegistry.SetRegValue(-2147483647," + kKey + ",Empty,,[3]");
    }
    EXPECT_EQ(ReadRaw("Empty").status, ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryTest, GetRegSettingReadsEachTypeItsOwnWay) {
    SetEnvironmentVariableA("CORVAN_H3_DIR", "C:\\work");
    WriteRaw("Text", REG_SZ, std::string("hello\0", 6));
    WriteRaw("Expand", REG_EXPAND_SZ, std::string("%CORVAN_H3_DIR%\\x\0", 18));
    WriteRaw("Multi", REG_MULTI_SZ, std::string("a\0bc\0\0", 6));
    WriteRaw("Dword", REG_DWORD, std::string("\x04\x03\x02\x01", 4));
    WriteRaw("Big", REG_DWORD_BIG_ENDIAN, std::string("\x01\x02\x03\x04", 4));
    WriteRaw("Bin", REG_BINARY, std::string("\x09\x08\x07", 3));
    WriteRaw("Blank", REG_SZ, std::string());

    const RegVariant none;
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Text", none), RegVariant::String("hello"));
    EXPECT_EQ(registry.LastValueType(), REG_SZ);
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Expand", none), RegVariant::String("C:\\work\\x"));
    EXPECT_EQ(registry.LastValueType(), REG_EXPAND_SZ);
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Multi", none), RegVariant::String(std::string("a\0bc\0", 5)));
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Dword", none), RegVariant::Long(0x01020304));
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Big", none), RegVariant::Long(0x01020304));
    EXPECT_EQ(registry.LastValueType(), REG_DWORD_BIG_ENDIAN);
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Bin", none), RegVariant::Bytes({9, 8, 7, 0}));
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Blank", none), RegVariant::String(""));

    // Missing values and keys give the default back as it came, kind and all,
    // and leave the remembered type alone.
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Missing", RegVariant::Integer(5)), RegVariant::Integer(5));
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey + "\\Nope", "Text", RegVariant::Double(2.5)),
              RegVariant::Double(2.5));
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Missing", RegVariant()), RegVariant());
    EXPECT_EQ(registry.LastValueType(), REG_SZ);
}

TEST_F(RegistryTest, WrittenValuesReadBack) {
    ASSERT_TRUE(registry.SetRegValue(kCurrentUser, kKey, "Zero", RegVariant::String("0")));
    ASSERT_TRUE(registry.SetRegValue(kCurrentUser, kKey, "Count", RegVariant::Integer(42)));
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Zero", RegVariant()), RegVariant::String("0"));
    EXPECT_EQ(registry.GetRegSetting(kCurrentUser, kKey, "Count", RegVariant()), RegVariant::Long(42));
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

TEST_F(RegistryTest, ExpandEnvStrAndSwapEndian) {
    SetEnvironmentVariableA("CORVAN_H3_NAME", "dealer");
    EXPECT_EQ(registry.ExpandEnvStr("x%CORVAN_H3_NAME%y"), "xdealery");
    EXPECT_EQ(registry.ExpandEnvStr("%CORVAN_H3_UNSET%"), "%CORVAN_H3_UNSET%");
    EXPECT_EQ(registry.ExpandEnvStr(""), "");
    EXPECT_EQ(registry.SwapEndian(0x11223344), 0x44332211);
}
