// A download against a server that misbehaves on purpose (the http fixture's
// .faults answers): bounded waits, retries, range requests.
#include <gtest/gtest.h>

#include <algorithm>

#include <windows.h>

#include "installer_folder.h"
#include "control/WindowsDesktop.h"
#include "settings/modCorvanInstaller_Global.h"
#include "test_server.h"
#include "wine_bench.h"

using namespace transfer_tests;
using corvan::clsFTP;

namespace {

// The control's own desktop lets the page's messages run; a thread timer
// ticks every 50 ms, so the gaps between ticks show how long the page went
// without its messages.
std::vector<DWORD> ticks;
void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) { ticks.push_back(GetTickCount()); }

DWORD LongestGap(DWORD start, DWORD end) {
    DWORD longest = 0, last = start;
    for (DWORD tick : ticks) longest = std::max(longest, tick - last), last = tick;
    return std::max(longest, end - last);
}

class Retry : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::getenv("CORVAN_INSTALLER_DIR")) GTEST_SKIP() << "the http fixture did not start";
        savedTries = corvan::modCorvanInstaller_Global().MaxTries;
        corvan::modCorvanInstaller_Global().Load();  // MAXTRIES 5
        saved = corvan::ProcessTransferPolicy();
        corvan::ProcessTransferPolicy() = {kTimeoutMs, kTimeoutMs, kTimeoutMs, 100, 200};
        session = std::make_unique<clsFTP>(&desktop, &events);  // takes the policy
    }
    void TearDown() override {
        corvan::ProcessTransferPolicy() = saved;
        corvan::modCorvanInstaller_Global().MaxTries = savedTries;
    }
    // A folder of its own for each case, holding a published file.bin of
    // `size` pattern bytes that answers with `faults`.
    std::unique_ptr<testserver::InstallerFolder> Serve(const std::string& name, const std::string& faults,
                                                       size_t size = 100000) {
        auto folder = std::make_unique<testserver::InstallerFolder>("retry-" + name);
        folder->Write("file.bin", PatternBytes(size));
        if (!faults.empty()) folder->Misbehave("file.bin", faults);
        return folder;
    }
    std::string Target() { return scratch.Path() + "file.bin"; }

    static constexpr DWORD kTimeoutMs = 1000, kSilenceMs = 1500;
    winbench::ScratchFolder scratch{"transfer-retry"};
    corvan::TransferPolicy saved;
    int16_t savedTries = 0;
    corvan::WindowsDesktop desktop;
    EventLog events;
    std::unique_ptr<clsFTP> session;
};

}  // namespace

// A server that answers nothing, or sends half and falls silent, ends the
// download within MAXTRIES time-outs and the pauses between them; the page's
// messages keep running all the while.
TEST_F(Retry, SilentServerEndsWithinTheBoundWhileThePageRuns) {
    corvan::modCorvanInstaller_Global().MaxTries = 2;
    corvan::ProcessTransferPolicy() = {kTimeoutMs, kTimeoutMs, kSilenceMs, 100, 200};
    session = std::make_unique<clsFTP>(&desktop, &events);
    for (const char* fault : {"silent", "stall"}) {
        auto folder = Serve(fault, fault);
        ticks.clear();
        const UINT_PTR timer = SetTimer(nullptr, 0, 50, &Tick);
        const DWORD start = GetTickCount();
        EXPECT_FALSE(session->DownloadFile(folder->URL() + "file.bin", Target())) << fault;
        const DWORD end = GetTickCount();
        KillTimer(nullptr, timer);

        // Two attempts of one time-out each, and a pause of 100 ms. A page
        // left without its messages would show a gap of a whole time-out.
        EXPECT_GE(end - start, 2 * kSilenceMs) << fault;
        EXPECT_LT(end - start, 2 * kSilenceMs + 100 + 1500) << fault;
        EXPECT_LT(LongestGap(start, end), kSilenceMs * 2 / 3) << fault << ": the page went without its messages";
        EXPECT_EQ(folder->Requests("file.bin"), 2) << fault;
        EXPECT_FALSE(winbench::FileExists(Target())) << fault;
        EXPECT_FALSE(session->StillExecuting());
    }
}

// A body broken off at half is completed by a range request for the rest;
// a server that answers a range request with the whole file again gives the
// whole file, never half of it twice.
TEST_F(Retry, BrokenOffBodyIsContinuedWhereItStopped) {
    const struct {
        const char* faults;
        std::vector<std::string> answers;
    } cases[] = {
        {"cut ok", {"200", "206 bytes=50000-"}},
        {"cut whole", {"200", "200"}},
        {"cut cut ok", {"200", "206 bytes=50000-", "206 bytes=75000-"}},
    };
    for (const auto& c : cases) {
        auto folder = Serve(std::to_string(&c - cases), c.faults);
        events.progress.clear();
        ASSERT_TRUE(session->DownloadFile(folder->URL() + "file.bin", Target())) << c.faults;
        EXPECT_EQ(winbench::ReadFileBytes(Target()), PatternBytes(100000)) << c.faults;
        EXPECT_EQ(folder->Answers("file.bin"), c.answers) << c.faults;
        ASSERT_FALSE(events.progress.empty());
        EXPECT_EQ(events.progress.back(), Progress(1.0f, "100000 bytes of 100000 bytes read ")) << c.faults;
        DeleteFileA(Target().c_str());
    }
    // The file as a text comes whole the same way, its query kept.
    auto folder = Serve("text", "cut ok", 5000);
    EXPECT_EQ(session->OpenURL(folder->URL() + "file.bin?v=2"), PatternBytes(5000));
    EXPECT_EQ(folder->Answers("file.bin?v=2"), (std::vector<std::string>{"200", "206 bytes=2500-"}));
}
