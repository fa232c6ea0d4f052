#pragma once
#include <vector>

#include <windows.h>
#include <wininet.h>

namespace corvan {

// Hands out a response body in blocks of a fixed size. WinINet is asked for
// all that has arrived, up to a large piece, since each call costs far more
// than the copy, but the blocks are exactly those a reader of `blockSize`
// bytes at a time would see: full ones until the body ends, then the short
// rest, then empty ones. A block is handed out as soon as its bytes are in.
class BlockReader {
public:
    BlockReader(HINTERNET request, DWORD blockSize);

    // False when WinINet reports a broken transfer.
    bool Next(char* block, DWORD& delivered);

private:
    bool Refill();

    HINTERNET request_;
    DWORD blockSize_;
    std::vector<char> buffer_;
    size_t start_ = 0, end_ = 0;
    bool ended_ = false;
};

}  // namespace corvan
