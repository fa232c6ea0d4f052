// An item's own install and uninstall, with real packages from the test
// server, run by the real msiexec, expand stand-in and advpack of the
// prefix; the registry, C:\TALO\ and the server's request log are read
// afterwards.
#include <gtest/gtest.h>

#include <functional>

#include "common/failure.h"
#include "installer_folder.h"
#include "items/clsItem.h"
#include "logging/write_log.h"
#include "raised.h"
#include "scripted_desktop.h"
#include "test_packages.h"
#include "wine_bench.h"

using corvan::clsItem;
namespace pkg = testpackages;

namespace {

const char kTalo[] = "C:\\TALO\\";

struct ItemEvents : corvan::clsItemEvents {
    void FileDownloadProgress(float Percent, const std::string& status) override {
        if (status == "CRC Calculation Progress:") crcProgress.push_back(Percent);
    }
    void StatusMessageUpdate(const std::string& status) override { statuses.push_back(status); }
    std::vector<float> crcProgress;
    std::vector<std::string> statuses;
};

// A value under HKCU, or "(none)".
std::string UserValue(const char* key, const char* name) {
    char data[512];
    DWORD size = sizeof data;
    if (RegGetValueA(HKEY_CURRENT_USER, key, name, RRF_RT_REG_SZ, nullptr, data, &size) != ERROR_SUCCESS)
        return "(none)";
    return data;
}

class ItemInstall : public ::testing::Test {
protected:
    void SetUp() override {
        if (!server.Available()) GTEST_SKIP() << "the http fixture did not start";
        winbench::RemoveTree(kTalo);
        SetEnvironmentVariableA("CORVAN_COMMAND_RECORD", (scratch.Path() + "commands.txt").c_str());
        corvan::GlobalLog().OpenLogFile("item.log", scratch.Path(), false);
        item.Source(server.URL());
        item.InstallFolder(kTalo);
    }
    void TearDown() override {
        corvan::GlobalLog().CloseLogFile();
        SetEnvironmentVariableA("CORVAN_COMMAND_RECORD", nullptr);
        winbench::RemoveTree(kTalo);
    }

    // Publishes a built package and names the item after it.
    void Offer(const std::string& name) {
        server.Publish(pkg::Get(name).path);
        item.FileName(name);
    }
    // The messages of the install log, without their time stamps.
    std::vector<std::string> LogMessages() const {
        std::vector<std::string> messages;
        const std::string text = winbench::ReadFileBytes(scratch.Path() + "item.log");
        for (size_t at = text.find('\t'); at != std::string::npos; at = text.find('\t', at + 1))
            messages.push_back(text.substr(at + 1, text.find("\r\n", at) - at - 1));
        return messages;
    }
    std::string Commands() const { return winbench::ReadFileBytes(scratch.Path() + "commands.txt"); }

    winbench::ScratchFolder scratch{"item-install"};
    testserver::InstallerFolder server{"item-install"};
    testing_support::ScriptedDesktop desktop;
    ItemEvents events;
    clsItem item{desktop, &events};
};

}  // namespace

