#pragma once
#include <string>

#include <windows.h>

namespace corvan {

// The report of what the control did in this process, one dated line per
// engine status, engine error and NeedToInstall answer, oldest first. It is
// the text of the status report window; it is never written to disk.
class StatusReport {
public:
    // Appends "mm/dd/yyyy - hh:mm:ss : " + message + CR LF.
    void Append(const std::string& message);
    const std::string& Text() const;

    // Shows the report's window, owned by `owner` when there is one; `show`
    // governs its "Print" button.
    void Display(bool show, HWND owner);
};

// The one report of the process.
StatusReport& ProcessStatusReport();

}  // namespace corvan
