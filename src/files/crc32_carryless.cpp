// CRC-32 by folding with carry-less multiplication, after Intel's "Fast CRC
// Computation for Generic Polynomials Using PCLMULQDQ". The folding
// constants are x^(d+32) and x^(d-32) mod P, bit-reflected and shifted left
// once, for a folding distance of d bits; the last pair is the Barrett
// reduction's (P and floor(x^64 / P)).
#include "files/crc32_kernels.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>

// GCC 12's AVX-512 headers build some results from deliberately undefined
// registers and then warn about them.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

namespace corvan::crc32 {
namespace {

alignas(16) constexpr uint64_t kFold2048[2] = {0x011542778aull, 0x01322d1430ull};  // d = 2048
alignas(16) constexpr uint64_t kFold512[2] = {0x0154442bd4ull, 0x01c6e41596ull};   // d = 512
alignas(16) constexpr uint64_t kFold128[2] = {0x01751997d0ull, 0x00ccaa009eull};   // d = 128
alignas(16) constexpr uint64_t kFold64[2] = {0x0163cd6124ull, 0x0000000000ull};
alignas(16) constexpr uint64_t kBarrett[2] = {0x01db710641ull, 0x01f7011641ull};

#define CORVAN_CLMUL __attribute__((target("pclmul,sse4.1"), always_inline)) inline
#define CORVAN_WIDE __attribute__((target("avx512f,vpclmulqdq,pclmul,sse4.1")))

const __m128i* At(const uint8_t* p) { return reinterpret_cast<const __m128i*>(p); }

CORVAN_CLMUL __m128i Fold(__m128i x, __m128i k, __m128i next) {
    return _mm_xor_si128(_mm_xor_si128(_mm_clmulepi64_si128(x, k, 0x11), next), _mm_clmulepi64_si128(x, k, 0x00));
}

// Four 128-bit lanes x1..x4, folded up to `buf`, plus `size` more bytes (a
// multiple of 16) down to the 32-bit register.
CORVAN_CLMUL uint32_t Reduce(__m128i x1, __m128i x2, __m128i x3, __m128i x4, const uint8_t* buf, size_t size) {
    __m128i k = _mm_load_si128(At(reinterpret_cast<const uint8_t*>(kFold128)));
    x1 = Fold(x1, k, x2);
    x1 = Fold(x1, k, x3);
    x1 = Fold(x1, k, x4);
    for (; size >= 16; buf += 16, size -= 16) x1 = Fold(x1, k, _mm_loadu_si128(At(buf)));

    // 128 bits to 64.
    const __m128i low32 = _mm_setr_epi32(~0, 0, ~0, 0);
    __m128i x2b = _mm_clmulepi64_si128(x1, k, 0x10);
    x1 = _mm_xor_si128(_mm_srli_si128(x1, 8), x2b);
    k = _mm_loadl_epi64(At(reinterpret_cast<const uint8_t*>(kFold64)));
    x2b = _mm_srli_si128(x1, 4);
    x1 = _mm_xor_si128(_mm_clmulepi64_si128(_mm_and_si128(x1, low32), k, 0x00), x2b);

    // Barrett reduction to 32 bits.
    k = _mm_load_si128(At(reinterpret_cast<const uint8_t*>(kBarrett)));
    x2b = _mm_and_si128(x1, low32);
    x2b = _mm_clmulepi64_si128(x2b, k, 0x10);
    x2b = _mm_and_si128(x2b, low32);
    x2b = _mm_clmulepi64_si128(x2b, k, 0x00);
    return static_cast<uint32_t>(_mm_extract_epi32(_mm_xor_si128(x1, x2b), 1));
}

// size is at least 64 and a multiple of 16.
__attribute__((target("pclmul,sse4.1"))) uint32_t Fold128(uint32_t reg, const uint8_t* buf, size_t size) {
    __m128i x1 = _mm_xor_si128(_mm_loadu_si128(At(buf)), _mm_cvtsi32_si128(static_cast<int>(reg)));
    __m128i x2 = _mm_loadu_si128(At(buf + 16));
    __m128i x3 = _mm_loadu_si128(At(buf + 32));
    __m128i x4 = _mm_loadu_si128(At(buf + 48));
    const __m128i k = _mm_load_si128(At(reinterpret_cast<const uint8_t*>(kFold512)));
    for (buf += 64, size -= 64; size >= 64; buf += 64, size -= 64) {
        x1 = Fold(x1, k, _mm_loadu_si128(At(buf)));
        x2 = Fold(x2, k, _mm_loadu_si128(At(buf + 16)));
        x3 = Fold(x3, k, _mm_loadu_si128(At(buf + 32)));
        x4 = Fold(x4, k, _mm_loadu_si128(At(buf + 48)));
    }
    return Reduce(x1, x2, x3, x4, buf, size);
}

CORVAN_WIDE inline __m512i FoldWide(__m512i x, __m512i k, __m512i next) {
    return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(x, k, 0x11), _mm512_clmulepi64_epi128(x, k, 0x00),
                                     next, 0x96);
}

// size is at least 256 and a multiple of 16.
CORVAN_WIDE uint32_t Fold512(uint32_t reg, const uint8_t* buf, size_t size) {
    __m512i a = _mm512_xor_si512(_mm512_loadu_si512(buf), _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(reg))));
    __m512i b = _mm512_loadu_si512(buf + 64);
    __m512i c = _mm512_loadu_si512(buf + 128);
    __m512i d = _mm512_loadu_si512(buf + 192);
    const __m512i far = _mm512_broadcast_i32x4(_mm_load_si128(At(reinterpret_cast<const uint8_t*>(kFold2048))));
    for (buf += 256, size -= 256; size >= 256; buf += 256, size -= 256) {
        a = FoldWide(a, far, _mm512_loadu_si512(buf));
        b = FoldWide(b, far, _mm512_loadu_si512(buf + 64));
        c = FoldWide(c, far, _mm512_loadu_si512(buf + 128));
        d = FoldWide(d, far, _mm512_loadu_si512(buf + 192));
    }
    const __m512i near = _mm512_broadcast_i32x4(_mm_load_si128(At(reinterpret_cast<const uint8_t*>(kFold512))));
    a = FoldWide(a, near, b);
    a = FoldWide(a, near, c);
    a = FoldWide(a, near, d);
    for (; size >= 64; buf += 64, size -= 64) a = FoldWide(a, near, _mm512_loadu_si512(buf));
    return Reduce(_mm512_extracti32x4_epi32(a, 0), _mm512_extracti32x4_epi32(a, 1), _mm512_extracti32x4_epi32(a, 2),
                  _mm512_extracti32x4_epi32(a, 3), buf, size);
}

}  // namespace