// One row per kind of package: what the item's install and uninstall leave
// behind them.
TEST_F(ItemInstall, EachKindInstallsAndUninstallsByItsExtension) {
    struct KindCase {
        const char* package;
        const char* installSwitch;
        const char* uninstallSwitch;
        std::function<void()> afterInstall;
        std::function<void()> beforeUninstall;
        std::function<void()> afterUninstall;
    };
    const std::string talo = kTalo, extracted = talo + "corvan_test\\";
    const KindCase cases[] = {
        {pkg::kMsi, "CORVANMARK=switched", "",
         [] { EXPECT_EQ(UserValue(pkg::kMsiKey, "Installed"), "switched"); }, nullptr,
         [&] {
             EXPECT_EQ(UserValue(pkg::kMsiKey, "Installed"), "(none)");
             EXPECT_TRUE(winbench::FileExists(talo + pkg::kMsi));
         }},
        {pkg::kExe, "/S /install", "",
         [&] { EXPECT_EQ(Commands(), "C:\\TALO\\record_command_line.exe /S /install\r\n"); }, nullptr,
         [&] {
             EXPECT_EQ(Commands(),
                       "C:\\TALO\\record_command_line.exe /S /install\r\nC:\\TALO\\record_command_line.exe\r\n");
         }},
        // Both INF files run. The uninstall launches each one's default
        // entry, which Wine's advpack installs again (it has no rollback):
        // the values come back, and nothing is deleted.
        {pkg::kCab, "", "",
         [&] {
             EXPECT_EQ(UserValue(pkg::kCabKey, "First"), "installed");
             EXPECT_EQ(UserValue(pkg::kCabKey, "Second"), "installed");
             EXPECT_TRUE(winbench::FileExists(extracted + "cab_readme.txt"));
         },
         [] { RegDeleteKeyA(HKEY_CURRENT_USER, pkg::kCabKey); },
         [&] {
             EXPECT_EQ(UserValue(pkg::kCabKey, "First"), "installed");
             EXPECT_EQ(UserValue(pkg::kCabKey, "Second"), "installed");
             for (const char* file : {"first.inf", "second.inf", "cab_readme.txt"})
                 EXPECT_TRUE(winbench::FileExists(extracted + file)) << file;
             EXPECT_TRUE(winbench::FileExists(talo + pkg::kCab));
         }},
        // A library is not run; the item registers the file it installed
        // when asked. Its uninstall only deletes it, and a second uninstall
        // of the file already gone is no error.
        {pkg::kDll, "", "",
         [&] {
             EXPECT_EQ(UserValue(pkg::kSelfRegisteringKey, "Module"), "(none)");
             EXPECT_EQ(item.RegisterControl(), "");
             EXPECT_EQ(UserValue(pkg::kSelfRegisteringKey, "Module"), talo + pkg::kDll);
         },
         [&] {
             EXPECT_EQ(item.RegisterControl(true), "");
             EXPECT_EQ(UserValue(pkg::kSelfRegisteringKey, "Module"), "(none)");
         },
         [&] {
             EXPECT_FALSE(winbench::FileExists(talo + pkg::kDll));
             item.Uninstall();
         }},
    };
    for (const KindCase& c : cases) {
        SCOPED_TRACE(c.package);
        Offer(c.package);
        item.InstallSwitch(c.installSwitch);
        item.UninstallSwitch(c.uninstallSwitch);
        item.Install();
        c.afterInstall();
        if (c.beforeUninstall) c.beforeUninstall();
        item.Uninstall();
        c.afterUninstall();
    }
    RegDeleteKeyA(HKEY_CURRENT_USER, pkg::kCabKey);
}

TEST_F(ItemInstall, ANewFileIsFetchedAndTakesItsCrcAndVersion) {
    Offer(pkg::kExe);
    item.Install();
    const pkg::Package exe = pkg::Get(pkg::kExe);
    EXPECT_EQ(item.CRC(), exe.crc);
    EXPECT_EQ(item.Version(), "1.2.3.4");
    EXPECT_EQ(LogMessages(), (std::vector<std::string>{
                                 "Checking for local file 'C:\\TALO\\record_command_line.exe'",
                                 "Downloading file 'C:\\TALO\\record_command_line.exe'",
                                 "Opening file 'C:\\TALO\\record_command_line.exe'",
                                 "C:\\TALO\\record_command_line.exe's CRC Value = " + exe.crc,
                             }));
    EXPECT_EQ(Commands(), "C:\\TALO\\record_command_line.exe\r\n");
    EXPECT_EQ(events.statuses, (std::vector<std::string>{"Downloading record_command_line.exe",
                                                         "Getting CRC and Version of record_command_line.exe",
                                                         "Executing Package: "}));
}

