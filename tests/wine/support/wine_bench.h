#pragma once
#include <optional>
#include <string>

#include <windows.h>

// Helpers for tests that run under Wine in the test run's own prefix.
namespace winbench {

// Where ./run put the shipped binaries (out/x64), as a Windows path.
std::string OutDir();
// A file built beside the running test program.
std::string BesideThisProgram(const std::string& file);

// A fresh folder under C:\corvan-tests\ for one test; removed with its files
// when the object goes.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& name);
    ~ScratchFolder();
    const std::string& Path() const { return path_; }  // with trailing backslash
private:
    std::string path_;
};

void RemoveTree(const std::string& folder);
std::string ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::string& bytes);
bool FileExists(const std::string& path);
// A REG_SZ value; nothing when it is missing or of another type.
std::optional<std::string> RegText(HKEY root, const std::string& key, const char* name);

// Asks `done` every 10 ms until it answers true or `ms` have passed.
template <typename Done>
bool WaitFor(Done done, int ms = 5000) {
    for (int waited = 0; waited < ms && !done(); waited += 10) Sleep(10);
    return done();
}

// Sets the Windows version that Wine reports (HKCU\Software\Wine "Version",
// e.g. "winxp64") and the product name under
// HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion. Wine reads the version
// when a process starts, so a case that needs it runs in a child process:
// see RunCaseInChild. The old values come back when the object goes.
class ScopedWindowsVersion {
public:
    ScopedWindowsVersion(const std::string& wineVersion, const std::string& productName);
    ~ScopedWindowsVersion();
    ScopedWindowsVersion(const ScopedWindowsVersion&) = delete;
    ScopedWindowsVersion& operator=(const ScopedWindowsVersion&) = delete;

private:
    std::optional<std::string> oldVersion_, oldProduct_;
};

struct ChildResult {
    int exitCode = -1;   // -1: could not start or timed out
    std::string output;  // what it wrote to standard output and error
};

// Runs one test case of this program in a new process; exitCode 0 means it
// ran and passed (-2: it exited 0 without passing one test, as a name that
// matches none does). The case is normally written DISABLED_ so that it only
// runs this way: RunCaseInChild("Suite.DISABLED_Case"). Its output is kept
// apart so a child's expected failure is not read as this program's.
ChildResult RunCaseInChild(const std::string& fullTestName);

// Runs a command line, waits for it, returns its exit code and output.
ChildResult RunAndWait(const std::string& commandLine, DWORD timeoutMs = 120000);

}  // namespace winbench
