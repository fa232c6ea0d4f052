// The install log on the prefix's real file system, and the trace reaching
// a real viewer window through WM_COPYDATA.
#include <gtest/gtest.h>

#include <regex>

#include "common/this_module.h"
#include "logging/modTrace.h"
#include "logging/write_log.h"
#include "raised.h"
#include "wine_bench.h"

using namespace corvan;
using testing_support::Raised;

namespace {

const char kDefaultLog[] = "C:\\CorvanInstaller-LogFile.log";

// The file's text with each time stamp replaced by "@".
std::string Shape(const std::string& path) {
    static const std::regex stamp("TimeStamp: \\d\\d/\\d\\d/\\d{4} - \\d\\d:\\d\\d:\\d\\d\t");
    return std::regex_replace(winbench::ReadFileBytes(path), stamp, "@");
}

}  // namespace

// Two sessions append to one file; closing twice is harmless. Blank names
// read as the default file, "C:\" + base name + "-LogFile.log"; a write
// while closed opens it for writing, so its old text goes. A folder that
// cannot be opened raises the path error.
TEST(InstallLog, SessionsAppendAndAWriteWhileClosedStartsTheDefaultFileAfresh) {
    winbench::ScratchFolder folder("log-append");
    clsLog log;
    for (const char* session : {"first", "second"}) {
        log.OpenLogFile("SC_Install.log", folder.Path(), true);
        EXPECT_EQ(log.FileStatus(), "OPEN");
        log.WriteLogEvent(std::string("START OF ") + session);
        log.WriteLogEvent("\r\n");
        log.CloseLogFile();
        log.CloseLogFile();
        EXPECT_EQ(log.FileStatus(), "CLOSED");
    }
    EXPECT_EQ(Shape(folder.Path() + "SC_Install.log"), "@START OF first\r\n@\r\n\r\n@START OF second\r\n@\r\n\r\n");

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

std::vector<std::pair<HWND, std::string>> received;  // by every test viewer, with its window

LRESULT CALLBACK ViewerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_COPYDATA) return DefWindowProcA(window, message, wParam, lParam);
    const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
    received.push_back({window, std::to_string(data->dwData) + " " +
                                    std::string(static_cast<const char*>(data->lpData), data->cbData)});
    return TRUE;
}

// A window carrying the viewer property with this value.
HWND Viewer(intptr_t property) {
    WNDCLASSA cls{};
    cls.lpfnWndProc = ViewerProc;
    cls.lpszClassName = "CorvanTestTraceViewer";
    RegisterClassA(&cls);
    HWND window = CreateWindowA(cls.lpszClassName, "viewer", WS_OVERLAPPEDWINDOW, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    SetPropA(window, kTraceViewerProperty, reinterpret_cast<HANDLE>(property));
    return window;
}

// The viewer gets the prefix, the stamp "yyyymmdd hhnnss: " and the tabbed
// values. A window whose property is not 1 is no viewer; the search runs
// once, so a viewer that comes later is not seen.
TEST(Trace, OnlyTheViewerFoundByTheOneSearchReceives) {
    HWND impostor = Viewer(2), viewer = Viewer(1);
    TraceOutput trace;
    trace.Trace({"a", "b"});
    trace.Trace({std::vector<std::string>{"x", "y"}, 3});
    const std::string prefix = "0 CorvanInstaller: " + std::to_string(reinterpret_cast<uintptr_t>(ThisModule())) +
                               ": " + std::to_string(GetCurrentThreadId()) + ": \\d{8} \\d{6}: ";
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0].first, viewer);
    EXPECT_TRUE(std::regex_match(received[0].second, std::regex(prefix + "a\tb\t"))) << received[0].second;
    EXPECT_TRUE(std::regex_match(received[1].second, std::regex(prefix + "x\ty\t3\t"))) << received[1].second;
    DestroyWindow(viewer);
    received.clear();
    TraceOutput nobody;
    nobody.Trace({"nobody"});
    HWND late = Viewer(1);
    nobody.Trace({"listens"});
    EXPECT_EQ(nobody.Viewer(), nullptr);
    EXPECT_EQ(nobody.Searches() + trace.Searches(), 2);
    EXPECT_TRUE(received.empty());
    DestroyWindow(impostor);
    DestroyWindow(late);
}
