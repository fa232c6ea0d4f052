#include "files/folder_tree.h"

#include "files/win_errors.h"

namespace corvan::folder_tree {
namespace {

bool IsDots(const char* name) { return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)); }

// A junction or a symbolic link to a folder leads out of the tree, or back
// up into it: it is a leaf. The walks below never go through one; a delete
// removes the link itself and a copy leaves it out.
bool IsLink(DWORD attributes) { return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0; }
bool IsSubfolder(const WIN32_FIND_DATAA& e) {
    return (e.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && !IsLink(e.dwFileAttributes);
}
bool IsFolderLink(const WIN32_FIND_DATAA& e) {
    return (e.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && IsLink(e.dwFileAttributes);
}

std::string Join(const std::string& folder, const char* name) {
    return (!folder.empty() && folder.back() == '\\') ? folder + name : folder + "\\" + name;
}

class FindHandle {
public:
    explicit FindHandle(HANDLE h) : h_(h) {}
    ~FindHandle() {
        if (h_ != INVALID_HANDLE_VALUE) FindClose(h_);
    }
    HANDLE Get() const { return h_; }

private:
    HANDLE h_;
};

bool AnyReadOnly(const std::string& folder, const char* source);
bool AnyClash(const std::string& folder, const std::string& target, const char* source);

}  // namespace

void ForEachEntry(const std::string& folder, const std::function<void(const WIN32_FIND_DATAA&)>& visit,
                  const char* source) {
    WIN32_FIND_DATAA data{};
    FindHandle find(FindFirstFileA(Join(folder, "*").c_str(), &data));
    if (find.Get() == INVALID_HANDLE_VALUE) {
        const DWORD code = GetLastError();
        if (code == ERROR_FILE_NOT_FOUND || code == ERROR_NO_MORE_FILES) return;  // empty
        throw FileFailure(code == ERROR_DIRECTORY ? ERROR_PATH_NOT_FOUND : code, source);
    }
    do {
        if (!IsDots(data.cFileName)) visit(data);
    } while (FindNextFileA(find.Get(), &data));
}

uint64_t TotalSize(const std::string& folder, const char* source) {
    uint64_t total = 0;
    ForEachEntry(folder, [&](const WIN32_FIND_DATAA& e) {
        if (IsSubfolder(e))
            total += TotalSize(Join(folder, e.cFileName), source);
        else if (!IsFolderLink(e))
            total += (uint64_t(e.nFileSizeHigh) << 32) | e.nFileSizeLow;
    }, source);
    return total;
}

namespace {

bool AnyReadOnly(const std::string& folder, const char* source) {
    bool found = false;
    ForEachEntry(folder, [&](const WIN32_FIND_DATAA& e) {
        if (found) return;
        found = (e.dwFileAttributes & FILE_ATTRIBUTE_READONLY) ||
                (IsSubfolder(e) && AnyReadOnly(Join(folder, e.cFileName), source));
    }, source);
    return found;
}

bool AnyClash(const std::string& folder, const std::string& target, const char* source) {
    bool found = false;
    ForEachEntry(folder, [&](const WIN32_FIND_DATAA& e) {
        if (found) return;
        const std::string to = Join(target, e.cFileName);
        if (IsSubfolder(e))
            found = AnyClash(Join(folder, e.cFileName), to, source);
        else if (!IsFolderLink(e))
            found = GetFileAttributesA(to.c_str()) != INVALID_FILE_ATTRIBUTES;
    }, source);
    return found;
}

void DeleteAll(const std::string& folder, bool force, const char* source);
void RemoveLink(const std::string& link, DWORD attributes, const char* source);
void CopyAll(const std::string& folder, const std::string& target, bool overwrite, const char* source);

}  // namespace

// Refusals are found before anything is touched, so a delete or a copy that
// is refused leaves everything as it was.
void DeleteTree(const std::string& folder, bool force, const char* source) {
    const DWORD attributes = GetFileAttributesA(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        throw FileFailure(ERROR_PATH_NOT_FOUND, source);
    if (!force && ((attributes & FILE_ATTRIBUTE_READONLY) || (!IsLink(attributes) && AnyReadOnly(folder, source))))
        throw FileFailure(ERROR_ACCESS_DENIED, source);
    if (IsLink(attributes)) {
        RemoveLink(folder, attributes, source);
        return;
    }
    DeleteAll(folder, force, source);
}

void CopyTree(const std::string& folder, const std::string& target, bool overwrite, const char* source) {
    const DWORD attributes = GetFileAttributesA(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        throw FileFailure(ERROR_PATH_NOT_FOUND, source);
    if (!overwrite && AnyClash(folder, target, source)) throw FileFailure(ERROR_FILE_EXISTS, source);
    CopyAll(folder, target, overwrite, source);
}

namespace {

// Only reached with force or when nothing is read-only.
void DeleteAll(const std::string& folder, bool force, const char* source) {
    const DWORD attributes = GetFileAttributesA(folder.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        SetFileAttributesA(folder.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
    ForEachEntry(folder, [&](const WIN32_FIND_DATAA& e) {
        const std::string child = Join(folder, e.cFileName);
        if (IsFolderLink(e)) {
            RemoveLink(child, e.dwFileAttributes, source);
            return;
        }
        if (e.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            DeleteAll(child, force, source);
            return;
        }
        if (e.dwFileAttributes & FILE_ATTRIBUTE_READONLY) SetFileAttributesA(child.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (!DeleteFileA(child.c_str())) throw LastFileFailure(source);
    }, source);
    if (!RemoveDirectoryA(folder.c_str())) throw LastFileFailure(source);
}

// A folder link goes as a directory does, which takes the link and leaves
// what it points to.
void RemoveLink(const std::string& link, DWORD attributes, const char* source) {
    if (attributes & FILE_ATTRIBUTE_READONLY) SetFileAttributesA(link.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
    if (!RemoveDirectoryA(link.c_str())) throw LastFileFailure(source);
}

void CopyAll(const std::string& folder, const std::string& target, bool overwrite, const char* source) {
    if (!CreateDirectoryA(target.c_str(), nullptr)) {
        const DWORD code = GetLastError();
        const DWORD there = GetFileAttributesA(target.c_str());
        if (code != ERROR_ALREADY_EXISTS || there == INVALID_FILE_ATTRIBUTES || !(there & FILE_ATTRIBUTE_DIRECTORY))
            throw FileFailure(code, source);
    }
    ForEachEntry(folder, [&](const WIN32_FIND_DATAA& e) {
        const std::string from = Join(folder, e.cFileName), to = Join(target, e.cFileName);
        if (IsFolderLink(e)) return;
        if (e.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            CopyAll(from, to, overwrite, source);
        } else if (!CopyFileA(from.c_str(), to.c_str(), overwrite ? FALSE : TRUE)) {
            throw LastFileFailure(source);
        }
    }, source);
}

}  // namespace
}  // namespace corvan::folder_tree
