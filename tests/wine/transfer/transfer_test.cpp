// Downloads through the prefix's real WinINet from the test server.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "control/WindowsDesktop.h"
#include "installer_folder.h"
#include "scripted_desktop.h"
#include "settings/modCorvanInstaller_Global.h"
#include "transfer/clsFTP.h"
#include "wine_bench.h"

using corvan::clsFTP;
using Clock = std::chrono::steady_clock;
using Progress = std::pair<float, std::string>;

std::string Env(const char* variable) { return std::getenv(variable) ? std::getenv(variable) : ""; }

// The bytes the test server sends at offsets [0, n).
std::string PatternBytes(size_t n) {
    std::string bytes(n, '\0');
    for (size_t i = 0; i < n; ++i) bytes[i] = static_cast<char>(1 + i % 251);
    return bytes;
}

// The message pumps (how many while busy) and progress events, with their times.
struct Watcher : testing_support::ScriptedDesktop, corvan::clsFTPEvents {
    clsFTP* ftp = nullptr;
    int busy = 0;
    std::vector<Clock::time_point> pumpTimes, progressTimes;
    std::vector<Progress> progress;
    void DoEvents() override {
        ScriptedDesktop::DoEvents();
        busy += ftp->StillExecuting() ? 1 : 0;
        pumpTimes.push_back(Clock::now());
    }
    void FileProgress(float Percent, const std::string& status) override {
        progress.push_back({Percent, status});
        progressTimes.push_back(Clock::now());
    }
    void StatusChange(std::string&, int32_t) override {}
};

class Transfer : public ::testing::Test {
protected:
    void SetUp() override {
        if (base.empty()) GTEST_SKIP() << "CORVAN_HTTP_URL not set: the http fixture did not start";
        watcher.ftp = &ftp;
    }
    std::string Target(const std::string& name = "file.bin") { return folder.Path() + name; }
    // The events of a download of `size` at these running totals, the last one final (100%).
    static std::vector<Progress> Expect(double size, const std::vector<double>& totals) {
        std::vector<Progress> out;
        for (double total : totals) out.push_back({static_cast<float>(total / size), corvan::ProgressText(total, size)});
        out.back().first = 1.0f;
        return out;
    }

    std::string base = Env("CORVAN_HTTP_URL");
    winbench::ScratchFolder folder{"transfer"};
    Watcher watcher;
    clsFTP ftp{&watcher, &watcher};
};

// The first block is written and counted whole, padded with NULs, over what
// the file held; every block and the closing empty read raise an event.
// Without a length only the final event comes.
TEST_F(Transfer, BlocksAndTheirEvents) {
    const std::string padded300 = PatternBytes(300) + std::string(724, '\0');
    const struct { const char* path; std::string bytes; std::vector<Progress> events; double size; } cases[] = {
        {"size/300", padded300 + std::string(1976, 'x'), Expect(300, {1024, 1024, 1024}), 300},
        {"size/2048", PatternBytes(2048), Expect(2048, {1024, 2048, 2048, 2048}), 2048},
        {"nolength/5000", PatternBytes(5000), {{1.0f, "5000 bytes of 0 bytes read "}}, 0},
    };
    for (const auto& c : cases) {
        watcher.progress.clear();
        if (&c == cases) winbench::WriteFileBytes(Target(), std::string(3000, 'x'));
        ASSERT_TRUE(ftp.DownloadFile(base + c.path, Target())) << c.path;
        EXPECT_EQ(winbench::ReadFileBytes(Target()), c.bytes) << c.path;
        EXPECT_EQ(watcher.progress, c.events) << c.path;
        EXPECT_EQ(ftp.dwCurrentFileSize(), c.size) << c.path;
        EXPECT_FALSE(ftp.StillExecuting());
        DeleteFileA(Target().c_str());
    }
    EXPECT_EQ(ftp.OpenURL(base + "size/300"), padded300);
    EXPECT_EQ(ftp.OpenURL(base + "echo-agent").substr(0, 24), "Corvan Connect Installer");
}

