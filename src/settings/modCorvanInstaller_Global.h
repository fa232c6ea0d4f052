#pragma once
#include <cstdint>
#include <string>

#include "common/keyed_collection.h"

namespace corvan {

// The process-wide values that the control and the engine share. The control
// loads them once when it initialises; the engine reads the users-groups
// string and the installer base URLs.
struct InstallerSettings {
    std::string InstallerVersion;
    std::string MasterUrlSource;  // replaced by the control's URL property
    std::string AltUrlSource1;
    std::string AltUrlSource2;
    std::string Root;
    int16_t MaxTries = 0;
    int16_t History = 0;
    std::string UsersGroups;

    // What the engine's GetWindowsConfiguration learns of the machine once,
    // when the control initialises; 0 and empty before.
    int16_t WindowsMajorVersion = 0;
    int16_t WindowsMinorVersion = 0;
    int16_t IEMajorVersion = 0;
    std::string IEBuild;
    std::string IEVersion;

    // The folders the security configurator opens before and after Root.
    // Nothing assigns them, so they stay empty, and the configurator still
    // runs its grants for them; Load leaves them as they are.
    std::string SecuredFolder1;
    std::string SecuredFolder3;

    // The same values as text, keys compared without case, in load order:
    // INSTALLVERSION, MASTER_URL_SOURCE, ALT_URL_SOURCE_1, ALT_URL_SOURCE_2,
    // ROOT, MAXTRIES, HISTORY.
    KeyedCollection<std::string> Dictionary;

    // Loads the fixed values and rebuilds the dictionary. The users-groups
    // string is the page's and is left as it is.
    void Load();

    std::string InstallListPath() const { return Root + "SC_Install.scl"; }
    std::string UninstallListPath() const { return Root + "SC_Uninstall.scl"; }
};

// The one settings instance of the process (the module modCorvanInstaller_Global).
InstallerSettings& modCorvanInstaller_Global();

// The folder that Run creates and where the install log lives.
inline constexpr char kApplicationFolder[] = "C:\\TALO\\";
inline constexpr char kApplicationFolderCreated[] = "c:\\TALO\\";

}  // namespace corvan
