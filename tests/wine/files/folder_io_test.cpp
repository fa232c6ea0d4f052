#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include "common/failure.h"
#include "files/clsFolderIO.h"
#include "files_test_support.h"
#include "scripted_desktop.h"
#include "wine_bench.h"

using corvan::clsFolderIO;
using files_tests::Raised;
using testing_support::ScriptedDesktop;
using winbench::FileExists;
using winbench::WriteFileBytes;

namespace {

bool FolderExists(const std::string& path) { return std::filesystem::is_directory(path); }

// scratch\tree\{a.txt (3 bytes), b.txt (4 bytes), sub\c.txt (5 bytes), empty\}
std::string MakeTree(const std::string& scratch) {
    const std::string tree = scratch + "tree";
    std::filesystem::create_directories(tree + "\\sub");
    std::filesystem::create_directories(tree + "\\empty");
    WriteFileBytes(tree + "\\a.txt", "aaa");
    WriteFileBytes(tree + "\\b.txt", "bbbb");
    WriteFileBytes(tree + "\\sub\\c.txt", "ccccc");
    return tree;
}

// Links to folders, as junctions and symbolic links are. Wine makes
// neither, but shows a Unix symbolic link to a folder as one, so the links
// are made (and, since Wine cannot remove them, taken away) by the Unix
// tools. Their Unix names come from Wine itself.
class FolderLinks {
public:
    ~FolderLinks() {
        for (const std::string& link : made_) {
            Unix("/bin/rm -f \"" + UnixName(link) + "\"");
            WaitFor([&] { return GetFileAttributesA(link.c_str()) == INVALID_FILE_ATTRIBUTES; });
        }
    }
    void Make(const std::string& link, const std::string& target) {
        Unix("/bin/ln -s \"" + UnixName(target) + "\" \"" + UnixName(link) + "\"");
        made_.push_back(link);
        ASSERT_TRUE(WaitFor([&] {
            const DWORD attributes = GetFileAttributesA(link.c_str());
            return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT);
        })) << link;
    }

private:
    static std::string UnixName(const std::string& path) {
        // The parent exists; the link itself may not yet.
        const size_t slash = path.find_last_of('\\');
        using Convert = char*(CDECL*)(LPCWSTR);
        static const auto convert = reinterpret_cast<Convert>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
        if (!convert) return {};
        const std::filesystem::path parent(path.substr(0, slash));
        char* name = convert(parent.wstring().c_str());
        if (!name) return {};
        std::string unix = std::string(name) + "/" + path.substr(slash + 1);
        HeapFree(GetProcessHeap(), 0, name);
        return unix;
    }
    // Wine does not wait for a Unix program to end: its work is watched for.
    static void Unix(const std::string& command) { winbench::RunAndWait(command, 10000); }
    template <typename Done>
    static bool WaitFor(Done done) {
        for (int i = 0; i < 500 && !done(); ++i) Sleep(10);
        return done();
    }

    std::vector<std::string> made_;
};

}  // namespace

// A link inside the folder is a leaf: nothing is deleted, counted or copied
// through it, and a link back up does not send the walks round in circles.
TEST(FolderIO, LinksAreLeaves) {
    winbench::ScratchFolder scratch("folders-links");
    const std::string tree = MakeTree(scratch.Path()), outside = scratch.Path() + "outside";
    std::filesystem::create_directories(outside);
    WriteFileBytes(outside + "\\keep.txt", "kept");
    FolderLinks links;
    links.Make(tree + "\\elsewhere", outside);
    links.Make(tree + "\\sub\\up", tree);
    ScriptedDesktop desktop;
    clsFolderIO folder(desktop);
    ASSERT_TRUE(folder.OpenFolder(tree));

    EXPECT_EQ(folder.Size(), 12.0);
    EXPECT_EQ(folder.Copy(scratch.Path() + "copy", false, false), 0);
    EXPECT_EQ(winbench::ReadFileBytes(scratch.Path() + "copy\\sub\\c.txt"), "ccccc");
    EXPECT_FALSE(FolderExists(scratch.Path() + "copy\\elsewhere"));
    EXPECT_FALSE(FolderExists(scratch.Path() + "copy\\sub\\up"));

    // Wine cannot remove a link; Windows removes the link itself. Either way
    // what it points to stays whole.
    const int32_t deleted = folder.Delete(true, false);
    EXPECT_EQ(winbench::ReadFileBytes(outside + "\\keep.txt"), "kept");
    if (deleted == 0) {
        EXPECT_FALSE(FolderExists(tree));
    }
}

