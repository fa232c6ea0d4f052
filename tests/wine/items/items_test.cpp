// An item's own download, install and uninstall, with real packages from the
// test server, run by the real msiexec, expand stand-in and advpack of the
// prefix; the registry, the files and the server's request log are read
// afterwards.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "harness.h"
#include "installer_folder.h"
#include "items/clsItem.h"
#include "logging/write_log.h"
#include "raised.h"
#include "scripted_desktop.h"
#include "test_packages.h"
#include "wine_bench.h"

using corvan::clsItem;
using testing_support::Raised;
namespace pkg = testpackages;

namespace {

const std::string kTalo = "C:\\TALO\\";

struct ItemEvents : corvan::clsItemEvents {
    void FileDownloadProgress(float Percent, const std::string& status) override {
        log.push_back("progress " + std::to_string(Percent) + " " + status);
    }
    void StatusMessageUpdate(const std::string& status) override { log.push_back("status " + status); }
    std::vector<std::string> log;
    std::vector<std::string> Statuses() const {
        std::vector<std::string> statuses;
        for (const std::string& line : log)
            if (line.rfind("status ", 0) == 0) statuses.push_back(line.substr(7));
        return statuses;
    }
};

class Item : public ::testing::Test {
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
        RegDeleteKeyA(HKEY_CURRENT_USER, pkg::kCabKey);
    }
    // The messages of the install log, without their time stamps.
    std::vector<std::string> LogMessages() const {
        std::vector<std::string> messages;
        const std::string text = winbench::ReadFileBytes(scratch.Path() + "item.log");
        for (size_t at = text.find('\t'); at != std::string::npos; at = text.find('\t', at + 1))
            messages.push_back(text.substr(at + 1, text.find("\r\n", at) - at - 1));
        return messages;
    }
    // What the packages left: their registry values, the recorded command
    // lines (";" ends each) and the files in C:\TALO\.
    std::string State() const {
        auto value = [](const char* key, const char* name) {
            return winbench::RegText(HKEY_CURRENT_USER, key, name).value_or("-");
        };
        std::string commands = winbench::ReadFileBytes(scratch.Path() + "commands.txt"), files;
        for (size_t at; (at = commands.find("\r\n")) != std::string::npos;) commands.replace(at, 2, ";");
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(kTalo))
            if (!entry.is_directory()) names.push_back(entry.path().string().substr(kTalo.size()));
        std::sort(names.begin(), names.end());
        for (const std::string& name : names) files += " " + name;
        return "msi=" + value(pkg::kMsiKey, "Installed") + " cab=" + value(pkg::kCabKey, "First") + "," +
               value(pkg::kCabKey, "Second") + " dll=" + value(pkg::kSelfRegisteringKey, "Module") +
               " commands=" + commands + " files:" + files;
    }

    winbench::ScratchFolder scratch{"item"};
    testserver::InstallerFolder server{"item"};
    testing_support::ScriptedDesktop desktop;
    ItemEvents events;
    clsItem item{desktop, &events};
};

}  // namespace

// The kinds of items.txt [kinds]. A file without an extension is fetched,
// then refused by the install and the uninstall alike.
TEST_F(Item, EachKindInstallsAndUninstallsByItsExtension) {
    for (const auto& row : unit_table::Table("items.txt", "kinds")) {
        SCOPED_TRACE(row.where);
        const bool library = row[0] == pkg::kDll;
        server.Publish(pkg::Get(row[0]).path);
        item.FileName(row[0]);
        item.InstallSwitch(row[1]);
        item.Install();
        if (library) EXPECT_FALSE(winbench::RegText(HKEY_CURRENT_USER, pkg::kSelfRegisteringKey, "Module")) << "run";
        if (library) EXPECT_EQ(item.RegisterControl(), "");
        EXPECT_EQ(State(), row[2]);
        if (library) EXPECT_EQ(item.RegisterControl(true), "");
        RegDeleteKeyA(HKEY_CURRENT_USER, pkg::kCabKey);
        item.Uninstall();
        if (library) item.Uninstall();  // the file has gone: no error
        EXPECT_EQ(State(), row[3]);
        winbench::RemoveTree(kTalo);
        RegDeleteKeyA(HKEY_CURRENT_USER, pkg::kCabKey);
        DeleteFileA((scratch.Path() + "commands.txt").c_str());
    }
    server.Write("README", "plain text");
    item.FileName("README");
    for (auto step : {&clsItem::Install, &clsItem::Uninstall}) {
        const corvan::Failure failure = Raised([&] { (item.*step)(); });
        EXPECT_EQ(failure.Number(), corvan::kMissingOrCorrupt);
        EXPECT_EQ(failure.Source(), "ManageClient.clsItem.Install");
        EXPECT_EQ(failure.Description(), "There was no file extention on the filename. Can not execute file.");
    }
    EXPECT_TRUE(winbench::FileExists(kTalo + "README"));
}

