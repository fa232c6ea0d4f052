// The run session in process, with the recording engine and a scripted
// desktop (the sessions of sessions.txt); and a yield of the real desktop.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <functional>
#include <optional>
#include <sstream>

#include "common/text.h"
#include "common/this_module.h"
#include "control/ManageClient.h"
#include "control/StatusReport.h"
#include "control/WindowsDesktop.h"
#include "corvan/build_config.h"
#include "logging/write_log.h"
#include "platform/clsWindowTools.h"
#include "recording_engine.h"
#include "scripted_desktop.h"
#include "session_log.h"

using namespace control_tests;

namespace {

struct PageEvents : corvan::ManageClientEvents {
    Texts heard;
    std::function<void(const std::string&)> onStatus;  // what the page does when it hears a status
    void InstallError(const std::string& message) override { heard.push_back("InstallError:" + message); }
    void InstallStatus(const std::string& message) override {
        heard.push_back("InstallStatus:" + message);
        if (onStatus) onStatus(message);
    }
};

constexpr char kDefaultLog[] = "C:\\CorvanInstaller-LogFile.log";  // outside a session

class Sessions : public ::testing::TestWithParam<Block> {};

TEST_P(Sessions, Run) {
    winbench::RemoveTree("C:\\TALO");
    RecordingEngineSetScript("");
    testing_support::ScriptedDesktop desktop;
    PageEvents page;
    std::optional<corvan::ManageClient> control;
    std::string script, file;
    size_t journaled = 0;
    const std::string reported = corvan::ProcessStatusReport().Text();
    corvan::clsWindowTools tools;
    const std::pair<const char*, std::string> machine[] = {
        {"{instance}", std::to_string(reinterpret_cast<uintptr_t>(corvan::ThisModule()))},
        {"{thread}", std::to_string(GetCurrentThreadId())}, {"{version}", CORVAN_VERSION_TEXT},
        {"{os}", tools.VersionName()}, {"{os version}", tools.VersionNo()}, {"{sp}", tools.ServicePack()},
        {"{build}", tools.BuildNo()}};
    Texts wholeLog;
    char temporary[MAX_PATH] = {};
    std::vector<HWND> prompts;
    HWND noToAll = nullptr;
    auto play = [&] {  // the steps given since the last call become the script
        if (!script.empty()) RecordingEngineSetScript(script.c_str());
        script.clear();
        journaled = std::string(RecordingEngineJournal()).size();
    };
    auto made = [&]() -> corvan::ManageClient& {
        if (!control) play(), control.emplace(desktop, page);
        return *control;
    };
    for (const Line& line : GetParam().lines) {
        SCOPED_TRACE(line.keyword + " " + line.text);
        const std::string& k = line.keyword;
        std::string t = line.text;
        const Texts parts = Split(t, " | ");
        if (k == "engine") {
            script += t + "\n";
        } else if (k == "file") {
            winbench::WriteFileBytes(file = t, "not a folder");
        } else if (k == "new") {
            made();
        } else if (k == "groups") {
            made().UsersGroups(t);
        } else if (k == "nolog") {
            DeleteFileA(kDefaultLog);
            ASSERT_TRUE(CreateDirectoryA(kDefaultLog, nullptr) || GetLastError() == ERROR_ALREADY_EXISTS);
            GetEnvironmentVariableA("TMP", temporary, MAX_PATH);
            SetEnvironmentVariableA("TMP", "C:\\no\\such\\folder");
            corvan::GlobalLog().CloseLogFile();
        } else if (k == "prompt") {
            prompts.push_back(CreateWindowExA(0, "#32770", "Confirm File Replace", WS_OVERLAPPED | WS_VISIBLE, 0, 0, 300,
                                              120, nullptr, nullptr, nullptr, nullptr));
            if (t != "bare")
                noToAll = CreateWindowExA(0, "Button", "No to &All", WS_CHILD | WS_VISIBLE | BS_AUTORADIOBUTTON, 10, 10,
                                          100, 30, prompts.back(), nullptr, nullptr, nullptr);
        } else if (k == "wait") {
            PumpFor(std::stoi(t));
        } else if (k == "reenter") {
            page.onStatus = [&control, t](const std::string& status) {
                if (status != t) return;
                EXPECT_FALSE(control->Run(1).has_value());
                EXPECT_TRUE(control->Monitor().Enabled());
            };
        } else if (k == "run" || k == "need") {
            corvan::ManageClient& c = made();
            play();
            std::optional<bool> result = k == "need" ? c.NeedToInstall() : c.Run(static_cast<int16_t>(std::stoi(t)));
            EXPECT_EQ(result ? corvan::BooleanText(*result) : "Empty", t.substr(t.find("=> ") + 3));
            EXPECT_FALSE(c.Busy());
            EXPECT_FALSE(c.Monitor().Enabled());
        } else if (k == "events") {
            EXPECT_EQ(page.heard, parts);
        } else if (k == "journal") {
            Texts calls;
            std::stringstream entries(std::string(RecordingEngineJournal()).substr(journaled));
            for (std::string entry; std::getline(entries, entry);) calls.push_back(entry.substr(0, entry.find(' ')));
            EXPECT_EQ(calls, parts);
        } else if (k == "boxes") {
            std::string shown, expected = t;
            for (const auto& box : desktop.boxes) {
                shown += (shown.empty() ? "" : " | ") + box.text;
                EXPECT_EQ(box.title, "Corvan Connect Client Manager");
            }
            for (size_t at; (at = expected.find("\\r\\n")) != std::string::npos;) expected.replace(at, 4, "\r\n");
            EXPECT_EQ(shown, expected);
        } else if (k == "pumped") {
            EXPECT_GE(desktop.pumps, 1);
        } else if (k == "logline") {
            for (const auto& [name, value] : machine)
                for (size_t at; (at = t.find(name)) != std::string::npos;) t.replace(at, strlen(name), value);
            wholeLog.push_back(t);
        } else if (k == "log") {
            const Texts log = LogMessages();
            ASSERT_GE(log.size(), 16u) << testing::PrintToString(log);
            EXPECT_EQ(Texts(log.begin() + 13, log.end() - 3), parts);
            EXPECT_EQ(log[log.size() - 3].rfind("----------------------------END OF ", 0), 0u);
        } else if (k == "answered") {
            EXPECT_EQ(SendMessageA(noToAll, BM_GETCHECK, 0, 0), t == "yes" ? BST_CHECKED : BST_UNCHECKED);
        } else if (k == "open") {
            EXPECT_TRUE(IsWindow(prompts.back()));
        } else if (k == "report") {
            const std::string added = corvan::ProcessStatusReport().Text().substr(reported.size());
            EXPECT_TRUE(std::regex_match(added, std::regex(t))) << added;
        } else {
            ADD_FAILURE() << "unknown line";
        }
    }
    if (!wholeLog.empty()) {
        EXPECT_EQ(LogMessages(), wholeLog);
    }
    if (!file.empty()) DeleteFileA(file.c_str());
    if (temporary[0]) SetEnvironmentVariableA("TMP", temporary), RemoveDirectoryA(kDefaultLog);
    for (HWND prompt : prompts) DestroyWindow(prompt);
    corvan::GlobalLog().CloseLogFile();  // a failed session leaves it open
    winbench::RemoveTree("C:\\TALO");
}

INSTANTIATE_TEST_SUITE_P(Table, Sessions,
                         ::testing::ValuesIn(LoadBlocks("tests\\wine\\control\\sessions.txt", "case")),
                         [](const ::testing::TestParamInfo<Block>& info) { return info.param.name; });

// Every yield of the session lets the waiting messages run, however soon it
// follows the one before.
TEST(WindowsDesktop, EveryYieldLetsTheWaitingMessagesRun) {
    corvan::WindowsDesktop desktop;
    MSG message;
    for (int yield = 0; yield < 3; ++yield) {
        PostThreadMessageA(GetCurrentThreadId(), WM_APP, 0, 0);
        desktop.DoEvents();
        EXPECT_FALSE(PeekMessageA(&message, nullptr, WM_APP, WM_APP, PM_NOREMOVE)) << "yield " << yield;
    }
}

}  // namespace
