#pragma once
#include <string>
#include <vector>

#include <windows.h>

namespace corvan {

// The file a download writes into. The bytes go to a fresh file beside the
// destination, which takes the destination's place only when the download
// completed, so a failed download leaves the old file exactly as it was.
// Bytes of the old file beyond the new end are carried over: a download
// overwrites a file in place, it does not shorten it.
class PartFile {
public:
    PartFile() = default;
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    // False when the destination's folder cannot take a new file, or the
    // destination is read-only.
    bool Open(const std::string& destination);
    bool Write(const char* bytes, size_t count);
    // Empties the new file: the server sends the body again.
    bool Restart();
    // Adds the old tail and puts the file in the destination's place.
    bool Commit();

private:
    bool Flush();
    void Discard();

    std::string destination_, partPath_;
    HANDLE file_ = INVALID_HANDLE_VALUE;
    std::vector<char> buffer_;
    unsigned long long written_ = 0;
};

}  // namespace corvan
