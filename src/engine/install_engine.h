#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "common/desktop.h"
#include "common/keyed_collection.h"

namespace corvan {

// The engine's five events. The control implements this and forwards what it
// hears to the page; the engine never reaches the page by any other way.
class InstallEngineEvents {
public:
    virtual ~InstallEngineEvents() = default;
    virtual void InstallerError(const std::string& message) = 0;
    virtual void ProgressUpdate(float fraction) = 0;
    virtual void StatusMsgChange(const std::string& message) = 0;
    virtual void InstallationStatus(const std::string& message) = 0;
    virtual void FTPStatus(float fraction, const std::string& message) = 0;
};

// What the control asks of the install engine (clsInstall). Failures inside
// the engine are the engine's to report through InstallerError; none of these
// calls throws.
class InstallEngine {
public:
    virtual ~InstallEngine() = default;

    // Path of the local packing list (SC_Install.scl).
    virtual std::string InstallFile() const = 0;
    virtual void InstallFile(std::string path) = 0;

    // Path of the uninstall list (SC_Uninstall.scl).
    virtual std::string UnInstallFile() const = 0;
    virtual void UnInstallFile(std::string path) = 0;

    // One whole run; true when it reached its normal end. Modes: 1 install or
    // update, 3 uninstall, 4 rebuild the uninstall list then uninstall.
    virtual bool PrepInstaller(int32_t mode, bool forceInstall) = 0;

    // True when an install or update is needed.
    virtual bool NeedToInstall() = 0;

    // What the last NeedToInstall found to do: "Install", "Update" or "".
    virtual std::string NeedToDo() const = 0;

    // Learns the machine's Windows and Internet Explorer versions into the
    // settings and adds the "%ocx%" entry (the browser's control cache
    // folder) to `substitutions`. Called once, when the control initialises.
    virtual bool GetWindowsConfiguration(KeyedCollection<std::string>& substitutions) = 0;

    // The engine's status: the last InstallationStatus it raised.
    virtual std::string Status() const = 0;
};

// Made by whatever binary links the control: the product links the real
// engine, a test links one that records what it is asked.
std::unique_ptr<InstallEngine> CreateInstallEngine(InstallEngineEvents& events, Desktop& desktop);

}  // namespace corvan
