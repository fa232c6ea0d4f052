#include "engine/engine_files.h"

#include <functional>
#include <optional>

#include <windows.h>

#include "common/failure.h"
#include "files/folder_tree.h"
#include "files/win_errors.h"

namespace corvan::engine_files {

namespace {

constexpr char kSource[] = "clsInstall";

std::string WithoutTrailingSlash(std::string path) {
    while (path.size() > 3 && (path.back() == '\\' || path.back() == '/')) path.pop_back();
    return path;
}

// The folder part of a pattern, with its trailing backslash.
std::string FolderOf(const std::string& pattern) {
    const size_t slash = pattern.find_last_of("\\/");
    return slash == std::string::npos ? std::string() : pattern.substr(0, slash + 1);
}

// Calls `act` with the full path of every file `pattern` matches; 53 when
// none does. The first failure of `act` is raised once every file was tried.
void ForEachMatch(const std::string& pattern, const std::function<void(const std::string&)>& act) {
    WIN32_FIND_DATAA found;
    HANDLE search = FindFirstFileA(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        const DWORD code = GetLastError();
        throw code == ERROR_PATH_NOT_FOUND ? FileFailure(code, kSource) : RuntimeError(error::kFileNotFound, kSource);
    }
    const std::string folder = FolderOf(pattern);
    std::optional<Failure> first;
    bool any = false;
    do {
        if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) continue;
        any = true;
        try {
            act(folder + found.cFileName);
        } catch (const Failure& failure) {
            if (!first) first = failure;
        }
    } while (FindNextFileA(search, &found));
    FindClose(search);
    if (first) throw *first;
    if (!any) throw RuntimeError(error::kFileNotFound, kSource);
}

}  // namespace

bool FolderExists(const std::string& folder) {
    const DWORD attributes = GetFileAttributesA(WithoutTrailingSlash(folder).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool FolderHasFiles(const std::string& folder) {
    std::string pattern = folder;
    if (pattern.empty() || pattern.back() != '\\') pattern += '\\';
    WIN32_FIND_DATAA found;
    HANDLE search = FindFirstFileA((pattern + "*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return false;
    bool file = false;
    do file = !(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
    while (!file && FindNextFileA(search, &found));
    FindClose(search);
    return file;
}

void MakePath(const std::string& folder) {
    const std::string path = WithoutTrailingSlash(folder);
    if (FolderExists(path)) return;
    const size_t slash = path.find_last_of('\\');
    // A drive ("C:") or a share's root is opened, never made.
    if (slash != std::string::npos && slash > 2 && path.find_first_not_of('\\') < slash) MakePath(path.substr(0, slash));
    if (!CreateDirectoryA(path.c_str(), nullptr)) {
        const DWORD code = GetLastError();
        // Where a plain file holds the name, the folder cannot be made.
        if (code != ERROR_ALREADY_EXISTS || !FolderExists(path)) throw FileFailure(code, kSource);
    }
}

void DeleteFiles(const std::string& pattern) {
    ForEachMatch(pattern, [](const std::string& file) {
        if (!DeleteFileA(file.c_str())) throw FileFailure(GetLastError(), kSource);
    });
}

void CopyFiles(const std::string& pattern, const std::string& folder) {
    std::string target = folder;
    if (target.empty() || target.back() != '\\') target += '\\';
    if (!FolderExists(target)) throw RuntimeError(error::kPathNotFound, kSource);
    ForEachMatch(pattern, [&target](const std::string& file) {
        const std::string name = file.substr(file.find_last_of('\\') + 1);
        if (!CopyFileA(file.c_str(), (target + name).c_str(), FALSE)) throw FileFailure(GetLastError(), kSource);
    });
}

void DeleteFolder(const std::string& folder) {
    const std::string path = WithoutTrailingSlash(folder);
    if (!FolderExists(path)) throw RuntimeError(error::kPathNotFound, kSource);
    std::optional<Failure> first;
    auto keep = [&first](const Failure& failure) {
        if (!first) first = failure;
    };
    folder_tree::ForEachEntry(path, [&](const WIN32_FIND_DATAA& entry) {
        const std::string child = path + "\\" + entry.cFileName;
        try {
            if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
                DeleteFolder(child);
                return;
            }
            if (entry.dwFileAttributes & FILE_ATTRIBUTE_READONLY) SetFileAttributesA(child.c_str(), FILE_ATTRIBUTE_NORMAL);
            if (!DeleteFileA(child.c_str())) throw FileFailure(GetLastError(), kSource);
        } catch (const Failure& failure) {
            keep(failure);
        }
    }, kSource);
    if (!RemoveDirectoryA(path.c_str())) keep(FileFailure(GetLastError(), kSource));
    if (first) throw *first;
}

void RemoveEmptyFolder(const std::string& folder) {
    if (!RemoveDirectoryA(WithoutTrailingSlash(folder).c_str())) throw FileFailure(GetLastError(), kSource);
}

}  // namespace corvan::engine_files
