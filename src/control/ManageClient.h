#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "common/desktop.h"
#include "control/ControlSurface.h"
#include "control/DialogMonitor.h"
#include "control/StatusReport.h"
#include "engine/install_engine.h"

namespace corvan {

class clsWindowTools;

// The two events a page hears from the control.
class ManageClientEvents {
public:
    virtual ~ManageClientEvents() = default;
    virtual void InstallError(const std::string& message) = 0;
    virtual void InstallStatus(const std::string& message) = 0;
};

// The control's behaviour: its properties, the run session around one engine
// run, and the handlers of the engine's events. The COM object of the same
// name gives it to pages.
class ManageClient : private InstallEngineEvents {
public:
    // Creates the engine, then loads the settings and gives the engine its
    // list paths.
    ManageClient(Desktop& desktop, ManageClientEvents& events);
    ~ManageClient() override;
    ManageClient(const ManageClient&) = delete;
    ManageClient& operator=(const ManageClient&) = delete;

    std::string Status() const;

    // Keeps the URL up to its last "/" as the primary installer base URL.
    void URL(const std::string& url);

    // One session. Empty for a mode that calls no engine operation, and when
    // the session failed (the failure has then been shown in a message box).
    std::optional<bool> Run(int16_t mode);

    bool NeedToInstall();
    void ShowUpdates(HWND owner);

    std::string UsersGroups() const;
    void UsersGroups(const std::string& groups);

    bool Busy() const { return busy_; }
    const ControlSurface& Surface() const { return surface_; }
    ControlSurface& Surface() { return surface_; }
    DialogMonitor& Monitor() { return monitor_; }

private:
    void RunSession(int16_t mode, std::optional<bool>& result);
    void WriteHeader();
    clsWindowTools& WindowTools();

    void InstallerError(const std::string& message) override;
    void ProgressUpdate(float fraction) override;
    void StatusMsgChange(const std::string& message) override;
    void InstallationStatus(const std::string& message) override;
    void FTPStatus(float fraction, const std::string& message) override;

    Desktop& desktop_;
    ManageClientEvents& events_;
    std::unique_ptr<InstallEngine> objInstall_;
    KeyedCollection<std::string> substitutions_;  // "%ocx%": the browser's control cache
    std::unique_ptr<clsWindowTools> windowTools_;
    ControlSurface surface_;
    DialogMonitor monitor_;
    bool busy_ = false;
};

}  // namespace corvan