TEST(FolderIO, OpensAndAnswersQuestions) {
    winbench::ScratchFolder scratch("folders-query");
    const std::string tree = MakeTree(scratch.Path());
    ScriptedDesktop desktop;
    clsFolderIO folder(desktop);

    EXPECT_THROW(folder.FileCount(), corvan::Failure) << "nothing open yet";
    EXPECT_FALSE(folder.OpenFolder(""));
    EXPECT_EQ(desktop.pumps, 0);
    ASSERT_TRUE(folder.OpenFolder(tree + "\\"));
    EXPECT_EQ(desktop.pumps, 1);
    EXPECT_EQ(folder.path(), tree);
    EXPECT_FALSE(folder.OpenFolder("")) << "an empty path keeps the folder";
    EXPECT_EQ(folder.path(), tree);

    EXPECT_EQ(folder.FileCount(), 2);
    EXPECT_EQ(folder.SubFolderCount(), 2);
    auto subs = folder.SubFolders();
    std::sort(subs.begin(), subs.end());
    EXPECT_EQ(subs, (std::vector<std::string>{"empty", "sub"}));
    EXPECT_EQ(folder.Size(), 12.0);
    EXPECT_FALSE(folder.IsRootFolder());
    EXPECT_EQ(folder.HardDrive(), "C:");
    EXPECT_EQ(folder.ParentPath() + "\\", scratch.Path());

    EXPECT_EQ(folder.CreateFolder("new"), tree + "\\new");
    EXPECT_TRUE(FolderExists(tree + "\\new"));
    EXPECT_EQ(Raised([&] { folder.CreateFolder("new"); }).Number(), 58);
    EXPECT_EQ(Raised([&] { folder.OpenFolder(tree + "\\missing"); }).Number(), 76);
    EXPECT_EQ(folder.path(), tree);

    ASSERT_TRUE(folder.OpenFolder("C:\\"));
    EXPECT_TRUE(folder.IsRootFolder());
    EXPECT_EQ(folder.ParentPath(), "");
}

// Every box carries the title "Delete...", whatever it asks; No does
// nothing. Move without a box is a type mismatch (13) that moves nothing.
TEST(FolderIO, ConfirmationBoxesAndMoveWithoutOne) {
    winbench::ScratchFolder scratch("folders-confirm");
    const std::string tree = MakeTree(scratch.Path()), moved = scratch.Path() + "moved";
    ScriptedDesktop desktop;
    clsFolderIO folder(desktop);
    ASSERT_TRUE(folder.OpenFolder(tree));
    for (int i = 0; i < 3; ++i) desktop.Answer(corvan::msgbox::vbNo);
    EXPECT_EQ(folder.Delete(true, true), 0);
    EXPECT_EQ(folder.Move(moved, true), 0);
    EXPECT_EQ(folder.Copy(scratch.Path() + "copied", true, true), 0);
    EXPECT_EQ(folder.Move(moved, false), 13);
    ASSERT_EQ(desktop.boxes.size(), 3u);
    const char* verbs[] = {"delete", "move", "copy"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(desktop.boxes[i].text, std::string("Are you sure you want to ") + verbs[i] + " the selected directory?");
        EXPECT_EQ(desktop.boxes[i].title, "Delete...");
        EXPECT_EQ(desktop.boxes[i].style, 292);
    }
    EXPECT_TRUE(FileExists(tree + "\\sub\\c.txt"));
    EXPECT_FALSE(FolderExists(moved));
    EXPECT_FALSE(FolderExists(scratch.Path() + "copied"));

    desktop.Answer(corvan::msgbox::vbYes);
    EXPECT_EQ(folder.Move(moved, true), 0);
    EXPECT_TRUE(FileExists(moved + "\\sub\\c.txt"));
    EXPECT_FALSE(FolderExists(tree));
    EXPECT_EQ(folder.path(), moved);
}

