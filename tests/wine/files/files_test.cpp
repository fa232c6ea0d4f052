// Files, folders and processes on the prefix's real file system. The
// checksum and its stream are the native tests'.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "files/clsFileIO.h"
#include "files/clsFolderIO.h"
#include "files/clsShell.h"
#include "raised.h"
#include "scripted_desktop.h"
#include "wine_bench.h"

using namespace corvan;
using testing_support::Raised;
using namespace winbench;

const std::string kChild = winbench::BesideThisProgram("files_child.exe");

// Allocations of `failFrom` bytes or more fail, as on a machine whose memory
// has run out. The runtime's other forms of new come through this one; its
// delete is free().
std::atomic<size_t> failFrom{SIZE_MAX};
void* operator new(size_t size) {
    if (size >= failFrom.load()) throw std::bad_alloc();
    if (void* memory = std::malloc(size ? size : 1)) return memory;
    throw std::bad_alloc();
}

// A missing file, or one too large for the memory left, gives false and no
// rows of the file before. How rows are split is the list fuzzers' and the
// e2e table's.
TEST(FileIO, FilesThatCannotBeRead) {
    winbench::ScratchFolder scratch("files-rows");
    WriteFileBytes(scratch.Path() + "list.scl", "a\r\nb\r\n");
    clsFileIO file;
    const std::string large = scratch.Path() + "large.scl";
    WriteFileBytes(large, "");
    std::filesystem::resize_file(large, 96 << 20);
    for (const auto& [path, status] : {std::pair<std::string, const char*>{scratch.Path() + "missing", "File not found"},
                                       {large, "Out of memory"}}) {
        ASSERT_TRUE(file.OpenFile(scratch.Path() + "list.scl"));
        ASSERT_EQ(file.RowCount(), 2);
        failFrom = 64 << 20;
        EXPECT_FALSE(file.OpenFile(path)) << path;
        failFrom = SIZE_MAX;
        EXPECT_EQ(file.Status(), status);
        EXPECT_EQ(file.RowCount(), 0);
        EXPECT_EQ(file.Contents(), "");
    }
}

