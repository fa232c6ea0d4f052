// The run session, the engine's events and the dialog monitor, driven in
// process with the recording engine, a scripted desktop and a trace viewer.
#include <gtest/gtest.h>

#include <windows.h>

#include "common/this_module.h"
#include "control/ManageClient.h"
#include "logging/modTrace.h"
#include "recording_engine.h"
#include "scripted_desktop.h"
#include "session_log.h"
#include "settings/modCorvanInstaller_Global.h"

using namespace control_tests;

namespace {

using Texts = std::vector<std::string>;

Texts traces;  // every text the trace viewer was sent

// A trace viewer window, made before the process traces anything: the
// process looks for its viewer once.
class TraceViewer : public ::testing::Environment {
    void SetUp() override {
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = &Procedure;
        windowClass.hInstance = GetModuleHandleA(nullptr);
        windowClass.lpszClassName = "ControlTestTraceViewer";
        RegisterClassA(&windowClass);
        window_ = CreateWindowExA(0, windowClass.lpszClassName, "viewer", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                                  nullptr, windowClass.hInstance, nullptr);
        SetPropA(window_, corvan::kTraceViewerProperty, reinterpret_cast<HANDLE>(1));
    }
    void TearDown() override { DestroyWindow(window_); }

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != WM_COPYDATA) return DefWindowProcA(window, message, wParam, lParam);
        auto* data = reinterpret_cast<COPYDATASTRUCT*>(lParam);
        traces.emplace_back(static_cast<const char*>(data->lpData), data->cbData);
        return TRUE;
    }

    HWND window_ = nullptr;
};

::testing::Environment* const viewer = ::testing::AddGlobalTestEnvironment(new TraceViewer);

// The traced values since `from` that are one of `markers`, in the order
// they were sent.
Texts TracesOf(const Texts& markers, size_t from) {
    Texts found;
    for (size_t i = from; i < traces.size(); ++i)
        for (const std::string& marker : markers) {
            std::string tail = ": " + marker + "\t";
            if (traces[i].size() >= tail.size() && traces[i].compare(traces[i].size() - tail.size(), tail.size(), tail) == 0)
                found.push_back(marker);
        }
    return found;
}

std::string Journal() { return RecordingEngineJournal(); }

struct PageEvents : corvan::ManageClientEvents {
    Texts heard;
    void InstallError(const std::string& message) override { heard.push_back("InstallError:" + message); }
    void InstallStatus(const std::string& message) override { heard.push_back("InstallStatus:" + message); }
};

class Session : public ::testing::Test {
protected:
    void SetUp() override {
        winbench::RemoveTree("C:\\TALO");
        RecordingEngineSetScript("");
    }
    void TearDown() override { winbench::RemoveTree("C:\\TALO"); }

    testing_support::ScriptedDesktop desktop;
    PageEvents page;
    const size_t traced = traces.size();
};

TEST_F(Session, ModesWithoutEngineWriteHeaderAndFooterOnlyAndReturnEmpty) {
    RecordingEngineSetScript("status|IDLE\n");
    corvan::ManageClient control(desktop, page);
    control.UsersGroups("Dealers,Sales");
    for (int16_t mode : {0, 6}) EXPECT_FALSE(control.Run(mode).has_value()) << mode;
    EXPECT_EQ(Journal().find("PrepInstaller"), std::string::npos);
    EXPECT_EQ(page.heard, (Texts{"InstallStatus:Complete", "InstallStatus:Complete"}));
    EXPECT_EQ(desktop.pointers, (std::vector<int>{11, 0, 11, 0}));
    EXPECT_TRUE(desktop.boxes.empty());
    EXPECT_FALSE(control.Busy());
    EXPECT_FALSE(control.Monitor().Enabled());

    // The missing application folder is made before the log opens; the two
    // sessions append to the same log, each with its own header and footer.
    Texts session = ExpectedSession("IDLE", "Dealers,Sales",
                                    std::to_string(reinterpret_cast<uintptr_t>(corvan::ThisModule())),
                                    std::to_string(GetCurrentThreadId()));
    Texts both = session;
    both.insert(both.end(), session.begin(), session.end());
    EXPECT_EQ(LogMessages(), both);
}

TEST_F(Session, EngineIsGivenItsListsAndEachModeCallsItAsTheTableSays) {
    corvan::ManageClient control(desktop, page);
    EXPECT_EQ(Journal(), "InstallFile=c:\\TALO\\SC_Install.scl\nUnInstallFile=c:\\TALO\\SC_Uninstall.scl\n"
                         "GetWindowsConfiguration()\n");
    struct Case {
        int16_t mode;
        const char* call;
        bool transferVisible;
    } cases[] = {{1, "PrepInstaller(1,False)", true}, {5, "PrepInstaller(1,False)", true},
                 {2, "PrepInstaller(1,True)", true},  {3, "PrepInstaller(3,False)", false},
                 {4, "PrepInstaller(4,False)", false}};
    for (const Case& c : cases) {
        RecordingEngineSetScript(c.mode == 4 ? "result|False\n" : "");
        std::optional<bool> result = control.Run(c.mode);
        ASSERT_TRUE(result.has_value()) << c.mode;
        EXPECT_EQ(*result, c.mode != 4) << c.mode;
        EXPECT_EQ(Journal().substr(0, Journal().find(' ')), c.call) << c.mode;
        EXPECT_EQ(control.Surface().TransferLineVisible(), c.transferVisible) << c.mode;
    }
}

