#include "control/WindowsDesktop.h"

#include <windows.h>

#include "control/ScreenPointer.h"

namespace corvan {

int WindowsDesktop::MsgBox(const std::string& text, int style, const std::string& title) {
    return MessageBoxA(GetActiveWindow(), text.c_str(), title.c_str(), static_cast<UINT>(style) | MB_SETFOREGROUND);
}

void WindowsDesktop::SetMousePointer(int pointer) { SetScreenPointer(pointer); }

void WindowsDesktop::DoEvents() {
    // Messages that arrive between two pumps wait at most one interval, which
    // the page cannot tell from a pump after every block.
    // GetTickCount (Windows XP has no 64-bit count): the unsigned difference
    // stays right across the count's wrap after 49.7 days.
    const DWORD now = GetTickCount();
    if (pumped_ && now - lastPump_ < kPumpIntervalMs) return;
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            // The page's own loop must still see the request to end.
            PostQuitMessage(static_cast<int>(message.wParam));
            break;
        }
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    // A window of the page may have put its own pointer up meanwhile.
    ShowScreenPointer();
    pumped_ = true;
    lastPump_ = GetTickCount();
}

bool WindowsDesktop::ExitSession(unsigned flags, unsigned reason) {
    // No shutdown privilege is asked for: where the user lacks it, Windows
    // refuses and the user reboots by hand.
    return ::ExitWindowsEx(flags, reason) != FALSE;
}

}  // namespace corvan
