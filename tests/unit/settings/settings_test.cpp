#include <cstdlib>

#include "../harness.h"
#include "corvan/build_config.h"
#include "settings/modCorvanInstaller_Global.h"

// The root folder is fixed, whatever the system drive; the dictionary holds the values
// in order, and loading again (a second control on the page) rebuilds it, never duplicates.
TEST(Settings, LoadFillsValuesAndDictionaryInOrder) {
    putenv(const_cast<char*>("systemdrive=D:"));
    InstallerSettings settings;
    settings.UsersGroups("Dealers");
    settings.Load();
    settings.Load();
    EXPECT_EQ(settings.InstallerVersion() + "|" + settings.Root() + "|" + settings.UsersGroups() + "|" +
                  settings.InstallListPath() + "|" + settings.UninstallListPath() + "|" +
                  std::to_string(settings.MaxTries()) + "|" + std::to_string(settings.History()),
              CORVAN_VERSION_TEXT "|c:\\TALO\\|Dealers|c:\\TALO\\SC_Install.scl|c:\\TALO\\SC_Uninstall.scl|5|1");
    for (const std::string& url : {settings.MasterUrlSource(), settings.AltUrlSource1(), settings.AltUrlSource2()})
        EXPECT_TRUE(url.rfind("https://", 0) == 0 && url.substr(url.size() - 11) == "/installer/") << url;
    std::string entries;
    for (const auto& [key, value] : settings.Dictionary()) entries += key + "=" + value + "\n";
    EXPECT_EQ(entries, "INSTALLVERSION=" CORVAN_VERSION_TEXT "\nMASTER_URL_SOURCE=" + settings.MasterUrlSource() +
                           "\nALT_URL_SOURCE_1=" + settings.AltUrlSource1() + "\nALT_URL_SOURCE_2=" +
                           settings.AltUrlSource2() + "\nROOT=c:\\TALO\\\nMAXTRIES=5\nHISTORY=1\n");
}
