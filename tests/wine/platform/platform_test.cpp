// The platform services against the prefix's real environment, tokens,
// registry and Windows Installer.
#include <gtest/gtest.h>

#include <windows.h>
#include <objbase.h>

#include "platform/clsTalo.h"
#include "platform/clsWindowTools.h"
#include "platform/modPDFVer.h"
#include "scripted_desktop.h"
#include "wine_bench.h"

using namespace corvan;

// Folders end in one backslash; HomeDrive always gains one; SystemDrive is
// "C:\" whatever the drive. The administrators group counts in the thread's
// own token even where it is kept only for denying access.
TEST(WindowTools, EnvironmentAndAdministrators) {
    using Getter = std::string (clsWindowTools::*)() const;
    const struct { const char* variable; const char* value; Getter get; const char* expected; } cases[] = {
        {"windir", "C:\\WINDOWS", &clsWindowTools::WindowsDirectory, "C:\\WINDOWS\\"},
        {"windir", "C:\\WINDOWS\\", &clsWindowTools::WindowsDirectory, "C:\\WINDOWS\\"},
        {"windir", nullptr, &clsWindowTools::WindowsDirectory, ""},
        {"systemroot", "D:\\WINNT", &clsWindowTools::SystemRoot, "D:\\WINNT\\"},
        {"programfiles", "D:\\Program Files\\", &clsWindowTools::ProgramFiles, "D:\\Program Files\\"},
        {"SystemDrive", "D:", &clsWindowTools::SystemDrive, "C:\\"},
        {"HOMEDRIVE", "H:", &clsWindowTools::HomeDrive, "H:\\"},
        {"HOMEDRIVE", "H:\\", &clsWindowTools::HomeDrive, "H:\\\\"},
        {"HOMEDRIVE", nullptr, &clsWindowTools::HomeDrive, "\\"},
        {"USERNAME", "dealer7", &clsWindowTools::UserName, "dealer7"},
    };
    clsWindowTools tools;
    for (const auto& c : cases) {
        char old[1024];
        const DWORD had = GetEnvironmentVariableA(c.variable, old, sizeof old);
        SetEnvironmentVariableA(c.variable, c.value);
        EXPECT_EQ((tools.*c.get)(), c.expected) << c.variable << "=" << (c.value ? c.value : "(unset)");
        SetEnvironmentVariableA(c.variable, had ? old : nullptr);
    }
    char system[MAX_PATH];
    EXPECT_EQ(tools.WindowsSystem32(), std::string(system, GetSystemDirectoryA(system, sizeof system)) + "\\");

    EXPECT_TRUE(tools.IsAdmin());  // Wine gives every user the built-in Administrators group
    HANDLE process = nullptr, restricted = nullptr, impersonation = nullptr;
    BYTE administrators[SECURITY_MAX_SID_SIZE];
    DWORD sidSize = sizeof administrators;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &process) &&
                CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &sidSize));
    SID_AND_ATTRIBUTES disable{administrators, 0};
    ASSERT_TRUE(CreateRestrictedToken(process, 0, 1, &disable, 0, nullptr, 0, nullptr, &restricted) &&
                DuplicateToken(restricted, SecurityImpersonation, &impersonation));
    BOOL member = TRUE;
    ASSERT_TRUE(CheckTokenMembership(impersonation, administrators, &member));
    EXPECT_FALSE(member);  // the group really is deny-only now
    ASSERT_TRUE(SetThreadToken(nullptr, impersonation));
    EXPECT_TRUE(clsWindowTools().IsAdmin());
    SetThreadToken(nullptr, nullptr);
    for (HANDLE handle : {impersonation, restricted, process}) CloseHandle(handle);
}

// The reader's controls are tried newest first, by ProgID; one whose server
// is gone is noted and skipped. A real automation class of the system (the
// scripting runtime's dictionary) stands in for a reader control.
TEST(Detection, ReaderControlsAreTriedNewestFirst) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const std::string header = "There was an error while loading the Acrobat Internet Control.\r\n"
                               "Please reinstall acrobat, or upgrade to the latest version.\r\n\r\n";
    auto entry = [](const char* label) { return std::string(label) + " - 429: ActiveX component can't create object\r\n\r\n"; };
    const std::string broken = "{90515AB4-2445-43C2-8817-6299BFA85BED}";
    auto set = [](const std::string& path, const std::string& value) {
        ASSERT_EQ(RegSetKeyValueA(HKEY_CLASSES_ROOT, path.c_str(), nullptr, REG_SZ, value.c_str(),
                                  static_cast<DWORD>(value.size() + 1)), ERROR_SUCCESS);
    };
    EXPECT_EQ(GetAcrobatProgID(), header + entry("Looking for v7+") + entry("Looking for v5") + entry("Looking for v6"));
    EXPECT_FALSE(AcrobatIsInstalled());
    set("PDF.PdfCtrl.6\\CLSID", "{EE09B103-97E0-11CF-978F-00A02463E06F}");
    set("PDF.PdfCtrl.5\\CLSID", broken);
    set("CLSID\\" + broken + "\\InprocServer32", "C:\\corvan-tests\\missing\\reader.dll");
    EXPECT_EQ(GetAcrobatProgID(), "PDF.PdfCtrl.6");
    EXPECT_EQ(AcrobatErrorText(), header + entry("Looking for v7+") + entry("Looking for v5"));
    EXPECT_TRUE(AcrobatIsInstalled());
    set("acroPDF.PDF\\CLSID", "{EE09B103-97E0-11CF-978F-00A02463E06F}");
    EXPECT_EQ(GetAcrobatProgID(), "acroPDF.PDF");
    EXPECT_EQ(AcrobatErrorText(), header);
    for (const std::string& key : {std::string("PDF.PdfCtrl.6"), std::string("PDF.PdfCtrl.5"), std::string("acroPDF.PDF"), "CLSID\\" + broken})
        RegDeleteTreeA(HKEY_CLASSES_ROOT, key.c_str());
    CoUninitialize();
}

// Releases of the earlier dealer application installed by the real msiexec
// are found through the Windows Installer.
TEST(Detection, LegacyReleasesAreFoundThroughTheWindowsInstaller) {
    const std::string first = "{7EE17AF3-3434-11D5-AC76-00010262094C}", second = "{B8F23408-5FCD-4C75-A7BB-4FB1A2AED802}";
    const std::string msi = winbench::BesideThisProgram("legacy_talo_");
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    testing_support::ScriptedDesktop desktop;
    clsTalo talo(&desktop);
    EXPECT_FALSE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), std::vector<std::string>(6));
    EXPECT_EQ(winbench::RunAndWait("msiexec /i \"" + msi + "first.msi\" /qn").exitCode, 0);
    EXPECT_TRUE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), (std::vector<std::string>{first, "", "", "", "", ""}));
    EXPECT_EQ(desktop.pumps, 1);
    EXPECT_EQ(winbench::RunAndWait("msiexec /i \"" + msi + "second.msi\" /qn").exitCode, 0);
    EXPECT_TRUE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), (std::vector<std::string>{first, "", "", "", second, "4"}));
    EXPECT_EQ(winbench::RunAndWait("msiexec /x " + first + " /qn").exitCode, 0);
    EXPECT_TRUE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), (std::vector<std::string>{"", "", "", "", second, "4"}));
    EXPECT_EQ(winbench::RunAndWait("msiexec /x " + second + " /qn").exitCode, 0);
    EXPECT_FALSE(talo.LegacyTaloIsInstalled());
    CoUninitialize();
}
