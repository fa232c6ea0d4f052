// Files, folders and processes on the prefix's real file system.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <thread>

#include <olectl.h>

#include "failing_allocation.h"
#include "harness.h"
#include "files/clsFileIO.h"
#include "files/clsFolderIO.h"
#include "files/clsShell.h"
#include "raised.h"
#include "scripted_desktop.h"
#include "wine_bench.h"

using namespace corvan;
using testing_support::Raised;
using winbench::FileExists;
using winbench::ReadFileBytes;
using winbench::WriteFileBytes;

namespace {

const std::string kChild = winbench::BesideThisProgram("files_child.exe");

long FilesIn(const std::string& folder) { return std::distance(std::filesystem::directory_iterator(folder), {}); }

struct Percents : CRCProgressListener {
    void CRCProgress(int16_t& Percent) override { seen.push_back(Percent); }
    std::vector<int> seen;
};

// scratch\tree\{a.txt, b.txt, sub\c.txt, empty\}: 12 bytes in all.
std::string MakeTree(const std::string& scratch) {
    const std::string tree = scratch + "tree";
    std::filesystem::create_directories(tree + "\\sub");
    std::filesystem::create_directories(tree + "\\empty");
    WriteFileBytes(tree + "\\a.txt", "aaa");
    WriteFileBytes(tree + "\\b.txt", "bbbb");
    WriteFileBytes(tree + "\\sub\\c.txt", "ccccc");
    return tree;
}

}  // namespace

