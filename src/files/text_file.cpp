#include "files/text_file.h"

#include <windows.h>

#include <limits>

#include "files/unique_handle.h"
#include "files/win_errors.h"

namespace corvan::text_file {
namespace {

std::string FolderOf(const std::string& path) {
    const size_t slash = path.find_last_of("\\/");
    if (slash == std::string::npos) return ".";
    if (slash == 0 || (slash == 2 && path[1] == ':')) return path.substr(0, slash + 1);
    return path.substr(0, slash);
}

void WriteAllOrFail(HANDLE file, const std::string& text, const char* source) {
    size_t done = 0;
    while (done < text.size()) {
        const DWORD chunk = static_cast<DWORD>(std::min<size_t>(text.size() - done, 1u << 20));
        DWORD written = 0;
        if (!WriteFile(file, text.data() + done, chunk, &written, nullptr)) throw LastFileFailure(source);
        if (written == 0) throw FileFailure(ERROR_DISK_FULL, source);
        done += written;
    }
}

}  // namespace

std::string ReadAll(const std::string& path, const char* source) {
    UniqueHandle file(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.Valid()) throw LastFileFailure(source);
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.Get(), &size)) throw LastFileFailure(source);
    if (size.QuadPart > std::numeric_limits<int32_t>::max()) throw RuntimeError(error::kOverflow, source);
    std::string text(static_cast<size_t>(size.QuadPart), '\0');
    size_t done = 0;
    while (done < text.size()) {
        DWORD got = 0;
        if (!ReadFile(file.Get(), text.data() + done, static_cast<DWORD>(text.size() - done), &got, nullptr))
            throw LastFileFailure(source);
        if (got == 0) break;  // shorter than it was a moment ago
        done += got;
    }
    text.resize(done);
    return text;
}

void CreateIfMissing(const std::string& path, const char* source) {
    UniqueHandle file(CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.Valid()) throw LastFileFailure(source);
}

void ReplaceAll(const std::string& path, const std::string& text, const char* source) {
    // A read-only file is not ours to replace; Windows refuses the move over
    // it anyway, but not every file system says so.
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)))
        throw FileFailure(ERROR_ACCESS_DENIED, source);
    char temp[MAX_PATH + 1] = {};
    if (GetTempFileNameA(FolderOf(path).c_str(), "cvn", 0, temp) == 0) throw LastFileFailure(source);
    bool moved = false;
    try {
        {
            UniqueHandle file(CreateFileA(temp, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
            if (!file.Valid()) throw LastFileFailure(source);
            WriteAllOrFail(file.Get(), text, source);
            if (!FlushFileBuffers(file.Get())) throw LastFileFailure(source);
        }
        if (!MoveFileExA(temp, path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            throw LastFileFailure(source);
        moved = true;
    } catch (...) {
        if (!moved) DeleteFileA(temp);
        throw;
    }
}

}  // namespace corvan::text_file
