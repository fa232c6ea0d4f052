#include "files/clsFolderIO.h"

#include "common/conversions.h"
#include "files/folder_browser.h"
#include "files/folder_tree.h"
#include "files/win_errors.h"

namespace corvan {
namespace {

constexpr int kObjectNotSet = 91;
constexpr int kConfirmStyle = msgbox::vbYesNo | msgbox::vbQuestion | 256;  // 292: No is the default button
const char kConfirmTitle[] = "Delete...";

std::string FullPath(const std::string& path) {
    char buffer[MAX_PATH * 2];
    const DWORD n = GetFullPathNameA(path.c_str(), sizeof buffer, buffer, nullptr);
    if (n == 0 || n >= sizeof buffer) return path;
    std::string full(buffer, n);
    // The automation object names a folder without a closing backslash,
    // except a drive's root ("C:\").
    while (full.size() > 3 && full.back() == '\\') full.pop_back();
    return full;
}

std::string NameOf(const std::string& folder) {
    const size_t slash = folder.find_last_of('\\');
    return slash == std::string::npos ? folder : folder.substr(slash + 1);
}

// A destination ending in a backslash means "into that folder".
std::string TargetOf(const std::string& folder, const std::string& destination) {
    if (!destination.empty() && (destination.back() == '\\' || destination.back() == '/'))
        return FullPath(destination + NameOf(folder));
    return FullPath(destination);
}

bool IsInside(const std::string& inner, const std::string& outer) {
    if (inner.size() < outer.size()) return false;
    if (CompareStringA(LOCALE_SYSTEM_DEFAULT, NORM_IGNORECASE, inner.c_str(), static_cast<int>(outer.size()),
                       outer.c_str(), static_cast<int>(outer.size())) != CSTR_EQUAL)
        return false;
    return inner.size() == outer.size() || inner[outer.size()] == '\\';
}

}  // namespace

const std::string& clsFolderIO::Current(const char* source) const {
    if (folder_.empty()) throw Failure(kObjectNotSet, source, "Object variable or With block variable not set");
    return folder_;
}

int32_t clsFolderIO::FileCount() const {
    int32_t count = 0;
    folder_tree::ForEachEntry(Current("clsFolderIO.FileCount"), [&](const WIN32_FIND_DATAA& e) {
        if (!(e.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) ++count;
    }, "clsFolderIO.FileCount");
    return count;
}

int32_t clsFolderIO::SubFolderCount() const { return static_cast<int32_t>(SubFolders().size()); }

std::vector<std::string> clsFolderIO::SubFolders() const {
    std::vector<std::string> names;
    folder_tree::ForEachEntry(Current("clsFolderIO.SubFolders"), [&](const WIN32_FIND_DATAA& e) {
        if (e.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) names.emplace_back(e.cFileName);
    }, "clsFolderIO.SubFolders");
    return names;
}

std::vector<std::string> clsFolderIO::Files() const {
    std::vector<std::string> names;
    folder_tree::ForEachEntry(Current("clsFolderIO.Files"), [&](const WIN32_FIND_DATAA& e) {
        if (!(e.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) names.emplace_back(e.cFileName);
    }, "clsFolderIO.Files");
    return names;
}

bool clsFolderIO::IsRootFolder() const { return ParentPath().empty(); }

double clsFolderIO::Size() const {
    return static_cast<double>(folder_tree::TotalSize(Current("clsFolderIO.Size"), "clsFolderIO.Size"));
}

bool clsFolderIO::Confirm(const char* question) {
    return desktop_.MsgBox(question, kConfirmStyle, kConfirmTitle) == msgbox::vbYes;
}

int32_t clsFolderIO::Delete(bool force, bool confirm) {
    try {
        if (confirm && !Confirm("Are you sure you want to delete the selected directory?")) return 0;
        folder_tree::DeleteTree(Current("clsFolderIO.Delete"), force, "clsFolderIO.Delete");
        return 0;
    } catch (...) {
        return FailureInFlight("clsFolderIO").Number();
    }
}

int32_t clsFolderIO::Move(const std::string& destination, bool confirm) {
    try {
        if (confirm) {
            if (!Confirm("Are you sure you want to move the selected directory?")) return 0;
            const std::string& from = Current("clsFolderIO.Move");
            const std::string to = TargetOf(from, destination);
            if (!MoveFileExA(from.c_str(), to.c_str(), 0)) throw LastFileFailure("clsFolderIO.Move");
            folder_ = to;
            return 0;
        }
        // Without a confirmation the destination stands where the force flag
        // of a delete belongs; only a Boolean text gets that far.
        const bool force = StrictBoolean(destination);
        folder_tree::DeleteTree(Current("clsFolderIO.Move"), force, "clsFolderIO.Move");
        return 0;
    } catch (...) {
        return FailureInFlight("clsFolderIO").Number();
    }
}

int32_t clsFolderIO::Copy(const std::string& destination, bool overwrite, bool confirm) {
    try {
        if (confirm && !Confirm("Are you sure you want to copy the selected directory?")) return 0;
        const std::string& from = Current("clsFolderIO.Copy");
        const std::string to = TargetOf(from, destination);
        // A copy into itself would never end.
        if (IsInside(to, from)) throw RuntimeError(error::kInvalidProcedureCall, "clsFolderIO.Copy");
        folder_tree::CopyTree(from, to, overwrite, "clsFolderIO.Copy");
        return 0;
    } catch (...) {
        return FailureInFlight("clsFolderIO").Number();
    }
}

bool clsFolderIO::OpenFolder(const std::string& path) {
    if (path.empty()) return false;
    const std::string full = FullPath(path);
    const DWORD attributes = GetFileAttributesA(full.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        throw RuntimeError(error::kPathNotFound, "clsFolderIO.OpenFolder");
    folder_ = full;
    desktop_.DoEvents();
    return true;
}

std::string clsFolderIO::HardDrive() const {
    const std::string& folder = Current("clsFolderIO.HardDrive");
    if (folder.size() >= 2 && folder[1] == ':') return folder.substr(0, 2);
    if (folder.rfind("\\\\", 0) == 0) {
        const size_t server = folder.find('\\', 2);
        const size_t share = server == std::string::npos ? std::string::npos : folder.find('\\', server + 1);
        return folder.substr(0, share);
    }
    return {};
}

std::string clsFolderIO::GetFolder(HWND owner) const { return BrowseForFolder(owner); }

std::string clsFolderIO::CreateFolder(const std::string& name) {
    const std::string& folder = Current("clsFolderIO.CreateFolder");
    const std::string child = (folder.back() == '\\' ? folder : folder + "\\") + name;
    if (!CreateDirectoryA(child.c_str(), nullptr)) throw LastFileFailure("clsFolderIO.CreateFolder");
    return child;
}

const std::string& clsFolderIO::path() const { return Current("clsFolderIO.path"); }

std::string clsFolderIO::ParentPath() const {
    const std::string& folder = Current("clsFolderIO.ParentPath");
    if (folder.size() <= 3 && folder.size() >= 2 && folder[1] == ':') return {};
    const size_t slash = folder.find_last_of('\\');
    if (slash == std::string::npos) return {};
    if (folder.rfind("\\\\", 0) == 0 && folder.find('\\', folder.find('\\', 2) + 1) == std::string::npos) return {};
    if (slash == 2 && folder[1] == ':') return folder.substr(0, 3);
    return folder.substr(0, slash);
}

}  // namespace corvan
