// The run session, the engine's events and the dialog monitor, driven in
// process with the recording engine, a scripted desktop and a trace viewer.
#include <gtest/gtest.h>

#include <windows.h>

#include <functional>
#include <limits>

#include "common/this_module.h"
#include "control/ManageClient.h"
#include "control/WindowsDesktop.h"
#include "control/connection_point.h"
#include "failing_allocation.h"
#include "logging/write_log.h"
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
    // What the page does when it hears a status, if anything.
    std::function<void(const std::string&)> onStatus;
    void InstallError(const std::string& message) override { heard.push_back("InstallError:" + message); }
    void InstallStatus(const std::string& message) override {
        heard.push_back("InstallStatus:" + message);
        if (onStatus) onStatus(message);
    }
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

// The box carries the library's title, the error's number, description and
// source; the footer, the pointer reset and "Complete" are not reached.
TEST_F(Session, AFailedSessionShowsItsErrorAndStopsBeforeTheFooter) {
    const struct {
        const char* file;  // made where the application folder should be
        const char* script;
        const char* box;
    } cases[] = {
        {"C:\\TALO", "", "58: File already exists\r\nSource: CorvanInstaller - Run"},
        {nullptr, "throw\n", "7: Out of memory\r\nSource: CorvanInstaller - Run"},
    };
    for (const auto& c : cases) {
        if (c.file) winbench::WriteFileBytes(c.file, "not a folder");
        RecordingEngineSetScript(c.script);
        testing_support::ScriptedDesktop boxes;
        PageEvents heard;
        corvan::ManageClient control(boxes, heard);
        EXPECT_FALSE(control.Run(1).has_value());
        ASSERT_EQ(boxes.boxes.size(), 1u) << c.box;
        EXPECT_EQ(boxes.boxes[0].text, c.box);
        EXPECT_EQ(boxes.boxes[0].title, "Corvan Connect Client Manager");
        EXPECT_EQ(boxes.pointers, std::vector<int>{11}) << c.box;
        EXPECT_TRUE(heard.heard.empty()) << c.box;
        EXPECT_FALSE(control.Monitor().Enabled());
        EXPECT_FALSE(control.Busy());
        if (c.file) DeleteFileA(c.file);
        corvan::GlobalLog().CloseLogFile();  // a failed session leaves it open
    }
}

// A page that calls Run again from an event of the run under way is refused
// at once; the outer run goes on with its own log and monitor.
TEST_F(Session, ASecondRunWhileOneIsUnderWayIsRefused) {
    RecordingEngineSetScript("status|INSTALL\nInstallationStatus|Preparing\n");
    corvan::ManageClient control(desktop, page);
    std::optional<bool> inner = true;
    bool monitoring = false;
    page.onStatus = [&](const std::string& status) {
        if (status != "Preparing") return;
        inner = control.Run(1);
        monitoring = control.Monitor().Enabled();
    };
    EXPECT_EQ(control.Run(1), std::optional<bool>(true));
    EXPECT_FALSE(inner.has_value());
    EXPECT_TRUE(monitoring);
    const std::string refusal =
        "Run was called while another run of this control is still under way; the second call was refused.";
    EXPECT_EQ(page.heard, (Texts{"InstallStatus:Preparing", "InstallError:" + refusal, "InstallStatus:Complete"}));
    const std::string journal = Journal();
    EXPECT_EQ(journal.find("PrepInstaller"), journal.rfind("PrepInstaller")) << journal;
    Texts log = LogMessages();
    ASSERT_EQ(log.size(), 13u + 1u + 3u) << testing::PrintToString(log);
    EXPECT_EQ(log[13], refusal);
    EXPECT_EQ(log[14].rfind("----------------------------END OF INSTALL", 0), 0u);
}