// The CRC text is compared as it stands: equal, the file stays; the same
// value in lower case, it is fetched again.
TEST_F(ItemInstall, TheLocalFileIsFetchedAgainOnlyWhenItsCrcTextDiffers) {
    const pkg::Package mdb = pkg::Get(pkg::kMdb);
    Offer(pkg::kMdb);
    item.Productname("Dealer Data");
    item.Install();
    ASSERT_EQ(server.Requests(pkg::kMdb, 200), 1);
    events.crcProgress.clear();

    item.CRC(mdb.crc);
    item.Install();
    EXPECT_EQ(server.Requests(pkg::kMdb), 1);
    EXPECT_EQ(events.crcProgress, (std::vector<float>{0.5f, 1.0f}));  // 16 KiB: two blocks
    EXPECT_EQ(events.statuses.back(), "Checking CRC of Dealer Data");

    std::string lower = mdb.crc;
    for (char& c : lower) c = static_cast<char>(tolower(c));
    ASSERT_NE(lower, mdb.crc);
    item.CRC(lower);
    item.Install();
    EXPECT_EQ(server.Requests(pkg::kMdb), 2);
    const std::vector<std::string> log = LogMessages();
    EXPECT_EQ(std::vector<std::string>(log.end() - 3, log.end()),
              (std::vector<std::string>{
                  "Checking for local file 'C:\\TALO\\corvan_test.mdb'",
                  "C:\\TALO\\corvan_test.mdb's CRC Value = " + mdb.crc +
                      ", SC_Install.scl's CRC value for this file = " + lower,
                  "Downloading new file.",
              }));
}

// The log names the fixed application folder whatever folder the row names;
// the file itself goes to the row's folder.
TEST_F(ItemInstall, TheLogNamesTheApplicationFolderWhateverTheRowSays) {
    Offer(pkg::kMdb);
    item.InstallFolder(scratch.Path() + "data");
    item.Install();
    EXPECT_TRUE(winbench::FileExists(scratch.Path() + "data\\corvan_test.mdb"));
    EXPECT_FALSE(winbench::FileExists(std::string(kTalo) + pkg::kMdb));
    const std::vector<std::string> log = LogMessages();
    ASSERT_EQ(log.size(), 4u);
    EXPECT_EQ(log[0], "Checking for local file 'C:\\TALO\\corvan_test.mdb'");
    EXPECT_EQ(log[1], "Downloading file '" + scratch.Path() + "data\\corvan_test.mdb'");
    EXPECT_EQ(log[3].rfind("C:\\TALO\\corvan_test.mdb's CRC Value = ", 0), 0u);
}

TEST_F(ItemInstall, FailuresKeepTheirNumbersAndSources) {
    // A file the server does not have: the download's own error, no file.
    item.FileName("absent.exe");
    const corvan::Failure missing = testing_support::Raised([&] { item.Install(); });
    EXPECT_EQ(missing.Number(), corvan::kDownloadFailed);
    EXPECT_EQ(server.Requests("absent.exe", 404), 1);
    EXPECT_FALSE(winbench::FileExists(std::string(kTalo) + "absent.exe"));
    EXPECT_EQ(LogMessages().back(), "Downloading file 'C:\\TALO\\absent.exe'");

    // No extension: fetched, then refused; the uninstall names the install.
    server.Write("README", "plain text");
    item.FileName("README");
    for (const std::function<void()>& step : {std::function<void()>([&] { item.Install(); }),
                                              std::function<void()>([&] { item.Uninstall(); })}) {
        const corvan::Failure failure = testing_support::Raised(step);
        EXPECT_EQ(failure.Number(), corvan::kMissingOrCorrupt);
        EXPECT_EQ(failure.Source(), "ManageClient.clsItem.Install");
        EXPECT_EQ(failure.Description(), "There was no file extention on the filename. Can not execute file.");
    }
    EXPECT_TRUE(winbench::FileExists(std::string(kTalo) + "README"));
}