TEST_F(Session, EngineEventsAreLoggedTracedKeptAndPassedOnInOrder) {
    const std::string error = "-2147221504 - clsInstall.PrepInstaller - broken - clsInstall.PreInstaller";
    RecordingEngineSetScript(("status|INSTALL\nInstallationStatus|Preparing\nStatusMsgChange|Opening FTP Server...\n"
                              "ProgressUpdate|0.25\nFTPStatus|0.5|setup.msi\nFTPStatus|-1|\nInstallerError|" +
                              error + "\n").c_str());
    corvan::ManageClient control(desktop, page);
    const std::string before = corvan::ProcessStatusReport().Text();
    control.Run(1);

    EXPECT_EQ(page.heard, (Texts{"InstallStatus:Preparing", "InstallError:" + error, "InstallStatus:Complete"}));
    EXPECT_GE(desktop.pumps, 1);
    Texts log = LogMessages();
    ASSERT_EQ(log.size(), 13u + 2u + 3u);
    EXPECT_EQ(log[13], "Opening FTP Server...");
    EXPECT_EQ(log[14], error);
    const Texts expected = {"Run(mode=1)", "InstallationStatus - Preparing", "Opening FTP Server...", error,
                          "InstallerError - " + error};
    EXPECT_EQ(TracesOf(expected, traced), expected);

    const corvan::ControlSurface& surface = control.Surface();
    EXPECT_EQ(surface.LastMessage(), error);
    EXPECT_FLOAT_EQ(surface.ProgressFraction(), 0.25f);
    EXPECT_EQ(surface.TransferText(), "setup.msi");
    EXPECT_EQ(surface.TransferCaption(), "setup.msi - 50%");

    std::string added = corvan::ProcessStatusReport().Text().substr(before.size());
    std::regex lines(R"(^\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d : Opening FTP Server\.\.\.\r\n)"
                     R"(\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d : -2147221504 - .* - clsInstall\.PreInstaller\r\n$)");
    EXPECT_TRUE(std::regex_match(added, lines)) << added;
}

TEST_F(Session, NeedToInstallAsksTheEngineAndReportsAndTracesTheAnswer) {
    RecordingEngineSetScript("InstallationStatus|Preparing\nneed|True\n");
    corvan::ManageClient control(desktop, page);
    const std::string before = corvan::ProcessStatusReport().Text();
    EXPECT_TRUE(control.NeedToInstall());
    RecordingEngineSetScript("need|False\n");
    EXPECT_FALSE(control.NeedToInstall());
    std::string added = corvan::ProcessStatusReport().Text().substr(before.size());
    EXPECT_TRUE(std::regex_match(added, std::regex(R"(^.{21} : NeedToInstall: True\r\n.{21} : NeedToInstall: False\r\n$)")))
        << added;
    EXPECT_EQ(TracesOf({"NeedToInstall()", "InstallationStatus - Preparing", "NeedToInstall = True",
                        "NeedToInstall = False"},
                       traced),
              (Texts{"NeedToInstall()", "InstallationStatus - Preparing", "NeedToInstall = True", "NeedToInstall()",
                     "NeedToInstall = False"}));
}

TEST_F(Session, AFailedSessionShowsItsErrorAndStopsBeforeTheFooter) {
    // A file where the folder should be: the log cannot be opened.
    winbench::WriteFileBytes("C:\\TALO", "not a folder");
    corvan::ManageClient control(desktop, page);
    EXPECT_FALSE(control.Run(1).has_value());
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text, "76: Path not found\r\nSource: CorvanInstaller - Run");
    EXPECT_EQ(desktop.pointers, std::vector<int>{11});
    EXPECT_TRUE(page.heard.empty());
    EXPECT_FALSE(control.Monitor().Enabled());
    EXPECT_FALSE(control.Busy());
    DeleteFileA("C:\\TALO");
}

// A "Confirm File Replace" prompt as the shell shows it. Its "No to All"
// button is a radio button so that it shows whether it was ever clicked.
HWND ReplacePrompt(HWND* noToAll) {
    HWND prompt = CreateWindowExA(0, "#32770", "Confirm File Replace", WS_OVERLAPPED | WS_VISIBLE, 0, 0, 300, 120,
                                  nullptr, nullptr, nullptr, nullptr);
    if (noToAll)
        *noToAll = CreateWindowExA(0, "Button", "No to &All", WS_CHILD | WS_VISIBLE | BS_AUTORADIOBUTTON, 10, 10, 100,
                                   30, prompt, nullptr, nullptr, nullptr);
    return prompt;
}

TEST_F(Session, DialogMonitorAnswersNoToAllDuringARunAndOnlyThen) {
    corvan::ManageClient control(desktop, page);
    RecordingEngineSetScript("pump|400\n");
    // Without the button the prompt is only noted.
    HWND prompt = ReplacePrompt(nullptr);
    control.Run(1);
    std::string note = std::to_string(reinterpret_cast<uintptr_t>(prompt)) +
                       " - Found Confirm File Replace window (#32770)...closing it now.";
    EXPECT_FALSE(TracesOf({note}, traced).empty());
    EXPECT_TRUE(IsWindow(prompt));
    DestroyWindow(prompt);

    HWND noToAll = nullptr;
    prompt = ReplacePrompt(&noToAll);
    // Outside a session nothing answers it.
    MSG message;
    for (DWORD until = GetTickCount() + 200; static_cast<int>(until - GetTickCount()) > 0;)
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    EXPECT_EQ(SendMessageA(noToAll, BM_GETCHECK, 0, 0), BST_UNCHECKED);
    control.Run(1);
    EXPECT_EQ(SendMessageA(noToAll, BM_GETCHECK, 0, 0), BST_CHECKED);
    EXPECT_FALSE(control.Monitor().Enabled());
    DestroyWindow(prompt);
}

}  // namespace
