#include "files/cCRC32.h"

#include <array>
#include <cstdio>
#include <limits>

#include "common/conversions.h"
#include "common/failure.h"
#include "files/crc32_kernels.h"

namespace corvan {
namespace {
const char kSource[] = "cCRC32";
}

int32_t cCRC32::GetByteArrayCrc32(std::span<const uint8_t> bytes, int32_t lowerBound) const {
    const int64_t upperBound = int64_t(lowerBound) + int64_t(bytes.size()) - 1;
    if (lowerBound < std::numeric_limits<int16_t>::min() || upperBound > std::numeric_limits<int16_t>::max())
        throw RuntimeError(error::kOverflow, kSource);
    const uint32_t reg = crc32::Update(0xFFFFFFFFu, bytes.data(), bytes.size());
    return static_cast<int32_t>(~reg);
}

int32_t cCRC32::GetFileCrc32(cBinaryFileStream& stream) {
    // One block for the whole file, whatever its size.
    std::array<uint8_t, kBlockSize> buffer;
    uint32_t reg = 0xFFFFFFFFu;
    int32_t processed = 0;
    int32_t count = stream.Read(buffer, kBlockSize);
    while (count >= 1) {
        reg = crc32::Update(reg, buffer.data(), static_cast<size_t>(count));
        if (int64_t(processed) + count > std::numeric_limits<int32_t>::max())
            throw RuntimeError(error::kOverflow, kSource);
        processed += count;
        int16_t percent = RoundToInteger(double(processed) / double(stream.Length()) * 100.0);
        if (listener_ != nullptr) listener_->CRCProgress(percent);
        count = stream.Read(buffer, kBlockSize);
    }
    return static_cast<int32_t>(~reg);
}

std::string CrcText(int32_t crc) {
    char text[16];
    std::snprintf(text, sizeof text, "%X", static_cast<unsigned>(static_cast<uint32_t>(crc)));
    return text;
}

std::string FileCrcText(const std::string& path, CRCProgressListener* listener) {
    cBinaryFileStream stream;
    stream.File(path);
    return CrcText(cCRC32(listener).GetFileCrc32(stream));
}

}  // namespace corvan
