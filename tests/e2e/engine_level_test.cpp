// Run preparation where no run through the control can lead: the local
// list that will not load (fetched again from the three installer URLs in
// turn), and an uninstall list kept outside an empty application folder.
#include <gtest/gtest.h>

#include <algorithm>

#include "e2e_support.h"
#include "engine/clsInstall.h"
#include "installer_folder.h"
#include "scripted_desktop.h"
#include "settings/modCorvanInstaller_Global.h"

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

struct HeardEvents : corvan::InstallEngineEvents {
    Texts statuses, errors, installation;
    void InstallerError(const std::string& text) override { errors.push_back(text); }
    void ProgressUpdate(float) override {}
    void StatusMsgChange(const std::string& text) override { statuses.push_back(text); }
    void InstallationStatus(const std::string& text) override { installation.push_back(text); }
    void FTPStatus(float, const std::string&) override {}
};

// The first load of the local list fails, and with it the primary
// installer URL.
class LocalLoadFailsOnce : public corvan::clsInstall {
public:
    using clsInstall::clsInstall;
    std::string unreachable;

protected:
    bool LoadFileIntoCollection(const corvan::clsFileIO& file, bool markDirty) override {
        if (failed_) return clsInstall::LoadFileIntoCollection(file, markDirty);
        failed_ = true;
        corvan::modCorvanInstaller_Global().MasterUrlSource = unreachable;
        return false;
    }

private:
    bool failed_ = false;
};

class RunPreparation : public ::testing::Test {
protected:
    void SetUp() override {
        machine.Clean();
        settings.Load();
    }
    void TearDown() override { machine.Clean(); }

    void Installed() {
        DWORD one = 1;
        RegSetKeyValueA(HKEY_LOCAL_MACHINE, "Software\\Talo\\Settings", "InstallComplete", REG_DWORD, &one, sizeof one);
    }
    void Alternate(const char* key, const std::string& url) {
        settings.Dictionary.Remove(key);
        settings.Dictionary.Add(key, url);
    }
    // The statuses in `wanted` were raised in this order.
    void ExpectInOrder(const Texts& wanted) {
        auto at = heard.statuses.begin();
        for (const std::string& status : wanted) {
            at = std::find(at, heard.statuses.end(), status);
            ASSERT_NE(at, heard.statuses.end()) << status;
        }
    }

    Machine machine;
    corvan::InstallerSettings& settings = corvan::modCorvanInstaller_Global();
    testing_support::ScriptedDesktop desktop;
    HeardEvents heard;
};

TEST_F(RunPreparation, ALocalListThatWillNotLoadIsFetchedFromTheFirstAlternateThatAnswers) {
    testserver::InstallerFolder primary("prep-primary"), first("prep-alternate-1"), second("prep-alternate-2");
    ASSERT_TRUE(primary.Available());
    const std::string row =
        "ALL,https://127.0.0.1/installer/,corvan_test.mdb,1.0,01/01/2005,1A2B,db,,1,,,,C:\\TALO\\,,0,0,";
    primary.WriteList({row});
    first.WriteList({row});
    second.WriteList({row});
    settings.MasterUrlSource = primary.URL();
    Alternate("ALT_URL_SOURCE_1", first.URL());
    Alternate("ALT_URL_SOURCE_2", second.URL());
    Installed();
    CreateDirectoryA("C:\\TALO", nullptr);
    winbench::WriteFileBytes("C:\\TALO\\SC_Install.scl", row + "\r\n");

    LocalLoadFailsOnce engine(heard, desktop);
    engine.unreachable = primary.URL() + "gone/";
    engine.InstallFile(settings.InstallListPath());
    engine.UnInstallFile(settings.UninstallListPath());
    EXPECT_TRUE(engine.PrepInstaller(1, false));

    ExpectInOrder({"Loading Files into Compare Process",
                   "Attempting New Download of Install file from " + engine.unreachable,
                   "Attempting New Download of Install file from " + first.URL(),
                   "Reloading install file into compare process", "Loading Server file into Compare process",
                   "Corvan Connect is Installed and up to Date.", "Process Complete."});
    EXPECT_EQ(std::count_if(heard.statuses.begin(), heard.statuses.end(),
                            [](const std::string& s) { return s.rfind("Attempting New Download", 0) == 0; }),
              2);
    // The primary's failure is no error: an alternate gave the list.
    EXPECT_EQ(heard.errors, Texts{});
    EXPECT_EQ(first.Requests("SC_Install.scl"), 1);
    EXPECT_EQ(second.Requests("SC_Install.scl"), 0);
    EXPECT_EQ(heard.installation, (Texts{"Preparing", "No Install Required"}));
}

TEST_F(RunPreparation, AnEmptyUninstallListAndNoApplicationFilesMeanNotInstalled) {
    Installed();
    CreateDirectoryA("C:\\corvan-tests", nullptr);
    const std::string list = "C:\\corvan-tests\\engine-SC_Uninstall.scl";
    winbench::WriteFileBytes(list, "");
    corvan::clsInstall engine(heard, desktop);
    engine.InstallFile(settings.InstallListPath());
    engine.UnInstallFile(list);
    EXPECT_TRUE(engine.PrepInstaller(3, false));
    ExpectInOrder({"Making Path: c:\\TALO\\", "Mode: Uninstall", "Forcing Uninstall...", "Running Uninstall Process...",
                   "Corvan Connect appears to not be installed on this system.", "Process Complete."});
    EXPECT_EQ(std::find(heard.statuses.begin(), heard.statuses.end(), "Unregistering Controls"), heard.statuses.end());
    EXPECT_EQ(machine.Mark("InstallComplete"), "0");
    DeleteFileA(list.c_str());
}

}  // namespace

}  // namespace e2e
