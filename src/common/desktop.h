#pragma once
#include <string>

namespace corvan {

// Everything a person must answer or see happen: message boxes, the
// reboot question, the mouse pointer, and letting pending window messages
// run during long work. The control implements it over the real desktop;
// tests give scripted answers and count the message pumps.
class Desktop {
public:
    virtual ~Desktop() = default;

    // Shows a message box. `style` takes the runtime's constants (the same
    // values as the Win32 MB_ flags); the result is the runtime's button
    // number (the same values as IDOK, IDYES, ...).
    virtual int MsgBox(const std::string& text, int style, const std::string& title) = 0;

    // The screen's mouse pointer: 0 default, 11 hourglass.
    virtual void SetMousePointer(int pointer) = 0;

    // Lets pending window messages run (the runtime's DoEvents).
    virtual void DoEvents() = 0;

    // Ends the Windows session as ExitWindowsEx does, with its flags (2
    // reboots) and reason; true when Windows took the request.
    virtual bool ExitSession(unsigned flags, unsigned reason) = 0;
};

// The runtime's message-box constants.
namespace msgbox {
inline constexpr int vbOKOnly = 0;
inline constexpr int vbOKCancel = 1;
inline constexpr int vbYesNoCancel = 3;
inline constexpr int vbYesNo = 4;
inline constexpr int vbCritical = 16;
inline constexpr int vbQuestion = 32;
inline constexpr int vbExclamation = 48;
inline constexpr int vbInformation = 64;
inline constexpr int vbOK = 1;
inline constexpr int vbCancel = 2;
inline constexpr int vbYes = 6;
inline constexpr int vbNo = 7;
}  // namespace msgbox

inline constexpr int vbDefault = 0;
inline constexpr int vbHourglass = 11;

}  // namespace corvan
