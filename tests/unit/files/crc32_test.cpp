#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "common/failure.h"
#include "files/cCRC32.h"
#include "files/crc32_kernels.h"
#include "temp_file.h"

using corvan::cCRC32;
using corvan::Failure;
namespace crc32 = corvan::crc32;

namespace {

using Kernel = uint32_t (*)(uint32_t, const uint8_t*, size_t);

uint32_t Crc(Kernel update, const uint8_t* data, size_t size) { return ~update(0xFFFFFFFFu, data, size); }

class RecordingListener : public corvan::CRCProgressListener {
public:
    void CRCProgress(int16_t& Percent) override { percents.push_back(Percent); }
    std::vector<int> percents;
};

}  // namespace

TEST(Crc32, CheckValueAndSignedResult) {
    const std::string check = "123456789";
    EXPECT_EQ(cCRC32().GetByteArrayCrc32(std::vector<uint8_t>(check.begin(), check.end())), -873187034);  // CBF43926
    EXPECT_EQ(cCRC32().GetByteArrayCrc32({}), 0);
}

// The fast kernels must be the definition, bit for bit, whatever the length
// and the alignment of the data.
TEST(Crc32, KernelsAgreeOnRandomLengthsAndAlignments) {
    std::vector<Kernel> kernels = {crc32::UpdateSliced, crc32::Update};
    if (crc32::CarrylessAvailable()) kernels.push_back(crc32::UpdateCarryless);
    if (crc32::WideCarrylessAvailable()) kernels.push_back(crc32::UpdateWideCarryless);
    std::printf("kernels checked against the table: %zu of 4\n", kernels.size());
    const auto pool = RandomBytes(70000, 1234);
    std::mt19937 gen(99);
    std::vector<size_t> lengths = {0,   1,   15,  16,  17,  63,  64,   65,   79,   80,   127,  128,  129,
                                   255, 256, 257, 271, 319, 320, 511, 512, 8191, 8192, 8193, 65536};
    for (int i = 0; i < 300; ++i) lengths.push_back(gen() % 20000);
    for (size_t length : lengths) {
        const size_t offset = gen() % 64;
        const uint32_t expected = Crc(crc32::UpdateBytewise, pool.data() + offset, length);
        for (size_t k = 0; k < kernels.size(); ++k)
            ASSERT_EQ(Crc(kernels[k], pool.data() + offset, length), expected) << k << ": " << length << "@" << offset;
    }
}

// The index of an array runs in 16 bits: its last element may be 32767.
TEST(Crc32, ByteArrayIndexIsSixteenBits) {
    const struct {
        size_t size;
        int32_t lowerBound;
        bool overflows;
    } cases[] = {{32768, 0, false}, {32769, 0, true},     {10, -32768, false},
                 {10, -32769, true}, {10, 32758, false}, {10, 32759, true}};
    for (const auto& c : cases) {
        const std::vector<uint8_t> bytes(c.size, 0xA5);
        try {
            cCRC32().GetByteArrayCrc32(bytes, c.lowerBound);
            EXPECT_FALSE(c.overflows) << c.size << " from " << c.lowerBound;
        } catch (const Failure& f) {
            EXPECT_TRUE(c.overflows) << c.size << " from " << c.lowerBound;
            EXPECT_EQ(f.Number(), 6);
            EXPECT_EQ(f.Description(), "Overflow");
        }
    }
}

// The file's checksum is built block by block: the register carries from one
// block to the next.
TEST(Crc32, FileProgressOnePerBlockRoundedHalvesToEven) {
    const std::pair<size_t, std::vector<int>> cases[] = {
        {0, {}}, {1, {100}}, {8192, {100}}, {8193, {100, 100}}, {20000, {41, 82, 100}},
        {24576, {33, 67, 100}},                              // thirds: 33.33 and 66.67
        {65536, {12, 25, 38, 50, 62, 75, 88, 100}},          // 12.5 per block: halves go to the even neighbour
    };
    for (const auto& [size, percents] : cases) {
        const auto bytes = RandomBytes(size, static_cast<uint32_t>(size));
        TempFile file(bytes);
        RecordingListener listener;
        corvan::cBinaryFileStream stream;
        stream.File(file.Path());
        EXPECT_EQ(static_cast<uint32_t>(cCRC32(&listener).GetFileCrc32(stream)),
                  Crc(crc32::UpdateBytewise, bytes.data(), bytes.size()))
            << size;
        EXPECT_EQ(listener.percents, percents) << size;
        EXPECT_FALSE(stream.IsOpen()) << "the stream closes itself at the end";
    }
}
