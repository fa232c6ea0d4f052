// Started by the process tests: "exit <code>", "sleep <ms> <mark file>", or
// "show <file>" (writes how it was asked to show its window). It carries a
// version resource for the file-version test.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    const std::string verb = argc >= 3 ? argv[1] : "";
    if (verb == "exit") return std::atoi(argv[2]);
    if (verb == "sleep" && argc >= 4) Sleep(static_cast<DWORD>(std::atoi(argv[2])));
    FILE* out = std::fopen(argv[argc - 1], "w");
    if (verb == "show" && out) {
        STARTUPINFOA startup{};
        GetStartupInfoA(&startup);
        std::fprintf(out, "%lu %u", startup.dwFlags & STARTF_USESHOWWINDOW, static_cast<unsigned>(startup.wShowWindow));
    }
    if (out) std::fclose(out);
    return verb == "show" || verb == "sleep" ? 0 : 2;
}
