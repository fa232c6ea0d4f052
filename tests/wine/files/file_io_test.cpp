#include <gtest/gtest.h>

#include <vector>

#include "common/failure.h"
#include <olectl.h>

#include "files/clsFileIO.h"
#include "files_test_support.h"
#include "wine_bench.h"

using corvan::clsFileIO;
using corvan::Failure;
using winbench::ReadFileBytes;
using winbench::WriteFileBytes;

namespace {

int FilesIn(const std::string& folder) {
    WIN32_FIND_DATAA data;
    HANDLE find = FindFirstFileA((folder + "*").c_str(), &data);
    int count = 0;
    if (find == INVALID_HANDLE_VALUE) return 0;
    do {
        if (!(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) ++count;
    } while (FindNextFileA(find, &data));
    FindClose(find);
    return count;
}

class Percents : public corvan::CRCProgressListener {
public:
    void CRCProgress(int16_t& Percent) override { seen.push_back(Percent); }
    std::vector<int> seen;
};

}  // namespace

TEST(FileIO, RowsCountCarriageReturnsAndLoseTheirLineBreaks) {
    winbench::ScratchFolder scratch("files-rows");
    clsFileIO file;

    WriteFileBytes(scratch.Path() + "open-end.scl", "first,row\r\nsecond,row");
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "open-end.scl"));
    EXPECT_EQ(file.Status(), "Open");
    EXPECT_EQ(file.RowCount(), 1);
    EXPECT_EQ(file.GetRow(1), "first,row");
    EXPECT_EQ(file.GetRow(2), "second,row") << "the unterminated line is still there when asked for";
    EXPECT_EQ(file.GetRow(3), "");
    EXPECT_EQ(file.GetRow(0), "");

    WriteFileBytes(scratch.Path() + "closed-end.scl", "a\r\n\r\nc\r\n");
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "closed-end.scl"));
    EXPECT_EQ(file.Contents(), "a\r\n\r\nc\r\n");
    EXPECT_EQ(file.RowCount(), 3);
    EXPECT_EQ(file.GetRow(1), "a");
    EXPECT_EQ(file.GetRow(2), "");
    EXPECT_EQ(file.GetRow(3), "c");
    EXPECT_EQ(file.GetRow(4), "");

    // Line feeds alone do not make rows.
    WriteFileBytes(scratch.Path() + "unix.scl", "a\nb\n");
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "unix.scl"));
    EXPECT_EQ(file.RowCount(), 0);

    WriteFileBytes(scratch.Path() + "empty.scl", "");
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "empty.scl"));
    EXPECT_EQ(file.RowCount(), 0);
    EXPECT_EQ(file.Contents(), "");
    EXPECT_EQ(file.GetRow(1), "");

    // A missing file gives false and no rows of the file before.
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "closed-end.scl"));
    EXPECT_FALSE(file.OpenFile(scratch.Path() + "missing.scl"));
    EXPECT_EQ(file.RowCount(), 0);
    EXPECT_EQ(file.Contents(), "");
}

TEST(FileIO, WriteTextNeedsAnOpenFile) {
    winbench::ScratchFolder scratch("files-write-closed");
    clsFileIO file;
    auto expectRefused = [&] {
        try {
            file.WriteText("x");
            FAIL() << "no error";
        } catch (const Failure& f) {
            EXPECT_EQ(f.Source(), "clsFileIO.WriteText");
            EXPECT_EQ(f.Description(),
                      "The file is not opened for writing. Please close the file, and reopen it for writing, or "
                      "appending.");
        }
    };
    expectRefused();
    file.CreateFile(scratch.Path() + "list.scl");
    file.CloseFile();
    expectRefused();
    EXPECT_EQ(ReadFileBytes(scratch.Path() + "list.scl"), "");
}

TEST(FileIO, CreateReplacesOnFirstWriteThenAppends) {
    winbench::ScratchFolder scratch("files-create");
    const std::string path = scratch.Path() + "SC_Uninstall.scl";
    clsFileIO file;

    file.CreateFile(path);
    EXPECT_TRUE(winbench::FileExists(path)) << "created at once";
    EXPECT_EQ(file.Status(), "Write");
    file.WriteText("row1\r\n");
    file.WriteText("row2\r\n");
    file.CloseFile();
    EXPECT_EQ(ReadFileBytes(path), "row1\r\nrow2\r\n");

    // Created again and never written: the text stays.
    file.CreateFile(path);
    file.CloseFile();
    EXPECT_EQ(ReadFileBytes(path), "row1\r\nrow2\r\n");

    file.CreateFile(path);
    file.WriteText("new\r\n");
    EXPECT_EQ(ReadFileBytes(path), "new\r\n");
    file.WriteText("more");
    EXPECT_EQ(ReadFileBytes(path), "new\r\nmore");
    EXPECT_EQ(file.RowCount(), 1);
    file.CloseFile();

    // After OpenFile each write is the whole text.
    ASSERT_TRUE(file.OpenFile(path));
    file.WriteText("A\r\n");
    file.WriteText("B\r\n");
    EXPECT_EQ(ReadFileBytes(path), "B\r\n");
    EXPECT_EQ(file.Contents(), "B\r\n");
    EXPECT_EQ(FilesIn(scratch.Path()), 1) << "no temporary file left behind";

    try {
        file.CreateFile(scratch.Path() + "no-such-folder\\list.scl");
        FAIL() << "no error";
    } catch (const Failure& f) {
        EXPECT_EQ(f.Number(), 76);
    }
}

