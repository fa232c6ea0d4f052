// The engine of CorvanInstallerFaults.ocx, the control the fault scenarios
// run and nobody ships: the real engine and transfer, with waits and pauses
// short enough for a test, and the two alternate installer URLs taken from
// the environment (CORVAN_TEST_ALT_URL_SOURCE_1 and _2) at every call, since
// the test server's ports are chosen when it starts.
#include <windows.h>

#include "engine/clsInstall.h"
#include "settings/modCorvanInstaller_Global.h"
#include "transfer/retry_policy.h"

namespace corvan {
namespace {

class FaultBuildEngine : public clsInstall {
public:
    using clsInstall::clsInstall;
    bool PrepInstaller(int32_t mode, bool forceInstall) override {
        TakeAlternatesFromTheEnvironment();
        return clsInstall::PrepInstaller(mode, forceInstall);
    }
    bool NeedToInstall() override {
        TakeAlternatesFromTheEnvironment();
        return clsInstall::NeedToInstall();
    }

private:
    static void TakeAlternatesFromTheEnvironment() {
        InstallerSettings& settings = modCorvanInstaller_Global();
        for (const char* number : {"1", "2"}) {
            char url[2048] = {};
            const DWORD length = GetEnvironmentVariableA((std::string("CORVAN_TEST_ALT_URL_SOURCE_") + number).c_str(), url, sizeof url);
            if (length == 0 || length >= sizeof url) continue;
            number == std::string("1") ? settings.AltUrlSource1(url) : settings.AltUrlSource2(url);
            const std::string key = std::string("ALT_URL_SOURCE_") + number;
            if (settings.Dictionary().Contains(key)) settings.DictionaryItem(key, url);
        }
    }
};

}  // namespace

std::unique_ptr<InstallEngine> CreateInstallEngine(InstallEngineEvents& events, Desktop& desktop) {
    // Two seconds for each wait (a loaded test machine may take one to
    // shake hands), pauses of 50 then 100 ms.
    ProcessTransferPolicy() = {2000, 2000, 2000, 50, 100};
    return std::make_unique<FaultBuildEngine>(events, desktop);
}

}  // namespace corvan
