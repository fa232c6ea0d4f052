#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "logging/clsLog.h"
#include "logging/log_line.h"
#include "logging/trace_text.h"
#include "run_together.h"

using namespace corvan;

TEST(LogLine, HasTheExactShape) {
    LocalTime t{2026, 1, 2, 3, 4, 5};
    EXPECT_EQ(FormatLogLine(t, "Hello"), "TimeStamp: 01/02/2026 - 03:04:05\tHello\r\n");
    EXPECT_EQ(FormatLogLine(t, "\r\n"), "TimeStamp: 01/02/2026 - 03:04:05\t\r\n\r\n");
    EXPECT_EQ(FormatLogLine(t, ""), "TimeStamp: 01/02/2026 - 03:04:05\t\r\n");
}

TEST(TraceText, ValuesEachEndWithATabAndArraysExpand) {
    EXPECT_EQ(BuildTraceBody({"a", "b"}), "a\tb\t");
    EXPECT_EQ(BuildTraceBody({}), "");
    EXPECT_EQ(BuildTraceBody({std::string("x"), std::vector<std::string>{"1", "2"}, 7, true, false}),
              "x\t1\t2\t7\tTrue\tFalse\t");
    EXPECT_EQ(BuildTraceBody({0.5, 0.25f, -3.0, 1e20, 1.5e-7}), "0.5\t0.25\t-3\t1E+20\t1.5E-07\t");
    LocalTime t{2026, 11, 23, 9, 8, 7};
    EXPECT_EQ(BuildTracePrefix("CorvanInstaller", 268435456u, 42u, t),
              "CorvanInstaller: 268435456: 42: 20261123 090807: ");
}

TEST(ClsLog, BlankNamesFallBackAndStatusFollowsTheFile) {
    clsLog log;
    EXPECT_EQ(log.FileName(), "CorvanInstaller-LogFile.log");
    EXPECT_EQ(log.path(), "C:\\");
    log.FileName("   ");
    log.path(" ");
    EXPECT_EQ(log.FileName(), "CorvanInstaller-LogFile.log");
    EXPECT_EQ(log.path(), "C:\\");
    EXPECT_EQ(log.FileStatus(), "CLOSED");

    std::filesystem::path dir = std::filesystem::temp_directory_path() / "corvan-log-unit";
    std::filesystem::create_directories(dir);
    std::string folder = dir.string() + "/";
    std::filesystem::remove(dir / "a.log");
    log.OpenLogFile("a.log", folder, true);
    EXPECT_EQ(log.FileStatus(), "OPEN");
    EXPECT_TRUE(log.WriteLogEvent("one"));
    log.CloseLogFile();
    log.CloseLogFile();  // closing twice is harmless
    EXPECT_EQ(log.FileStatus(), "CLOSED");
    log.OpenLogFile("a.log", folder, true);
    EXPECT_TRUE(log.WriteLogEvent("two"));
    log.CloseLogFile();

    std::string body;
    {
        std::ifstream in(dir / "a.log", std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        body = text.str();
    }
    EXPECT_NE(body.find("\tone\r\nTimeStamp: "), std::string::npos);
    EXPECT_EQ(body.substr(body.size() - 5), "two\r\n");

    EXPECT_THROW(log.OpenLogFile("x.log", folder + "no-such-folder/", true), std::exception);
    EXPECT_EQ(log.FileStatus(), "CLOSED");
    std::filesystem::remove_all(dir);
}

// Two controls on two threads run sessions on the one log of the process: a
// close on one thread never meets a write on the other.
TEST(ClsLog, SessionsOnTwoThreadsShareTheLogSafely) {
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "corvan-log-threads";
    std::filesystem::create_directories(dir);
    // A write while the other thread has closed the log opens the default
    // file, which is relative to the current folder here.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(dir);
    clsLog log;
    auto session = [&](int) {
        log.OpenLogFile("SC_Install.log", dir.string() + "/", true);
        log.WriteLogEvent("a line long enough to be more than a few bytes of the file");
        log.CloseLogFile();
    };
    testing_support::RunTogether(3000, session, session);
    std::filesystem::current_path(before);
    std::filesystem::remove_all(dir);
}
