// The trust settings read back through the registry API after
// SetRegistryTrustConfig: in process, from Wine's script host through the
// registered public class, and as events to a sink of our own.
#include <gtest/gtest.h>

#include <windows.h>
#include <sddl.h>
#include <objsafe.h>
#include <ocidl.h>

#include <algorithm>
#include <cstring>

#include "control/CorvanInstaller_h.h"
#include "control/com_ptr.h"
#include "dispatch_sink.h"
#include "platform/reg_variant.h"
#include "scripted_desktop.h"
#include "security/registry_line.h"
#include "security/trust_table.h"
#include "status_recorder.h"
#include "wine_bench.h"

using corvan::RegVariant;
using corvan::com::ComPtr;
namespace security = corvan::security;

namespace {

const char kPolicy[] = "Software\\Policies\\Microsoft\\Windows\\Installer";
const char kZone[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Zones\\2";
const char kDomains[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ZoneMap\\Domains";
const std::string kOurDomain = std::string(kDomains) + "\\corvan-connect.example";

HKEY Root(const std::string& hive) {
    return reinterpret_cast<HKEY>(static_cast<intptr_t>(security::HiveRootKey(hive)));
}

// A DWORD as a Long, REG_SZ as text, nothing when the value is missing;
// any other type as an (empty) byte array, which no line expects.
RegVariant ReadValue(HKEY root, const std::string& key, const char* name) {
    HKEY handle = nullptr;
    if (RegOpenKeyExA(root, key.c_str(), 0, KEY_QUERY_VALUE, &handle) != ERROR_SUCCESS) return {};
    DWORD type = 0;
    char data[1024] = {};
    DWORD size = sizeof data - 1;
    const LONG status = RegQueryValueExA(handle, name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size);
    RegCloseKey(handle);
    if (status != ERROR_SUCCESS) return {};
    if (type == REG_DWORD && size == 4) {
        int32_t number;
        std::memcpy(&number, data, 4);
        return RegVariant::Long(number);
    }
    if (type == REG_SZ) return RegVariant::String(data);
    return RegVariant::Bytes({});
}

// Removes what the table writes, so that reading it back proves a write.
void ForgetTrustSettings() {
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        RegDeleteTreeA(root, kPolicy);
        RegDeleteTreeA(root, kZone);
        RegDeleteTreeA(root, kOurDomain.c_str());
        RegDeleteKeyValueA(root, kDomains, "@=");
    }
}

// Every line of the table, except those named, is in the registry with the
// type and data its data field calls for.
void ExpectTableInRegistry(const std::vector<size_t>& refused = {}) {
    const std::vector<std::string> table = security::BuildTrustTable();
    for (size_t i = 0; i < table.size(); ++i) {
        const security::RegistryLine line = security::SplitRegistryLine(table[i]);
        const bool wasRefused = std::find(refused.begin(), refused.end(), i) != refused.end();
        EXPECT_EQ(ReadValue(Root(line.hive), line.key, line.valueName.c_str()),
                  wasRefused ? RegVariant() : security::RegistryData(line.data))
            << table[i];
    }
}

// A key in which nobody may set a value or make a subkey; deleted when the
// object goes.
class RefusingKey {
public:
    RefusingKey(HKEY root, const std::string& path) : root_(root), path_(path) {
        HKEY key = nullptr;
        PSECURITY_DESCRIPTOR refusing = nullptr;
        EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA("D:P(D;;0x6;;;WD)(A;;KA;;;WD)", SDDL_REVISION_1,
                                                                         &refusing, nullptr));
        EXPECT_EQ(RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr), ERROR_SUCCESS);
        EXPECT_EQ(RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, refusing), ERROR_SUCCESS);
        LocalFree(refusing);
        RegCloseKey(key);
    }
    ~RefusingKey() { RegDeleteKeyA(root_, path_.c_str()); }

private:
    HKEY root_;
    std::string path_;
};

}  // namespace

