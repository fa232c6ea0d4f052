#pragma once

namespace corvan {

// The screen's mouse pointer as a session sets it (0 default, 11 hourglass).
// Windows choose their pointer again at every mouse move, so the hourglass
// holds only if the control's windows keep answering with it and if it is
// set again after the page's messages have run.
void SetScreenPointer(int pointer);
int ScreenPointer();

// Shows the screen pointer when one other than the default is set; true
// when it did. A window answers WM_SETCURSOR with this.
bool ShowScreenPointer();

}  // namespace corvan
