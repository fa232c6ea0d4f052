#include "items/make_folder.h"

#include <windows.h>

namespace corvan {

void MakeFolder(const std::string& folder) {
    std::string path = folder;
    while (!path.empty() && (path.back() == '\\' || path.back() == '/')) path.pop_back();
    if (path.empty()) return;
    DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) return;
    size_t parent = path.find_last_of("\\/");
    // Stop at a drive ("C:") or a share root; those are never made.
    if (parent != std::string::npos && parent > 0 && path[parent - 1] != ':' && path[parent - 1] != '\\')
        MakeFolder(path.substr(0, parent));
    CreateDirectoryA(path.c_str(), nullptr);
}

}  // namespace corvan
