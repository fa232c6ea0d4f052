#pragma once
#include <string>

#include <windows.h>

namespace files_tests {

// The test child program built beside this test program.
std::string ChildPath();

// The child's command line: "<child>" followed by `arguments`.
std::string ChildCommand(const std::string& arguments);

// Waits up to `limitMs` for a file to appear.
bool WaitForFile(const std::string& path, DWORD limitMs);

DWORD OwnHandleCount();

}  // namespace files_tests
