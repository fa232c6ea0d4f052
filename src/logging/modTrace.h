#pragma once
#include <initializer_list>
#include <mutex>
#include <vector>

#include <windows.h>

#include "logging/trace_text.h"

namespace corvan {

// The window property that marks a trace viewer; its value must be 1.
inline constexpr char kTraceViewerProperty[] = "vbAcceleratorVBTRACER" "_TRACEWIN";

// Sends developer trace lines to an outside viewer window. The viewer is
// looked for once, on the first trace; without one a trace costs nothing
// more, and a viewer started later is not seen.
class TraceOutput {
public:
    void Trace(const std::vector<TraceValue>& values);

    int Searches() const { return searches_; }
    HWND Viewer() const { return viewer_; }

private:
    HWND FindViewer();

    std::mutex mutex_;
    bool searched_ = false;
    int searches_ = 0;
    HWND viewer_ = nullptr;
};

// The process's trace (module modTrace).
TraceOutput& ProcessTrace();
void Trace(std::initializer_list<TraceValue> values);

}  // namespace corvan
