// The engine of CorvanInstallerFaults.ocx, the control the fault scenarios
// run and nobody ships: the real engine and transfer, with waits and pauses
// short enough for a test, and the two alternate installer URLs taken from
// the environment (CORVAN_TEST_ALT_URL_SOURCE_1 and _2) at every call,
// since the test server's ports are chosen when it starts.
#include <windows.h>

#include "engine/clsInstall.h"
#include "settings/modCorvanInstaller_Global.h"
#include "transfer/retry_policy.h"

namespace corvan {

namespace {

void TakeAlternatesFromTheEnvironment() {
    InstallerSettings& settings = modCorvanInstaller_Global();
    const struct {
        const char* variable;
        std::string& value;
        const char* key;
    } alternates[] = {{"CORVAN_TEST_ALT_URL_SOURCE_1", settings.AltUrlSource1, "ALT_URL_SOURCE_1"},
                      {"CORVAN_TEST_ALT_URL_SOURCE_2", settings.AltUrlSource2, "ALT_URL_SOURCE_2"}};
    for (const auto& alternate : alternates) {
        char url[2048] = {};
        const DWORD length = GetEnvironmentVariableA(alternate.variable, url, sizeof url);
        if (length == 0 || length >= sizeof url) continue;
        alternate.value = url;
        if (std::string* entry = settings.Dictionary.Find(alternate.key)) *entry = url;
    }
}

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
};

}  // namespace

std::unique_ptr<InstallEngine> CreateInstallEngine(InstallEngineEvents& events, Desktop& desktop) {
    // Two seconds for each wait (a loaded test machine may take one to
    // shake hands), pauses of 50 then 100 ms.
    ProcessTransferPolicy() = {2000, 2000, 2000, 50, 100};
    return std::make_unique<FaultBuildEngine>(events, desktop);
}

}  // namespace corvan
