// The block stream a file's checksum is read through, and the checksum.
#include "../harness.h"
#include "files/cBinaryFileStream.h"
#include "files/cCRC32.h"
#include "files/crc32_kernels.h"

namespace {

std::string RandomBytes(size_t size, uint32_t seed) {
    std::mt19937 gen(seed);
    std::string bytes(size, '\0');
    for (char& b : bytes) b = static_cast<char>(gen());
    return bytes;
}

uint32_t Crc(uint32_t (*update)(uint32_t, const uint8_t*, size_t), const std::string& bytes, size_t offset = 0) {
    return ~update(0xFFFFFFFFu, reinterpret_cast<const uint8_t*>(bytes.data()) + offset, bytes.size() - offset);
}

}  // namespace

// The blocks are the checksum's (below). The position belongs to the
// object: a second, shorter file set on it reads nothing. A file that is not
// there (or a folder) raises 53, the earlier file closed first, its length kept.
TEST(BinaryFileStream, PositionOfTheObjectAndMissingFiles) {
    const Scratch scratch;
    cBinaryFileStream stream;
    std::array<uint8_t, 8192> buffer;
    stream.File(scratch.Write("longer", RandomBytes(10000, 5)));
    EXPECT_EQ(stream.Read(buffer, 8192), 8192);
    stream.File(scratch.Write("shorter", "x"));
    EXPECT_EQ(stream.Read(buffer, 8192), 1 - 8192);
    stream.File(scratch.Path("shorter"));
    const Failure f = Raised([&] { stream.File(scratch.Path("missing")); });
    EXPECT_EQ(std::to_string(f.Number()) + " " + f.Source() + ": " + f.Description(), "53 CorvanInstaller.File: File not found");
    EXPECT_FALSE(stream.IsOpen()) << "the first file was closed before the look-up";
    EXPECT_EQ(stream.Length(), 1);
    EXPECT_EQ(Raised([&] { stream.File(scratch.dir); }).Number(), 53);
}

// The check value, signed, and an array's 16-bit index (files.txt).
TEST(Crc32, CheckValueAndSixteenBitIndex) {
    EXPECT_EQ(cCRC32().GetByteArrayCrc32(std::vector<uint8_t>{'1', '2', '3', '4', '5', '6', '7', '8', '9'}), -873187034);
    EXPECT_EQ(cCRC32().GetByteArrayCrc32({}), 0);
    for (const auto& c : Table("files/files.txt", "index")) {
        const auto crc = [&] { cCRC32().GetByteArrayCrc32(std::vector<uint8_t>(std::stoul(c[0])), std::stoi(c[1])); };
        EXPECT_EQ(c[2].empty() ? (crc(), "") : std::to_string(Raised(crc).Number()) + " " + Raised(crc).Description(), c[2])
            << c.where;
    }
}

// The fast kernels must be the definition, bit for bit, whatever the length
// and the alignment of the data: every tail and block edge of the wide
// kernels, then longer ones.
TEST(Crc32, KernelsAgreeOnRandomLengthsAndAlignments) {
    std::vector<uint32_t (*)(uint32_t, const uint8_t*, size_t)> kernels = {crc32::UpdateSliced, crc32::Update};
    if (crc32::CarrylessAvailable()) kernels.push_back(crc32::UpdateCarryless);
    if (crc32::WideCarrylessAvailable()) kernels.push_back(crc32::UpdateWideCarryless);
    const std::string pool = RandomBytes(70000, 1234);
    std::mt19937 gen(99);
    for (size_t i = 0, length = 0; i < 1000; ++i, length = i < 700 ? i : gen() % 65537) {
        const std::string data = pool.substr(0, gen() % 64 + length);
        const size_t offset = data.size() - length;
        for (size_t k = 0; k < kernels.size(); ++k)
            ASSERT_EQ(Crc(kernels[k], data, offset), Crc(crc32::UpdateBytewise, data, offset)) << k << ": " << length << "@" << offset;
    }
}

// A file's checksum is built block by block, the register carried from one
// block to the next; one progress call per block, halves rounded to even.
TEST(Crc32, FileProgressOnePerBlockRoundedHalvesToEven) {
    struct Listener : CRCProgressListener {
        void CRCProgress(int16_t& percent) override { percents += std::to_string(percent) + " "; }
        std::string percents;
    };
    const Scratch scratch;
    for (const auto& c : Table("files/files.txt", "progress")) {
        const std::string bytes = RandomBytes(std::stoul(c[0]), std::stoul(c[0]));
        Listener listener;
        cBinaryFileStream stream;
        stream.File(scratch.Write("file.bin", bytes));
        EXPECT_EQ(static_cast<uint32_t>(cCRC32(&listener).GetFileCrc32(stream)), Crc(crc32::UpdateBytewise, bytes)) << c.where;
        EXPECT_EQ(listener.percents, c[1].empty() ? "" : c[1] + " ") << c.where;
        EXPECT_FALSE(stream.IsOpen()) << "the stream closes itself at the end";
    }
}
