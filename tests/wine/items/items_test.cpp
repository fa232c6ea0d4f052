// An item's own download against the test server. Each kind of package
// installed, registered and removed is the e2e table's.
#include <gtest/gtest.h>

#include <algorithm>

#include "installer_folder.h"
#include "items/clsItem.h"
#include "logging/write_log.h"
#include "raised.h"
#include "scripted_desktop.h"
#include "session_log.h"
#include "test_packages.h"
#include "wine_bench.h"

using corvan::clsItem;
namespace pkg = testpackages;
using Lines = std::vector<std::string>;

struct ItemEvents : corvan::clsItemEvents {
    void FileDownloadProgress(float Percent, const std::string& status) override {
        log.push_back("progress " + std::to_string(Percent) + " " + status);
    }
    void StatusMessageUpdate(const std::string& status) override { log.push_back("status " + status); }
    Lines log;
};

class Item : public ::testing::Test {
protected:
    void SetUp() override {
        if (!server.Available()) GTEST_SKIP() << "the http fixture did not start";
        winbench::RemoveTree("C:\\TALO");
        CreateDirectoryA("C:\\TALO", nullptr);
        corvan::GlobalLog().OpenLogFile("SC_Install.log", "C:\\TALO\\", false);
        item.Source(server.URL());
    }
    void TearDown() override {
        corvan::GlobalLog().CloseLogFile();
        winbench::RemoveTree("C:\\TALO");
    }

    winbench::ScratchFolder scratch{"item"};
    testserver::InstallerFolder server{"item"};
    testing_support::ScriptedDesktop desktop;
    ItemEvents events;
    clsItem item{desktop, &events};
};

// The CRC text is compared as it stands: equal, the file stays; the same
// value in lower case, it is fetched again. The log names the fixed
// application folder whatever folder the row names; the file itself goes to
// the row's folder. A file without an extension is fetched, then refused.
TEST_F(Item, FetchedAgainOnlyWhenTheCrcTextDiffers) {
    const pkg::Package mdb = pkg::Get(pkg::kMdb);
    server.Publish(mdb.path);
    item.FileName(pkg::kMdb);
    item.Productname("Dealer Data");
    item.InstallFolder(scratch.Path() + "data");
    item.CRC(mdb.crc);
    item.Install();
    EXPECT_TRUE(winbench::FileExists(scratch.Path() + "data\\corvan_test.mdb"));
    EXPECT_EQ(control_tests::LogMessages()[1], "Downloading file '" + scratch.Path() + "data\\corvan_test.mdb'");
    events.log.clear();
    item.Install();
    EXPECT_EQ(server.Requests(pkg::kMdb, 200), 1);
    EXPECT_EQ(events.log, (Lines{"status Checking CRC of Dealer Data", "progress 0.500000 CRC Calculation Progress:",
                                 "progress 1.000000 CRC Calculation Progress:"}));  // 16 KiB
    std::string lower = mdb.crc;
    std::transform(lower.begin(), lower.end(), lower.begin(), ::tolower);
    ASSERT_NE(lower, mdb.crc);
    item.CRC(lower);
    item.Install();
    EXPECT_EQ(server.Requests(pkg::kMdb), 2);
    const Lines log = control_tests::LogMessages();
    EXPECT_EQ(Lines(log.end() - 3, log.end()),
              (Lines{"Checking for local file 'C:\\TALO\\corvan_test.mdb'",
                     "C:\\TALO\\corvan_test.mdb's CRC Value = " + mdb.crc + ", SC_Install.scl's CRC value for this file = " + lower,
                     "Downloading new file."}));

    server.Write("README", "plain text");
    item.FileName("README");
    item.InstallFolder("C:\\TALO\\");
    for (auto step : {&clsItem::Install, &clsItem::Uninstall}) {
        const corvan::Failure failure = testing_support::Raised([&] { (item.*step)(); });
        EXPECT_EQ(failure.Number(), corvan::kMissingOrCorrupt);
        EXPECT_EQ(failure.Source(), "ManageClient.clsItem.Install");
        EXPECT_EQ(failure.Description(), "There was no file extention on the filename. Can not execute file.");
    }
    EXPECT_TRUE(winbench::FileExists("C:\\TALO\\README"));
}

// The download makes the folders below a drive, share or root (backslashes
// or slashes), relaying progress; an unreachable share or a folder under a
// file is the folder's failure (76), not the server's, and leaves nothing.
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
    EXPECT_EQ(events.log, (Lines{"status Downloading Corvan Viewer", "progress 0.500000 1024 bytes of 2048 bytes read ",
                                 whole, whole, whole}));
    EXPECT_EQ(desktop.pumps, 5);  // the status message, each folder made, each block after the first

    char current[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, current);
    SetCurrentDirectoryA(scratch.Path().c_str());  // the root "\" is this folder's drive
    std::string slashed = scratch.Path() + "slashed/deep/";
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    winbench::WriteFileBytes(scratch.Path() + "plain.txt", "x");
    const struct { std::string installFolder, file; int32_t error; } cases[] = {
        {scratch.Path().substr(2) + "rooted\\", scratch.Path() + "rooted\\300", 0},
        {slashed, scratch.Path() + "slashed\\deep\\300", 0},
        {"\\\\corvan-no-such-server\\share\\dir\\", "C:\\corvan-no-such-server", 76},
        {scratch.Path() + "plain.txt\\sub", scratch.Path() + "plain.txt\\sub\\300", 76},
    };
    item.FileName("300");
    item.InstallFileName("");
    for (const auto& c : cases) {
        item.InstallFolder(c.installFolder);
        if (c.error) {
            EXPECT_EQ(testing_support::Raised([&] { item.DownloadItemFile(); }).Number(), c.error) << c.installFolder;
        } else {
            item.DownloadItemFile();
        }
        EXPECT_EQ(winbench::FileExists(c.file), c.error == 0) << c.installFolder;
    }
    SetCurrentDirectoryA(current);
    EXPECT_EQ(winbench::ReadFileBytes(scratch.Path() + "rooted\\300").size(), 1024u);  // NUL-padded first block
}
