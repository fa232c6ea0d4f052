#include <gtest/gtest.h>

#include <windows.h>

#include <regex>

#include "platform/clsWindowTools.h"
#include "wine_bench.h"

using namespace corvan;

namespace {

// Sets an environment variable (nullptr removes it) and puts the old value
// back when it goes.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        char old[1024];
        const DWORD n = GetEnvironmentVariableA(name, old, sizeof old);
        had_ = n > 0 && n < sizeof old;
        if (had_) old_.assign(old, n);
        SetEnvironmentVariableA(name, value);
    }
    ~ScopedVariable() { SetEnvironmentVariableA(name_.c_str(), had_ ? old_.c_str() : nullptr); }

private:
    std::string name_, old_;
    bool had_ = false;
};

void ExpectChildPasses(const char* testName) {
    const winbench::ChildResult child = winbench::RunCaseInChild(testName);
    EXPECT_EQ(child.exitCode, 0) << child.output;
    EXPECT_NE(child.output.find("[  PASSED  ] 1 test."), std::string::npos) << child.output;
}

}  // namespace

TEST(WindowTools, DISABLED_ReportsWindowsXpProfessionalX64) {
    clsWindowTools tools;
    EXPECT_EQ(tools.VersionName(), "Windows XP");
    EXPECT_EQ(tools.VersionNo(), "5.2");
    EXPECT_EQ(tools.ServicePack(), "Service Pack 2");
    EXPECT_EQ(tools.BuildNo(), "3790");
}

TEST(WindowTools, VersionComesFromTheVersionAndProductNameTheMachineReports) {
    winbench::ScopedWindowsVersion xp("winxp64", "Microsoft Windows XP");
    ExpectChildPasses("WindowTools.DISABLED_ReportsWindowsXpProfessionalX64");
}

TEST(WindowTools, DISABLED_NamesTheProductFromTheOlderKey) {
    EXPECT_EQ(clsWindowTools().VersionName(), "Windows Millennium Edition");
}

TEST(WindowTools, ProductNameFallsBackToTheWindows98Key) {
    const char* kOlderKey = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
    winbench::ScopedWindowsVersion empty("win7", "");
    const std::string name = "Microsoft Windows Millennium Edition   ";
    ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, kOlderKey, "ProductName", REG_SZ, name.c_str(),
                              static_cast<DWORD>(name.size() + 1)),
              ERROR_SUCCESS);
    ExpectChildPasses("WindowTools.DISABLED_NamesTheProductFromTheOlderKey");
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kOlderKey, "ProductName");
}

// Folders end in one backslash; HomeDrive always gains one; SystemDrive is
// "C:\" whatever the drive.
TEST(WindowTools, EnvironmentProperties) {
    using Getter = std::string (clsWindowTools::*)() const;
    const struct {
        const char* variable;
        const char* value;
        Getter get;
        const char* expected;
    } cases[] = {
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
        ScopedVariable variable(c.variable, c.value);
        EXPECT_EQ((tools.*c.get)(), c.expected) << c.variable << "=" << (c.value ? c.value : "(unset)");
    }
    char system[MAX_PATH];
    const UINT n = GetSystemDirectoryA(system, sizeof system);
    EXPECT_EQ(tools.WindowsSystem32(), std::string(system, n) + "\\");
}

TEST(WindowTools, GuidsAreFreshAndInRegistryForm) {
    clsWindowTools tools;
    const std::string first = tools.GenerateGUID(), second = tools.GenerateGUID();
    EXPECT_NE(first, second);
    const std::regex form("\\{[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\}");
    EXPECT_TRUE(std::regex_match(first, form)) << first;
}

TEST(WindowTools, AdministratorsCountEvenAsADenyOnlyGroup) {
    // Wine gives every user the built-in Administrators group.
    EXPECT_TRUE(clsWindowTools().IsAdmin());

    // The thread's own token is asked first; in it the group is kept only
    // for denying access, and the membership test does not look at that.
    HANDLE process = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &process));
    SID_IDENTIFIER_AUTHORITY nt = SECURITY_NT_AUTHORITY;
    PSID administrators = nullptr;
    ASSERT_TRUE(AllocateAndInitializeSid(&nt, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0,
                                         0, &administrators));
    SID_AND_ATTRIBUTES disable{administrators, 0};
    HANDLE restricted = nullptr, impersonation = nullptr;
    ASSERT_TRUE(CreateRestrictedToken(process, 0, 1, &disable, 0, nullptr, 0, nullptr, &restricted));
    ASSERT_TRUE(DuplicateToken(restricted, SecurityImpersonation, &impersonation));
    BOOL member = TRUE;
    ASSERT_TRUE(CheckTokenMembership(impersonation, administrators, &member));
    EXPECT_FALSE(member);  // the group really is deny-only now

    ASSERT_TRUE(SetThreadToken(nullptr, impersonation));
    EXPECT_TRUE(clsWindowTools().IsAdmin());
    SetThreadToken(nullptr, nullptr);

    FreeSid(administrators);
    CloseHandle(impersonation);
    CloseHandle(restricted);
    CloseHandle(process);
}