// A replacement that cannot take the old file's place leaves the old text
// whole and no stray file beside it.
TEST(FileIO, FailedReplacementKeepsTheOldText) {
    winbench::ScratchFolder scratch("files-replace-fails");
    const std::string path = scratch.Path() + "SC_Install.scl";
    WriteFileBytes(path, "old text\r\n");
    clsFileIO file;
    ASSERT_TRUE(file.OpenFile(path));
    ASSERT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_THROW(file.WriteText("new text\r\n"), Failure);
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(ReadFileBytes(path), "old text\r\n");
    EXPECT_EQ(file.Contents(), "old text\r\n");
    EXPECT_EQ(FilesIn(scratch.Path()), 1);
}

TEST(FileIO, VersionFromTheResource) {
    winbench::ScratchFolder scratch("files-version");
    clsFileIO file;
    ASSERT_TRUE(file.OpenFile(files_tests::ChildPath()));
    EXPECT_EQ(file.VersionNumber(), "1.2.30.4");
    WriteFileBytes(scratch.Path() + "plain.txt", "no resource here");
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "plain.txt"));
    EXPECT_EQ(file.VersionNumber(), "0.0.0.0");
    file.OpenFile(scratch.Path() + "missing.dll");
    EXPECT_EQ(file.VersionNumber(), "0.0.0.0");
}

TEST(FileIO, CrcTextAndItsProgress) {
    winbench::ScratchFolder scratch("files-crc");
    Percents percents;
    clsFileIO file(&percents);

    WriteFileBytes(scratch.Path() + "small.bin", "corvan-165019");  // CRC 00009923
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "small.bin"));
    EXPECT_EQ(file.CRC32(), "9923");

    WriteFileBytes(scratch.Path() + "check.bin", "123456789");
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "check.bin"));
    EXPECT_EQ(file.CRC32(), "CBF43926");

    WriteFileBytes(scratch.Path() + "empty.bin", "");
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "empty.bin"));
    EXPECT_EQ(file.CRC32(), "0");

    percents.seen.clear();
    WriteFileBytes(scratch.Path() + "large.bin", std::string(20000, 'x'));
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "large.bin"));
    file.CRC32();
    EXPECT_EQ(percents.seen, (std::vector<int>{41, 82, 100}));
    // The stream is closed at the end: the file can go at once.
    EXPECT_TRUE(DeleteFileA((scratch.Path() + "large.bin").c_str()));

    file.OpenFile(scratch.Path() + "gone.bin");
    try {
        file.CRC32();
        FAIL() << "no error";
    } catch (const Failure& f) {
        EXPECT_EQ(f.Number(), 53);
        EXPECT_EQ(f.Source(), "CorvanInstaller.File");
    }
}

TEST(FileIO, ShellFacts) {
    CoInitialize(nullptr);
    winbench::ScratchFolder scratch("files-shell");
    WriteFileBytes(scratch.Path() + "note.txt", "hello");
    clsFileIO file;
    ASSERT_TRUE(file.OpenFile(scratch.Path() + "note.txt"));
    EXPECT_EQ(file.Length(), 5);
    EXPECT_EQ(file.FileInfo().size, 5);
    // Wine's shell answers no detail column (GetDetailsOf is not
    // implemented there); the walk must still end with an empty text.
    EXPECT_EQ(file.GetFileSummaryItem("No Such Column"), "");
    EXPECT_EQ(file.Comments(), "");
    EXPECT_NE(file.GetFileTypeName(), "");
    HICON icon = file.GetIcon();
    ASSERT_NE(icon, nullptr);
    IPicture* picture = clsFileIO::IconToPicture(icon);
    ASSERT_NE(picture, nullptr);
    SHORT type = 0;
    picture->get_Type(&type);
    EXPECT_EQ(type, PICTYPE_ICON);
    picture->Release();
    CoUninitialize();
}
