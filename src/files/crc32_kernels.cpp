#include "files/crc32_kernels.h"

#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define CORVAN_CRC_X86 1
#endif

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

#ifdef CORVAN_CRC_X86

bool CarrylessAvailable() {
    static const bool available = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1");
    }();
    return available;
}

namespace {

// Folding constants of the reflected IEEE polynomial (x^(n) mod P, bit
// reflected) and the Barrett pair, as in Intel's paper "Fast CRC
// Computation for Generic Polynomials Using PCLMULQDQ".
alignas(16) constexpr uint64_t kK1K2[2] = {0x0154442bd4ull, 0x01c6e41596ull};
alignas(16) constexpr uint64_t kK3K4[2] = {0x01751997d0ull, 0x00ccaa009eull};
alignas(16) constexpr uint64_t kK5K0[2] = {0x0163cd6124ull, 0x0000000000ull};
alignas(16) constexpr uint64_t kPoly[2] = {0x01db710641ull, 0x01f7011641ull};

// size is at least 64 and a multiple of 16.
__attribute__((target("pclmul,sse4.1"))) uint32_t FoldBlocks(uint32_t reg, const uint8_t* buf, size_t size) {
    __m128i x0, x1, x2, x3, x4, x5, x6, x7, x8;
    x1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(buf + 0x00));
    x2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(buf + 0x10));
    x3 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(buf + 0x20));
    x4 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(buf + 0x30));
    x1 = _mm_xor_si128(x1, _mm_cvtsi32_si128(static_cast<int>(reg)));
    x0 = _mm_load_si128(reinterpret_cast<const __m128i*>(kK1K2));
    buf += 64;
    size -= 64;

    while (size >= 64) {
        x5 = _mm_clmulepi64_si128(x1, x0, 0x00);
        x6 = _mm_clmulepi64_si128(x2, x0, 0x00);
        x7 = _mm_clmulepi64_si128(x3, x0, 0x00);
        x8 = _mm_clmulepi64_si128(x4, x0, 0x00);
        x1 = _mm_clmulepi64_si128(x1, x0, 0x11);
        x2 = _mm_clmulepi64_si128(x2, x0, 0x11);
        x3 = _mm_clmulepi64_si128(x3, x0, 0x11);
        x4 = _mm_clmulepi64_si128(x4, x0, 0x11);
        x1 = _mm_xor_si128(_mm_xor_si128(x1, x5), _mm_loadu_si128(reinterpret_cast<const __m128i*>(buf + 0x00)));
        x2 = _mm_xor_si128(_mm_xor_si128(x2, x6), _mm_loadu_si128(reinterpret_cast<const __m128i*>(buf + 0x10)));
        x3 = _mm_xor_si128(_mm_xor_si128(x3, x7), _mm_loadu_si128(reinterpret_cast<const __m128i*>(buf + 0x20)));
        x4 = _mm_xor_si128(_mm_xor_si128(x4, x8), _mm_loadu_si128(reinterpret_cast<const __m128i*>(buf + 0x30)));
        buf += 64;
        size -= 64;
    }

    // Four lanes into one.
    x0 = _mm_load_si128(reinterpret_cast<const __m128i*>(kK3K4));
    for (__m128i next : {x2, x3, x4}) {
        x5 = _mm_clmulepi64_si128(x1, x0, 0x00);
        x1 = _mm_clmulepi64_si128(x1, x0, 0x11);
        x1 = _mm_xor_si128(_mm_xor_si128(x1, next), x5);
    }
    while (size >= 16) {
        x2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(buf));
        x5 = _mm_clmulepi64_si128(x1, x0, 0x00);
        x1 = _mm_clmulepi64_si128(x1, x0, 0x11);
        x1 = _mm_xor_si128(_mm_xor_si128(x1, x2), x5);
        buf += 16;
        size -= 16;
    }

    // 128 bits to 64.
    x2 = _mm_clmulepi64_si128(x1, x0, 0x10);
    x3 = _mm_setr_epi32(~0, 0, ~0, 0);
    x1 = _mm_srli_si128(x1, 8);
    x1 = _mm_xor_si128(x1, x2);
    x0 = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(kK5K0));
    x2 = _mm_srli_si128(x1, 4);
    x1 = _mm_and_si128(x1, x3);
    x1 = _mm_clmulepi64_si128(x1, x0, 0x00);
    x1 = _mm_xor_si128(x1, x2);

    // Barrett reduction to 32 bits.
    x0 = _mm_load_si128(reinterpret_cast<const __m128i*>(kPoly));
    x2 = _mm_and_si128(x1, x3);
    x2 = _mm_clmulepi64_si128(x2, x0, 0x10);
    x2 = _mm_and_si128(x2, x3);
    x2 = _mm_clmulepi64_si128(x2, x0, 0x00);
    x1 = _mm_xor_si128(x1, x2);
    return static_cast<uint32_t>(_mm_extract_epi32(x1, 1));
}

}  // namespace

uint32_t UpdateCarryless(uint32_t reg, const uint8_t* data, size_t size) {
    if (size >= 64) {
        const size_t folded = size & ~size_t(15);
        reg = FoldBlocks(reg, data, folded);
        data += folded;
        size -= folded;
    }
    return UpdateSliced(reg, data, size);
}

#else

bool CarrylessAvailable() { return false; }
uint32_t UpdateCarryless(uint32_t reg, const uint8_t* data, size_t size) { return UpdateSliced(reg, data, size); }

#endif

uint32_t Update(uint32_t reg, const uint8_t* data, size_t size) {
    static const auto best = CarrylessAvailable() ? &UpdateCarryless : &UpdateSliced;
    return best(reg, data, size);
}

}  // namespace corvan::crc32
