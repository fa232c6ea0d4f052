#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "common/failure.h"
#include "items/clsItem.h"
#include "scripted_desktop.h"
#include "wine_bench.h"

using corvan::clsItem;

namespace {

struct ItemEvents : corvan::clsItemEvents {
    void FileDownloadProgress(float Percent, const std::string& status) override {
        log.push_back("progress " + std::to_string(Percent) + " " + status);
    }
    void StatusMessageUpdate(const std::string& status) override { log.push_back("status " + status); }
    std::vector<std::string> log;
};

class ItemDownload : public ::testing::Test {
protected:
    void SetUp() override {
        const char* url = std::getenv("CORVAN_HTTP_URL");
        if (!url) GTEST_SKIP() << "CORVAN_HTTP_URL not set: the http fixture did not start";
        server = url;
        item.Source(server + "size/");
    }
    // The failure the download raises; number 0 when it raises none.
    corvan::Failure Raised() try {
        item.DownloadItemFile();
        return {0, "", ""};
    } catch (const corvan::Failure& failure) {
        return failure;
    }

    std::string server;
    winbench::ScratchFolder folder{"item-download"};
    testing_support::ScriptedDesktop desktop;
    ItemEvents events;
    clsItem item{desktop, &events};
};

}  // namespace

TEST_F(ItemDownload, MakesTheFolderAndRelaysProgress) {
    item.FileName("2048");
    item.Productname("Corvan Viewer");
    item.InstallFolder(folder.Path() + "deep\\er");
    item.InstallFileName("viewer.bin");
    item.DownloadItemFile();

    const std::string target = folder.Path() + "deep\\er\\viewer.bin";
    EXPECT_EQ(winbench::ReadFileBytes(target).size(), 2048u);
    EXPECT_EQ(item.StoredInstallFolder(), folder.Path() + "deep\\er\\");
    EXPECT_EQ(events.log, (std::vector<std::string>{
                              "status Downloading Corvan Viewer",
                              "progress 0.500000 1024 bytes of 2048 bytes read ",
                              "progress 1.000000 2048 bytes of 2048 bytes read ",
                              "progress 1.000000 2048 bytes of 2048 bytes read ",
                              "progress 1.000000 2048 bytes of 2048 bytes read ",
                          }));
    // Once for the status message, once for each folder made, once for each
    // block after the first.
    EXPECT_EQ(desktop.pumps, 5);
}

TEST_F(ItemDownload, WithoutProductNameShowsTheFileAndKeepsItsName) {
    item.FileName("300");
    item.InstallFolder(folder.Path());
    item.DownloadItemFile();
    EXPECT_EQ(events.log.front(), "status Downloading 300");
    EXPECT_EQ(winbench::ReadFileBytes(folder.Path() + "300").size(), 1024u);
}

TEST_F(ItemDownload, FailuresRaiseTheirErrorsAndLeaveNoFile) {
    item.Source(server + "status/");
    item.FileName("404");
    item.InstallFolder(folder.Path());
    const corvan::Failure missing = Raised();
    EXPECT_EQ(missing.Number(), static_cast<int32_t>(0x80040064));
    EXPECT_EQ(missing.Source(), "Corvan.clsInstall.PrepInstaller");
    EXPECT_EQ(missing.Description(),
              "Could not locate '404' on remote host.\r\nPlease contact the help desk for farther assistance.");
    EXPECT_FALSE(winbench::FileExists(folder.Path() + "404"));

    // A folder that cannot be made raises the file system's error.
    winbench::WriteFileBytes(folder.Path() + "plain.txt", "x");
    item.Source(server + "size/");
    item.FileName("300");
    item.InstallFolder(folder.Path() + "plain.txt\\sub");
    EXPECT_EQ(Raised().Number(), 76);
    EXPECT_FALSE(winbench::FileExists(folder.Path() + "plain.txt\\sub\\300"));
}

// Folders are made below their drive, share or root, written with
// backslashes or slashes; a share that cannot be reached is the folder's
// failure, not the server's, and leaves nothing behind on the local drive.
TEST_F(ItemDownload, FoldersAreMadeBelowTheirRoot) {
    char current[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, current);
    SetCurrentDirectoryA(folder.Path().c_str());  // the root "\" is this folder's drive
    winbench::RemoveTree("C:\\corvan-item-rooted");
    std::string slashed = folder.Path() + "slashed/deep/";
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    const struct { std::string installFolder, file; int32_t error; } cases[] = {
        {"\\corvan-item-rooted\\", "C:\\corvan-item-rooted\\300", 0},
        {slashed, folder.Path() + "slashed\\deep\\300", 0},
        {"\\\\corvan-no-such-server\\share\\dir\\", "C:\\corvan-no-such-server", 76},
    };
    item.FileName("300");
    for (const auto& c : cases) {
        item.InstallFolder(c.installFolder);
        EXPECT_EQ(Raised().Number(), c.error) << c.installFolder;
        EXPECT_EQ(winbench::FileExists(c.file), c.error == 0) << c.installFolder;
    }
    SetCurrentDirectoryA(current);
    winbench::RemoveTree("C:\\corvan-item-rooted");
}
