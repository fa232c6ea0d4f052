#include <gtest/gtest.h>

#include "files/clsShell.h"
#include "files_test_support.h"
#include "wine_bench.h"

using corvan::clsShell;

namespace {

constexpr int32_t kForever = -1;

std::string Child(const std::string& arguments) { return "\"" + files_tests::ChildPath() + "\" " + arguments; }

bool AppearsWithinAMinute(const std::string& path) {
    for (int waited = 0; waited < 60000 && !winbench::FileExists(path); waited += 50) Sleep(50);
    return winbench::FileExists(path);
}

// Wine's GetProcessHandleCount answers 0; asking the handle table about
// every possible value is slower but true everywhere.
DWORD OwnHandleCount() {
    DWORD count = 0;
    for (uintptr_t value = 4; value < (1u << 18); value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) ++count;
    }
    return count;
}

}  // namespace

// The exit code is none of Execute's business: an installer that fails says
// so in its own log.
TEST(Execute, FalseOnlyForAMissingProgramAndNoHandleLeft) {
    clsShell shell;
    int32_t timeout = kForever;
    ASSERT_TRUE(shell.Execute(Child("exit 0"), "", timeout, 0, 32)) << "warm-up";
    const DWORD before = OwnHandleCount();
    ASSERT_GT(before, 0u);
    for (int i = 0; i < 5; ++i) {
        EXPECT_FALSE(shell.Execute("C:\\corvan-tests\\no-such-program.exe /q", "title", timeout, 0, 32));
        EXPECT_TRUE(shell.Execute(Child("exit 1603"), "", timeout, 0, 32));
    }
    EXPECT_EQ(timeout, kForever);
    EXPECT_EQ(OwnHandleCount(), before);
}

TEST(Execute, ZeroTimeoutReturnsWhileTheChildRunsOn) {
    winbench::ScratchFolder scratch("files-execute-timeout");
    const std::string mark = scratch.Path() + "done.txt";
    clsShell shell;
    int32_t timeout = 0;
    EXPECT_TRUE(shell.Execute(Child("sleep 3000 \"" + mark + "\""), "", timeout, 0, 32));
    EXPECT_FALSE(winbench::FileExists(mark)) << "Execute waited for the child";
    EXPECT_TRUE(AppearsWithinAMinute(mark)) << "the child did not run on";
}

TEST(Execute, ShowCommandReachesTheChild) {
    winbench::ScratchFolder scratch("files-execute-show");
    clsShell shell;
    int32_t timeout = kForever;
    for (int show : {0, 3}) {
        const std::string report = scratch.Path() + "show" + std::to_string(show) + ".txt";
        ASSERT_TRUE(shell.Execute(Child("show \"" + report + "\""), "", timeout, show, 32));
        EXPECT_EQ(winbench::ReadFileBytes(report), "1 " + std::to_string(show));
    }
}

TEST(ShellExec, StartsAProgramWithoutWaiting) {
    winbench::ScratchFolder scratch("files-shellexec");
    const std::string mark = scratch.Path() + "done.txt";
    clsShell shell;
    EXPECT_GT(shell.ShellExec(nullptr, "open", files_tests::ChildPath(), "sleep 1000 \"" + mark + "\"", "", SW_HIDE),
              32);
    EXPECT_TRUE(AppearsWithinAMinute(mark));
    EXPECT_LE(shell.ShellExec(nullptr, "open", "C:\\corvan-tests\\no-such-program.exe", "", "", SW_HIDE), 32);
}
