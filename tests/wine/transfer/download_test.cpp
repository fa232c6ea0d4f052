#include <gtest/gtest.h>

#include "scripted_desktop.h"
#include "test_server.h"
#include "wine_bench.h"

using namespace transfer_tests;
using corvan::clsFTP;

namespace {

class Download : public ::testing::Test {
protected:
    void SetUp() override {
        base = ServerUrl();
        if (base.empty()) GTEST_SKIP() << "CORVAN_HTTP_URL not set: the http fixture did not start";
    }
    std::string Target(const std::string& name = "file.bin") { return folder.Path() + name; }
    std::vector<std::string> FolderEntries() {
        std::vector<std::string> names;
        WIN32_FIND_DATAA found;
        HANDLE find = FindFirstFileA((folder.Path() + "*").c_str(), &found);
        if (find == INVALID_HANDLE_VALUE) return names;
        do {
            std::string name = found.cFileName;
            if (name != "." && name != "..") names.push_back(name);
        } while (FindNextFileA(find, &found));
        FindClose(find);
        return names;
    }

    std::string base;
    winbench::ScratchFolder folder{"transfer-download"};
    testing_support::ScriptedDesktop desktop;
    EventLog events;
    clsFTP ftp{&desktop, &events};
};

std::vector<Progress> Expect(std::initializer_list<std::pair<double, double>> totalsAndSizes, double finalTotal,
                             double size) {
    std::vector<Progress> out;
    for (auto [total, announced] : totalsAndSizes)
        out.push_back({static_cast<float>(total / announced), corvan::ProgressText(total, announced)});
    out.push_back({1.0f, corvan::ProgressText(finalTotal, size)});
    return out;
}

}  // namespace

TEST_F(Download, ShortBodyIsPaddedToTheFirstBlock) {
    ASSERT_TRUE(ftp.DownloadFile(base + "size/300", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(300) + std::string(724, '\0'));
    EXPECT_EQ(events.progress, Expect({{1024, 300}, {1024, 300}}, 1024, 300));
    EXPECT_EQ(ftp.dwCurrentFileSize(), 300);
    EXPECT_FALSE(ftp.StillExecuting());
    EXPECT_EQ(FolderEntries(), std::vector<std::string>{"file.bin"});
}

TEST_F(Download, WholeBlocksReportEveryBlockAndTheEmptyRead) {
    ASSERT_TRUE(ftp.DownloadFile(base + "size/1024", Target("a.bin")));
    EXPECT_EQ(winbench::ReadFileBytes(Target("a.bin")), PatternBytes(1024));
    EXPECT_EQ(events.progress, Expect({{1024, 1024}, {1024, 1024}}, 1024, 1024));

    events.progress.clear();
    ASSERT_TRUE(ftp.DownloadFile(base + "size/2048", Target("b.bin")));
    EXPECT_EQ(winbench::ReadFileBytes(Target("b.bin")), PatternBytes(2048));
    EXPECT_EQ(events.progress, Expect({{1024, 2048}, {2048, 2048}, {2048, 2048}}, 2048, 2048));

    // A larger body, so that WinINet's own buffering cannot hide a block.
    events.progress.clear();
    ASSERT_TRUE(ftp.DownloadFile(base + "size/100000", Target("c.bin")));
    EXPECT_EQ(winbench::ReadFileBytes(Target("c.bin")), PatternBytes(100000));
    ASSERT_EQ(events.progress.size(), 100000 / 1024 + 2 + 1u);
    EXPECT_EQ(events.progress[96].text, "99328 bytes of 100000 bytes read ");
    EXPECT_EQ(events.progress[97].text, "100000 bytes of 100000 bytes read ");
    EXPECT_EQ(events.progress[98].text, "100000 bytes of 100000 bytes read ");
}

TEST_F(Download, WithoutLengthOnlyTheFinalEvent) {
    ASSERT_TRUE(ftp.DownloadFile(base + "nolength/300", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(300) + std::string(724, '\0'));
    EXPECT_EQ(events.progress, (std::vector<Progress>{{1.0f, "1024 bytes of 0 bytes read "}}));
    EXPECT_EQ(ftp.dwCurrentFileSize(), 0);

    events.progress.clear();
    ASSERT_TRUE(ftp.DownloadFile(base + "nolength/5000", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(5000));
    EXPECT_EQ(events.progress, (std::vector<Progress>{{1.0f, "5000 bytes of 0 bytes read "}}));
}

TEST_F(Download, LongerExistingFileKeepsItsTail) {
    winbench::WriteFileBytes(Target(), std::string(3000, 'x'));
    ASSERT_TRUE(ftp.DownloadFile(base + "size/300", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(300) + std::string(724, '\0') + std::string(1976, 'x'));
}

TEST_F(Download, ServerErrorsAndBrokenBodiesWriteNothing) {
    for (const char* path : {"status/404", "status/500", "cut/20000", "cut/600"}) {
        events.progress.clear();
        EXPECT_FALSE(ftp.DownloadFile(base + path, Target("new.bin"))) << path;
        EXPECT_FALSE(winbench::FileExists(Target("new.bin"))) << path;
        EXPECT_FALSE(ftp.StillExecuting());
    }
    // Nothing at all is raised for a server that refuses the file.
    events.progress.clear();
    EXPECT_FALSE(ftp.DownloadFile(base + "status/404", Target("new.bin")));
    EXPECT_TRUE(events.progress.empty());

    // An existing file stays as it was, and no part file is left behind.
    winbench::WriteFileBytes(Target(), "old contents");
    EXPECT_FALSE(ftp.DownloadFile(base + "cut/50000", Target()));
    EXPECT_FALSE(ftp.DownloadFile(base + "status/500", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), "old contents");
    EXPECT_EQ(FolderEntries(), std::vector<std::string>{"file.bin"});

    // No server at all, and a name that is not a URL.
    EXPECT_FALSE(ftp.DownloadFile("http://127.0.0.1:1/size/300", Target()));
    EXPECT_FALSE(ftp.DownloadFile("not a url", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), "old contents");
}

TEST_F(Download, MissingDestinationFolderFails) {
    EXPECT_FALSE(ftp.DownloadFile(base + "size/300", folder.Path() + "no\\such\\folder\\f.bin"));
    EXPECT_FALSE(ftp.StillExecuting());
}

TEST_F(Download, SlowBodyLetsMessagesRunAfterEveryBlock) {
    ASSERT_TRUE(ftp.DownloadFile(base + "slow/10240", Target()));
    EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(10240));
    // Ten blocks: nine after the first, plus the empty read.
    EXPECT_EQ(desktop.pumps, 10);
    EXPECT_EQ(events.progress.size(), 12u);
}

TEST_F(Download, StillExecutingWhileTheBlocksArrive) {
    struct Watch : testing_support::ScriptedDesktop {
        clsFTP* ftp = nullptr;
        int busy = 0;
        void DoEvents() override { busy += ftp->StillExecuting() ? 1 : 0; }
    } watch;
    clsFTP session(&watch);
    watch.ftp = &session;
    ASSERT_TRUE(session.DownloadFile(base + "size/4096", Target()));
    EXPECT_EQ(watch.busy, 4);
    EXPECT_FALSE(session.StillExecuting());
}

TEST_F(Download, OpenUrlGivesTheBlocksAsText) {
    EXPECT_EQ(ftp.OpenURL(base + "size/300"), PatternBytes(300) + std::string(724, '\0'));
    EXPECT_EQ(events.progress, Expect({{1024, 300}, {1024, 300}}, 1024, 300));
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