// A refused, cut or unreachable download writes nothing: an existing file
// stays as it was and no part file is left; nothing at all is raised for a
// server that refuses the file. Only the known authority is trusted.
TEST_F(Transfer, FailuresWriteNothing) {
    winbench::WriteFileBytes(Target(), "old contents");
    const std::string untrusted = Env("CORVAN_HTTPS_UNTRUSTED_URL");
    for (const std::string& url : {base + "status/404", base + "status/500", base + "cut/20000", base + "cut/600",
                                   std::string("http://127.0.0.1:1/size/300"), std::string("not a url"),
                                   untrusted + "size/2048"}) {
        watcher.progress.clear();
        EXPECT_FALSE(ftp.DownloadFile(url, Target())) << url;
        EXPECT_FALSE(ftp.DownloadFile(url, Target("new.bin"))) << url;
        if (url.find("status/") != std::string::npos || url == untrusted + "size/2048") {
            EXPECT_TRUE(watcher.progress.empty()) << url;
        }
        EXPECT_FALSE(ftp.StillExecuting());
    }
    EXPECT_EQ(winbench::ReadFileBytes(Target()), "old contents");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
    EXPECT_FALSE(ftp.DownloadFile(base + "size/300", folder.Path() + "no\\such\\folder\\f.bin"));
    ASSERT_EQ(Env("CORVAN_TEST_AUTHORITY"), "trusted");
    ASSERT_TRUE(ftp.DownloadFile(Env("CORVAN_HTTPS_URL") + "size/2048", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(2048));
}

// On a modem line each block is handed out as it arrives, with its event
// and its pump while busy, rather than when a large read has filled up: ten
// pieces come a second apart, and so do the pumps.
TEST_F(Transfer, ASlowLineHandsOutEachBlockAsItArrives) {
    const Clock::time_point start = Clock::now();
    ASSERT_TRUE(ftp.DownloadFile(base + "paced/10240/1000", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(10240));
    auto seconds = [](Clock::time_point from, Clock::time_point to) { return std::chrono::duration<double>(to - from).count(); };
    ASSERT_EQ(watcher.progressTimes.size(), 12u);
    EXPECT_GT(seconds(start, watcher.progressTimes[0]), 0.5);
    EXPECT_LT(seconds(start, watcher.progressTimes[0]), 2.5) << "the first block waited for the rest";
    ASSERT_EQ(watcher.pumpTimes.size(), 10u);  // nine after the first block, plus the empty read
    EXPECT_EQ(watcher.busy, 10);
    for (size_t i = 1; i < 9; ++i) EXPECT_GT(seconds(watcher.pumpTimes[i - 1], watcher.pumpTimes[i]), 0.5) << i;
}

// A thread timer of 50 ms: its gaps show how long the page went without its messages.
std::vector<DWORD> ticks;
void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) { ticks.push_back(GetTickCount()); }

// A silent server ends the download within MAXTRIES (2) time-outs and a
// pause, the page's messages running all the while. A range answered with the
// whole file gives it whole, never half twice; a text's range keeps its query.
// Stalls, cuts and their retries in whole runs are the e2e fault table's.
TEST_F(Transfer, BoundedWaitsAndRangeRequests) {
    const DWORD kSilenceMs = 1500;
    const corvan::TransferPolicy saved = corvan::ProcessTransferPolicy();
    const int16_t savedTries = corvan::modCorvanInstaller_Global().MaxTries();
    corvan::ProcessTransferPolicy() = {1000, 1000, kSilenceMs, 100, 200};
    corvan::modCorvanInstaller_Global().MaxTries(2);
    corvan::WindowsDesktop desktop;
    clsFTP session(&desktop, &watcher);  // takes the policy
    testserver::InstallerFolder server("retry");
    for (const char* file : {"silent.bin", "file.bin"}) server.Write(file, PatternBytes(100000));
    server.Misbehave("silent.bin", "silent");
    const UINT_PTR timer = SetTimer(nullptr, 0, 50, &Tick);
    const DWORD start = GetTickCount();
    EXPECT_FALSE(session.DownloadFile(server.URL() + "silent.bin", Target()));
    const DWORD end = GetTickCount();
    KillTimer(nullptr, timer);
    DWORD longest = 0, last = start;
    for (DWORD tick : ticks) longest = std::max(longest, tick - last), last = tick;
    EXPECT_LT(std::max(longest, end - last), kSilenceMs * 2 / 3) << "the page went without its messages";
    EXPECT_GE(end - start, 2 * kSilenceMs);
    EXPECT_LT(end - start, 2 * kSilenceMs + 100 + 1500);
    EXPECT_EQ(server.Requests("silent.bin"), 2);
    EXPECT_FALSE(winbench::FileExists(Target()));

    server.Misbehave("file.bin", "cut whole");
    EXPECT_TRUE(session.DownloadFile(server.URL() + "file.bin", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(100000));
    EXPECT_EQ(watcher.progress.back(), Progress(1.0f, "100000 bytes of 100000 bytes read "));
    server.Write("text.bin", PatternBytes(5000));
    server.Misbehave("text.bin", "cut ok");
    EXPECT_EQ(session.OpenURL(server.URL() + "text.bin?v=2"), PatternBytes(5000));
    EXPECT_EQ(server.Answers("text.bin?v=2"), (std::vector<std::string>{"200", "206 bytes=2500-"}));
    corvan::ProcessTransferPolicy() = saved;
    corvan::modCorvanInstaller_Global().MaxTries(savedTries);
}
