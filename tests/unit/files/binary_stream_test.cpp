#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <vector>

#include "common/failure.h"
#include "files/cBinaryFileStream.h"
#include "raised.h"
#include "temp_file.h"

using corvan::cBinaryFileStream;
using corvan::Failure;

TEST(BinaryFileStream, BlocksOfAFileThenZeroAndClosed) {
    const std::pair<size_t, std::vector<int32_t>> cases[] = {{10000, {8192, 1808, 0}}, {8192, {8192, 0}}, {0, {0}}};
    for (const auto& [size, reads] : cases) {
        const auto bytes = RandomBytes(size, 5);
        TempFile file(bytes);
        cBinaryFileStream stream;
        stream.File(file.Path());
        EXPECT_EQ(stream.Length(), static_cast<int32_t>(size));
        EXPECT_TRUE(stream.IsOpen()) << size;
        std::array<uint8_t, 8192> buffer;
        std::vector<int32_t> counts;
        std::vector<uint8_t> seen;
        for (int32_t n = 1; n > 0 && counts.size() < 10;) {
            counts.push_back(n = stream.Read(buffer, 8192));
            if (n > 0) seen.insert(seen.end(), buffer.begin(), buffer.begin() + n);
        }
        EXPECT_EQ(counts, reads) << size;
        EXPECT_EQ(seen, bytes);
        EXPECT_FALSE(stream.IsOpen()) << size;
    }
}

TEST(BinaryFileStream, MissingFileRaises53AndKeepsLength) {
    TempFile file(RandomBytes(300, 2));
    cBinaryFileStream stream;
    stream.File(file.Path());
    const std::string missing = (std::filesystem::temp_directory_path() / "corvan-missing-file.bin").string();
    const Failure f = testing_support::Raised([&] { stream.File(missing); });
    EXPECT_EQ(f.Number(), 53);
    EXPECT_EQ(f.Source(), "CorvanInstaller.File");
    EXPECT_EQ(f.Description(), "File not found");
    EXPECT_FALSE(stream.IsOpen()) << "the first file was closed before the look-up";
    EXPECT_EQ(stream.Length(), 300);

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