// Outside a session the log is the default file; where it cannot be
// written at all the page still hears the engine's error.
TEST_F(Session, TheEngineErrorReachesThePageWhenTheLogCannotBeWritten) {
    const char kDefaultLog[] = "C:\\CorvanInstaller-LogFile.log";
    RemoveDirectoryA(kDefaultLog);
    DeleteFileA(kDefaultLog);
    ASSERT_TRUE(CreateDirectoryA(kDefaultLog, nullptr));
    char temporary[MAX_PATH] = {};
    GetEnvironmentVariableA("TMP", temporary, MAX_PATH);
    SetEnvironmentVariableA("TMP", "C:\\no\\such\\folder");
    corvan::GlobalLog().CloseLogFile();

    RecordingEngineSetScript("InstallerError|the list is broken\n");
    corvan::ManageClient control(desktop, page);
    control.NeedToInstall();
    EXPECT_EQ(page.heard, Texts{"InstallError:the list is broken"});
    EXPECT_EQ(control.Surface().LastMessage(), "the list is broken");

    SetEnvironmentVariableA("TMP", temporary[0] ? temporary : nullptr);
    RemoveDirectoryA(kDefaultLog);
}

// The engine may raise events while it is made: they reach a control whose
// members are already there.
TEST_F(Session, EventsOfTheEnginesCreationReachTheControl) {
    RecordingEngineSetScript("new:StatusMsgChange|Engine ready\nnew:ProgressUpdate|0.5\n");
    corvan::ManageClient control(desktop, page);
    EXPECT_EQ(control.Surface().LastMessage(), "Engine ready");
    EXPECT_FLOAT_EQ(control.Surface().ProgressFraction(), 0.5f);
}

// A fraction that is no number, or far out of range, draws as a bounded
// percentage instead of whatever the conversion makes of it.
TEST(ControlSurface, PercentagesOfFractionsOutOfRange) {
    const struct { float fraction; int progress, transfer; } cases[] = {
        {std::numeric_limits<float>::quiet_NaN(), 0, 1},
        {1e30f, 10000, 10000},
        {-1e30f, -10000, -10000},
        {0.5f, 50, 50},
    };
    for (const auto& c : cases) {
        testing_support::ScriptedDesktop desktop;
        corvan::ControlSurface surface(desktop);
        surface.ProgressFraction(c.fraction);
        surface.DrawTransferLine("setup.msi", c.fraction);
        EXPECT_EQ(surface.ProgressPercent(), c.progress) << c.fraction;
        EXPECT_EQ(surface.TransferPercent(), c.transfer) << c.fraction;
    }
}

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

// A copy of an enumerator that cannot be made is out of memory, not an
// exception through the COM method.
TEST(ConnectionPoints, ACloneWithoutMemoryAnswersOutOfMemory) {
    auto* points = new corvan::com::ConnectionPointEnumerator({});
    IEnumConnectionPoints* copy = reinterpret_cast<IEnumConnectionPoints*>(1);
    HRESULT hr;
    {
        testing_support::AllocationsFail memoryRunsOut;
        hr = points->Clone(&copy);
    }
    EXPECT_EQ(hr, E_OUTOFMEMORY);
    EXPECT_EQ(copy, nullptr);
    points->Release();
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

// A tick that fails (here: no memory for its trace note) is lost inside the
// monitor; the message loop that ran it goes on.
TEST_F(Session, ADialogMonitorTickThatFailsStaysInsideTheMonitor) {
    RecordingEngineSetScript("InstallationStatus|Preparing\n");
    corvan::ManageClient control(desktop, page);
    HWND prompt = ReplacePrompt(nullptr);
    bool loopFinished = false;
    page.onStatus = [&](const std::string& status) {
        if (status != "Preparing") return;
        testing_support::AllocationsFail memoryRunsOut;
        MSG message;
        for (DWORD until = GetTickCount() + 300; static_cast<int>(until - GetTickCount()) > 0;) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
            while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
        }
        loopFinished = true;
    };
    control.Run(1);
    EXPECT_TRUE(loopFinished);
    DestroyWindow(prompt);
}

}  // namespace
