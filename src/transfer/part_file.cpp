#include "transfer/part_file.h"

namespace corvan {

namespace {

// Large enough that a download of small blocks costs few system calls.
constexpr size_t kWriteBuffer = 256 * 1024;

std::string FolderOf(const std::string& path) {
    size_t slash = path.find_last_of("\\/");
    if (slash == std::string::npos) return ".";
    return path.substr(0, slash + 1);
}

bool WriteAll(HANDLE file, const char* bytes, size_t count) {
    while (count > 0) {
        DWORD chunk = count > 0x40000000 ? 0x40000000 : static_cast<DWORD>(count);
        DWORD done = 0;
        if (!WriteFile(file, bytes, chunk, &done, nullptr) || done == 0) return false;
        bytes += done;
        count -= done;
    }
    return true;
}

}  // namespace

PartFile::~PartFile() { Discard(); }

bool PartFile::Open(const std::string& destination) {
    destination_ = destination;
    // A read-only file is not written over, as Windows refuses to, Wine's
    // rename notwithstanding.
    const DWORD attributes = GetFileAttributesA(destination.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) return false;
    char part[MAX_PATH] = {};
    if (!GetTempFileNameA(FolderOf(destination).c_str(), "cvn", 0, part)) return false;
    partPath_ = part;
    file_ = CreateFileA(part, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file_ == INVALID_HANDLE_VALUE) {
        DeleteFileA(part);
        partPath_.clear();
        return false;
    }
    buffer_.reserve(kWriteBuffer);
    return true;
}

bool PartFile::Write(const char* bytes, size_t count) {
    if (file_ == INVALID_HANDLE_VALUE) return false;
    written_ += count;
    if (buffer_.size() + count > kWriteBuffer && !Flush()) return false;
    if (count >= kWriteBuffer) return WriteAll(file_, bytes, count);
    buffer_.insert(buffer_.end(), bytes, bytes + count);
    return true;
}

bool PartFile::Restart() {
    if (file_ == INVALID_HANDLE_VALUE) return false;
    buffer_.clear();
    written_ = 0;
    LARGE_INTEGER start{};
    return SetFilePointerEx(file_, start, nullptr, FILE_BEGIN) && SetEndOfFile(file_);
}

bool PartFile::Flush() {
    bool ok = WriteAll(file_, buffer_.data(), buffer_.size());
    buffer_.clear();
    return ok;
}

bool PartFile::Commit() {
    if (file_ == INVALID_HANDLE_VALUE || !Flush()) {
        Discard();
        return false;
    }
    HANDLE old = CreateFileA(destination_.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (old != INVALID_HANDLE_VALUE) {
        LARGE_INTEGER size{}, start{};
        start.QuadPart = static_cast<LONGLONG>(written_);
        bool ok = GetFileSizeEx(old, &size) != 0;
        if (ok && static_cast<unsigned long long>(size.QuadPart) > written_) {
            ok = SetFilePointerEx(old, start, nullptr, FILE_BEGIN) != 0;
            std::vector<char> chunk(kWriteBuffer);
            DWORD got = 0;
            while (ok && ReadFile(old, chunk.data(), static_cast<DWORD>(chunk.size()), &got, nullptr) && got > 0)
                ok = WriteAll(file_, chunk.data(), got);
        }
        CloseHandle(old);
        if (!ok) {
            Discard();
            return false;
        }
    }
    CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
    if (!MoveFileExA(partPath_.c_str(), destination_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED)) {
        Discard();
        return false;
    }
    partPath_.clear();
    return true;
}

void PartFile::Discard() {
    if (file_ != INVALID_HANDLE_VALUE) {
        CloseHandle(file_);
        file_ = INVALID_HANDLE_VALUE;
    }
    if (!partPath_.empty()) {
        DeleteFileA(partPath_.c_str());
        partPath_.clear();
    }
}

}  // namespace corvan
