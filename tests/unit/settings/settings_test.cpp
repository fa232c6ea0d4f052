#include <gtest/gtest.h>

#include <cstdlib>

#include "../harness.h"
#include "corvan/build_config.h"
#include "settings/modCorvanInstaller_Global.h"

using namespace corvan;

// The root folder is fixed, whatever the system drive; the dictionary holds
// the values in order, and loading again (a second control on the page)
// rebuilds it, never duplicates.
TEST(Settings, LoadFillsValuesAndDictionaryInOrder) {
    putenv(const_cast<char*>("systemdrive=D:"));
    InstallerSettings settings;
    settings.UsersGroups("Dealers");
    settings.Load();
    settings.Load();
    EXPECT_EQ(settings.InstallerVersion() + "|" + settings.Root() + "|" + settings.UsersGroups() + "|" +
                  settings.InstallListPath() + "|" + settings.UninstallListPath(),
              CORVAN_VERSION_TEXT "|c:\\TALO\\|Dealers|c:\\TALO\\SC_Install.scl|c:\\TALO\\SC_Uninstall.scl");
    EXPECT_EQ(settings.MaxTries(), 5);
    EXPECT_EQ(settings.History(), 1);
    for (const std::string& url : {settings.MasterUrlSource(), settings.AltUrlSource1(), settings.AltUrlSource2()})
        EXPECT_TRUE(url.rfind("https://", 0) == 0 && url.substr(url.size() - 11) == "/installer/") << url;
    std::string entries;
    for (const auto& [key, value] : settings.Dictionary()) entries += key + "=" + value + "\n";
    EXPECT_EQ(entries, "INSTALLVERSION=" CORVAN_VERSION_TEXT "\nMASTER_URL_SOURCE=" + settings.MasterUrlSource() +
                           "\nALT_URL_SOURCE_1=" + settings.AltUrlSource1() + "\nALT_URL_SOURCE_2=" +
                           settings.AltUrlSource2() + "\nROOT=c:\\TALO\\\nMAXTRIES=5\nHISTORY=1\n");
}

#ifndef _WIN32
// The real project configured (no tests, nothing built) by the build
// machine's cmake in a scratch folder.
TEST(DeploymentBuild, RefusesThePlaceholderInstallerHosts) {
    const unit_table::Scratch scratch;
    const std::string build = scratch.Path("build"), log = scratch.Path("configure.log");
    for (const auto& c : unit_table::Table("settings.txt", "deployment")) {
        std::filesystem::remove_all(build);
        const bool ok = std::system(("cmake -S \"" CORVAN_SOURCE_DIR "\" -B \"" + build +
                                     "\" -G Ninja -DCORVAN_BUILD_TESTS=OFF " + c[0] + " > \"" + log + "\" 2>&1").c_str()) == 0;
        std::istringstream words(unit_table::ReadAll(log));
        std::string output;  // CMake wraps its messages: the words are compared, not the lines
        for (std::string word; words >> word;) output += word + " ";
        EXPECT_EQ(ok, c[1].empty()) << c.where << "\n" << output;
        EXPECT_NE(output.find(c[1]), std::string::npos) << c.where << "\n" << output;
    }
}
#endif
