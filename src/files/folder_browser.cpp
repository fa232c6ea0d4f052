#include "files/folder_browser.h"

#include <shlobj.h>

namespace corvan {

std::string BrowseForFolder(HWND owner) {
    BROWSEINFOA info{};
    info.hwndOwner = owner;
    info.lpszTitle = "Please select a folder:";
    info.ulFlags = BIF_RETURNONLYFSDIRS;
    PIDLIST_ABSOLUTE chosen = SHBrowseForFolderA(&info);
    if (chosen == nullptr) return {};
    std::string path(512, ' ');
    const BOOL ok = SHGetPathFromIDListA(chosen, path.data());
    CoTaskMemFree(chosen);
    if (!ok) return {};
    return path.substr(0, path.find('\0'));
}

}  // namespace corvan
