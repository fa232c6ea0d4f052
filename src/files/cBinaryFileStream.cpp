#include "files/cBinaryFileStream.h"

#include <cerrno>
#include <cstring>
#include <limits>
#include <sys/stat.h>

#include "common/failure.h"
#include "corvan/build_config.h"

namespace corvan {
namespace {

const std::string kFileSource = std::string(CORVAN_BASE_NAME) + ".File";
const std::string kReadSource = std::string(CORVAN_BASE_NAME) + ".Read";

int32_t ErrorNumberOf(int err) {
    switch (err) {
        case ENOENT:
        case ENOTDIR: return error::kFileNotFound;
        case EACCES:
        case EPERM: return error::kPermissionDenied;
        case EOVERFLOW:
        case EFBIG: return error::kOverflow;
        default: return error::kPathFileAccessError;
    }
}

// Looks the path up as a directory listing would: any file, whatever its
// attributes, but not a folder. Returns 0 when it exists, else an error number.
int32_t LookUp(const std::string& path, int64_t& size) {
    if (path.empty()) return error::kFileNotFound;
#ifdef _WIN32
    struct _stat64 info;
    if (_stat64(path.c_str(), &info) != 0) return ErrorNumberOf(errno);
#else
    struct stat info;
    if (stat(path.c_str(), &info) != 0) return ErrorNumberOf(errno);
#endif
    if ((info.st_mode & S_IFMT) == S_IFDIR) return error::kFileNotFound;
    size = info.st_size;
    return 0;
}

}  // namespace

cBinaryFileStream::~cBinaryFileStream() { Dispose(); }

void cBinaryFileStream::Dispose() {
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
    }
}

void cBinaryFileStream::File(const std::string& path) {
    Dispose();
    path_ = path;
    int64_t size = 0;
    if (const int32_t number = LookUp(path, size); number != 0) throw RuntimeError(number, kFileSource);
    // The length is a 32-bit count; a file beyond it cannot be read honestly.
    if (size > std::numeric_limits<int32_t>::max()) throw RuntimeError(error::kOverflow, kFileSource);
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) throw RuntimeError(ErrorNumberOf(errno), kFileSource);
    // Blocks go straight into the caller's buffer; a stdio buffer would only
    // copy every byte twice.
    std::setvbuf(file, nullptr, _IONBF, 0);
    file_ = file;
    length_ = static_cast<int32_t>(size);
}

int32_t cBinaryFileStream::Read(std::span<uint8_t> buffer, int32_t count) {
    const int64_t end = int64_t(position_) + count;
    if (end > std::numeric_limits<int32_t>::max()) throw RuntimeError(error::kOverflow, kReadSource);
    size_t wanted;
    if (end >= length_) {
        count = length_ - position_;
        if (count <= 0) {
            // Negative only after a longer file set earlier on this object;
            // the position then steps back to this file's length.
            Dispose();
            position_ += count;
            return count;
        }
        wanted = static_cast<size_t>(count);
    } else {
        wanted = buffer.size();
    }
    if (wanted > buffer.size()) throw RuntimeError(error::kSubscriptOutOfRange, kReadSource);
    if (file_ == nullptr) throw RuntimeError(error::kPathFileAccessError, kReadSource);
    const size_t got = std::fread(buffer.data(), 1, wanted, file_);
    // A file cut short since it was opened: the runtime leaves the missing
    // bytes as they were read, zeros; the checksum then simply differs.
    if (got < wanted) std::memset(buffer.data() + got, 0, wanted - got);
    position_ += count;
    return count;
}

}  // namespace corvan
