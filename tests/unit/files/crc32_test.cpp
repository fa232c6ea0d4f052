#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "common/failure.h"
#include "files/cCRC32.h"
#include "files/crc32_kernels.h"
#include "temp_file.h"

using corvan::cBinaryFileStream;
using corvan::cCRC32;
using corvan::Failure;

namespace {

std::vector<uint8_t> Bytes(const std::string& text) { return {text.begin(), text.end()}; }

class RecordingListener : public corvan::CRCProgressListener {
public:
    void CRCProgress(int16_t& Percent) override { percents.push_back(Percent); }
    std::vector<int> percents;
};

uint32_t Crc(uint32_t (*update)(uint32_t, const uint8_t*, size_t), const uint8_t* data, size_t size) {
    return ~update(0xFFFFFFFFu, data, size);
}

}  // namespace

TEST(Crc32, CheckValueAndSignedResult) {
    cCRC32 crc;
    const auto check = Bytes("123456789");
    EXPECT_EQ(crc.GetByteArrayCrc32(check), -873187034);
    EXPECT_EQ(static_cast<uint32_t>(crc.GetByteArrayCrc32(check)), 0xCBF43926u);
    EXPECT_EQ(crc.GetByteArrayCrc32({}), 0);
    EXPECT_EQ(corvan::crc32::Table()[1], 0x77073096u);
    EXPECT_EQ(corvan::crc32::Table()[255], 0x2D02EF8Du);
}

// The fast kernels must be the definition, bit for bit, whatever the length
// and the alignment of the data.
TEST(Crc32, KernelsAgreeOnRandomLengthsAndAlignments) {
    const auto pool = RandomBytes(70000, 1234);
    std::mt19937 gen(99);
    std::vector<size_t> lengths = {0,   1,   15,  16,  17,  63,  64,   65,   79,   80,   127,  128,  129,
                                   255, 256, 257, 271, 319, 320, 511, 512, 8191, 8192, 8193, 65536};
    for (int i = 0; i < 300; ++i) lengths.push_back(gen() % 20000);
    for (size_t length : lengths) {
        const size_t offset = gen() % 64;
        const uint8_t* data = pool.data() + offset;
        const uint32_t expected = Crc(corvan::crc32::UpdateBytewise, data, length);
        ASSERT_EQ(Crc(corvan::crc32::UpdateSliced, data, length), expected) << length << "@" << offset;
        ASSERT_EQ(Crc(corvan::crc32::Update, data, length), expected) << length << "@" << offset;
        if (corvan::crc32::CarrylessAvailable()) {
            ASSERT_EQ(Crc(corvan::crc32::UpdateCarryless, data, length), expected) << length << "@" << offset;
        }
        if (corvan::crc32::WideCarrylessAvailable()) {
            ASSERT_EQ(Crc(corvan::crc32::UpdateWideCarryless, data, length), expected) << length << "@" << offset;
        }
    }
    const auto check = Bytes("123456789123456789123456789123456789123456789123456789123456789123456789");
    EXPECT_EQ(Crc(corvan::crc32::UpdateCarryless, check.data(), check.size()),
              Crc(corvan::crc32::UpdateBytewise, check.data(), check.size()));
    std::printf("carry-less: %s, 512-bit carry-less: %s\n", corvan::crc32::CarrylessAvailable() ? "yes" : "no",
                corvan::crc32::WideCarrylessAvailable() ? "yes" : "no");
}

// Feeding the same bytes in pieces must give the one-piece result: the file
// checksum is built block by block.
TEST(Crc32, RegisterCarriesAcrossPieces) {
    const auto bytes = RandomBytes(10000, 7);
    uint32_t reg = 0xFFFFFFFFu;
    size_t at = 0;
    for (size_t piece : {1u, 70u, 3000u, 64u, 6865u}) {
        reg = corvan::crc32::Update(reg, bytes.data() + at, piece);
        at += piece;
    }
    ASSERT_EQ(at, bytes.size());
    EXPECT_EQ(~reg, Crc(corvan::crc32::UpdateBytewise, bytes.data(), bytes.size()));
}

TEST(Crc32, ByteArrayIndexIsSixteenBits) {
    cCRC32 crc;
    const std::vector<uint8_t> fits(32768, 0xA5);
    EXPECT_NO_THROW(crc.GetByteArrayCrc32(fits));  // 0 to 32767
    const std::vector<uint8_t> tooLong(32769, 0xA5);
    try {
        crc.GetByteArrayCrc32(tooLong);  // 0 to 32768
        FAIL() << "no overflow";
    } catch (const Failure& f) {
        EXPECT_EQ(f.Number(), 6);
        EXPECT_EQ(f.Description(), "Overflow");
    }
    EXPECT_NO_THROW(crc.GetByteArrayCrc32(std::vector<uint8_t>(10), -32768));
    EXPECT_THROW(crc.GetByteArrayCrc32(std::vector<uint8_t>(10), -32769), Failure);
    EXPECT_THROW(crc.GetByteArrayCrc32(std::vector<uint8_t>(10), 32760), Failure);
}

TEST(Crc32, FileProgressOnePerBlockRoundedHalvesToEven) {
    struct Case {
        size_t size;
        std::vector<int> percents;
    };
    const std::vector<Case> cases = {
        {0, {}}, {1, {100}}, {8192, {100}}, {8193, {100, 100}}, {20000, {41, 82, 100}},
        // thirds: 33.33 and 66.67
        {24576, {33, 67, 100}},
        // 8192 / 65536 = 12.5 exactly: halves go to the even neighbour
        {65536, {12, 25, 38, 50, 62, 75, 88, 100}},
    };
    for (const auto& c : cases) {
        const auto bytes = RandomBytes(c.size, static_cast<uint32_t>(c.size));
        TempFile file(bytes);
        RecordingListener listener;
        cCRC32 crc(&listener);
        cBinaryFileStream stream;
        stream.File(file.Path());
        const int32_t result = crc.GetFileCrc32(stream);
        EXPECT_EQ(static_cast<uint32_t>(result), Crc(corvan::crc32::UpdateBytewise, bytes.data(), bytes.size()))
            << c.size;
        EXPECT_EQ(listener.percents, c.percents) << c.size;
        EXPECT_FALSE(stream.IsOpen()) << "the stream closes itself at the end";
    }
}
