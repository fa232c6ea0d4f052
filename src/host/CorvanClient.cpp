// CorvanClient.exe: runs the client manager unattended, as the extranet page
// would, for the help desk, deployment scripts and anyone trying the product.
#include <windows.h>
#include <ole2.h>

#include <cstdio>
#include <string>
#include <vector>

#include "host/console_output.h"
#include "host/host_options.h"
#include "host/page_host.h"

using namespace corvan::host;

namespace {

const char* ModeName(const HostOptions& options) {
    if (options.check) return "check";
    switch (options.mode) {
        case 2: return "REPAIR/FORCE INSTALL";
        case 3: return "UNINSTALL";
        case 4: return "FORCE UNINSTALL";
        default: return "INSTALL/UPGRADE";
    }
}

const char* Outcome(int code) {
    switch (code) {
        case exit_code::kDone: return "succeeded";
        case exit_code::kInstallNeeded: return "something must be installed";
        default: return "failed";
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    ParsedOptions parsed = ParseHostOptions(arguments);
    if (!parsed.error.empty()) {
        std::fprintf(stderr, "CorvanClient: %s\n\n%s", parsed.error.c_str(), HostUsage().c_str());
        return exit_code::kBadUsage;
    }
    const HostOptions& options = parsed.options;
    if (options.help) {
        std::fputs(HostUsage().c_str(), stdout);
        return exit_code::kDone;
    }

    // The control is an OLE control: it wants a single-threaded apartment
    // with OLE's services (clipboard, drag and drop) as a browser gives it.
    if (FAILED(OleInitialize(nullptr))) {
        std::fputs("CorvanClient: OLE could not be initialised on this thread.\n", stderr);
        return exit_code::kNoControl;
    }
    int code;
    ConsoleOutput out;
    {
        PageHost host(options, out);
        std::string failure = host.CreateControl();
        if (!failure.empty()) {
            std::fprintf(stderr, "CorvanClient: %s\n", failure.c_str());
            code = exit_code::kNoControl;
        } else {
            DWORD start = GetTickCount();
            code = host.Execute();
            char summary[256];
            std::snprintf(summary, sizeof summary, "CorvanClient: %s %s in %.1f s, %d error%s (exit code %d)",
                          ModeName(options), Outcome(code), (GetTickCount() - start) / 1000.0, host.Errors(),
                          host.Errors() == 1 ? "" : "s", code);
            out.Line(summary);
        }
    }
    OleUninitialize();
    return code;
}
