// The block stream a file's checksum is read through, and the checksum.
#include <gtest/gtest.h>

#include <numeric>

#include "../harness.h"
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

// A file of random bytes in a scratch folder.
struct TempFile : unit_table::Scratch {
    const std::vector<uint8_t> bytes;
    const std::string path = Write("file.bin", std::string(bytes.begin(), bytes.end()));
    TempFile(size_t size, uint32_t seed) : bytes(RandomBytes(size, seed)) {}
};

uint32_t Crc(uint32_t (*update)(uint32_t, const uint8_t*, size_t), const uint8_t* data, size_t size) {
    return ~update(0xFFFFFFFFu, data, size);
}

}  // namespace

// Blocks of 8192 bytes, then 0, and the stream closes itself (the checksums
// below check the bytes). The position belongs to the object: a second,
// shorter file set on it reads nothing. A file that is not there (or a
// folder) raises 53, the earlier file closed first and its length kept.
TEST(BinaryFileStream, BlocksThenZeroClosedAndMissingFiles) {
    TempFile longer(10000, 5), shorter(100, 4);
    cBinaryFileStream stream, again;
    stream.File(longer.path);
    EXPECT_EQ(stream.Length(), 10000);
    std::array<uint8_t, 8192> buffer;
    for (int32_t expected : {8192, 1808, 0}) {
        EXPECT_TRUE(stream.IsOpen());
        EXPECT_EQ(stream.Read(buffer, 8192), expected);
    }
    EXPECT_FALSE(stream.IsOpen());
    again.File(longer.path);
    EXPECT_EQ(again.Read(buffer, 8192), 8192);
    again.File(shorter.path);
    EXPECT_EQ(again.Read(buffer, 8192), 100 - 8192);
    again.File(shorter.path);
    const Failure f = Raised([&] { again.File(shorter.path + ".missing"); });
    EXPECT_EQ(std::to_string(f.Number()) + " " + f.Source() + ": " + f.Description(), "53 CorvanInstaller.File: File not found");
    EXPECT_FALSE(again.IsOpen()) << "the first file was closed before the look-up";
    EXPECT_EQ(again.Length(), 100);
    EXPECT_EQ(Raised([&] { stream.File(longer.dir); }).Number(), 53);
}

// The check value, signed; an array's index runs in 16 bits, so its last
// element may be 32767 and no further (Overflow).
TEST(Crc32, CheckValueAndSixteenBitIndex) {
    const std::string check = "123456789";
    EXPECT_EQ(cCRC32().GetByteArrayCrc32(std::vector<uint8_t>(check.begin(), check.end())), -873187034);  // CBF43926
    EXPECT_EQ(cCRC32().GetByteArrayCrc32({}), 0);
    const std::tuple<size_t, int32_t, std::string> cases[] = {{32768, 0, ""}, {32769, 0, "6 Overflow"},
        {10, -32768, ""}, {10, -32769, "6 Overflow"}, {10, 32758, ""}, {10, 32759, "6 Overflow"}};
    for (const auto& [size, lowerBound, expected] : cases) {
        std::string raised;
        try {
            cCRC32().GetByteArrayCrc32(std::vector<uint8_t>(size), lowerBound);
        } catch (const Failure& f) {
            raised = std::to_string(f.Number()) + " " + f.Description();
        }
        EXPECT_EQ(raised, expected) << size << " from " << lowerBound;
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
    std::vector<size_t> lengths(700);  // every tail and block edge of the wide kernels, then longer ones
    std::iota(lengths.begin(), lengths.end(), 0);
    for (int i = 0; i < 300; ++i) lengths.push_back(gen() % 65537);
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
