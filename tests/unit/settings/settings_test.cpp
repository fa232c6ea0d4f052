#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "corvan/build_config.h"
#include "settings/modCorvanInstaller_Global.h"

using namespace corvan;

// The root folder is fixed, whatever the system drive.
TEST(Settings, LoadFillsValuesAndDictionaryInOrder) {
#ifdef _WIN32
    _putenv_s("systemdrive", "D:");
#else
    setenv("systemdrive", "D:", 1);
#endif
    InstallerSettings settings;
    settings.UsersGroups = "Dealers";
    settings.Load();
    EXPECT_EQ(settings.InstallerVersion, CORVAN_VERSION_TEXT);
    EXPECT_EQ(settings.Root, "c:\\TALO\\");
    EXPECT_EQ(settings.MaxTries, 5);
    EXPECT_EQ(settings.History, 1);
    EXPECT_EQ(settings.UsersGroups, "Dealers");
    EXPECT_EQ(settings.InstallListPath(), "c:\\TALO\\SC_Install.scl");
    EXPECT_EQ(settings.UninstallListPath(), "c:\\TALO\\SC_Uninstall.scl");
    for (const std::string* url : {&settings.MasterUrlSource, &settings.AltUrlSource1, &settings.AltUrlSource2}) {
        EXPECT_EQ(url->rfind("https://", 0), 0u) << *url;
        EXPECT_EQ(url->substr(url->size() - 11), "/installer/") << *url;
    }

    std::vector<std::pair<std::string, std::string>> entries(settings.Dictionary.begin(), settings.Dictionary.end());
    std::vector<std::pair<std::string, std::string>> expected{
        {"INSTALLVERSION", CORVAN_VERSION_TEXT},   {"MASTER_URL_SOURCE", settings.MasterUrlSource},
        {"ALT_URL_SOURCE_1", settings.AltUrlSource1}, {"ALT_URL_SOURCE_2", settings.AltUrlSource2},
        {"ROOT", "c:\\TALO\\"},                    {"MAXTRIES", "5"},
        {"HISTORY", "1"}};
    EXPECT_EQ(entries, expected);
    EXPECT_EQ(settings.Dictionary.Item("root"), "c:\\TALO\\");
    EXPECT_EQ(settings.Dictionary.Item("MaxTries"), "5");

    // Loading again (a second control on the page) rebuilds, never duplicates.
    settings.Load();
    EXPECT_EQ(settings.Dictionary.Count(), 7u);
}
