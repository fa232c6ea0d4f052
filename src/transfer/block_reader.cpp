#include "transfer/block_reader.h"

#include <algorithm>
#include <cstring>

namespace corvan {

namespace {
constexpr size_t kPiece = 64 * 1024;
}

BlockReader::BlockReader(HINTERNET request, DWORD blockSize)
    : request_(request), blockSize_(blockSize), buffer_(kPiece) {}

bool BlockReader::Refill() {
    start_ = end_ = 0;
    // A synchronous read waits until it has all it asked for: on a slow line
    // a large piece would hold every block, its event and its pump, for many
    // seconds. So only what has arrived is read (waiting, if nothing has,
    // until something does), up to the piece's size.
    DWORD available = 0;
    if (!InternetQueryDataAvailable(request_, &available, 0, 0)) return false;
    const DWORD want = available == 0 ? blockSize_ : std::min(available, static_cast<DWORD>(buffer_.size()));
    DWORD got = 0;
    if (!InternetReadFile(request_, buffer_.data(), want, &got)) return false;
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