// Only carriage returns count; GetRow still hands out an unterminated last
// line. A missing file, or one too large for the memory left, gives false
// and no rows of the file before.
TEST(FileIO, RowsAndFilesThatCannotBeRead) {
    winbench::ScratchFolder scratch("files-rows");
    const struct { std::string text; int32_t count; std::vector<std::string> rows; } cases[] = {
        {"first,row\r\nsecond,row", 1, {"", "first,row", "second,row", ""}},
        {"a\nb\n", 0, {}},
        {"", 0, {"", ""}},
        {"a\r\n\r\nc\r\n", 3, {"", "a", "", "c", ""}},
    };
    clsFileIO file;
    for (const auto& c : cases) {
        WriteFileBytes(scratch.Path() + "list.scl", c.text);
        ASSERT_TRUE(file.OpenFile(scratch.Path() + "list.scl"));
        EXPECT_EQ(file.Status(), "Open");
        EXPECT_EQ(file.Contents(), c.text);
        EXPECT_EQ(file.RowCount(), c.count) << c.text;
        for (size_t row = 0; row < c.rows.size(); ++row)
            EXPECT_EQ(file.GetRow(static_cast<int32_t>(row)), c.rows[row]) << c.text << ": row " << row;
    }
    const std::string large = scratch.Path() + "large.scl";
    HANDLE handle = CreateFileA(large.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    LARGE_INTEGER size{};
    size.QuadPart = 96 << 20;
    ASSERT_TRUE(SetFilePointerEx(handle, size, nullptr, FILE_BEGIN) && SetEndOfFile(handle) && CloseHandle(handle));
    for (const auto& [path, status] : {std::pair<std::string, const char*>{scratch.Path() + "missing", "File not found"},
                                       {large, "Out of memory"}}) {
        ASSERT_TRUE(file.OpenFile(scratch.Path() + "list.scl"));
        testing_support::AllocationsFail memoryRunsOut(64 << 20);
        EXPECT_FALSE(file.OpenFile(path)) << path;
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
        EXPECT_EQ(f.Source(), "clsFileIO.WriteText");
        EXPECT_EQ(f.Description(), "The file is not opened for writing. Please close the file, and reopen it for "
                                   "writing, or appending.");
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
    EXPECT_EQ(file.Contents(), "");
    EXPECT_EQ(file.GetRow(1), "");
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
    EXPECT_EQ(file.Contents(), "B\r\n");
    ASSERT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_THROW(file.WriteText("lost\r\n"), Failure);
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(ReadFileBytes(path), "B\r\n");
    EXPECT_EQ(file.Contents(), "B\r\n");
    EXPECT_EQ(FilesIn(scratch.Path()), 1) << "no temporary file left behind";
    EXPECT_EQ(Raised([&] { file.CreateFile(scratch.Path() + "no-such-folder\\list.scl"); }).Number(), 76);
}

// The version resource, the CRC as upper-case hexadecimal without leading
// zeros with its progress passed on and its stream closed at the end, and
// the file's icon as a picture.
TEST(FileIO, VersionCrcAndShellFacts) {
    CoInitialize(nullptr);
    winbench::ScratchFolder scratch("files-facts");
    Percents percents;
    clsFileIO file(&percents);
    ASSERT_TRUE(file.OpenFile(kChild));
    EXPECT_EQ(file.VersionNumber(), "1.2.30.4");
    for (const auto& [text, crc] : {std::pair<std::string, std::string>{"corvan-165019", "9923"}, {"", "0"}}) {
        WriteFileBytes(scratch.Path() + "small.txt", text);
        ASSERT_TRUE(file.OpenFile(scratch.Path() + "small.txt"));
        EXPECT_EQ(file.CRC32(), crc) << text;
        EXPECT_EQ(file.VersionNumber(), "0.0.0.0");
    }
    const std::string large = scratch.Path() + "large.bin";
    WriteFileBytes(large, std::string(8193, 'x'));
    ASSERT_TRUE(file.OpenFile(large));
    percents.seen.clear();
    file.CRC32();
    EXPECT_EQ(percents.seen, (std::vector<int>{100, 100}));
    EXPECT_EQ(file.Length(), 8193);
    EXPECT_EQ(file.FileInfo().size, 8193);
    IPicture* picture = clsFileIO::IconToPicture(file.GetIcon());
    ASSERT_NE(picture, nullptr);
    SHORT type = 0;
    picture->get_Type(&type);
    EXPECT_EQ(type, PICTYPE_ICON);
    picture->Release();
    EXPECT_TRUE(DeleteFileA(large.c_str()));
    file.OpenFile(large);
    EXPECT_EQ(Raised([&] { file.CRC32(); }).Number(), 53);
    EXPECT_EQ(file.VersionNumber(), "0.0.0.0");
    CoUninitialize();
}

TEST(FolderIO, OpensAndAnswersQuestions) {
    winbench::ScratchFolder scratch("folders-query");
    const std::string tree = MakeTree(scratch.Path());
    testing_support::ScriptedDesktop desktop;
    clsFolderIO folder(desktop);
    EXPECT_THROW(folder.FileCount(), Failure) << "nothing open yet";
    EXPECT_FALSE(folder.OpenFolder(""));
    ASSERT_TRUE(folder.OpenFolder(tree + "\\"));
    EXPECT_EQ(desktop.pumps, 1);
    EXPECT_FALSE(folder.OpenFolder("")) << "an empty path keeps the folder";
    EXPECT_EQ(Raised([&] { folder.OpenFolder(tree + "\\missing"); }).Number(), 76);
    EXPECT_EQ(folder.path(), tree);
    EXPECT_EQ(folder.FileCount(), 2);
    auto subs = folder.SubFolders();
    std::sort(subs.begin(), subs.end());
    EXPECT_EQ(subs, (std::vector<std::string>{"empty", "sub"}));
    EXPECT_EQ(folder.SubFolderCount(), 2);
    EXPECT_EQ(folder.Size(), 12.0);
    EXPECT_FALSE(folder.IsRootFolder());
    EXPECT_EQ(folder.HardDrive(), "C:");
    EXPECT_EQ(folder.ParentPath() + "\\", scratch.Path());
    EXPECT_EQ(folder.CreateFolder("new"), tree + "\\new");
    EXPECT_TRUE(FileExists(tree + "\\new"));
    EXPECT_EQ(Raised([&] { folder.CreateFolder("new"); }).Number(), 58);
    ASSERT_TRUE(folder.OpenFolder("C:\\"));
    EXPECT_TRUE(folder.IsRootFolder());
    EXPECT_EQ(folder.ParentPath(), "");
}

// The cases of files.txt [folder].
TEST(FolderIO, CopyMoveAndDelete) {
    for (const auto& row : unit_table::Table("files.txt", "folder")) {
        SCOPED_TRACE(row.where + ": " + row[0]);
        winbench::ScratchFolder scratch("folders-ops");
        const std::string& s = scratch.Path();
        testing_support::ScriptedDesktop desktop;
        clsFolderIO folder(desktop);
        ASSERT_TRUE(folder.OpenFolder(MakeTree(s)));
        for (const std::string& step : unit_table::Split(row[1], ';')) {
            std::string verb, path;
            std::istringstream(step) >> verb >> path;
            const std::string name = s + path.substr(0, path.find('='));
            if (verb == "tree") MakeTree(name);
            if (verb == "delete") DeleteFileA(name.c_str());
            if (verb == "write") WriteFileBytes(name, path.substr(path.find('=') + 1));
            if (verb == "mkdir") CreateDirectoryA(name.c_str(), nullptr);
            if (verb == "readonly") SetFileAttributesA(name.c_str(), FILE_ATTRIBUTE_READONLY);
            if (verb == "remove") winbench::RemoveTree(name);
        }
        if (row[2] != "-") desktop.Answer(row[2] == "Yes" ? msgbox::vbYes : msgbox::vbNo);
        std::string verb, a, b, c;
        std::istringstream(row[3]) >> verb >> a >> b >> c;
        EXPECT_EQ(std::to_string(verb == "copy"   ? folder.Copy(s + a, b == "1", c == "1")
                                 : verb == "move" ? folder.Move(s + a, b == "1")
                                                  : folder.Delete(a == "1", b == "1")),
                  row[4]);
        if (verb == "move" && row[2] == "Yes") EXPECT_EQ(folder.path(), s + a);
        ASSERT_EQ(desktop.boxes.size(), row[2] == "-" ? 0u : 1u);
        for (const auto& box : desktop.boxes)
            EXPECT_EQ(box.text + "|" + box.title + "|" + std::to_string(box.style),
                      "Are you sure you want to " + verb + " the selected directory?|Delete...|292");
        for (const std::string& entry : unit_table::Split(row[5], ' ')) {
            const size_t eq = entry.find('=');
            EXPECT_TRUE(FileExists(s + entry.substr(0, eq))) << entry;
            if (eq != std::string::npos) EXPECT_EQ(ReadFileBytes(s + entry.substr(0, eq)), entry.substr(eq + 1));
        }
        for (const std::string& entry : unit_table::Split(row[6], ' ')) EXPECT_FALSE(FileExists(s + entry)) << entry;
        SetFileAttributesA((s + "tree\\sub\\c.txt").c_str(), FILE_ATTRIBUTE_NORMAL);
    }
}

// A link inside the folder is a leaf: nothing is deleted, counted or copied
// through it, and a link back up does not send the walks round in circles.
// Wine makes no junctions but shows a Unix symbolic link to a folder as one,
// so the links are made (and, since Wine cannot remove them, taken away) by
// the Unix tools, under the Unix names Wine gives.
TEST(FolderIO, LinksAreLeaves) {
    winbench::ScratchFolder scratch("folders-links");
    const std::string tree = MakeTree(scratch.Path()), outside = scratch.Path() + "outside";
    std::filesystem::create_directories(outside);
    WriteFileBytes(outside + "\\keep.txt", "kept");
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
    const std::pair<std::string, std::string> links[] = {{tree + "\\sub", tree}, {tree, outside}};
    const char* names[] = {"up", "elsewhere"};
    for (int i = 0; i < 2; ++i) {
        // Wine does not wait for a Unix program to end: its work is watched for.
        winbench::RunAndWait("/bin/ln -s " + unix(links[i].second) + " " + unix(links[i].first) + "/" + names[i], 10000);
        const std::string link = links[i].first + "\\" + names[i];
        ASSERT_TRUE(winbench::WaitFor([&] { return GetFileAttributesA(link.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT &&
                                                   FileExists(link); })) << link;
    }
    testing_support::ScriptedDesktop desktop;
    clsFolderIO folder(desktop);
    ASSERT_TRUE(folder.OpenFolder(tree));
    EXPECT_EQ(folder.Size(), 12.0);
    EXPECT_EQ(folder.Copy(scratch.Path() + "copy", false, false), 0);
    EXPECT_EQ(ReadFileBytes(scratch.Path() + "copy\\sub\\c.txt"), "ccccc");
    EXPECT_FALSE(FileExists(scratch.Path() + "copy\\elsewhere"));
    EXPECT_FALSE(FileExists(scratch.Path() + "copy\\sub\\up"));
    // Wine cannot remove a link, Windows removes the link itself: either way
    // what it points to stays whole.
    if (folder.Delete(true, false) == 0) EXPECT_FALSE(FileExists(tree));
    EXPECT_EQ(ReadFileBytes(outside + "\\keep.txt"), "kept");
    for (const std::string& link : {tree + "\\sub\\up", tree + "\\elsewhere"}) {
        winbench::RunAndWait("/bin/rm -f " + unix(link), 10000);
        winbench::WaitFor([&] { return !FileExists(link); });
    }
}

// Adds a window's text to the vector at `texts` (a WNDENUMPROC: stdcall on
// x86, which a lambda does not convert to).
BOOL CALLBACK KeepText(HWND window, LPARAM texts) {
    char text[256] = {};
    GetWindowTextA(window, text, sizeof text);
    reinterpret_cast<std::vector<std::string>*>(texts)->push_back(text);
    return TRUE;
}

// The browser shows "Please select a folder:"; cancelling it gives an empty text.
TEST(FolderIO, CancelledBrowserGivesEmptyText) {
    testing_support::ScriptedDesktop desktop;
    clsFolderIO folder(desktop);
    std::vector<std::string> texts;  // of the dialog's own windows, read before it is cancelled
    std::thread canceller([&texts] {
        HWND box = nullptr;
        winbench::WaitFor([&] {
            DWORD pid = 0;
            box = FindWindowA("#32770", nullptr);
            if (!box || !GetWindowThreadProcessId(box, &pid) || pid != GetCurrentProcessId()) return false;
            texts.clear();
            EnumChildWindows(box, &KeepText, reinterpret_cast<LPARAM>(&texts));
            return std::find(texts.begin(), texts.end(), "Please select a folder:") != texts.end();
        }, 20000);
        PostMessageA(box, WM_COMMAND, IDCANCEL, 0);
    });
    EXPECT_EQ(folder.GetFolder(nullptr), "");
    canceller.join();
    EXPECT_NE(std::find(texts.begin(), texts.end(), "Please select a folder:"), texts.end())
        << testing::PrintToString(texts);
}

// Wine's GetProcessHandleCount answers 0; asking the handle table about
// every possible value is slower but true everywhere.
DWORD OwnHandleCount() {
    DWORD count = 0, flags = 0;
    for (uintptr_t value = 4; value < (1u << 18); value += 4)
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    return count;
}

// Execute is false only for a program that cannot start (an installer's
// exit code is its own log's business) and leaves no handle behind; with a
// time-out of 0 it returns while the child runs on; the show command
// reaches the child. ShellExec starts a program without waiting.
TEST(Shell, ExecuteAndShellExec) {
    winbench::ScratchFolder scratch("files-shell");
    const std::string mark = scratch.Path() + "done.txt", child = "\"" + kChild + "\" ";
    clsShell shell;
    int32_t forever = -1, zero = 0;
    ASSERT_TRUE(shell.Execute(child + "exit 0", "", forever, 0, 32)) << "warm-up";
    const DWORD before = OwnHandleCount();
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(shell.Execute("C:\\corvan-tests\\no-such-program.exe /q", "title", forever, 0, 32));
        EXPECT_TRUE(shell.Execute(child + "exit 1603", "", forever, 0, 32));
    }
    EXPECT_EQ(forever, -1);
    EXPECT_EQ(OwnHandleCount(), before);
    for (int show : {0, 3}) {
        ASSERT_TRUE(shell.Execute(child + "show \"" + mark + "\"", "", forever, show, 32));
        EXPECT_EQ(ReadFileBytes(mark), "1 " + std::to_string(show));
    }
    DeleteFileA(mark.c_str());
    EXPECT_TRUE(shell.Execute(child + "sleep 3000 \"" + mark + "\"", "", zero, 0, 32));
    EXPECT_FALSE(FileExists(mark)) << "Execute waited for the child";
    EXPECT_TRUE(winbench::WaitFor([&] { return FileExists(mark); }, 60000)) << "the child did not run on";
    DeleteFileA(mark.c_str());
    EXPECT_GT(shell.ShellExec(nullptr, "open", kChild, "sleep 1000 \"" + mark + "\"", "", SW_HIDE), 32);
    EXPECT_TRUE(winbench::WaitFor([&] { return FileExists(mark); }, 60000));
    EXPECT_LE(shell.ShellExec(nullptr, "open", "C:\\corvan-tests\\no-such-program.exe", "", "", SW_HIDE), 32);
}
