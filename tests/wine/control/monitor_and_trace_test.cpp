// What a session sends to a trace viewer, and the dialog monitor answering
// a real "Confirm File Replace" window while the engine works.
#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

#include "control/ManageClient.h"
#include "logging/modTrace.h"
#include "recording_engine.h"
#include "scripted_desktop.h"
#include "wine_bench.h"

namespace {

// A trace viewer window, made before the process traces anything: the
// process looks for its viewer once.
class TraceViewer : public ::testing::Environment {
public:
    static std::vector<std::string>& Texts() {
        static std::vector<std::string> texts;
        return texts;
    }

    void SetUp() override {
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = &Procedure;
        windowClass.hInstance = GetModuleHandleA(nullptr);
        windowClass.lpszClassName = "ControlTestTraceViewer";
        RegisterClassA(&windowClass);
        window_ = CreateWindowExA(0, "ControlTestTraceViewer", "viewer", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                                  nullptr, GetModuleHandleA(nullptr), nullptr);
        SetPropA(window_, corvan::kTraceViewerProperty, reinterpret_cast<HANDLE>(1));
    }
    void TearDown() override { DestroyWindow(window_); }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_COPYDATA) {
            auto* data = reinterpret_cast<COPYDATASTRUCT*>(lParam);
            Texts().emplace_back(static_cast<const char*>(data->lpData), data->cbData);
            return TRUE;
        }
        return DefWindowProcA(window, message, wParam, lParam);
    }

    HWND window_ = nullptr;
};

::testing::Environment* const viewer = ::testing::AddGlobalTestEnvironment(new TraceViewer);

struct PageEvents : corvan::ManageClientEvents {
    void InstallError(const std::string&) override {}
    void InstallStatus(const std::string&) override {}
};

// The traced values of the texts that end with one of `markers`, prefix
// dropped, in the order they were sent.
std::vector<std::string> TracesOf(std::initializer_list<const char*> markers, size_t from = 0) {
    std::vector<std::string> found;
    auto& texts = TraceViewer::Texts();
    for (size_t i = from; i < texts.size(); ++i)
        for (const char* marker : markers) {
            std::string tail = std::string(": ") + marker + "\t";
            if (texts[i].size() >= tail.size() && texts[i].compare(texts[i].size() - tail.size(), tail.size(), tail) == 0)
                found.push_back(marker);
        }
    return found;
}

TEST(Trace, ASessionTracesItsStepsAndTheEngineEventsInOrder) {
    winbench::RemoveTree("C:\\TALO");
    testing_support::ScriptedDesktop desktop;
    PageEvents page;
    corvan::ManageClient control(desktop, page);
    size_t from = TraceViewer::Texts().size();
    RecordingEngineSetScript("InstallationStatus|Preparing\nStatusMsgChange|Loading\nInstallerError|Broken\nneed|True\n");
    control.Run(5);
    control.NeedToInstall();
    EXPECT_EQ(TracesOf({"Run(mode=5)", "InstallationStatus - Preparing", "Loading", "Broken", "InstallerError - Broken",
                        "NeedToInstall()", "NeedToInstall = True"},
                       from),
              (std::vector<std::string>{"Run(mode=5)", "InstallationStatus - Preparing", "Loading", "Broken",
                                        "InstallerError - Broken", "NeedToInstall()",
                                        "InstallationStatus - Preparing", "Loading", "Broken",
                                        "InstallerError - Broken", "NeedToInstall = True"}));
    winbench::RemoveTree("C:\\TALO");
}

class ReplacePrompt {
public:
    explicit ReplacePrompt(bool withNoToAll) {
        window = CreateWindowExA(0, "#32770", "Confirm File Replace", WS_OVERLAPPED | WS_VISIBLE, 0, 0, 300, 120,
                                 nullptr, nullptr, nullptr, nullptr);
        original_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ReplacePrompt::Procedure)));
        if (withNoToAll)
            CreateWindowExA(0, "Button", "No to &All", WS_CHILD | WS_VISIBLE | BS_PUSHBUTTON, 10, 10, 100, 30, window,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(kNoToAll)), nullptr, nullptr);
    }
    ~ReplacePrompt() { DestroyWindow(window); }

    static constexpr int kNoToAll = 42;
    static inline int clicks = 0;
    HWND window;

private:
    static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_COMMAND && LOWORD(wParam) == kNoToAll && HIWORD(wParam) == BN_CLICKED) ++clicks;
        return CallWindowProcA(original_, hwnd, message, wParam, lParam);
    }
    static inline WNDPROC original_ = nullptr;
};

TEST(DialogMonitor, AnswersNoToAllDuringARunAndOnlyThen) {
    winbench::RemoveTree("C:\\TALO");
    testing_support::ScriptedDesktop desktop;
    PageEvents page;
    corvan::ManageClient control(desktop, page);
    const std::string note = " - Found Confirm File Replace window (#32770)...closing it now.";
    RecordingEngineSetScript("pump|400\n");
    {
        // Without the button the prompt is only noted.
        ReplacePrompt prompt(false);
        size_t from = TraceViewer::Texts().size();
        control.Run(1);
        std::string expected = std::to_string(reinterpret_cast<uintptr_t>(prompt.window)) + note;
        EXPECT_FALSE(TracesOf({expected.c_str()}, from).empty());
        EXPECT_TRUE(IsWindow(prompt.window));
    }
    {
        ReplacePrompt prompt(true);
        ReplacePrompt::clicks = 0;
        // Outside a session nothing answers it.
        MSG message;
        DWORD until = GetTickCount() + 200;
        while (static_cast<int>(until - GetTickCount()) > 0)
            while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
        EXPECT_EQ(ReplacePrompt::clicks, 0);
        control.Run(1);
        EXPECT_GE(ReplacePrompt::clicks, 1);
        EXPECT_FALSE(control.Monitor().Enabled());
    }
    winbench::RemoveTree("C:\\TALO");
}

}  // namespace
