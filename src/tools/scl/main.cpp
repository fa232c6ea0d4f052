#include <iostream>
#include <string>
#include <vector>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

#include "tools/scl/cli.h"

int main(int argc, char** argv) {
#ifdef _WIN32
    // A list written to standard output keeps its CR LF as they are.
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    const std::vector<std::string> args(argv + 1, argv + argc);
    return corvan::scl::RunScl(args, std::cout, std::cerr);
}
