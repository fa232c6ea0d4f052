#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

// The reflected IEEE CRC-32 register update, in three interchangeable ways.
// Every function takes and returns the raw register (no inversion): start
// at FFFFFFFF, invert at the end. All three give bit-identical results; the
// fast ones exist only because a 200 MB package must not keep the page
// waiting on its checksum.
namespace corvan::crc32 {

// The 256-entry table, built exactly as the definition says (eight shifts
// with EDB88320 per index).
const std::array<uint32_t, 256>& Table();

// One byte at a time through Table(): the definition itself.
uint32_t UpdateBytewise(uint32_t reg, const uint8_t* data, size_t size);

// Slicing-by-16: sixteen tables, sixteen bytes per step; any CPU.
uint32_t UpdateSliced(uint32_t reg, const uint8_t* data, size_t size);

// Whether this CPU has carry-less multiplication (PCLMULQDQ with SSE4.1).
bool CarrylessAvailable();

// Folding with carry-less multiplication, 64 bytes per step; only call it
// when CarrylessAvailable(). Short inputs and tails go through UpdateSliced.
uint32_t UpdateCarryless(uint32_t reg, const uint8_t* data, size_t size);

// The same folding four 128-bit lanes at a time in 512-bit registers
// (VPCLMULQDQ with AVX-512), 256 bytes per step; only call it when
// WideCarrylessAvailable(). Shorter inputs go through UpdateCarryless.
bool WideCarrylessAvailable();
uint32_t UpdateWideCarryless(uint32_t reg, const uint8_t* data, size_t size);

// The fastest of the above that this CPU runs, chosen once per process.
uint32_t Update(uint32_t reg, const uint8_t* data, size_t size);

}  // namespace corvan::crc32
