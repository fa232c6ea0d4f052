// Stands in for cacls.exe: appends its command line, as the system handed it
// over, to the file named by CORVAN_CACLS_LOG and exits with the code in
// CORVAN_CACLS_EXIT (0 when unset).
#include <windows.h>

#include <cstdio>
#include <cstdlib>

int main() {
    char log[MAX_PATH] = {}, code[16] = {};
    FILE* file = GetEnvironmentVariableA("CORVAN_CACLS_LOG", log, sizeof log) ? std::fopen(log, "ab") : nullptr;
    if (file) std::fprintf(file, "%s\n", GetCommandLineA()), std::fclose(file);
    GetEnvironmentVariableA("CORVAN_CACLS_EXIT", code, sizeof code);
    return std::atoi(code);
}
