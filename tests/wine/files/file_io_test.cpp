#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "common/failure.h"
#include <olectl.h>

#include "files/clsFileIO.h"
#include "failing_allocation.h"
#include "files_test_support.h"
#include "wine_bench.h"

using corvan::clsFileIO;
using corvan::Failure;
using files_tests::Raised;
using winbench::ReadFileBytes;

namespace {

std::string Put(const winbench::ScratchFolder& scratch, const std::string& name, const std::string& text) {
    winbench::WriteFileBytes(scratch.Path() + name, text);
    return scratch.Path() + name;
}

long FilesIn(const winbench::ScratchFolder& scratch) {
    return std::distance(std::filesystem::directory_iterator(scratch.Path()), {});
}

class Percents : public corvan::CRCProgressListener {
public:
    void CRCProgress(int16_t& Percent) override { seen.push_back(Percent); }
    std::vector<int> seen;
};

}  // namespace

// Only carriage returns count; GetRow still hands out an unterminated last
// line when asked for it.
TEST(FileIO, RowsCountCarriageReturnsAndLoseTheirLineBreaks) {
    winbench::ScratchFolder scratch("files-rows");
    const struct {
        std::string text;
        int32_t count;
        std::vector<std::string> rows;  // GetRow(0), GetRow(1), ...
    } cases[] = {
        {"first,row\r\nsecond,row", 1, {"", "first,row", "second,row", ""}},
        {"a\nb\n", 0, {}},
        {"", 0, {"", ""}},
        {"a\r\n\r\nc\r\n", 3, {"", "a", "", "c", ""}},
    };
    clsFileIO file;
    for (size_t i = 0; i < std::size(cases); ++i) {
        ASSERT_TRUE(file.OpenFile(Put(scratch, std::to_string(i) + ".scl", cases[i].text)));
        EXPECT_EQ(file.Status(), "Open");
        EXPECT_EQ(file.Contents(), cases[i].text);
        EXPECT_EQ(file.RowCount(), cases[i].count) << i;
        for (size_t row = 0; row < cases[i].rows.size(); ++row)
            EXPECT_EQ(file.GetRow(static_cast<int32_t>(row)), cases[i].rows[row]) << i << ": row " << row;
    }
    // A missing file, or one too large for the memory left, gives false and
    // no rows of the file before.
    const std::string large = scratch.Path() + "large.scl";
    {
        winbench::WriteFileBytes(large, "");
        HANDLE handle = CreateFileA(large.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        LARGE_INTEGER size{};
        size.QuadPart = 96 << 20;
        ASSERT_TRUE(SetFilePointerEx(handle, size, nullptr, FILE_BEGIN) && SetEndOfFile(handle));
        CloseHandle(handle);
    }
    const std::pair<std::string, const char*> failing[] = {{scratch.Path() + "missing.scl", "File not found"},
                                                           {large, "Out of memory"}};
    for (const auto& [path, status] : failing) {
        ASSERT_TRUE(file.OpenFile(Put(scratch, "some.scl", "a\r\nb\r\n")));
        testing_support::AllocationsFail memoryRunsOut(64 << 20);
        EXPECT_FALSE(file.OpenFile(path)) << path;
        EXPECT_EQ(file.Status(), status) << path;
        EXPECT_EQ(file.RowCount(), 0) << path;
        EXPECT_EQ(file.Contents(), "") << path;
    }
}

// WriteText needs a file open for writing: not before CreateFile, not after
// CloseFile.
TEST(FileIO, CreateReplacesOnFirstWriteThenAppends) {
    winbench::ScratchFolder scratch("files-create");
    const std::string path = scratch.Path() + "SC_Uninstall.scl";
    clsFileIO file;
    auto expectRefused = [&] {
        const Failure f = Raised([&] { file.WriteText("x"); });
        EXPECT_EQ(f.Source(), "clsFileIO.WriteText");
        EXPECT_EQ(f.Description(),
                  "The file is not opened for writing. Please close the file, and reopen it for writing, or "
                  "appending.");
    };
    expectRefused();

    file.CreateFile(path);
    EXPECT_TRUE(winbench::FileExists(path)) << "created at once";
    EXPECT_EQ(file.Status(), "Write");
    file.WriteText("row1\r\n");
    file.WriteText("row2\r\n");
    file.CloseFile();
    EXPECT_EQ(ReadFileBytes(path), "row1\r\nrow2\r\n");
    expectRefused();

    // Created again and never written: the text stays.
    file.CreateFile(path);
    file.CloseFile();
    EXPECT_EQ(ReadFileBytes(path), "row1\r\nrow2\r\n");

    // The rows read before are not the created file's; what the caller sets
    // as Contents is not what the next write appends to.
    ASSERT_TRUE(file.OpenFile(path));
    file.CreateFile(path);
    EXPECT_EQ(file.Contents(), "");
    EXPECT_EQ(file.RowCount(), 0);
    EXPECT_EQ(file.GetRow(1), "");
    file.WriteText("new\r\n");
    EXPECT_EQ(ReadFileBytes(path), "new\r\n");
    file.Contents("set by the caller\r\n");
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
    EXPECT_EQ(FilesIn(scratch), 1) << "no temporary file left behind";

    EXPECT_EQ(Raised([&] { file.CreateFile(scratch.Path() + "no-such-folder\\list.scl"); }).Number(), 76);
}

// A replacement that cannot take the old file's place leaves the old text
// whole and no stray file beside it.
TEST(FileIO, FailedReplacementKeepsTheOldText) {
    winbench::ScratchFolder scratch("files-replace-fails");
    const std::string path = Put(scratch, "SC_Install.scl", "old text\r\n");
    clsFileIO file;
    ASSERT_TRUE(file.OpenFile(path));
    ASSERT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_THROW(file.WriteText("new text\r\n"), Failure);
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(ReadFileBytes(path), "old text\r\n");
    EXPECT_EQ(file.Contents(), "old text\r\n");
    EXPECT_EQ(FilesIn(scratch), 1);
}

TEST(FileIO, VersionFromTheResource) {
    winbench::ScratchFolder scratch("files-version");
    clsFileIO file;
    ASSERT_TRUE(file.OpenFile(files_tests::ChildPath()));
    EXPECT_EQ(file.VersionNumber(), "1.2.30.4");
    ASSERT_TRUE(file.OpenFile(Put(scratch, "plain.txt", "no resource here")));
    EXPECT_EQ(file.VersionNumber(), "0.0.0.0");
    file.OpenFile(scratch.Path() + "missing.dll");
    EXPECT_EQ(file.VersionNumber(), "0.0.0.0");
}

// The checksum's own rules are tested natively; here its text, its progress
// passed on, and its stream closed at the end, so the file can go at once.
TEST(FileIO, CrcTextAndItsProgress) {
    winbench::ScratchFolder scratch("files-crc");
    Percents percents;
    clsFileIO file(&percents);
    // Upper-case hexadecimal without leading zeros: "corvan-165019" is 00009923.
    for (const auto& [text, crc] : {std::pair<std::string, std::string>{"corvan-165019", "9923"},
                                    {"123456789", "CBF43926"}, {"", "0"}}) {
        ASSERT_TRUE(file.OpenFile(Put(scratch, "small.bin", text)));
        EXPECT_EQ(file.CRC32(), crc) << text;
    }
    percents.seen.clear();
    const std::string large = Put(scratch, "large.bin", std::string(8193, 'x'));
    ASSERT_TRUE(file.OpenFile(large));
    file.CRC32();
    EXPECT_EQ(percents.seen, (std::vector<int>{100, 100}));
    EXPECT_TRUE(DeleteFileA(large.c_str()));
    file.OpenFile(scratch.Path() + "gone.bin");
    EXPECT_EQ(Raised([&] { file.CRC32(); }).Number(), 53);
}

TEST(FileIO, ShellFacts) {
    CoInitialize(nullptr);
    winbench::ScratchFolder scratch("files-shell");
    clsFileIO file;
    ASSERT_TRUE(file.OpenFile(Put(scratch, "note.txt", "hello")));
    EXPECT_EQ(file.Length(), 5);
    EXPECT_EQ(file.FileInfo().size, 5);
    // Wine's shell answers no detail column (GetDetailsOf is not
    // implemented there); the walk must still end with an empty text.
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
