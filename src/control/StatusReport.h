#pragma once
#include <mutex>
#include <string>

#include <windows.h>

namespace corvan {

// The report of what the control did in this process, one dated line per
// engine status, engine error and NeedToInstall answer, oldest first. Its
// window shows this text; the report is never written to disk. Controls on
// several threads of the process share it: the text is kept under a lock.
class StatusReport {
public:
    // Appends "mm/dd/yyyy - hh:mm:ss : " + message + CR LF.
    void Append(const std::string& message);
    std::string Text() const;

    // Asks for the report to be shown, owned by `owner` when there is one.
    void Display(bool show, HWND owner);
    bool Shown() const { return shown_; }
    HWND Owner() const { return owner_; }

private:
    mutable std::mutex mutex_;
    std::string text_;
    bool shown_ = false;
    HWND owner_ = nullptr;
};

// The one report of the process.
StatusReport& ProcessStatusReport();

}  // namespace corvan
