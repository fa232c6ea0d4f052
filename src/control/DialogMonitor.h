#pragma once
#include <windows.h>

namespace corvan {

// Watches, every 50 ms while enabled, for the system's "Confirm File
// Replace" prompt that a package's own copying may raise, and answers it
// "No to All" so files already on the disk are kept. The timer lives on a
// message-only window of its own, so it ticks whether or not the control has
// a window of its own.
class DialogMonitor {
public:
    DialogMonitor() = default;
    ~DialogMonitor();
    DialogMonitor(const DialogMonitor&) = delete;
    DialogMonitor& operator=(const DialogMonitor&) = delete;

    void Enabled(bool enabled);
    bool Enabled() const { return enabled_; }

    // One look for the prompt; the timer calls it.
    void Tick();

    // The module forgets its window class when it is unloaded.
    static void UnregisterWindowClass();

private:
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND window_ = nullptr;
    bool enabled_ = false;
};

}  // namespace corvan
