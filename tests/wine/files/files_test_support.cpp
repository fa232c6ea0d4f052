#include "files_test_support.h"

#include "wine_bench.h"

namespace files_tests {

std::string ChildPath() {
    char buffer[MAX_PATH];
    const DWORD n = GetModuleFileNameA(nullptr, buffer, MAX_PATH);
    std::string self(buffer, n);
    return self.substr(0, self.find_last_of('\\') + 1) + "files_child.exe";
}

std::string ChildCommand(const std::string& arguments) { return "\"" + ChildPath() + "\" " + arguments; }

bool WaitForFile(const std::string& path, DWORD limitMs) {
    for (DWORD waited = 0; waited < limitMs; waited += 50) {
        if (winbench::FileExists(path)) return true;
        Sleep(50);
    }
    return winbench::FileExists(path);
}

// Wine's GetProcessHandleCount answers 0; asking the handle table about
// every possible value is slower but true everywhere.
DWORD OwnHandleCount() {
    DWORD count = 0;
    for (uintptr_t value = 4; value < (1u << 18); value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) ++count;
    }
    return count;
}

}  // namespace files_tests
