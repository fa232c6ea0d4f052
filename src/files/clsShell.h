#pragma once
#include <cstdint>
#include <string>

#include <windows.h>

namespace corvan {

// Starts other programs: the packages that items run and the security
// configurator's commands.
class clsShell {
public:
    // Hands a document or program to the shell (ShellExecuteA) and does not
    // wait. Empty texts are passed as "none". The result is the shell's, as
    // a 32-bit number (above 32 means started).
    int32_t ShellExec(HWND hwnd, const std::string& verb, const std::string& file, const std::string& parameters,
                      const std::string& folder, int32_t showCommand);

    // Starts `commandLine` as a new process (show command 0 hides its window)
    // and waits up to `timeoutMs` (0xFFFFFFFF: without limit), without
    // pumping messages. True when it started, whatever its exit code and
    // even when the wait timed out; false when it could not start. No handle
    // stays open. `title` and `creationFlags` are accepted for the callers'
    // sake and not used.
    bool Execute(const std::string& commandLine, const std::string& title, int32_t& timeoutMs, int32_t showCommand,
                 int32_t creationFlags);
};

}  // namespace corvan
