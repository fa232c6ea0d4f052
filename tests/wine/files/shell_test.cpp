#include <gtest/gtest.h>

#include "files/clsShell.h"
#include "files_test_support.h"
#include "wine_bench.h"

using corvan::clsShell;
using files_tests::ChildCommand;

namespace {
int32_t kForever = -1;
}

TEST(Execute, MissingProgramGivesFalseAndLeavesNoHandle) {
    clsShell shell;
    int32_t timeout = kForever;
    ASSERT_TRUE(shell.Execute(ChildCommand("exit 0"), "", timeout, 0, 32)) << "warm-up";
    const DWORD before = files_tests::OwnHandleCount();
    ASSERT_GT(before, 0u);
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(shell.Execute("C:\\corvan-tests\\no-such-program.exe /q", "title", timeout, 0, 32));
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(shell.Execute(ChildCommand("exit 0"), "", timeout, 0, 32));
    EXPECT_EQ(files_tests::OwnHandleCount(), before);
}

// The exit code is none of Execute's business: an installer that fails says
// so in its own log.
TEST(Execute, FailureExitCodeStillTrue) {
    clsShell shell;
    int32_t timeout = kForever;
    EXPECT_TRUE(shell.Execute(ChildCommand("exit 1603"), "", timeout, 0, 32));
    EXPECT_EQ(timeout, kForever);
}

TEST(Execute, ZeroTimeoutReturnsWhileTheChildRunsOn) {
    winbench::ScratchFolder scratch("files-execute-timeout");
    const std::string mark = scratch.Path() + "done.txt";
    clsShell shell;
    int32_t timeout = 0;
    EXPECT_TRUE(shell.Execute(ChildCommand("sleep 3000 \"" + mark + "\""), "", timeout, 0, 32));
    EXPECT_FALSE(winbench::FileExists(mark)) << "Execute waited for the child";
    EXPECT_TRUE(files_tests::WaitForFile(mark, 60000)) << "the child did not run on";
}

TEST(Execute, ShowCommandReachesTheChild) {
    winbench::ScratchFolder scratch("files-execute-show");
    clsShell shell;
    int32_t timeout = kForever;
    for (int show : {0, 3}) {
        const std::string report = scratch.Path() + "show" + std::to_string(show) + ".txt";
        ASSERT_TRUE(shell.Execute(ChildCommand("show \"" + report + "\""), "", timeout, show, 32));
        EXPECT_EQ(winbench::ReadFileBytes(report), "1 " + std::to_string(show));
    }
}

TEST(ShellExec, StartsAProgramWithoutWaiting) {
    winbench::ScratchFolder scratch("files-shellexec");
    const std::string mark = scratch.Path() + "done.txt";
    clsShell shell;
    const int32_t result =
        shell.ShellExec(nullptr, "open", files_tests::ChildPath(), "sleep 1000 \"" + mark + "\"", "", SW_HIDE);
    EXPECT_GT(result, 32);
    EXPECT_TRUE(files_tests::WaitForFile(mark, 60000));
    EXPECT_LE(shell.ShellExec(nullptr, "open", "C:\\corvan-tests\\no-such-program.exe", "", "", SW_HIDE), 32);
}
