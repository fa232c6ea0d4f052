// The trace reaching a real viewer window through WM_COPYDATA.
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <regex>
#include <thread>
#include <vector>

#include "common/this_module.h"
#include "logging/modTrace.h"
#include "wine_bench.h"

using namespace corvan;

namespace {

// A viewer window on its own thread, as an outside viewer would be in its
// own process: it carries the marker property and keeps what it receives.
class Viewer {
public:
    explicit Viewer(intptr_t propertyValue) {
        thread_ = std::thread([this, propertyValue] { Loop(propertyValue); });
        while (!ready_) Sleep(1);
    }
    ~Viewer() {
        PostMessageA(window_, WM_CLOSE, 0, 0);
        thread_.join();
    }
    std::vector<ULONG_PTR> Ids() {
        std::lock_guard<std::mutex> lock(mutex_);
        return ids_;
    }
    std::vector<std::string> Received() {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

private:
    static LRESULT CALLBACK Proc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* self = reinterpret_cast<Viewer*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        if (message == WM_COPYDATA && self) {
            auto* data = reinterpret_cast<COPYDATASTRUCT*>(lParam);
            std::lock_guard<std::mutex> lock(self->mutex_);
            self->received_.emplace_back(static_cast<const char*>(data->lpData), data->cbData);
            self->ids_.push_back(data->dwData);
            return TRUE;
        }
        if (message == WM_DESTROY) PostQuitMessage(0);
        return DefWindowProcA(window, message, wParam, lParam);
    }

    void Loop(intptr_t propertyValue) {
        WNDCLASSA cls{};
        cls.lpfnWndProc = Proc;
        cls.hInstance = GetModuleHandleA(nullptr);
        cls.lpszClassName = "CorvanTestTraceViewer";
        RegisterClassA(&cls);
        window_ = CreateWindowA(cls.lpszClassName, "viewer", WS_OVERLAPPEDWINDOW, 0, 0, 10, 10, nullptr, nullptr,
                                cls.hInstance, nullptr);
        SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetPropA(window_, kTraceViewerProperty, reinterpret_cast<HANDLE>(propertyValue));
        ready_ = true;
        MSG msg;
        while (GetMessageA(&msg, nullptr, 0, 0) > 0) DispatchMessageA(&msg);
    }

    std::thread thread_;
    std::atomic<bool> ready_{false};
    HWND window_ = nullptr;
    std::mutex mutex_;
    std::vector<std::string> received_;
    std::vector<ULONG_PTR> ids_;
};

}  // namespace

TEST(Trace, AViewerReceivesThePrefixAndTheTabbedValues) {
    Viewer viewer(1);
    TraceOutput trace;
    trace.Trace({"a", "b"});
    trace.Trace({std::vector<std::string>{"x", "y"}, 3});
    const std::vector<std::string> received = viewer.Received();
    ASSERT_EQ(received.size(), 2u);
    // The prefix, then the stamp "yyyymmdd hhnnss: ", then the values.
    const std::string prefix = "CorvanInstaller: " + std::to_string(reinterpret_cast<uintptr_t>(ThisModule())) +
                               ": " + std::to_string(GetCurrentThreadId()) + ": ";
    EXPECT_TRUE(std::regex_match(received[0], std::regex(prefix + "\\d{8} \\d{6}: a\tb\t"))) << received[0];
    EXPECT_TRUE(std::regex_match(received[1], std::regex(prefix + "\\d{8} \\d{6}: x\ty\t3\t"))) << received[1];
    EXPECT_EQ(trace.Searches(), 1);
    EXPECT_EQ(viewer.Ids(), (std::vector<ULONG_PTR>{0, 0}));
}

// A window whose property is not 1 is no viewer; the search runs once, so
// a viewer that comes later is not seen.
TEST(Trace, TheSearchRunsOnceAndTakesOnlyAPropertyOfOne) {
    Viewer impostor(2);
    TraceOutput trace;
    trace.Trace({"nobody"});
    trace.Trace({"listens"});
    EXPECT_EQ(trace.Viewer(), nullptr);
    Viewer late(1);
    trace.Trace({"still nobody"});
    EXPECT_EQ(trace.Searches(), 1);
    EXPECT_TRUE(impostor.Received().empty());
    EXPECT_TRUE(late.Received().empty());
}
