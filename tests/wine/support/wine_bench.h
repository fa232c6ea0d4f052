#pragma once
#include <optional>
#include <string>

#include <windows.h>

// Helpers for tests that run under Wine in the test run's own prefix.
namespace winbench {

std::string OutDir();                                   // out/x64 of ./run, as a Windows path
std::string BesideThisProgram(const std::string& file);  // a file built beside the test program

// A fresh folder C:\corvan-tests\<name>\ (Path() ends in a backslash),
// removed with its files when the object goes.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& name);
    ~ScratchFolder();
    const std::string& Path() const { return path_; }
private:
    std::string path_;
};

void RemoveTree(const std::string& folder);
std::string ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::string& bytes);
bool FileExists(const std::string& path);
// A REG_SZ value as its text, a REG_DWORD as "dword:<n>", another type as
// "(type <n>)"; nothing when it is missing.
std::optional<std::string> RegText(HKEY root, const std::string& key, const char* name);

// Asks `done` every 10 ms until it answers true or `ms` have passed.
template <typename Done>
bool WaitFor(Done done, int ms = 5000) {
    for (int waited = 0; waited < ms && !done(); waited += 10) Sleep(10);
    return done();
}

struct ChildResult {
    int exitCode = -1;   // -1: could not start or timed out
    std::string output;  // its standard output and error
};
ChildResult RunAndWait(const std::string& commandLine, DWORD timeoutMs = 120000);
// Runs one (DISABLED_) case of this program in a process that sees Wine's
// "Version" (e.g. "winxp64") and the NT key's ProductName, put back after;
// exitCode 0 only when that one case ran and passed.
ChildResult RunCaseInChild(const std::string& fullTestName, const std::string& wineVersion,
                           const std::string& productName);

}  // namespace winbench
