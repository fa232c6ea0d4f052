// The install log on the real file system of the test prefix.
#include <gtest/gtest.h>

#include <regex>

#include "common/failure.h"
#include "logging/write_log.h"
#include "raised.h"
#include "wine_bench.h"

using namespace corvan;

namespace {
const char kDefaultLog[] = "C:\\CorvanInstaller-LogFile.log";
const std::regex kLine("TimeStamp: \\d\\d/\\d\\d/\\d{4} - \\d\\d:\\d\\d:\\d\\d\t");

// The file's text with each time stamp replaced by "@" (stamps may tick
// between lines).
std::string Shape(const std::string& path) { return std::regex_replace(winbench::ReadFileBytes(path), kLine, "@"); }
}  // namespace

TEST(InstallLog, TwoSessionsAppendToTheSameFile) {
    winbench::ScratchFolder folder("log-append");
    clsLog log;
    for (const char* session : {"first", "second"}) {
        log.OpenLogFile("SC_Install.log", folder.Path(), true);
        EXPECT_EQ(log.FileStatus(), "OPEN");
        log.WriteLogEvent(std::string("START OF ") + session);
        log.WriteLogEvent("\r\n");
        log.CloseLogFile();
        log.CloseLogFile();  // closing twice is harmless
        EXPECT_EQ(log.FileStatus(), "CLOSED");
    }
    EXPECT_EQ(Shape(folder.Path() + "SC_Install.log"), "@START OF first\r\n@\r\n\r\n@START OF second\r\n@\r\n\r\n");
}

// Blank names read as the default file, "C:\" + base name + "-LogFile.log";
// a write while closed opens it for writing, so its old text goes.
TEST(InstallLog, AWriteWhileClosedEmptiesAndReopensTheDefaultFile) {
    winbench::WriteFileBytes(kDefaultLog, "old contents\r\n");
    clsLog log;
    log.OpenLogFile("SC_Install.log", "C:\\", true);
    log.CloseLogFile();
    EXPECT_TRUE(log.WriteLogEvent("after close"));
    EXPECT_EQ(log.FileStatus(), "OPEN");
    EXPECT_EQ(log.FileName(), "CorvanInstaller-LogFile.log");
    EXPECT_EQ(log.path(), "C:\\");
    log.CloseLogFile();
    EXPECT_EQ(Shape(kDefaultLog), "@after close\r\n");

    log.OpenLogFile("   ", " ", true);
    log.WriteLogEvent("blank names");
    log.CloseLogFile();
    EXPECT_EQ(Shape(kDefaultLog), "@after close\r\n@blank names\r\n");
    DeleteFileA(kDefaultLog);
    DeleteFileA("C:\\SC_Install.log");
}

TEST(InstallLog, AFolderThatCannotBeOpenedRaisesThePathError) {
    clsLog log;
    const Failure failure =
        testing_support::Raised([&] { log.OpenLogFile("SC_Install.log", "C:\\no\\such\\folder\\", true); });
    EXPECT_EQ(failure.Number(), 76);
    EXPECT_EQ(failure.Description(), "Path not found");
    EXPECT_EQ(log.FileStatus(), "CLOSED");
}

TEST(InstallLog, TheGlobalRoutineRaisesAFailedOpenToItsCaller) {
    // A folder where the default file should be: the open must fail.
    DeleteFileA(kDefaultLog);
    ASSERT_TRUE(CreateDirectoryA(kDefaultLog, nullptr));
    GlobalLog().CloseLogFile();
    EXPECT_NE(testing_support::Raised([] { WriteLog("lost"); }).Number(), 0);
    EXPECT_EQ(GlobalLog().FileStatus(), "CLOSED");
    RemoveDirectoryA(kDefaultLog);
    WriteLog("written");
    GlobalLog().CloseLogFile();
    EXPECT_EQ(Shape(kDefaultLog), "@written\r\n");
    DeleteFileA(kDefaultLog);
}
