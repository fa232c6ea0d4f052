#pragma once
#include <windows.h>

namespace corvan {

// Runs a window procedure's handling of one message: nothing may leave a
// window procedure, and a paint that failed leaves the window as it was
// rather than asking to be painted again forever.
template <typename Handle>
LRESULT Trapped(HWND window, UINT message, Handle handle) {
    try {
        return handle();
    } catch (...) {
        if (message == WM_PAINT) ValidateRect(window, nullptr);
        return 0;
    }
}

}  // namespace corvan
