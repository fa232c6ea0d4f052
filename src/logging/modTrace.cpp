#include "logging/modTrace.h"

#include "common/clock.h"
#include "common/this_module.h"
#include "corvan/build_config.h"

namespace corvan {

namespace {

constexpr UINT kSendTimeoutMs = 5000;

BOOL CALLBACK TakeViewer(HWND window, LPARAM found) {
    if (GetPropA(window, kTraceViewerProperty) == reinterpret_cast<HANDLE>(1)) {
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }
    return TRUE;
}

}  // namespace

HWND TraceOutput::FindViewer() {
    HWND found = nullptr;
    EnumWindows(TakeViewer, reinterpret_cast<LPARAM>(&found));
    return found;
}

void TraceOutput::Trace(const std::vector<TraceValue>& values) {
    HWND viewer;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!searched_) {
            searched_ = true;
            ++searches_;
            viewer_ = FindViewer();
        }
        viewer = viewer_;
    }
    if (!viewer) return;

    // The text is ANSI already, as every text of the system.
    std::string text = BuildTracePrefix(CORVAN_BASE_NAME, reinterpret_cast<uintptr_t>(ThisModule()),
                                        GetCurrentThreadId(), NowLocal()) +
                       BuildTraceBody(values);
    COPYDATASTRUCT data{};
    data.dwData = 0;
    data.cbData = static_cast<DWORD>(text.size());
    data.lpData = text.data();
    DWORD_PTR answer = 0;
    SendMessageTimeoutA(viewer, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_NORMAL, kSendTimeoutMs,
                        &answer);
}

TraceOutput& ProcessTrace() {
    static TraceOutput trace;
    return trace;
}

void Trace(std::initializer_list<TraceValue> values) { ProcessTrace().Trace(std::vector<TraceValue>(values)); }

}  // namespace corvan
