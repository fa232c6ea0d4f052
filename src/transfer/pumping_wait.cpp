#include "transfer/pumping_wait.h"

#include "common/unique_any.h"

namespace corvan {

namespace {
constexpr DWORD kBreatherMs = 10;
}

bool WaitLettingMessagesRun(Desktop* desktop, HANDLE event, DWORD timeoutMs) {
    if (!desktop) return WaitForSingleObject(event, timeoutMs) == WAIT_OBJECT_0;
    const DWORD start = GetTickCount();
    for (;;) {
        DWORD left = INFINITE;
        if (timeoutMs != INFINITE) {
            const DWORD spent = GetTickCount() - start;
            left = spent >= timeoutMs ? 0 : timeoutMs - spent;
        }
        // Input already seen but left in the queue wakes the wait too: a
        // desktop that pumps at most every few milliseconds still gets it.
        switch (MsgWaitForMultipleObjectsEx(1, &event, left, QS_ALLINPUT, MWMO_INPUTAVAILABLE)) {
            case WAIT_OBJECT_0:
                return true;
            case WAIT_OBJECT_0 + 1:
                desktop->DoEvents();
                if (left == 0) return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
                // What the desktop left for later must not make this a busy loop.
                if (HIWORD(GetQueueStatus(QS_ALLINPUT)) != 0 &&
                    WaitForSingleObject(event, left < kBreatherMs ? left : kBreatherMs) == WAIT_OBJECT_0)
                    return true;
                break;
            case WAIT_TIMEOUT:
                return false;
            default:
                // The wait itself failed: wait plainly rather than spin.
                return WaitForSingleObject(event, left) == WAIT_OBJECT_0;
        }
    }
}

void PauseLettingMessagesRun(Desktop* desktop, DWORD ms) {
    UniqueAny<HANDLE, &CloseHandle> never(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    if (!never) {
        Sleep(ms);
        return;
    }
    WaitLettingMessagesRun(desktop, never.Get(), ms);
}

}  // namespace corvan
