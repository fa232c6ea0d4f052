// The install engine is not part of this build yet. Rather than pretend, the
// control's engine says so through its error event on every request.
#include "engine/install_engine.h"

namespace corvan {

namespace {

constexpr char kNotBuilt[] =
    "The install engine is not part of this build of CorvanInstaller.ocx; nothing was installed or removed.";

class UnavailableInstallEngine : public InstallEngine {
public:
    explicit UnavailableInstallEngine(InstallEngineEvents& events) : events_(events) {}

    std::string InstallFile() const override { return installFile_; }
    void InstallFile(std::string path) override { installFile_ = std::move(path); }
    std::string UnInstallFile() const override { return uninstallFile_; }
    void UnInstallFile(std::string path) override { uninstallFile_ = std::move(path); }

    bool PrepInstaller(int32_t, bool) override {
        events_.InstallerError(kNotBuilt);
        return false;
    }

    // Whether anything is missing cannot be known; say that something must
    // be done, so the page's Run reports the missing engine to the dealer.
    bool NeedToInstall() override {
        events_.InstallerError(kNotBuilt);
        return true;
    }

    std::string Status() const override { return ""; }

private:
    InstallEngineEvents& events_;
    std::string installFile_, uninstallFile_;
};

}  // namespace

std::unique_ptr<InstallEngine> CreateInstallEngine(InstallEngineEvents& events, Desktop&) {
    return std::make_unique<UnavailableInstallEngine>(events);
}

}  // namespace corvan
