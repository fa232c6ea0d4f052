#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "scripted_desktop.h"
#include "test_server.h"
#include "wine_bench.h"

using namespace transfer_tests;
using corvan::clsFTP;

namespace {

using Clock = std::chrono::steady_clock;

// Counts the message pumps, how many of them came while the session said it
// was busy, and when each came.
struct WatchingDesktop : testing_support::ScriptedDesktop {
    clsFTP* ftp = nullptr;
    int busy = 0;
    std::vector<Clock::time_point> times;
    void DoEvents() override {
        ScriptedDesktop::DoEvents();
        busy += ftp->StillExecuting() ? 1 : 0;
        times.push_back(Clock::now());
    }
};

// Keeps when each progress event came.
struct TimedEvents : EventLog {
    std::vector<Clock::time_point> times;
    void FileProgress(float Percent, const std::string& status) override {
        EventLog::FileProgress(Percent, status);
        times.push_back(Clock::now());
    }
};

class Download : public ::testing::Test {
protected:
    void SetUp() override {
        desktop.ftp = &ftp;
        base = ServerUrl();
        if (base.empty()) GTEST_SKIP() << "CORVAN_HTTP_URL not set: the http fixture did not start";
    }
    std::string Target(const std::string& name = "file.bin") { return folder.Path() + name; }
    // The folder's files in name order: a part file left behind shows here.
    std::vector<std::string> FolderEntries() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    std::string base;
    winbench::ScratchFolder folder{"transfer-download"};
    WatchingDesktop desktop;
    TimedEvents events;
    clsFTP ftp{&desktop, &events};
};

// The events of a download of an announced `size`: one per running total,
// then the final one.
std::vector<Progress> Expect(double size, const std::vector<double>& totals, double finalTotal) {
    std::vector<Progress> out;
    for (double total : totals) out.push_back({static_cast<float>(total / size), corvan::ProgressText(total, size)});
    out.push_back({1.0f, corvan::ProgressText(finalTotal, size)});
    return out;
}

}  // namespace

