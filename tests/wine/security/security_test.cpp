// The security configurator against the prefix's real registry and cacls.exe.
#include <gtest/gtest.h>

#include <windows.h>
#include <objsafe.h>
#include <sddl.h>

#include "control/CorvanInstaller_h.h"
#include "control/com_ptr.h"
#include "platform/clsWindowTools.h"
#include "scripted_desktop.h"
#include "security/clsCorvanSecurity.h"
#include "settings/modCorvanInstaller_Global.h"
#include "wine_bench.h"

struct StatusRecorder : corvan::clsCorvanSecurityEvents {
    void StatusMessageChange(const std::string& Message) override { messages.push_back(Message); }
    std::vector<std::string> messages;
};

enum class Cacls { WineOwn, Recording, NotAProgram, Missing };

const char kOverrides[] = "Software\\Wine\\DllOverrides";

// Puts a stand-in where the configurator looks for cacls.exe (in a 32-bit
// test redirected to syswow64 as the configurator's path is), Wine's own
// back afterwards; Wine runs it as its built-in one unless told otherwise.
struct SystemCacls {
    explicit SystemCacls(Cacls kind) : kind(kind) {
        if (kind == Cacls::WineOwn) return;
        EXPECT_TRUE(MoveFileExA(path.c_str(), (path + ".saved").c_str(), MOVEFILE_REPLACE_EXISTING));
        if (kind == Cacls::Recording) {
            EXPECT_TRUE(CopyFileA(winbench::BesideThisProgram("recording_cacls.exe").c_str(), path.c_str(), FALSE) &&
                        !RegSetKeyValueA(HKEY_CURRENT_USER, kOverrides, "cacls.exe", REG_SZ, "native", 7));
        }
        if (kind == Cacls::NotAProgram) winbench::WriteFileBytes(path, "not a program\r\n");
    }
    ~SystemCacls() {
        if (kind == Cacls::WineOwn) return;
        DeleteFileA(path.c_str());
        EXPECT_TRUE(MoveFileA((path + ".saved").c_str(), path.c_str()));
        RegDeleteKeyValueA(HKEY_CURRENT_USER, kOverrides, "cacls.exe");
    }
    const Cacls kind;
    const std::string path = corvan::clsWindowTools().WindowsSystem32() + "cacls.exe";
};

TEST(FolderRights, GrantsEveryFolderOnWindowsXPServicePack2) {
    const auto child = winbench::RunCaseInChild("FolderRights.DISABLED_Scenarios", "winxp64", "Microsoft Windows XP");
    EXPECT_EQ(child.exitCode, 0) << child.output.substr(0, 20000);
}

// Run by the case above in a process that sees Windows XP x64 SP2: the six
// grants (each folder, then its contents) with what each started, and the
// command lines the recording stand-in was given.
TEST(FolderRights, DISABLED_Scenarios) {
    corvan::clsWindowTools tools;
    EXPECT_EQ(tools.VersionName() + " " + tools.BuildNo(), "Windows XP 3790");
    const std::string cacls = "C:\\windows\\system32\\cacls.exe ", grant = " /E /G Everyone:f\n";
    auto grants = [&](const std::string& folder) { return cacls + folder + grant + cacls + folder + "*" + grant; };
    const std::string tooLong = "C:\\" + std::string(40000, 'x') + "\\";  // no process takes such a command line
    const std::string blanks = "C:\\corvan tests\\with blank\\", talo = "c:\\TALO\\";
    const struct {
        Cacls cacls;
        std::string folder1, folder3;
        const char* exitCode;
        std::string started;  // the six grants in order, + started, - not; empty: no cacls.exe
        std::string commands;
    } scenarios[] = {
        {Cacls::WineOwn, "", "", "0", "++++++", ""},
        {Cacls::Recording, "", "", "5", "++++++", grants("") + grants(talo) + grants("")},
        {Cacls::Recording, tooLong, blanks, "0", "--++++", grants(talo) + grants(blanks)},
        {Cacls::NotAProgram, "", "", "0", "------", ""},
        {Cacls::Missing, "", "", "0", "", ""},
    };
    corvan::InstallerSettings& settings = corvan::modCorvanInstaller_Global();
    settings.Load();
    winbench::ScratchFolder scratch("security-cacls");
    const std::string log = scratch.Path() + "cacls.log";
    SetEnvironmentVariableA("CORVAN_CACLS_LOG", log.c_str());
    for (const auto& s : scenarios) {
        SCOPED_TRACE(&s - scenarios);
        settings.SecuredFolder1(s.folder1);
        settings.SecuredFolder3(s.folder3);
        SetEnvironmentVariableA("CORVAN_CACLS_EXIT", s.exitCode);
        DeleteFileA(log.c_str());
        SystemCacls stand_in(s.cacls);
        StatusRecorder recorder;
        testing_support::ScriptedDesktop desktop;
        corvan::clsCorvanSecurity(desktop, &recorder).SetXPSP2SecurityConfig();

        std::vector<std::string> expected;
        const std::string folders[] = {s.folder1, talo, s.folder3};
        for (size_t i = 0; i < s.started.size(); ++i) {
            const std::string step = "Configurator: setting security on " + folders[i / 2] + (i % 2 ? " contents" : "");
            expected.insert(expected.end(), {step, step + (s.started[i] == '+' ? "...Success" : "...Failed")});
        }
        expected.push_back(s.started.empty()
                               ? "Unable to set security rights on Corvan Connect folders. Please notify the help desk."
                               : "Configurator: Successfully set security for Windows version 5.2, Service Pack 2.");
        EXPECT_EQ(recorder.messages, expected);
        EXPECT_EQ(desktop.pointers, (std::vector<int>{corvan::vbHourglass, corvan::vbDefault}));
        EXPECT_EQ(desktop.pumps, 0);
        EXPECT_EQ(winbench::ReadFileBytes(log), s.commands);
    }
}

