#include "settings/modCorvanInstaller_Global.h"

#include <cstdlib>

#include "corvan/build_config.h"

namespace corvan {

void InstallerSettings::Load() {
    std::lock_guard<std::mutex> lock(mutex_);
    installerVersion_ = CORVAN_VERSION_TEXT;

    masterUrlSource_ = CORVAN_MASTER_URL_SOURCE;
    altUrlSource1_ = CORVAN_ALT_URL_SOURCE_1;
    altUrlSource2_ = CORVAN_ALT_URL_SOURCE_2;

    // The root was once built from the system drive; the fixed folder has
    // always replaced it at once: the client's files live in the c:\TALO
    // folder whatever the system drive is.
    const char* systemDrive = std::getenv("systemdrive");
    root_ = std::string(systemDrive ? systemDrive : "") + "\\TALO\\";
    root_ = "c:\\TALO\\";

    maxTries_ = 5;
    history_ = 1;

    dictionary_.Clear();
    dictionary_.Add("INSTALLVERSION", installerVersion_);
    dictionary_.Add("MASTER_URL_SOURCE", masterUrlSource_);
    dictionary_.Add("ALT_URL_SOURCE_1", altUrlSource1_);
    dictionary_.Add("ALT_URL_SOURCE_2", altUrlSource2_);
    dictionary_.Add("ROOT", root_);
    dictionary_.Add("MAXTRIES", std::to_string(maxTries_));
    dictionary_.Add("HISTORY", std::to_string(history_));
}

void InstallerSettings::DictionaryItem(const std::string& key, std::string value) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (dictionary_.Contains(key)) dictionary_.Remove(key);
    dictionary_.Add(key, std::move(value));
}

InstallerSettings& modCorvanInstaller_Global() {
    static InstallerSettings settings;
    return settings;
}

}  // namespace corvan