// The first block is written and counted whole, padded with NULs; every block
// and the closing empty read raise an event. Without a length only the final
// event comes.
TEST_F(Download, BlocksAndTheirEvents) {
    const std::string padded300 = PatternBytes(300) + std::string(724, '\0');
    const struct { const char* path; std::string bytes; std::vector<Progress> events; double size; } cases[] = {
        {"size/300", padded300, Expect(300, {1024, 1024}, 1024), 300},
        {"size/1024", PatternBytes(1024), Expect(1024, {1024, 1024}, 1024), 1024},
        {"size/2048", PatternBytes(2048), Expect(2048, {1024, 2048, 2048}, 2048), 2048},
        {"nolength/300", padded300, {{1.0f, "1024 bytes of 0 bytes read "}}, 0},
        {"nolength/5000", PatternBytes(5000), {{1.0f, "5000 bytes of 0 bytes read "}}, 0},
    };
    std::vector<std::string> written;
    for (const auto& c : cases) {
        events.progress.clear();
        written.push_back(std::to_string(written.size()) + ".bin");
        ASSERT_TRUE(ftp.DownloadFile(base + c.path, Target(written.back()))) << c.path;
        EXPECT_EQ(winbench::ReadFileBytes(Target(written.back())), c.bytes) << c.path;
        EXPECT_EQ(events.progress, c.events) << c.path;
        EXPECT_EQ(ftp.dwCurrentFileSize(), c.size) << c.path;
        EXPECT_FALSE(ftp.StillExecuting());
    }
    EXPECT_EQ(FolderEntries(), written);

    // A larger body, so that WinINet's own buffering cannot hide a block.
    events.progress.clear();
    ASSERT_TRUE(ftp.DownloadFile(base + "size/100000", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(100000));
    std::vector<double> totals;
    for (double total = 1024; total < 100000; total += 1024) totals.push_back(total);
    totals.insert(totals.end(), {100000, 100000});
    EXPECT_EQ(events.progress, Expect(100000, totals, 100000));
}

TEST_F(Download, LongerExistingFileKeepsItsTail) {
    winbench::WriteFileBytes(Target(), std::string(3000, 'x'));
    ASSERT_TRUE(ftp.DownloadFile(base + "size/300", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(300) + std::string(724, '\0') + std::string(1976, 'x'));
}

TEST_F(Download, FailuresWriteNothing) {
    for (const char* path : {"status/404", "status/500", "cut/20000", "cut/600"}) {
        events.progress.clear();
        EXPECT_FALSE(ftp.DownloadFile(base + path, Target("new.bin"))) << path;
        EXPECT_FALSE(winbench::FileExists(Target("new.bin"))) << path;
        EXPECT_FALSE(ftp.StillExecuting());
        // Nothing at all is raised for a server that refuses the file.
        if (path[0] == 's') EXPECT_TRUE(events.progress.empty()) << path;
    }
    EXPECT_FALSE(ftp.DownloadFile(base + "size/300", folder.Path() + "no\\such\\folder\\f.bin"));
    EXPECT_FALSE(ftp.StillExecuting());

    // An existing file stays as it was, and no part file is left behind; nor
    // do a missing server or a name that is not a URL touch it.
    winbench::WriteFileBytes(Target(), "old contents");
    for (const std::string url : {base + "cut/50000", base + "status/500", std::string("http://127.0.0.1:1/size/300"),
                                  std::string("not a url")})
        EXPECT_FALSE(ftp.DownloadFile(url, Target())) << url;
    EXPECT_EQ(winbench::ReadFileBytes(Target()), "old contents");
    EXPECT_EQ(FolderEntries(), std::vector<std::string>{"file.bin"});
}

TEST_F(Download, SlowBodyLetsMessagesRunAfterEveryBlockWhileBusy) {
    ASSERT_TRUE(ftp.DownloadFile(base + "slow/10240", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(10240));
    // Ten blocks: nine after the first, plus the empty read.
    EXPECT_EQ(desktop.pumps, 10);
    EXPECT_EQ(desktop.busy, 10);
    EXPECT_EQ(events.progress.size(), 12u);
    EXPECT_FALSE(ftp.StillExecuting());
}

// On a modem line each block is handed out as it arrives, with its event
// and its pump, rather than when a large read has filled up: ten pieces come
// a second apart, and so do the pumps.
TEST_F(Download, ASlowLineHandsOutEachBlockAsItArrives) {
    const Clock::time_point start = Clock::now();
    ASSERT_TRUE(ftp.DownloadFile(base + "paced/10240/1000", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(10240));
    auto seconds = [&](Clock::time_point t) { return std::chrono::duration<double>(t - start).count(); };
    ASSERT_EQ(events.times.size(), 12u);
    EXPECT_GT(seconds(events.times[0]), 0.5);
    EXPECT_LT(seconds(events.times[0]), 2.5) << "the first block waited for the rest";
    // A pump after each of blocks 2 to 10, each piece's second after the one before.
    ASSERT_EQ(desktop.times.size(), 10u);
    for (size_t i = 1; i < 9; ++i)
        EXPECT_GT(std::chrono::duration<double>(desktop.times[i] - desktop.times[i - 1]).count(), 0.5) << "pump " << i;
}

TEST_F(Download, OpenUrlGivesTheBlocksAsText) {
    EXPECT_EQ(ftp.OpenURL(base + "size/300"), PatternBytes(300) + std::string(724, '\0'));
    EXPECT_EQ(events.progress, Expect(300, {1024, 1024}, 1024));
    EXPECT_EQ(ftp.OpenURL(base + "size/3000"), PatternBytes(3000));
    EXPECT_EQ(ftp.OpenURL(base + "echo-agent").substr(0, 24), "Corvan Connect Installer");

    events.progress.clear();
    EXPECT_EQ(ftp.OpenURL(base + "status/404"), "");
    EXPECT_EQ(events.progress, (std::vector<Progress>{{1.0f, "0 bytes of 0 bytes read "}}));
    EXPECT_EQ(ftp.OpenURL(base + "cut/8000"), "");
    EXPECT_FALSE(ftp.StillExecuting());
}

TEST_F(Download, HttpsTrustsOnlyTheKnownAuthority) {
    std::string trusted = ServerUrl("CORVAN_HTTPS_URL"), untrusted = ServerUrl("CORVAN_HTTPS_UNTRUSTED_URL");
    ASSERT_FALSE(trusted.empty());
    ASSERT_EQ(ServerUrl("CORVAN_TEST_AUTHORITY"), "trusted");
    ASSERT_TRUE(ftp.DownloadFile(trusted + "size/2048", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(2048));

    events.progress.clear();
    EXPECT_FALSE(ftp.DownloadFile(untrusted + "size/2048", Target("rogue.bin")));
    EXPECT_FALSE(winbench::FileExists(Target("rogue.bin")));
    EXPECT_TRUE(events.progress.empty());
    EXPECT_EQ(ftp.OpenURL(untrusted + "size/10"), "");
}