TEST(TrustConfig, EveryLineReadsBackWithItsTypeAndDataAndARefusedLineStopsNothing) {
    ForgetTrustSettings();
    // The domain map's own default value must survive the "@=" line.
    ASSERT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, kDomains, nullptr, REG_SZ, "kept", 5), ERROR_SUCCESS);
    // The current user's helpdesk https row (line 76) meets a key it may not write.
    RefusingKey refusing(HKEY_CURRENT_USER, kOurDomain + "\\helpdesk");

    security_tests::StatusRecorder recorder;
    testing_support::ScriptedDesktop desktop;
    corvan::clsCorvanSecurity security(desktop, &recorder);
    security.SetRegistryTrustConfig();

    std::vector<std::string> expected;
    for (const std::string& text : security::BuildTrustTable())
        expected.push_back(security::UpdatingMessage(security::SplitRegistryLine(text), expected.size() != 76));
    expected.push_back("Registry Edit Complete.");
    EXPECT_EQ(recorder.messages, expected);
    ASSERT_EQ(recorder.messages.size(), 154u);
    EXPECT_EQ(recorder.messages[0], "Updating:  AlwaysInstallElevated\\ 1 - Success");
    EXPECT_EQ(recorder.messages[69], "Updating: @=\\ - Success");
    EXPECT_EQ(recorder.messages[76], "Updating: https\\2 - Failed");
    // The repeated host row is written and reported again.
    EXPECT_EQ(recorder.messages[77], "Updating: https\\2 - Success");
    EXPECT_EQ(desktop.pointers, (std::vector<int>{corvan::vbHourglass, corvan::vbDefault}));
    EXPECT_EQ(desktop.pumps, 1);

    ExpectTableInRegistry({76});
    EXPECT_EQ(ReadValue(HKEY_CURRENT_USER, kPolicy, " AlwaysInstallElevated"), RegVariant::Long(1));
    EXPECT_EQ(ReadValue(HKEY_LOCAL_MACHINE, kPolicy, "AlwaysInstallElevated"), RegVariant::Long(1));
    EXPECT_EQ(ReadValue(HKEY_LOCAL_MACHINE, kZone, "1C00"), RegVariant::Long(768));
    EXPECT_EQ(ReadValue(HKEY_CURRENT_USER, kDomains, "@="), RegVariant::String(""));
    EXPECT_EQ(ReadValue(HKEY_CURRENT_USER, kDomains, nullptr), RegVariant::String("kept"));
    EXPECT_EQ(ReadValue(HKEY_CURRENT_USER, kOurDomain + "\\extranet", "https"), RegVariant::Long(2));
    RegDeleteKeyValueA(HKEY_CURRENT_USER, kDomains, nullptr);
}

class SecurityComClass : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
        static const int registered =
            winbench::RunAndWait("regsvr32 /s \"" + winbench::OutDir() + "\\CorvanInstaller.ocx\"").exitCode;
        ASSERT_EQ(registered, 0);
        ForgetTrustSettings();
    }
    void TearDown() override { CoUninitialize(); }
};

TEST_F(SecurityComClass, ScriptHostWritesTheTrustSettings) {
    winbench::ScratchFolder scratch("security-script");
    const std::string script = scratch.Path() + "trust.vbs";
    winbench::WriteFileBytes(script,
                             "On Error Resume Next\r\n"
                             "Set security = CreateObject(\"CorvanInstaller.clsCorvanSecurity\")\r\n"
                             "If Err.Number <> 0 Then WScript.Quit 2\r\n"
                             "security.SetRegistryTrustConfig\r\n"
                             "If Err.Number <> 0 Then WScript.Quit 3\r\n");
    const winbench::ChildResult run = winbench::RunAndWait("cscript.exe //nologo \"" + script + "\"");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    ExpectTableInRegistry();
    EXPECT_EQ(ReadValue(HKEY_LOCAL_MACHINE, kPolicy, "AlwaysInstallElevated"), RegVariant::Long(1));
}

// Its one event reaches a connected sink; a browser finds nothing that
// would let a page use it.
TEST_F(SecurityComClass, RaisesEachStatusToASinkAndIsNotSafeForScripting) {
    testing_support::DispatchSink sink(DIID___clsCorvanSecurity);  // outlives every reference the object may hold to it
    CLSID clsid;
    ASSERT_EQ(CLSIDFromProgID(L"CorvanInstaller.clsCorvanSecurity", &clsid), S_OK);
    ComPtr<_clsCorvanSecurity> object;
    ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID__clsCorvanSecurity, object.PutVoid()), S_OK);
    EXPECT_FALSE(object.As<IObjectSafety>(IID_IObjectSafety));
    wchar_t clsidText[40] = {};
    StringFromGUID2(clsid, clsidText, 40);
    const std::wstring category = std::wstring(L"CLSID\\") + clsidText +
                                  L"\\Implemented Categories\\{7DD95801-9882-11CF-9FA9-00AA006C42C4}";
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, category.c_str(), 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND);

    auto container = object.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    ASSERT_TRUE(container);
    ComPtr<IConnectionPoint> point;
    ASSERT_EQ(container->FindConnectionPoint(DIID___clsCorvanSecurity, point.Put()), S_OK);
    DWORD cookie = 0;
    ASSERT_EQ(point->Advise(&sink, &cookie), S_OK);
    EXPECT_EQ(object->SetRegistryTrustConfig(), S_OK);
    EXPECT_EQ(point->Unadvise(cookie), S_OK);

    ASSERT_EQ(sink.calls.size(), 154u);
    EXPECT_EQ(sink.calls[0], "1 BSTR&:Updating:  AlwaysInstallElevated\\ 1 - Success");
    EXPECT_EQ(sink.calls[153], "1 BSTR&:Registry Edit Complete.");
}