const char kPolicy[] = "Software\\Policies\\Microsoft\\Windows\\Installer";
const char kZone[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Zones\\2";
const std::string kDomains = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ZoneMap\\Domains";
const std::string kOurDomain = kDomains + "\\corvan-connect.example";

// Removes what the table writes, so that reading it back proves a write.
void ForgetTrustSettings() {
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        for (const std::string& key : {std::string(kPolicy), std::string(kZone), kOurDomain}) RegDeleteTreeA(root, key.c_str());
        RegDeleteKeyValueA(root, kDomains.c_str(), "@=");
    }
}

// Each kind of line reads back with its type and data (the "@=" name beside
// the domain map's default, which survives). The current user's helpdesk row
// (line 76) meets a key nobody may write: it alone fails, the next goes on.
TEST(TrustConfig, EveryKindOfLineReadsBackAndARefusedLineStopsNothing) {
    ForgetTrustSettings();
    ASSERT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, kDomains.c_str(), nullptr, REG_SZ, "kept", 5), ERROR_SUCCESS);
    HKEY refusing = nullptr;
    PSECURITY_DESCRIPTOR denied = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA("D:P(D;;0x6;;;WD)(A;;KA;;;WD)", SDDL_REVISION_1,
                                                                     &denied, nullptr));
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, (kOurDomain + "\\helpdesk").c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &refusing, nullptr), ERROR_SUCCESS);
    ASSERT_EQ(RegSetKeySecurity(refusing, DACL_SECURITY_INFORMATION, denied), ERROR_SUCCESS);
    LocalFree(denied);
    RegCloseKey(refusing);

    StatusRecorder recorder;
    testing_support::ScriptedDesktop desktop;
    corvan::clsCorvanSecurity(desktop, &recorder).SetRegistryTrustConfig();
    ASSERT_EQ(recorder.messages.size(), 154u);
    EXPECT_EQ(recorder.messages[0] + "|" + recorder.messages[69] + "|" + recorder.messages[76] + "|" + recorder.messages[77],
              "Updating:  AlwaysInstallElevated\\ 1 - Success|Updating: @=\\ - Success|Updating: https\\2 - Failed|"
              "Updating: https\\2 - Success");
    EXPECT_EQ(std::count_if(recorder.messages.begin(), recorder.messages.end(),
                            [](const std::string& m) { return m.find(" - Failed") != std::string::npos; }), 1);
    EXPECT_EQ(recorder.messages.back(), "Registry Edit Complete.");
    EXPECT_EQ(desktop.pointers, (std::vector<int>{corvan::vbHourglass, corvan::vbDefault}));
    EXPECT_EQ(desktop.pumps, 1);

    const struct { HKEY root; std::string key; const char* name; std::optional<std::string> value; } lines[] = {
        {HKEY_CURRENT_USER, kPolicy, " AlwaysInstallElevated", "dword:1"},
        {HKEY_LOCAL_MACHINE, kZone, "1C00", "dword:768"},
        {HKEY_CURRENT_USER, kDomains, "@=", ""},
        {HKEY_CURRENT_USER, kDomains, nullptr, "kept"},
        {HKEY_LOCAL_MACHINE, kOurDomain + "\\helpdesk", "https", "dword:2"},
        {HKEY_CURRENT_USER, kOurDomain + "\\helpdesk", "https", std::nullopt},
    };
    for (const auto& line : lines) {
        EXPECT_EQ(winbench::RegText(line.root, line.key, line.name), line.value)
            << line.key << " " << (line.name ? line.name : "");
    }
    RegDeleteKeyA(HKEY_CURRENT_USER, (kOurDomain + "\\helpdesk").c_str());
    RegDeleteKeyValueA(HKEY_CURRENT_USER, kDomains.c_str(), nullptr);
}

