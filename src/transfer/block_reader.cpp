#include "transfer/block_reader.h"

#include <cstring>

namespace corvan {

namespace {
constexpr size_t kPiece = 64 * 1024;
}

BlockReader::BlockReader(HINTERNET request, DWORD blockSize)
    : request_(request), blockSize_(blockSize), buffer_(kPiece) {}

bool BlockReader::Refill() {
    start_ = end_ = 0;
    DWORD got = 0;
    if (!InternetReadFile(request_, buffer_.data(), static_cast<DWORD>(buffer_.size()), &got)) return false;
    if (got == 0) ended_ = true;
    end_ = got;
    return true;
}

bool BlockReader::Next(char* block, DWORD& delivered) {
    delivered = 0;
    while (delivered < blockSize_) {
        if (start_ == end_) {
            if (ended_) break;
            if (!Refill()) return false;
            continue;
        }
        size_t take = end_ - start_;
        if (take > blockSize_ - delivered) take = blockSize_ - delivered;
        std::memcpy(block + delivered, buffer_.data() + start_, take);
        start_ += take;
        delivered += static_cast<DWORD>(take);
    }
    return true;
}

}  // namespace corvan
