// The install log on the prefix's real file system.
#include <gtest/gtest.h>

#include <regex>

#include "logging/write_log.h"
#include "raised.h"
#include "wine_bench.h"

using namespace corvan;
using testing_support::Raised;

const char kDefaultLog[] = "C:\\CorvanInstaller-LogFile.log";

// The file's text with each time stamp replaced by "@".
std::string Shape(const std::string& path) {
    static const std::regex stamp("TimeStamp: \\d\\d/\\d\\d/\\d{4} - \\d\\d:\\d\\d:\\d\\d\t");
    return std::regex_replace(winbench::ReadFileBytes(path), stamp, "@");
}

// Blank names read as the default file, "C:\" + base name + "-LogFile.log";
// a write while closed opens it afresh. A missing folder raises the path
// error. Sessions appending to the named log are the e2e table's.
TEST(InstallLog, AWriteWhileClosedStartsTheDefaultFileAfresh) {
    clsLog log;
    winbench::WriteFileBytes(kDefaultLog, "old contents\r\n");
    EXPECT_TRUE(log.WriteLogEvent("after close"));
    EXPECT_EQ(log.FileStatus(), "OPEN");
    EXPECT_EQ(log.FileName() + " in " + log.path(), "CorvanInstaller-LogFile.log in C:\\");
    log.CloseLogFile();
    log.OpenLogFile("   ", " ", true);
    log.WriteLogEvent("blank names");
    log.CloseLogFile();
    EXPECT_EQ(Shape(kDefaultLog), "@after close\r\n@blank names\r\n");
    DeleteFileA(kDefaultLog);

    const Failure failure = Raised([&] { log.OpenLogFile("SC_Install.log", "C:\\no\\such\\folder\\", true); });
    EXPECT_EQ(std::to_string(failure.Number()) + " " + failure.Description(), "76 Path not found");
    EXPECT_EQ(log.FileStatus(), "CLOSED");
}

// Where "C:\" refuses the default file (here: a folder of its name), it goes
// to the user's temporary folder; where that fails too, the global routine
// raises the failure of the first open to its caller.
TEST(InstallLog, TheDefaultFileFallsBackToTheTemporaryFolder) {
    winbench::ScratchFolder temporary("log-temporary");
    char before[MAX_PATH] = {};
    GetEnvironmentVariableA("TMP", before, MAX_PATH);
    DeleteFileA(kDefaultLog);
    ASSERT_TRUE(CreateDirectoryA(kDefaultLog, nullptr));
    GlobalLog().CloseLogFile();
    SetEnvironmentVariableA("TMP", temporary.Path().c_str());
    WriteLog("written");
    EXPECT_EQ(GlobalLog().path(), temporary.Path());
    GlobalLog().CloseLogFile();
    EXPECT_EQ(Shape(temporary.Path() + "CorvanInstaller-LogFile.log"), "@written\r\n");
    SetEnvironmentVariableA("TMP", (temporary.Path() + "missing\\").c_str());
    EXPECT_EQ(Raised([] { WriteLog("lost"); }).Number(), 70);
    EXPECT_EQ(GlobalLog().FileStatus(), "CLOSED");
    SetEnvironmentVariableA("TMP", before[0] ? before : nullptr);
    RemoveDirectoryA(kDefaultLog);
}