bool CarrylessAvailable() {
    static const bool available = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1");
    }();
    return available;
}

bool WideCarrylessAvailable() {
    static const bool available = [] {
        __builtin_cpu_init();
        return CarrylessAvailable() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("vpclmulqdq");
    }();
    return available;
}

uint32_t UpdateCarryless(uint32_t reg, const uint8_t* data, size_t size) {
    if (size >= 64) {
        const size_t folded = size & ~size_t(15);
        reg = Fold128(reg, data, folded);
        data += folded;
        size -= folded;
    }
    return UpdateSliced(reg, data, size);
}

uint32_t UpdateWideCarryless(uint32_t reg, const uint8_t* data, size_t size) {
    if (size < 256) return UpdateCarryless(reg, data, size);
    const size_t folded = size & ~size_t(15);
    reg = Fold512(reg, data, folded);
    return UpdateSliced(reg, data + folded, size - folded);
}

}  // namespace corvan::crc32

#else

namespace corvan::crc32 {
bool CarrylessAvailable() { return false; }
bool WideCarrylessAvailable() { return false; }
uint32_t UpdateCarryless(uint32_t reg, const uint8_t* data, size_t size) { return UpdateSliced(reg, data, size); }
uint32_t UpdateWideCarryless(uint32_t reg, const uint8_t* data, size_t size) { return UpdateSliced(reg, data, size); }
}  // namespace corvan::crc32

#endif