TEST(FolderIO, CopyAndDeleteReportErrorNumbers) {
    winbench::ScratchFolder scratch("folders-copy");
    const std::string tree = MakeTree(scratch.Path());
    const std::string copy = scratch.Path() + "copy";
    ScriptedDesktop desktop;
    clsFolderIO folder(desktop);
    ASSERT_TRUE(folder.OpenFolder(tree));

    EXPECT_EQ(folder.Copy(copy, false, false), 0);
    EXPECT_EQ(winbench::ReadFileBytes(copy + "\\sub\\c.txt"), "ccccc");
    EXPECT_TRUE(FolderExists(copy + "\\empty"));
    DeleteFileA((copy + "\\a.txt").c_str());
    EXPECT_EQ(folder.Copy(copy, false, false), 58) << "sub\\c.txt is there";
    EXPECT_FALSE(FileExists(copy + "\\a.txt")) << "a refused copy copies nothing";
    WriteFileBytes(tree + "\\a.txt", "changed");
    EXPECT_EQ(folder.Copy(copy, true, false), 0);
    EXPECT_EQ(winbench::ReadFileBytes(copy + "\\a.txt"), "changed");
    CreateDirectoryA((scratch.Path() + "into").c_str(), nullptr);
    EXPECT_EQ(folder.Copy(scratch.Path() + "into\\", true, false), 0) << "a trailing backslash copies into the folder";
    EXPECT_TRUE(FileExists(scratch.Path() + "into\\tree\\sub\\c.txt"));
    EXPECT_EQ(folder.Copy(tree + "\\inside", true, false), 5);
    EXPECT_FALSE(FolderExists(tree + "\\inside"));

    SetFileAttributesA((tree + "\\sub\\c.txt").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(folder.Delete(false, false), 70);
    EXPECT_TRUE(FileExists(tree + "\\sub\\c.txt"));
    EXPECT_TRUE(FileExists(tree + "\\a.txt")) << "a refused delete deletes nothing";
    desktop.Answer(corvan::msgbox::vbYes);
    EXPECT_EQ(folder.Delete(true, true), 0);
    EXPECT_FALSE(FolderExists(tree));
    EXPECT_EQ(folder.Delete(true, false), 76) << "already gone";
}

// Adds a window's text to the vector at `texts` (a WNDENUMPROC: stdcall on
// x86, which a lambda does not convert to).
BOOL CALLBACK KeepText(HWND window, LPARAM texts) {
    char text[256] = {};
    GetWindowTextA(window, text, sizeof text);
    reinterpret_cast<std::vector<std::string>*>(texts)->push_back(text);
    return TRUE;
}

// The browser shows "Please select a folder:"; cancelling it gives an empty
// text.
TEST(FolderIO, CancelledBrowserGivesEmptyText) {
    ScriptedDesktop desktop;
    clsFolderIO folder(desktop);
    std::vector<std::string> texts;  // of the dialog's own windows, read before it is cancelled
    std::thread canceller([&texts] {
        for (int i = 0; i < 400; ++i) {
            Sleep(50);
            HWND box = FindWindowA("#32770", nullptr);
            DWORD pid = 0;
            if (box) GetWindowThreadProcessId(box, &pid);
            if (box && pid == GetCurrentProcessId()) {
                EnumChildWindows(box, &KeepText, reinterpret_cast<LPARAM>(&texts));
                PostMessageA(box, WM_COMMAND, IDCANCEL, 0);
                return;
            }
        }
    });
    EXPECT_EQ(folder.GetFolder(nullptr), "");
    canceller.join();
    EXPECT_NE(std::find(texts.begin(), texts.end(), "Please select a folder:"), texts.end())
        << (texts.empty() ? "no dialog appeared" : testing::PrintToString(texts));
}
