#include "host/console_output.h"

#include <windows.h>

namespace corvan::host {

ConsoleOutput::ConsoleOutput() : stdout_(GetStdHandle(STD_OUTPUT_HANDLE)) {
    DWORD mode = 0;
    CONSOLE_SCREEN_BUFFER_INFO info{};
    console_ = GetConsoleMode(stdout_, &mode) && GetConsoleScreenBufferInfo(stdout_, &info);
    if (console_) width_ = info.dwSize.X > 1 ? info.dwSize.X : 80;
}

void ConsoleOutput::Write(const std::string& text) {
    DWORD written = 0;
    WriteFile(stdout_, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void ConsoleOutput::Settle() {
    if (statusOpen_) Write("\r\n");
    statusOpen_ = false;
}

void ConsoleOutput::Line(const std::string& text) {
    Settle();
    Write(text + "\r\n");
    // The status line comes back under the line just written.
    if (console_ && !lastStatus_.empty()) {
        std::string again = lastStatus_;
        lastStatus_.clear();
        Status(again);
    }
}

void ConsoleOutput::Status(const std::string& text) {
    if (text == lastStatus_) return;
    lastStatus_ = text;
    if (!console_) {
        Write(text + "\r\n");
        return;
    }
    // One line, cut to the console's width so that it never wraps.
    std::string shown = text.substr(0, static_cast<size_t>(width_ - 1));
    shown.resize(static_cast<size_t>(width_ - 1), ' ');
    Write("\r" + shown);
    statusOpen_ = true;
}

}  // namespace corvan::host
