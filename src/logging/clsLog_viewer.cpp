// The one Windows-only piece of the install log: showing it to the user.
#include <windows.h>

#include "logging/clsLog.h"

namespace corvan {

void clsLog::ReadLogFile() {
    std::string command = "notepad " + path() + FileName();
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWNORMAL;
    PROCESS_INFORMATION process{};
    if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
}

}  // namespace corvan