// A new file is fetched and takes its CRC and version. The CRC text is then
// compared as it stands: equal, the file stays; the same value in lower
// case, it is fetched again. The log names the fixed application folder
// whatever folder the row names; the file itself goes to the row's folder.
TEST_F(Item, FetchedAgainOnlyWhenTheCrcTextDiffers) {
    const pkg::Package exe = pkg::Get(pkg::kExe), mdb = pkg::Get(pkg::kMdb);
    server.Publish(exe.path);
    item.FileName(pkg::kExe);
    item.Install();
    EXPECT_EQ(item.CRC(), exe.crc);
    EXPECT_EQ(item.Version(), "1.2.3.4");
    EXPECT_EQ(LogMessages(), (std::vector<std::string>{
                                 "Checking for local file 'C:\\TALO\\record_command_line.exe'",
                                 "Downloading file 'C:\\TALO\\record_command_line.exe'",
                                 "Opening file 'C:\\TALO\\record_command_line.exe'",
                                 "C:\\TALO\\record_command_line.exe's CRC Value = " + exe.crc,
                             }));
    EXPECT_EQ(events.Statuses(), (std::vector<std::string>{"Downloading record_command_line.exe",
                                                           "Getting CRC and Version of record_command_line.exe",
                                                           "Executing Package: "}));

    server.Publish(mdb.path);
    item.FileName(pkg::kMdb);
    item.Productname("Dealer Data");
    item.InstallFolder(scratch.Path() + "data");
    item.CRC(mdb.crc);
    item.Install();
    EXPECT_TRUE(winbench::FileExists(scratch.Path() + "data\\corvan_test.mdb"));
    EXPECT_FALSE(winbench::FileExists(kTalo + pkg::kMdb));
    EXPECT_EQ(LogMessages()[5], "Downloading file '" + scratch.Path() + "data\\corvan_test.mdb'");
    events.log.clear();
    item.Install();
    EXPECT_EQ(server.Requests(pkg::kMdb, 200), 1);
    EXPECT_EQ(events.log, (std::vector<std::string>{"status Checking CRC of Dealer Data",
                                                    "progress 0.500000 CRC Calculation Progress:",
                                                    "progress 1.000000 CRC Calculation Progress:"}));  // 16 KiB
    std::string lower = mdb.crc;
    std::transform(lower.begin(), lower.end(), lower.begin(), ::tolower);
    ASSERT_NE(lower, mdb.crc);
    item.CRC(lower);
    item.Install();
    EXPECT_EQ(server.Requests(pkg::kMdb), 2);
    const std::vector<std::string> log = LogMessages();
    EXPECT_EQ(std::vector<std::string>(log.end() - 3, log.end()),
              (std::vector<std::string>{"Checking for local file 'C:\\TALO\\corvan_test.mdb'",
                                        "C:\\TALO\\corvan_test.mdb's CRC Value = " + mdb.crc +
                                            ", SC_Install.scl's CRC value for this file = " + lower,
                                        "Downloading new file."}));
}

// The download makes the folders below their drive, share or root, written
// with backslashes or slashes, passing on the transfer's progress; a share
// that cannot be reached, or a folder under a file, is the folder's failure
// (76), not the server's, and leaves nothing behind.
TEST_F(Item, DownloadMakesTheFoldersAndRelaysProgress) {
    item.Source(std::string(std::getenv("CORVAN_HTTP_URL")) + "size/");
    item.FileName("2048");
    item.Productname("Corvan Viewer");
    item.InstallFolder(scratch.Path() + "deep\\er");
    item.InstallFileName("viewer.bin");
    item.DownloadItemFile();
    EXPECT_EQ(winbench::ReadFileBytes(scratch.Path() + "deep\\er\\viewer.bin").size(), 2048u);
    EXPECT_EQ(item.StoredInstallFolder(), scratch.Path() + "deep\\er\\");
    const std::string whole = "progress 1.000000 2048 bytes of 2048 bytes read ";
    EXPECT_EQ(events.log, (std::vector<std::string>{"status Downloading Corvan Viewer",
                                                    "progress 0.500000 1024 bytes of 2048 bytes read ", whole, whole,
                                                    whole}));
    EXPECT_EQ(desktop.pumps, 5);  // the status message, each folder made, each block after the first

    char current[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, current);
    SetCurrentDirectoryA(scratch.Path().c_str());  // the root "\" is this folder's drive
    winbench::RemoveTree("C:\\corvan-item-rooted");
    std::string slashed = scratch.Path() + "slashed/deep/";
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    winbench::WriteFileBytes(scratch.Path() + "plain.txt", "x");
    const struct { std::string installFolder, file; int32_t error; } cases[] = {
        {"\\corvan-item-rooted\\", "C:\\corvan-item-rooted\\300", 0},
        {slashed, scratch.Path() + "slashed\\deep\\300", 0},
        {"\\\\corvan-no-such-server\\share\\dir\\", "C:\\corvan-no-such-server", 76},
        {scratch.Path() + "plain.txt\\sub", scratch.Path() + "plain.txt\\sub\\300", 76},
    };
    item.FileName("300");
    item.InstallFileName("");
    item.Productname("");
    events.log.clear();
    for (const auto& c : cases) {
        item.InstallFolder(c.installFolder);
        try {
            item.DownloadItemFile();
            EXPECT_EQ(c.error, 0) << c.installFolder;
        } catch (const corvan::Failure& failure) {
            EXPECT_EQ(failure.Number(), c.error) << c.installFolder;
        }
        EXPECT_EQ(winbench::FileExists(c.file), c.error == 0) << c.installFolder;
    }
    SetCurrentDirectoryA(current);
    EXPECT_EQ(events.log.front(), "status Downloading 300");
    EXPECT_EQ(winbench::ReadFileBytes("C:\\corvan-item-rooted\\300").size(), 1024u);  // NUL-padded first block
    winbench::RemoveTree("C:\\corvan-item-rooted");
}
