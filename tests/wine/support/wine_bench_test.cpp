// The test bench's own promise: a case can run under a chosen Windows version.
#include <gtest/gtest.h>

#include "wine_bench.h"

TEST(WineBench, DISABLED_ReportsWindowsXPx64ServicePack2) {
    OSVERSIONINFOEXA info{};
    info.dwOSVersionInfoSize = sizeof info;
    ASSERT_TRUE(GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&info)));
    EXPECT_EQ(info.dwMajorVersion, 5u);
    EXPECT_EQ(info.dwMinorVersion, 2u);
    EXPECT_STREQ(info.szCSDVersion, "Service Pack 2");
    char product[256] = {};
    DWORD size = sizeof product;
    RegGetValueA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", "ProductName", RRF_RT_REG_SZ,
                 nullptr, product, &size);
    EXPECT_STREQ(product, "Microsoft Windows XP");
}

TEST(WineBench, AChildCaseSeesTheVersionItWasGivenAndTheOldOneComesBack) {
    OSVERSIONINFOA before{};
    before.dwOSVersionInfoSize = sizeof before;
    GetVersionExA(&before);
    {
        winbench::ScopedWindowsVersion version("winxp64", "Microsoft Windows XP");
        winbench::ChildResult child = winbench::RunCaseInChild("WineBench.DISABLED_ReportsWindowsXPx64ServicePack2");
        EXPECT_EQ(child.exitCode, 0) << child.output;
    }
    EXPECT_NE(winbench::RunCaseInChild("WineBench.DISABLED_ReportsWindowsXPx64ServicePack2").exitCode, 0);
}
