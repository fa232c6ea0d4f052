// The Windows-only pieces of the install log: showing it to the user, and
// the user's temporary folder for the default file.
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

std::string clsLog::UserTemporaryFolder() {
    char folder[MAX_PATH + 1] = {};
    const DWORD length = GetTempPathA(sizeof folder, folder);
    if (length == 0 || length > MAX_PATH) return {};
    std::string text(folder, length);
    if (text.back() != '\\') text += '\\';
    return text;
}

}  // namespace corvan
