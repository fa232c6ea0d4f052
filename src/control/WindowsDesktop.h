#pragma once
#include "common/desktop.h"

namespace corvan {

// The Desktop of the real screen: message boxes, the mouse pointer, and the
// page's own message loop run between long steps.
class WindowsDesktop : public Desktop {
public:
    int MsgBox(const std::string& text, int style, const std::string& title) override;
    void SetMousePointer(int pointer) override;
    void DoEvents() override;
    bool ExitSession(unsigned flags, unsigned reason) override;

private:
    // A download or a checksum asks after every block, tens of thousands of
    // times a second; the page needs its messages far less often than that.
    static constexpr unsigned long kPumpIntervalMs = 10;
    bool pumped_ = false;
    unsigned long lastPump_ = 0;  // GetTickCount of the last pump
};

}  // namespace corvan
