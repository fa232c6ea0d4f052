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
};

}  // namespace corvan
