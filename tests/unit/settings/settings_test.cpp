#include <cstdlib>
#include <filesystem>
#include <sstream>

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

#ifndef _WIN32
// A deployment build takes the real installer URLs and refuses the placeholder
// hosts that the test and bench builds keep: the real project configured (no
// tests, nothing built) by the build machine's cmake in a scratch folder.
TEST(DeploymentBuild, RefusesThePlaceholderInstallerHosts) {
    const Scratch scratch;
    const std::string on = "-DCORVAN_DEPLOYMENT=ON", build = scratch.Path("build"), log = scratch.Path("log");
    auto url = [](const char* name, const char* host) { return std::string(" -D") + name + "=https://" + host + "/installer/"; };
    const std::string two = on + url("CORVAN_MASTER_URL_SOURCE", "a.corvan.test") + url("CORVAN_ALT_URL_SOURCE_1", "b.c.test");
    const std::pair<std::string, std::string> cases[] = {{on, "CORVAN_MASTER_URL_SOURCE"},
                                                         {two, "CORVAN_ALT_URL_SOURCE_2"},
                                                         {two + url("CORVAN_ALT_URL_SOURCE_2", "c.corvan.test"), ""},
                                                         {"", ""}};
    for (const auto& [options, refusal] : cases) {
        std::filesystem::remove_all(build);
        const bool ok = std::system(("cmake -S \"" CORVAN_SOURCE_DIR "\" -B \"" + build +
                                     "\" -G Ninja -DCORVAN_BUILD_TESTS=OFF " + options + " > \"" + log + "\" 2>&1")
                                        .c_str()) == 0;
        std::string words;  // CMake wraps its messages: the words are compared, not the lines
        std::istringstream text(ReadAll(log));
        for (std::string word; text >> word;) words += word + " ";
        const std::string says = "deployment build needs the real installer URLs, but " + refusal + " is still the";
        EXPECT_EQ(ok, refusal.empty()) << options << "\n" << words;
        EXPECT_EQ(words.find(says) != std::string::npos, !refusal.empty()) << options << "\n" << words;
    }
}
#endif
