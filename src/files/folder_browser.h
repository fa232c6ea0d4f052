#pragma once
#include <string>

#include <windows.h>

namespace corvan {

// The shell's folder browser over `owner`, titled "Please select a folder:",
// file-system folders only. The chosen path, or empty when cancelled.
std::string BrowseForFolder(HWND owner);

}  // namespace corvan
