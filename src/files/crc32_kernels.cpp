#include "files/crc32_kernels.h"


namespace corvan::crc32 {
namespace {

constexpr uint32_t kPolynomial = 0xEDB88320u;

constexpr std::array<uint32_t, 256> BuildTable() {
    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t c = i;
        for (int bit = 0; bit < 8; ++bit) {
            const bool out = (c & 1u) != 0;
            c >>= 1;
            if (out) c ^= kPolynomial;
        }
        table[i] = c;
    }
    return table;
}

constexpr std::array<uint32_t, 256> kTable = BuildTable();

// slices[k][i]: the register contribution of byte i followed by k zero bytes.
using Slices = std::array<std::array<uint32_t, 256>, 16>;
constexpr Slices BuildSlices() {
    Slices s{};
    s[0] = kTable;
    for (size_t k = 1; k < 16; ++k)
        for (size_t i = 0; i < 256; ++i)
            s[k][i] = (s[k - 1][i] >> 8) ^ kTable[s[k - 1][i] & 0xFFu];
    return s;
}

constexpr Slices kSlices = BuildSlices();

inline uint32_t LoadLE32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

}  // namespace

const std::array<uint32_t, 256>& Table() { return kTable; }

uint32_t UpdateBytewise(uint32_t reg, const uint8_t* data, size_t size) {
    for (size_t i = 0; i < size; ++i) reg = (reg >> 8) ^ kTable[(reg ^ data[i]) & 0xFFu];
    return reg;
}

uint32_t UpdateSliced(uint32_t reg, const uint8_t* data, size_t size) {
    while (size >= 16) {
        const uint32_t a = LoadLE32(data) ^ reg;
        const uint32_t b = LoadLE32(data + 4);
        const uint32_t c = LoadLE32(data + 8);
        const uint32_t d = LoadLE32(data + 12);
        reg = kSlices[15][a & 0xFF] ^ kSlices[14][(a >> 8) & 0xFF] ^ kSlices[13][(a >> 16) & 0xFF] ^
              kSlices[12][a >> 24] ^ kSlices[11][b & 0xFF] ^ kSlices[10][(b >> 8) & 0xFF] ^
              kSlices[9][(b >> 16) & 0xFF] ^ kSlices[8][b >> 24] ^ kSlices[7][c & 0xFF] ^
              kSlices[6][(c >> 8) & 0xFF] ^ kSlices[5][(c >> 16) & 0xFF] ^ kSlices[4][c >> 24] ^
              kSlices[3][d & 0xFF] ^ kSlices[2][(d >> 8) & 0xFF] ^ kSlices[1][(d >> 16) & 0xFF] ^
              kSlices[0][d >> 24];
        data += 16;
        size -= 16;
    }
    return UpdateBytewise(reg, data, size);
}

uint32_t Update(uint32_t reg, const uint8_t* data, size_t size) {
    static const auto best = WideCarrylessAvailable() ? &UpdateWideCarryless
                             : CarrylessAvailable()   ? &UpdateCarryless
                                                      : &UpdateSliced;
    return best(reg, data, size);
}

}  // namespace corvan::crc32
