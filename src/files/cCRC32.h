#pragma once
#include <cstdint>
#include <span>
#include <string>

#include "files/cBinaryFileStream.h"

namespace corvan {

// Receives cCRC32's progress, once per block of a file.
class CRCProgressListener {
public:
    virtual ~CRCProgressListener() = default;
    virtual void CRCProgress(int16_t& Percent) = 0;
};

// The CRC-32 of zlib and PNG (reflected EDB88320, start FFFFFFFF, result
// inverted), returned as a signed 32-bit number carrying the 32 bits.
class cCRC32 {
public:
    explicit cCRC32(CRCProgressListener* listener = nullptr) : listener_(listener) {}

    void SetListener(CRCProgressListener* listener) { listener_ = listener; }

    // `lowerBound` is the array's first index. The running index is 16-bit:
    // an array whose bounds leave -32768..32767 fails with Overflow (6)
    // before any byte is read. Files go through GetFileCrc32.
    int32_t GetByteArrayCrc32(std::span<const uint8_t> bytes, int32_t lowerBound = 0) const;

    // CRC of everything from the stream's position to its end, read in
    // 8192-byte blocks, one CRCProgress per block. Errors of the stream
    // pass through unchanged.
    int32_t GetFileCrc32(cBinaryFileStream& stream);

    static constexpr int32_t kBlockSize = 8192;

private:
    CRCProgressListener* listener_;
};

// The CRC as packing lists carry it and the item compares it: upper-case
// hexadecimal of the 32 bits, no prefix, no leading zeros ("0" for 0).
std::string CrcText(int32_t crc);

// CrcText of a whole file, read through a cBinaryFileStream; its errors
// (53 for a missing file) pass through.
std::string FileCrcText(const std::string& path, CRCProgressListener* listener = nullptr);

}  // namespace corvan
