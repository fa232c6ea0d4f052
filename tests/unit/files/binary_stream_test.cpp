#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <vector>

#include "common/failure.h"
#include "files/cBinaryFileStream.h"
#include "temp_file.h"

using corvan::cBinaryFileStream;
using corvan::Failure;

namespace {

std::vector<int32_t> ReadAll(cBinaryFileStream& stream, std::vector<uint8_t>* seen = nullptr) {
    std::array<uint8_t, 8192> buffer;
    std::vector<int32_t> counts;
    for (int i = 0; i < 10; ++i) {
        const int32_t n = stream.Read(buffer, 8192);
        counts.push_back(n);
        if (seen && n > 0) seen->insert(seen->end(), buffer.begin(), buffer.begin() + n);
        if (n <= 0) break;
    }
    return counts;
}

}  // namespace

TEST(BinaryFileStream, BlocksOfAFileThenZeroAndClosed) {
    const auto bytes = RandomBytes(10000, 5);
    TempFile file(bytes);
    cBinaryFileStream stream;
    stream.File(file.Path());
    EXPECT_EQ(stream.File(), file.Path());
    EXPECT_EQ(stream.Length(), 10000);
    std::vector<uint8_t> seen;
    EXPECT_EQ(ReadAll(stream, &seen), (std::vector<int32_t>{8192, 1808, 0}));
    EXPECT_EQ(seen, bytes);
    EXPECT_FALSE(stream.IsOpen());
    stream.Dispose();  // again: harmless
}

TEST(BinaryFileStream, ExactBlockAndEmptyFile) {
    TempFile exact(RandomBytes(8192, 1));
    cBinaryFileStream stream;
    stream.File(exact.Path());
    EXPECT_EQ(ReadAll(stream), (std::vector<int32_t>{8192, 0}));

    TempFile empty({});
    cBinaryFileStream second;
    second.File(empty.Path());
    EXPECT_EQ(second.Length(), 0);
    EXPECT_TRUE(second.IsOpen());
    EXPECT_EQ(ReadAll(second), (std::vector<int32_t>{0}));
    EXPECT_FALSE(second.IsOpen());
}

TEST(BinaryFileStream, MissingFileRaises53AndKeepsLength) {
    TempFile file(RandomBytes(300, 2));
    cBinaryFileStream stream;
    stream.File(file.Path());
    const std::string missing = (std::filesystem::temp_directory_path() / "corvan-missing-file.bin").string();
    try {
        stream.File(missing);
        FAIL() << "no error";
    } catch (const Failure& f) {
        EXPECT_EQ(f.Number(), 53);
        EXPECT_EQ(f.Source(), "CorvanInstaller.File");
        EXPECT_EQ(f.Description(), "File not found");
    }
    EXPECT_FALSE(stream.IsOpen()) << "the first file was closed before the look-up";
    EXPECT_EQ(stream.Length(), 300);
    EXPECT_EQ(stream.File(), missing);

    // A folder is not a file.
    EXPECT_THROW(stream.File(std::filesystem::temp_directory_path().string()), Failure);
    EXPECT_FALSE(stream.IsOpen());
}

// The position belongs to the object, not to the file: a second file set on
// a stream that already read a longer one reads nothing.
TEST(BinaryFileStream, PositionSurvivesANewFile) {
    TempFile longer(RandomBytes(9000, 3));
    TempFile shorter(RandomBytes(100, 4));
    cBinaryFileStream stream;
    stream.File(longer.Path());
    std::array<uint8_t, 8192> buffer;
    EXPECT_EQ(stream.Read(buffer, 8192), 8192);
    stream.File(shorter.Path());
    EXPECT_EQ(stream.Read(buffer, 8192), 100 - 8192);
    EXPECT_FALSE(stream.IsOpen());
}
