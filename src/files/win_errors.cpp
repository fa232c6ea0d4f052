#include "files/win_errors.h"

namespace corvan {

int32_t RuntimeNumberOfWin32(DWORD code) {
    switch (code) {
        case ERROR_FILE_NOT_FOUND: return error::kFileNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_NETPATH:
        case ERROR_INVALID_DRIVE: return error::kPathNotFound;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_WRITE_PROTECT: return error::kPermissionDenied;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS: return 58;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL: return 61;
        default: return error::kPathFileAccessError;
    }
}

Failure FileFailure(DWORD code, std::string source) {
    const int32_t number = RuntimeNumberOfWin32(code);
    switch (number) {
        case 58: return Failure(number, std::move(source), "File already exists");
        case 61: return Failure(number, std::move(source), "Disk full");
        default: return RuntimeError(number, std::move(source));
    }
}

Failure LastFileFailure(const char* source) {
    const DWORD code = GetLastError();
    return FileFailure(code, source);
}

}  // namespace corvan
