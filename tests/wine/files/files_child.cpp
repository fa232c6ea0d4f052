// Started by the process tests: "exit <code>" or "sleep <ms>". It carries a
// version resource for the file-version test.
#include <windows.h>

#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    const std::string verb = argc >= 3 ? argv[1] : "";
    if (verb == "sleep") Sleep(static_cast<DWORD>(std::atoi(argv[2])));
    return verb == "exit" ? std::atoi(argv[2]) : 0;
}
