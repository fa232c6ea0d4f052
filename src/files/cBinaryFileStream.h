#pragma once
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

namespace corvan {

// Reads one file from start to end in blocks, read-only, for its checksum.
// It closes the file by itself as soon as a read finds nothing left, so a
// caller that reads to the end never keeps a package locked.
class cBinaryFileStream {
public:
    cBinaryFileStream() = default;
    ~cBinaryFileStream();
    cBinaryFileStream(const cBinaryFileStream&) = delete;
    cBinaryFileStream& operator=(const cBinaryFileStream&) = delete;

    const std::string& File() const { return path_; }

    // Closes any open file, then opens `path`. A missing file raises 53
    // (source "<library base name>.File"), and no file is left open.
    // The position is deliberately kept: it counts bytes handed out by this
    // object, not by this file.
    void File(const std::string& path);

    int32_t Length() const { return length_; }

    // Delivers the next bytes into the front of `buffer`; returns how many.
    // `count` is the number wanted; a request that reaches the end of the
    // file delivers what is left, and one that finds nothing left closes
    // the file and returns 0.
    int32_t Read(std::span<uint8_t> buffer, int32_t count);

    bool IsOpen() const { return file_ != nullptr; }

    void Dispose();

private:
    std::string path_;
    std::FILE* file_ = nullptr;
    int32_t length_ = 0;
    int32_t position_ = 0;
};

}  // namespace corvan