// The public classes, registered by the test run: Wine's script host creates
// and runs them late bound; a browser finds nothing that would let a page
// use the security configurator.
TEST(TrustConfig, ThePublicClassesForScriptsAndPages) {
    ForgetTrustSettings();
    winbench::ScratchFolder scratch("security-script");
    const std::string base = std::getenv("CORVAN_HTTP_URL") ? std::getenv("CORVAN_HTTP_URL") : "";
    winbench::WriteFileBytes(scratch.Path() + "classes.vbs",
        "On Error Resume Next\r\nSet ftp = CreateObject(\"CorvanInstaller.clsFTP\")\r\n"
        "ok = ftp.DownloadFile(\"" + base + "size/2048\", \"" + scratch.Path() + "got.bin\")\r\n"
        "WScript.Echo \"port=\" & ftp.Port & \" ok=\" & ok & \" size=\" & ftp.dwCurrentFileSize\r\n"
        "WScript.Echo \"missing=\" & ftp.DownloadFile(\"" + base + "status/404\", \"" + scratch.Path() + "no.bin\")\r\n"
        "WScript.Echo \"text=\" & Len(ftp.OpenURL(\"" + base + "size/300\"))\r\ncode = 12002\r\n"
        "WScript.Echo \"err=\" & ftp.GetErr(code) & \"|\" & code\r\n"
        "WScript.Echo \"talo=\" & CreateObject(\"CorvanInstaller.clsTalo\").LegacyTaloIsInstalled\r\n"
        "CreateObject(\"CorvanInstaller.clsCorvanSecurity\").SetRegistryTrustConfig\r\nWScript.Quit Err.Number\r\n");
    const auto run = winbench::RunAndWait("cscript.exe //nologo \"" + scratch.Path() + "classes.vbs\"");
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(run.output, "port=21 ok=True size=2048\r\nmissing=False\r\ntext=1024\r\n"
                          "err=The request has timed out.|0\r\ntalo=False\r\n");
    EXPECT_EQ(winbench::ReadFileBytes(scratch.Path() + "got.bin").size(), 2048u);
    EXPECT_FALSE(winbench::FileExists(scratch.Path() + "no.bin"));
    EXPECT_EQ(winbench::RegText(HKEY_LOCAL_MACHINE, kZone, "1C00"), "dword:768");

    ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
    {
        CLSID clsid;
        ASSERT_EQ(CLSIDFromProgID(L"CorvanInstaller.clsCorvanSecurity", &clsid), S_OK);
        corvan::com::ComPtr<_clsCorvanSecurity> object;
        ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID__clsCorvanSecurity, object.PutVoid()), S_OK);
        EXPECT_FALSE(object.As<IObjectSafety>(IID_IObjectSafety));
        const auto clsidText = winbench::RegText(HKEY_CLASSES_ROOT, "CorvanInstaller.clsCorvanSecurity\\CLSID", nullptr);
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExA(HKEY_CLASSES_ROOT, ("CLSID\\" + clsidText.value_or("") +
                                "\\Implemented Categories\\{7DD95801-9882-11CF-9FA9-00AA006C42C4}").c_str(), 0, KEY_READ, &key),
                  ERROR_FILE_NOT_FOUND);
    }
    CoUninitialize();
}
