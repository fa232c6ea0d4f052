#pragma once
#include <cstdint>
#include <mutex>
#include <string>

#include "common/keyed_collection.h"

namespace corvan {

// The process-wide values that the control and the engine share. The control
// loads them once when it initialises; the engine reads the users-groups
// string and the installer base URLs.
//
// Two controls on two threads of one browser process share them, so every
// value is read as a copy and changed under the settings' lock.
class InstallerSettings {
public:
    std::string InstallerVersion() const { return Get(installerVersion_); }
    std::string MasterUrlSource() const { return Get(masterUrlSource_); }
    // Replaced by the control's URL property.
    void MasterUrlSource(std::string value) { Set(masterUrlSource_, std::move(value)); }
    std::string AltUrlSource1() const { return Get(altUrlSource1_); }
    void AltUrlSource1(std::string value) { Set(altUrlSource1_, std::move(value)); }
    std::string AltUrlSource2() const { return Get(altUrlSource2_); }
    void AltUrlSource2(std::string value) { Set(altUrlSource2_, std::move(value)); }
    std::string Root() const { return Get(root_); }
    int16_t MaxTries() const { return Get(maxTries_); }
    void MaxTries(int16_t value) { Set(maxTries_, value); }
    int16_t History() const { return Get(history_); }
    std::string UsersGroups() const { return Get(usersGroups_); }
    void UsersGroups(std::string value) { Set(usersGroups_, std::move(value)); }

    // What the engine's GetWindowsConfiguration learns of the machine once,
    // when the control initialises; 0 and empty before.
    int16_t WindowsMajorVersion() const { return Get(windowsMajorVersion_); }
    void WindowsMajorVersion(int16_t value) { Set(windowsMajorVersion_, value); }
    int16_t WindowsMinorVersion() const { return Get(windowsMinorVersion_); }
    void WindowsMinorVersion(int16_t value) { Set(windowsMinorVersion_, value); }
    int16_t IEMajorVersion() const { return Get(ieMajorVersion_); }
    void IEMajorVersion(int16_t value) { Set(ieMajorVersion_, value); }
    std::string IEBuild() const { return Get(ieBuild_); }
    void IEBuild(std::string value) { Set(ieBuild_, std::move(value)); }
    std::string IEVersion() const { return Get(ieVersion_); }
    void IEVersion(std::string value) { Set(ieVersion_, std::move(value)); }

    // The folders the security configurator opens before and after Root.
    // Nothing assigns them in the product, so they stay empty, and the
    // configurator still runs its grants for them; Load leaves them as they
    // are.
    std::string SecuredFolder1() const { return Get(securedFolder1_); }
    void SecuredFolder1(std::string value) { Set(securedFolder1_, std::move(value)); }
    std::string SecuredFolder3() const { return Get(securedFolder3_); }
    void SecuredFolder3(std::string value) { Set(securedFolder3_, std::move(value)); }

    // The same values as text, keys compared without case, in load order:
    // INSTALLVERSION, MASTER_URL_SOURCE, ALT_URL_SOURCE_1, ALT_URL_SOURCE_2,
    // ROOT, MAXTRIES, HISTORY.
    KeyedCollection<std::string> Dictionary() const { return Get(dictionary_); }
    // Replaces (or adds) one entry of the dictionary, as a test pointing an
    // alternative installer URL at its own server does.
    void DictionaryItem(const std::string& key, std::string value);

    // Loads the fixed values and rebuilds the dictionary. The users-groups
    // string is the page's and is left as it is.
    void Load();

    std::string InstallListPath() const { return Root() + "SC_Install.scl"; }
    std::string UninstallListPath() const { return Root() + "SC_Uninstall.scl"; }

private:
    template <typename T>
    T Get(const T& field) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return field;
    }
    template <typename T>
    void Set(T& field, T value) {
        std::lock_guard<std::mutex> lock(mutex_);
        field = std::move(value);
    }

    mutable std::mutex mutex_;
    std::string installerVersion_, masterUrlSource_, altUrlSource1_, altUrlSource2_, root_;
    int16_t maxTries_ = 0;
    int16_t history_ = 0;
    std::string usersGroups_, securedFolder1_, securedFolder3_;
    int16_t windowsMajorVersion_ = 0, windowsMinorVersion_ = 0, ieMajorVersion_ = 0;
    std::string ieBuild_, ieVersion_;
    KeyedCollection<std::string> dictionary_;
};

// The one settings instance of the process (the module modCorvanInstaller_Global).
InstallerSettings& modCorvanInstaller_Global();

// The folder that Run creates and where the install log lives.
inline constexpr char kApplicationFolder[] = "C:\\TALO\\";
inline constexpr char kApplicationFolderCreated[] = "c:\\TALO\\";

}  // namespace corvan