// CreateFile makes the file at once; its first write replaces it, the next
// ones append; after OpenFile each write is the whole text. A replacement
// that cannot take the old file's place (read-only) keeps the old text.
TEST(FileIO, WritesReplaceOrAppendAndNeverHalfWrite) {
    winbench::ScratchFolder scratch("files-write");
    const std::string path = scratch.Path() + "SC_Uninstall.scl";
    clsFileIO file;
    auto refused = [&] {
        const Failure f = Raised([&] { file.WriteText("x"); });
        EXPECT_EQ(f.Source() + ": " + f.Description(), "clsFileIO.WriteText: The file is not opened for writing. "
                                                        "Please close the file, and reopen it for writing, or appending.");
    };
    refused();
    file.CreateFile(path);
    EXPECT_TRUE(FileExists(path));
    EXPECT_EQ(file.Status(), "Write");
    file.WriteText("row1\r\n");
    file.WriteText("row2\r\n");
    file.CloseFile();
    refused();
    file.CreateFile(path);  // created again and never written: the text stays
    file.CloseFile();
    EXPECT_EQ(ReadFileBytes(path), "row1\r\nrow2\r\n");

    // The rows read before are not the created file's; what the caller sets
    // as Contents is not what the next write appends to.
    ASSERT_TRUE(file.OpenFile(path));
    file.CreateFile(path);
    EXPECT_EQ(file.Contents() + file.GetRow(1), "");
    file.WriteText("new\r\n");
    file.Contents("set by the caller\r\n");
    file.WriteText("more");
    EXPECT_EQ(ReadFileBytes(path), "new\r\nmore");
    EXPECT_EQ(file.RowCount(), 1);
    file.CloseFile();

    ASSERT_TRUE(file.OpenFile(path));
    file.WriteText("A\r\n");
    file.WriteText("B\r\n");
    EXPECT_EQ(ReadFileBytes(path), "B\r\n");
    ASSERT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_THROW(file.WriteText("lost\r\n"), Failure);
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(ReadFileBytes(path) + file.Contents(), "B\r\nB\r\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(scratch.Path()), {}), 1) << "a temporary file left behind";
    EXPECT_EQ(Raised([&] { file.CreateFile(scratch.Path() + "no-such-folder\\list.scl"); }).Number(), 76);
}

// The version resource; a file without one (or none at all) is "0.0.0.0".
TEST(FileIO, Version) {
    clsFileIO file;
    ASSERT_TRUE(file.OpenFile(kChild));
    EXPECT_EQ(file.VersionNumber(), "1.2.30.4");
    file.OpenFile("C:\\corvan-tests\\missing.bin");
    EXPECT_EQ(file.VersionNumber(), "0.0.0.0");
}

// A link inside the folder is a leaf: nothing is deleted, counted or copied
// through it, and a link back up does not send the walks round in circles.
// Wine shows a Unix symbolic link to a folder as a junction but can neither
// make nor remove one, so the Unix tools do, under the Unix names Wine gives.
TEST(FolderIO, LinksAreLeaves) {
    winbench::ScratchFolder scratch("folders-links");
    const std::string tree = scratch.Path() + "tree", outside = scratch.Path() + "outside";
    std::filesystem::create_directories(tree + "\\sub");
    std::filesystem::create_directories(outside);
    for (const char* file : {"tree\\a.txt", "tree\\sub\\c.txt", "outside\\keep.txt"}) WriteFileBytes(scratch.Path() + file, file);
    using Convert = char*(CDECL*)(LPCWSTR);
    const auto unixName = reinterpret_cast<Convert>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
    ASSERT_NE(unixName, nullptr);
    auto unix = [&](const std::string& path) {
        char* name = unixName(std::filesystem::path(path).wstring().c_str());
        const std::string text = name;
        HeapFree(GetProcessHeap(), 0, name);
        return "\"" + text + "\"";
    };
    const std::string links[][2] = {{tree + "\\sub\\up", tree}, {tree + "\\elsewhere", outside}};
    for (const auto& [link, target] : links) {
        // Wine does not wait for a Unix program to end: its work is watched for.
        winbench::RunAndWait("/bin/ln -s " + unix(target) + " " + unix(link), 10000);
        ASSERT_TRUE(winbench::WaitFor([&] { return GetFileAttributesA(link.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT &&
                                                   FileExists(link); })) << link;
    }
    testing_support::ScriptedDesktop desktop;
    clsFolderIO folder(desktop);
    ASSERT_TRUE(folder.OpenFolder(tree));
    EXPECT_EQ(folder.Size(), 24.0);
    EXPECT_EQ(folder.Copy(scratch.Path() + "copy", false, false), 0);
    EXPECT_EQ(ReadFileBytes(scratch.Path() + "copy\\sub\\c.txt"), "tree\\sub\\c.txt");
    EXPECT_FALSE(FileExists(scratch.Path() + "copy\\elsewhere") || FileExists(scratch.Path() + "copy\\sub\\up"));
    // Wine cannot remove a link, Windows removes the link itself.
    if (folder.Delete(true, false) == 0) {
        EXPECT_FALSE(FileExists(tree));
    }
    EXPECT_EQ(ReadFileBytes(outside + "\\keep.txt"), "outside\\keep.txt");
    for (const auto& [link, target] : links) {
        winbench::RunAndWait("/bin/rm -f " + unix(link), 10000);
        winbench::WaitFor([&] { return !FileExists(link); });
    }
}

// The browser shows "Please select a folder:"; cancelling it gives an empty text.
TEST(FolderIO, CancelledBrowserGivesEmptyText) {
    testing_support::ScriptedDesktop desktop;
    clsFolderIO folder(desktop);
    char prompt[64] = {};  // read from the dialog before it is cancelled (finding it ignores case)
    std::thread canceller([&] {
        HWND box = nullptr, text = nullptr;
        winbench::WaitFor([&] {
            DWORD pid = 0;
            box = FindWindowA("#32770", nullptr);
            if (!box || !GetWindowThreadProcessId(box, &pid) || pid != GetCurrentProcessId()) return false;
            return (text = FindWindowExA(box, nullptr, nullptr, "Please select a folder:")) != nullptr;
        }, 20000);
        GetWindowTextA(text, prompt, sizeof prompt);
        PostMessageA(box, WM_COMMAND, IDCANCEL, 0);
    });
    EXPECT_EQ(folder.GetFolder(nullptr), "");
    canceller.join();
    EXPECT_STREQ(prompt, "Please select a folder:");
}

// Wine's GetProcessHandleCount answers 0: every possible handle is asked.
DWORD OwnHandleCount() {
    DWORD count = 0, flags = 0;
    for (uintptr_t value = 4; value < (1u << 18); value += 4)
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    return count;
}

// Execute is false only for a program that cannot start (an installer's
// exit code is its own log's business), waits for the program and leaves no
// handle behind.
TEST(Shell, ExecuteWaitsAndLeavesNoHandle) {
    const std::string child = "\"" + kChild + "\" ";
    clsShell shell;
    int32_t forever = -1;
    ASSERT_TRUE(shell.Execute(child + "exit 0", "", forever, 0, 32)) << "warm-up";
    const DWORD before = OwnHandleCount();
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(shell.Execute("C:\\corvan-tests\\no-such-program.exe /q", "title", forever, 0, 32));
        EXPECT_TRUE(shell.Execute(child + "exit 1603", "", forever, 0, 32));
    }
    EXPECT_EQ(OwnHandleCount(), before);
    const DWORD start = GetTickCount();
    EXPECT_TRUE(shell.Execute(child + "sleep 1500", "", forever, 0, 32));
    EXPECT_GE(GetTickCount() - start, 1500u);
}
