#include "control/DialogMonitor.h"

#include <string>

#include "common/this_module.h"
#include "logging/modTrace.h"

namespace corvan {

namespace {

constexpr UINT_PTR kTimerId = 1;
constexpr UINT kIntervalMs = 50;
constexpr char kWindowClass[] = "CorvanInstallerDialogMonitor";

ATOM RegisterMonitorClass(WNDPROC procedure) {
    static ATOM atom = [procedure] {
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = procedure;
        windowClass.hInstance = ThisModule();
        windowClass.lpszClassName = kWindowClass;
        return RegisterClassA(&windowClass);
    }();
    return atom;
}

}  // namespace

DialogMonitor::~DialogMonitor() {
    if (window_) DestroyWindow(window_);
}

void DialogMonitor::Enabled(bool enabled) {
    enabled_ = enabled;
    if (enabled && !window_) {
        RegisterMonitorClass(&DialogMonitor::WindowProc);
        window_ = CreateWindowExA(0, kWindowClass, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, ThisModule(), nullptr);
        if (window_) SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    if (!window_) return;
    if (enabled) SetTimer(window_, kTimerId, kIntervalMs, nullptr);
    else KillTimer(window_, kTimerId);
}

void DialogMonitor::Tick() {
    HWND prompt = FindWindowA("#32770", "Confirm File Replace");
    if (!prompt) return;
    Trace({std::to_string(reinterpret_cast<uintptr_t>(prompt)) +
           " - Found Confirm File Replace window (#32770)...closing it now."});
    HWND button = FindWindowExA(prompt, nullptr, "Button", "No to &All");
    if (!button) return;
    SetFocus(button);
    PostMessageA(button, BM_CLICK, 0, 0);
}

void DialogMonitor::UnregisterWindowClass() { UnregisterClassA(kWindowClass, ThisModule()); }

LRESULT CALLBACK DialogMonitor::WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_TIMER && wParam == kTimerId) {
        auto* monitor = reinterpret_cast<DialogMonitor*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        // Nothing may leave a window procedure: a tick that fails is lost,
        // the next one looks again.
        try {
            if (monitor && monitor->enabled_) monitor->Tick();
        } catch (...) {
        }
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace corvan
