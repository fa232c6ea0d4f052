// The block stream a file's checksum is read through, and the checksum.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "files/cBinaryFileStream.h"
#include "files/cCRC32.h"
#include "files/crc32_kernels.h"
#include "raised.h"

using namespace corvan;
using testing_support::Raised;

namespace {

std::vector<uint8_t> RandomBytes(size_t size, uint32_t seed) {
    std::mt19937 gen(seed);
    std::vector<uint8_t> bytes(size);
    for (auto& b : bytes) b = static_cast<uint8_t>(gen());
    return bytes;
}

// A file of random bytes in the temporary folder, removed with the object.
struct TempFile {
    const std::vector<uint8_t> bytes;
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("corvan-files-" + std::to_string(std::random_device()()) + ".bin")).string();
    TempFile(size_t size, uint32_t seed) : bytes(RandomBytes(size, seed)) {
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(size));
    }
    ~TempFile() { std::filesystem::remove(path); }
};

uint32_t Crc(uint32_t (*update)(uint32_t, const uint8_t*, size_t), const uint8_t* data, size_t size) {
    return ~update(0xFFFFFFFFu, data, size);
}

}  // namespace

// Blocks of 8192 bytes, then 0, and the stream closes itself. The position
// belongs to the object: a second, shorter file set on it reads nothing.
TEST(BinaryFileStream, BlocksOfAFileThenZeroAndClosed) {
    const std::pair<size_t, std::vector<int32_t>> cases[] = {{10000, {8192, 1808, 0}}, {8192, {8192, 0}}, {0, {0}}};
    for (const auto& [size, reads] : cases) {
        TempFile file(size, 5);
        cBinaryFileStream stream;
        stream.File(file.path);
        EXPECT_EQ(stream.Length(), static_cast<int32_t>(size));
        EXPECT_TRUE(stream.IsOpen()) << size;
        std::array<uint8_t, 8192> buffer;
        std::vector<int32_t> counts;
        std::vector<uint8_t> seen;
        for (int32_t n = 1; n > 0 && counts.size() < 10; counts.push_back(n))
            if ((n = stream.Read(buffer, 8192)) > 0) seen.insert(seen.end(), buffer.begin(), buffer.begin() + n);
        EXPECT_EQ(counts, reads) << size;
        EXPECT_EQ(seen, file.bytes);
        EXPECT_FALSE(stream.IsOpen()) << size;
    }
    TempFile longer(9000, 3), shorter(100, 4);
    cBinaryFileStream stream;
    stream.File(longer.path);
    std::array<uint8_t, 8192> buffer;
    EXPECT_EQ(stream.Read(buffer, 8192), 8192);
    stream.File(shorter.path);
    EXPECT_EQ(stream.Read(buffer, 8192), 100 - 8192);
    EXPECT_FALSE(stream.IsOpen());
}

TEST(BinaryFileStream, MissingFileRaises53AndKeepsLength) {
    TempFile file(300, 2);
    cBinaryFileStream stream;
    stream.File(file.path);
    const Failure f = Raised([&] { stream.File(file.path + ".missing"); });
    EXPECT_EQ(f.Number(), 53);
    EXPECT_EQ(f.Source() + ": " + f.Description(), "CorvanInstaller.File: File not found");
    EXPECT_FALSE(stream.IsOpen()) << "the first file was closed before the look-up";
    EXPECT_EQ(stream.Length(), 300);
    EXPECT_EQ(Raised([&] { stream.File(std::filesystem::temp_directory_path().string()); }).Number(), 53);  // a folder
    EXPECT_FALSE(stream.IsOpen());
}

// The check value, signed; an array's index runs in 16 bits, so its last
// element may be 32767 and no further (Overflow).
TEST(Crc32, CheckValueAndSixteenBitIndex) {
    const std::string check = "123456789";
    EXPECT_EQ(cCRC32().GetByteArrayCrc32(std::vector<uint8_t>(check.begin(), check.end())), -873187034);  // CBF43926
    EXPECT_EQ(cCRC32().GetByteArrayCrc32({}), 0);
    const struct { size_t size; int32_t lowerBound; int number; } cases[] = {
        {32768, 0, 0}, {32769, 0, 6}, {10, -32768, 0}, {10, -32769, 6}, {10, 32758, 0}, {10, 32759, 6}};
    for (const auto& c : cases) {
        const std::vector<uint8_t> bytes(c.size, 0xA5);
        int number = 0;
        try {
            cCRC32().GetByteArrayCrc32(bytes, c.lowerBound);
        } catch (const Failure& f) {
            number = f.Number();
            EXPECT_EQ(f.Description(), "Overflow");
        }
        EXPECT_EQ(number, c.number) << c.size << " from " << c.lowerBound;
    }
}

// The fast kernels must be the definition, bit for bit, whatever the length
// and the alignment of the data.
TEST(Crc32, KernelsAgreeOnRandomLengthsAndAlignments) {
    std::vector<uint32_t (*)(uint32_t, const uint8_t*, size_t)> kernels = {crc32::UpdateSliced, crc32::Update};
    if (crc32::CarrylessAvailable()) kernels.push_back(crc32::UpdateCarryless);
    if (crc32::WideCarrylessAvailable()) kernels.push_back(crc32::UpdateWideCarryless);
    std::printf("kernels checked against the table: %zu of 4\n", kernels.size());
    const auto pool = RandomBytes(70000, 1234);
    std::mt19937 gen(99);
    std::vector<size_t> lengths = {0, 1, 15, 16, 17, 63, 64, 65, 79, 80, 127, 128, 129, 255, 256, 257, 271, 319, 320,
                                   511, 512, 8191, 8192, 8193, 65536};
    for (int i = 0; i < 300; ++i) lengths.push_back(gen() % 20000);
    for (size_t length : lengths) {
        const size_t offset = gen() % 64;
        const uint32_t expected = Crc(crc32::UpdateBytewise, pool.data() + offset, length);
        for (size_t k = 0; k < kernels.size(); ++k)
            ASSERT_EQ(Crc(kernels[k], pool.data() + offset, length), expected) << k << ": " << length << "@" << offset;
    }
}

// A file's checksum is built block by block, the register carried from one
// block to the next; one progress call per block, halves rounded to even.
TEST(Crc32, FileProgressOnePerBlockRoundedHalvesToEven) {
    struct Listener : CRCProgressListener {
        void CRCProgress(int16_t& percent) override { percents.push_back(percent); }
        std::vector<int> percents;
    };
    const std::pair<size_t, std::vector<int>> cases[] = {
        {0, {}}, {1, {100}}, {8192, {100}}, {8193, {100, 100}}, {20000, {41, 82, 100}},
        {24576, {33, 67, 100}}, {65536, {12, 25, 38, 50, 62, 75, 88, 100}}};
    for (const auto& [size, percents] : cases) {
        TempFile file(size, static_cast<uint32_t>(size));
        Listener listener;
        cBinaryFileStream stream;
        stream.File(file.path);
        EXPECT_EQ(static_cast<uint32_t>(cCRC32(&listener).GetFileCrc32(stream)),
                  Crc(crc32::UpdateBytewise, file.bytes.data(), size)) << size;
        EXPECT_EQ(listener.percents, percents) << size;
        EXPECT_FALSE(stream.IsOpen()) << "the stream closes itself at the end";
    }
}
