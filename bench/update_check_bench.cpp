// update_check_bench <installer url> <runs> download|check: on an installed
// machine (it writes InstallComplete 1; the caller puts C:\TALO\SC_Install.scl
// in place), either downloads the installer's SC_Install.scl alone with the
// shared session's clsFTP, or runs the engine's update check
// (clsInstall::NeedToInstall: the same download, then both lists compared).
// Prints the best time of the runs, the check's answer and the process's
// peak memory.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <windows.h>
#include <psapi.h>

#include "control/WindowsDesktop.h"
#include "engine/clsInstall.h"
#include "settings/modCorvanInstaller_Global.h"
#include "transfer/clsFTP.h"

namespace {

class SilentEvents : public corvan::InstallEngineEvents {
    void InstallerError(const std::string& text) override { std::fprintf(stderr, "error: %s\n", text.c_str()); }
    void ProgressUpdate(float) override {}
    void StatusMsgChange(const std::string&) override {}
    void InstallationStatus(const std::string&) override {}
    void FTPStatus(float, const std::string&) override {}
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: update_check_bench <installer url> <runs> download|check\n");
        return 2;
    }
    const std::string url = argv[1], mode = argv[3];
    const int runs = std::atoi(argv[2]);
    corvan::InstallerSettings& settings = corvan::modCorvanInstaller_Global();
    settings.Load();
    settings.MasterUrlSource = url;
    corvan::WindowsDesktop desktop;
    SilentEvents events;
    // Installed: the check compares the lists instead of answering at once.
    const DWORD installed = 1;
    RegSetKeyValueA(HKEY_LOCAL_MACHINE, "Software\\Talo\\Settings", "InstallComplete", REG_DWORD, &installed,
                    sizeof installed);

    double best = 0;
    bool answer = false;
    for (int run = 0; run < runs; ++run) {
        const auto start = std::chrono::steady_clock::now();
        if (mode == "download") {
            corvan::clsFTP session(&desktop);
            answer = session.DownloadFile(url + "SC_Install.scl", "C:\\TALO\\bench-download.scl");
        } else {
            corvan::clsInstall engine(events, desktop);
            engine.InstallFile(settings.InstallListPath());
            engine.UnInstallFile(settings.UninstallListPath());
            answer = engine.NeedToInstall();
        }
        const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        best = run == 0 ? ms : std::min(best, ms);
    }
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    std::printf("best_ms=%.1f answer=%s peak_bytes=%llu\n", best, answer ? "True" : "False",
                static_cast<unsigned long long>(memory.PeakWorkingSetSize));
    return 0;
}
