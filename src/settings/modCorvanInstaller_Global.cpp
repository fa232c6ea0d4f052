#include "settings/modCorvanInstaller_Global.h"

#include <cstdlib>

#include "corvan/build_config.h"

namespace corvan {

void InstallerSettings::Load() {
    InstallerVersion = CORVAN_VERSION_TEXT;

    MasterUrlSource = CORVAN_MASTER_URL_SOURCE;
    AltUrlSource1 = CORVAN_ALT_URL_SOURCE_1;
    AltUrlSource2 = CORVAN_ALT_URL_SOURCE_2;

    // The root was once built from the system drive; the fixed folder has
    // always replaced it at once: the client's files live in the c:\TALO
    // folder whatever the system drive is.
    const char* systemDrive = std::getenv("systemdrive");
    Root = std::string(systemDrive ? systemDrive : "") + "\\TALO\\";
    Root = "c:\\TALO\\";

    MaxTries = 5;
    History = 1;

    Dictionary.Clear();
    Dictionary.Add("INSTALLVERSION", InstallerVersion);
    Dictionary.Add("MASTER_URL_SOURCE", MasterUrlSource);
    Dictionary.Add("ALT_URL_SOURCE_1", AltUrlSource1);
    Dictionary.Add("ALT_URL_SOURCE_2", AltUrlSource2);
    Dictionary.Add("ROOT", Root);
    Dictionary.Add("MAXTRIES", std::to_string(MaxTries));
    Dictionary.Add("HISTORY", std::to_string(History));
}

InstallerSettings& modCorvanInstaller_Global() {
    static InstallerSettings settings;
    return settings;
}

}  // namespace corvan
