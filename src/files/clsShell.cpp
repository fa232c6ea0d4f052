#include "files/clsShell.h"

#include <shellapi.h>

#include <vector>

#include "files/unique_handle.h"

namespace corvan {
namespace {
const char* OrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }
}  // namespace

int32_t clsShell::ShellExec(HWND hwnd, const std::string& verb, const std::string& file,
                            const std::string& parameters, const std::string& folder, int32_t showCommand) {
    HINSTANCE result = ShellExecuteA(hwnd, OrNull(verb), file.c_str(), OrNull(parameters), OrNull(folder), showCommand);
    return static_cast<int32_t>(reinterpret_cast<INT_PTR>(result));
}

bool clsShell::Execute(const std::string& commandLine, const std::string& /*title*/, int32_t& timeoutMs,
                       int32_t showCommand, int32_t /*creationFlags*/) {
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = static_cast<WORD>(static_cast<int16_t>(showCommand));
    PROCESS_INFORMATION info{};
    // CreateProcessA may write into the command line.
    std::vector<char> line(commandLine.begin(), commandLine.end());
    line.push_back('\0');
    const BOOL started = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, NORMAL_PRIORITY_CLASS, nullptr,
                                        nullptr, &startup, &info);
    UniqueHandle process(info.hProcess);
    UniqueHandle thread(info.hThread);
    if (!started) return false;
    // The exit code is deliberately not read: packages report their own
    // failures, and an installer that asks for a reboot exits non-zero.
    WaitForSingleObject(process.Get(), static_cast<DWORD>(timeoutMs));
    return true;
}

}  // namespace corvan
