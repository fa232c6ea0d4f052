// A small program for the process tests to start: it exits with a given
// code, sleeps and leaves a mark, or reports how it was asked to show its
// window. It carries a version resource for the file-version tests.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char** argv) {
    if (argc >= 3 && std::strcmp(argv[1], "exit") == 0) return std::atoi(argv[2]);
    if (argc >= 4 && std::strcmp(argv[1], "sleep") == 0) {
        Sleep(static_cast<DWORD>(std::atoi(argv[2])));
        if (FILE* mark = std::fopen(argv[3], "w")) std::fclose(mark);
        return 0;
    }
    if (argc >= 3 && std::strcmp(argv[1], "show") == 0) {
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        GetStartupInfoA(&startup);
        if (FILE* out = std::fopen(argv[2], "w")) {
            std::fprintf(out, "%lu %u", static_cast<unsigned long>(startup.dwFlags & STARTF_USESHOWWINDOW),
                         static_cast<unsigned>(startup.wShowWindow));
            std::fclose(out);
        }
        return 0;
    }
    return 2;
}
