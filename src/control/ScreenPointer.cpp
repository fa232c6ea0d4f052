#include "control/ScreenPointer.h"

#include <windows.h>

#include "common/desktop.h"

namespace corvan {

namespace {
int screenPointer = vbDefault;
}  // namespace

void SetScreenPointer(int pointer) {
    screenPointer = pointer;
    LPCSTR shape = pointer == vbHourglass ? reinterpret_cast<LPCSTR>(IDC_WAIT) : reinterpret_cast<LPCSTR>(IDC_ARROW);
    SetCursor(LoadCursorA(nullptr, shape));
}

int ScreenPointer() { return screenPointer; }

bool ShowScreenPointer() {
    if (screenPointer != vbHourglass) return false;
    SetCursor(LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_WAIT)));
    return true;
}

}  // namespace corvan
