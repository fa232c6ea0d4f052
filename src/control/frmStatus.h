#pragma once
#include <string>

#include <windows.h>

#include "control/WindowsDesktop.h"

namespace corvan {

// The status report window: the report of this process in a multi-line text
// box, "Print", "Copy" and "Close" under it, inside the panel's frame with
// the logo. One window per process, made hidden on first use and kept, with
// its text, until the process ends.
class frmStatus {
public:
    static constexpr char kWindowClass[] = "CorvanInstallerStatusReport";
    static constexpr char kCaption[] = "Status Report";
    enum ChildId { txtStatus = 100, cmdPrint, cmdCopy, cmdClose };

    static frmStatus& Instance();

    // Appends `text` to the end of the report, then lets pending messages run.
    void Status(const std::string& text);
    const std::string& Text() const { return text_; }

    // Shows the window modeless, owned by the top-level window of `owner`
    // when one is given. `showPrint` shows or hides the "Print" button: a
    // caller that knows the report cannot be printed takes it away.
    void Display(bool showPrint, HWND owner);

    // The old progress member: reading it lets pending messages run, setting
    // it does nothing.
    int Percent();
    void Percent(int) {}

    void Copy();
    void Print();
    void Close();

    HWND Window() const { return window_; }

private:
    frmStatus();
    // Makes the window, hidden, with the report so far.
    void Load();
    void LayOut();
    void Paint(HDC dc);
    LRESULT HandleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    WindowsDesktop desktop_;
    std::string text_;
    HWND window_ = nullptr;
    HWND textBox_ = nullptr;
    HFONT font_ = nullptr;
};

}  // namespace corvan
